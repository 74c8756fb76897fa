#version 120
// Turns the source grey where both masks cover it. Inputs: Texture0 the source, SwapChannels; Texture1 the masks in red
// and green; border, texels at each edge of them that repeat the one inside; strength, the most that a mask covers.
#include "pieces/stage0.glsl"
#include "pieces/stage1.glsl"
#include "pieces/swizzle.glsl"
uniform float border;
uniform float strength;

void main() {
    vec2 here = texelHere();
    vec4 source = plainOrder(texelAt(here));
    vec2 inside = clamp(here, vec2(border), lastTexel() - border);
    vec2 masks = texture2D(Texture1_texture, inside * Texture1.vScaleTEXi + Texture1.vShiftTEXi).rg;
    float luma = dot(source.rgb, vec3(0.299, 0.587, 0.114));
    gl_FragColor = vec4(mix(source.rgb, vec3(luma), clamp(min(masks.r, masks.g), 0.0, strength)), source.a);
}
