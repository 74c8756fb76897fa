#version 120
// First pass that grows bright shapes by an ellipse. Inputs: Texture0, radius, evenSize.
#define extreme max
#include "pieces/ellipse.glsl"

void main() {
    gl_FragColor = extremeUnderEllipse();
}
