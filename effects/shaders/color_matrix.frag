#version 120
// A 3 x 4 colour matrix. Inputs: Texture0 the source, SwapChannels; matrixRow0..2, one row for each of blue, green and
// red, whose last number is added.
#include "pieces/stage0.glsl"
#include "pieces/swizzle.glsl"
uniform vec4 matrixRow0;
uniform vec4 matrixRow1;
uniform vec4 matrixRow2;

void main() {
    vec4 source = plainOrder(texelAt(texelHere()));
    vec4 samples = vec4(source.bgr, 1.0);
    vec3 result = vec3(dot(matrixRow2, samples), dot(matrixRow1, samples), dot(matrixRow0, samples));
    gl_FragColor = vec4(clamp(result, 0.0, 1.0), source.a);
}
