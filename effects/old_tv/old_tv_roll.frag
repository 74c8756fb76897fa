#version 120
// The picture rolling through on black. Inputs: Texture0; upperSource, upperRow and lowerRow: the upper copy's rows from
// upperSource on stand at upperRow, the lower copy begins at lowerRow.
#include "pieces/stage0.glsl"
uniform float upperSource;
uniform float upperRow;
uniform float lowerRow;

void main() {
    vec2 here = texelHere();
    float rows = lastTexel().y + 1.0;
    float upper = here.y - upperRow + upperSource;
    float row = here.y >= lowerRow ? here.y - lowerRow : here.y >= upperRow && upper < rows ? upper : -1.0;
    gl_FragColor = row < 0.0 ? vec4(0.0, 0.0, 0.0, 1.0) : texelAt(vec2(here.x, row));
}
