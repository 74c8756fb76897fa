#version 120
// Marks over the picture: a black copy of all of them, moved, then the white ones and the red light. Inputs: Texture0
// the picture; Texture1 coverage of all marks in red, of the white ones in green; shadow, texels to the right and down,
// 0 for none.
#include "pieces/stage0.glsl"
#include "pieces/stage1.glsl"
#include "pieces/alpha_over.glsl"
uniform float shadow;

vec2 coverageAt(vec2 texel) {
    return texture2D(Texture1_texture, texel * Texture1.vScaleTEXi + Texture1.vShiftTEXi).rg;
}

void main() {
    vec2 here = texelHere();
    vec4 pixel = texelAt(here);
    vec2 from = here - shadow;
    if (shadow > 0.0 && from.x >= 0.0 && from.y >= 0.0) {
        pixel = straightOver(vec4(0.0, 0.0, 0.0, coverageAt(from).r), pixel);
    }
    vec2 marks = coverageAt(here);
    pixel = straightOver(vec4(1.0, 1.0, 1.0, marks.g), pixel);
    gl_FragColor = straightOver(vec4(1.0, 0.0, 0.0, marks.r - marks.g), pixel);
}
