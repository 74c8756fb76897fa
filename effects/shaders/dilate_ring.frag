#version 120
// A further pass that grows bright shapes by an ellipse. Inputs: Texture0, radius, quarterPoints, turn.
#define extreme max
#include "pieces/ring.glsl"

void main() {
    gl_FragColor = extremeOnRing();
}
