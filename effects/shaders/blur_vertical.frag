#version 120
// Triangular blur of columns. Inputs: Texture0, blurSize, isOdd.
#include "pieces/triangular_blur.glsl"

void main() {
    gl_FragColor = triangularBlur(vec2(0.0, 1.0));
}
