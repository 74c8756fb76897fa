#version 120
// A picture of few pixels: the nearest of the grid, which holds the nearest of the source. Inputs: Texture0; grid, its
// columns and rows.
#include "pieces/stage0.glsl"
uniform vec2 grid;

// position * to / from to the nearest, from whole numbers, so that halves round up whatever the division loses.
vec2 nearest(vec2 position, vec2 from, vec2 to) {
    return min(floor((2.0 * position * to + from + 0.5) / (2.0 * from)), to - 1.0);
}

void main() {
    vec2 size = lastTexel() + 1.0;
    gl_FragColor = texelAt(nearest(nearest(texelHere(), size, grid), grid, size));
}
