#version 120
// Averages blocks of texels. Inputs: Texture0; columns and rows of a block; targetSize in texels.
#include "pieces/stage0.glsl"
uniform int columns;
uniform int rows;
uniform vec2 targetSize;

void main() {
    vec2 here = floor(normPosition() * (targetSize - 1.0) + 0.5);
    vec2 first = here * vec2(float(columns), float(rows));
    vec4 sum = vec4(0.0);
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x) {
            sum += clampedTexelAt(first + vec2(float(x), float(y)));
        }
    }
    gl_FragColor = sum / float(columns * rows);
}
