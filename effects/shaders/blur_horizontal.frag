#version 120
// Triangular blur of rows. Inputs: Texture0, blurSize, isOdd.
#include "pieces/triangular_blur.glsl"

void main() {
    gl_FragColor = triangularBlur(vec2(1.0, 0.0));
}
