#version 120
// A further pass that shrinks bright shapes by an ellipse. Inputs: Texture0, radius, quarterPoints, turn.
#define extreme min
#include "pieces/ring.glsl"

void main() {
    gl_FragColor = extremeOnRing();
}
