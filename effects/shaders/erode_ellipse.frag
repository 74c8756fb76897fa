#version 120
// First pass that shrinks bright shapes by an ellipse. Inputs: Texture0, radius, evenSize.
#define extreme min
#include "pieces/ellipse.glsl"

void main() {
    gl_FragColor = extremeUnderEllipse();
}
