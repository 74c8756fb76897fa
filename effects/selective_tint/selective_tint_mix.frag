#version 120
// The picture in one tint inside a mask and in another outside. Inputs: Texture0 the picture, SwapChannels; Texture1 and
// Texture2 the tint inside and the one outside, with how much of it a pixel takes in alpha; Texture3 the mask, 1 outside;
// iBlendMode, how a tint meets the picture; nInvert, 1 for the picture's negative outside instead; Color, what a negative
// is taken from.
#include "pieces/stage0.glsl"
#include "pieces/stage1.glsl"
#include "pieces/stage2.glsl"
#include "pieces/stage3.glsl"
#include "pieces/swizzle.glsl"
uniform int iBlendMode;
uniform int nInvert;
uniform vec3 Color;

float smallest(vec3 v) {
    return min(min(v.r, v.g), v.b);
}

float largest(vec3 v) {
    return max(max(v.r, v.g), v.b);
}

// The tint's colour in the picture's brightness.
vec3 tintAt(vec3 color, float luma) {
    float above = 2.0 * luma - 1.0;
    return above < 0.0 ? color * (2.0 * luma) : color + (sqrt(largest(color)) - color) * (above * above);
}

vec3 overlay(vec3 s, vec3 t) {
    vec3 bright = 1.0 - 2.0 * (1.0 - s) * (1.0 - t);
    return mix(bright, 2.0 * s * t, vec3(lessThan(s, vec3(0.5))));
}

float dodge(float s, float t) {
    return s <= 0.0 ? 0.0 : 1.0 - t > s ? s / (1.0 - t) : 1.0;
}

float burn(float s, float t) {
    return s >= 1.0 ? 1.0 : t > 1.0 - s ? 1.0 - (1.0 - s) / t : 0.0;
}

vec3 withHue(vec3 s, vec3 color) {
    float low = smallest(color);
    float high = largest(color);
    return low == high ? s : mix(vec3(smallest(s)), vec3(largest(s)), (color - low) / (high - low));
}

vec3 blended(vec3 s, vec3 color) {
    vec3 t = tintAt(color, clamp(dot(s, vec3(0.299, 0.587, 0.114)), 0.0, 1.0));
    if (iBlendMode == 1) return overlay(s, t);
    if (iBlendMode == 2) return 1.0 - (1.0 - s) * (1.0 - t);
    if (iBlendMode == 3) return s * t;
    if (iBlendMode == 4) return max(s, t);
    if (iBlendMode == 5) return min(s, t);
    if (iBlendMode == 6) return vec3(dodge(s.r, t.r), dodge(s.g, t.g), dodge(s.b, t.b));
    if (iBlendMode == 7) return vec3(burn(s.r, t.r), burn(s.g, t.g), burn(s.b, t.b));
    if (iBlendMode == 8) return 1.0 - abs(1.0 - s - t);
    if (iBlendMode == 9) return withHue(s, color);
    return t;
}

vec3 tinted(vec3 s, vec4 tint) {
    return mix(s, blended(s, tint.rgb), tint.a);
}

void main() {
    vec4 source = plainOrder(texelAt(texelHere()));
    vec3 inside = tinted(source.rgb, texelHere1());
    vec3 outside = nInvert == 1 ? Color - source.rgb : tinted(source.rgb, texelHere2());
    gl_FragColor = vec4(mix(inside, outside, texelHere3().a), source.a);
}
