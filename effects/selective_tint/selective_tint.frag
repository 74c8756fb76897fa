#version 120
// The picture in one tint. Inputs: Texture0 the source, SwapChannels; colorGrad, the tint's red, green and blue; fBlend,
// its share; fMaskStrength, how strictly only colours like it are affected; fMaskCuttof and fFadeRange, where and over
// what chroma difference that begins; fMaskVal1, which softens the chroma of greys; iBlendMode, how the tint meets the
// picture; nInvert, 1 for the picture's negative instead.
#include "pieces/stage0.glsl"
#include "pieces/swizzle.glsl"
uniform vec3 colorGrad;
uniform float fBlend;
uniform float fMaskStrength;
uniform float fMaskCuttof;
uniform float fFadeRange;
uniform float fMaskVal1;
uniform int iBlendMode;
uniform int nInvert;

float lumaOf(vec3 color) {
    return dot(color, vec3(0.299, 0.587, 0.114));
}

float smallest(vec3 v) {
    return min(min(v.r, v.g), v.b);
}

float largest(vec3 v) {
    return max(max(v.r, v.g), v.b);
}

vec2 softenedChroma(vec3 color) {
    vec2 chroma = vec2(0.564, 0.713) * (color.br - lumaOf(color));
    return chroma / (length(chroma) + fMaskVal1);
}

float toneWeight(vec3 source) {
    float apart = distance(softenedChroma(source), softenedChroma(colorGrad));
    return 1.0 - fMaskStrength * smoothstep(fMaskCuttof, fMaskCuttof + fFadeRange, apart);
}

vec3 tintAt(float luma) {
    float above = 2.0 * luma - 1.0;
    return above < 0.0 ? colorGrad * (2.0 * luma)
                       : colorGrad + (sqrt(largest(colorGrad)) - colorGrad) * (above * above);
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

vec3 withHue(vec3 s) {
    float low = smallest(colorGrad);
    float high = largest(colorGrad);
    return low == high ? s : mix(vec3(smallest(s)), vec3(largest(s)), (colorGrad - low) / (high - low));
}

vec3 blended(vec3 s, vec3 t) {
    if (iBlendMode == 1) return overlay(s, t);
    if (iBlendMode == 2) return 1.0 - (1.0 - s) * (1.0 - t);
    if (iBlendMode == 3) return s * t;
    if (iBlendMode == 4) return max(s, t);
    if (iBlendMode == 5) return min(s, t);
    if (iBlendMode == 6) return vec3(dodge(s.r, t.r), dodge(s.g, t.g), dodge(s.b, t.b));
    if (iBlendMode == 7) return vec3(burn(s.r, t.r), burn(s.g, t.g), burn(s.b, t.b));
    if (iBlendMode == 8) return 1.0 - abs(1.0 - s - t);
    if (iBlendMode == 9) return withHue(s);
    return t;
}

void main() {
    vec4 source = plainOrder(texelAt(texelHere()));
    vec3 s = source.rgb;
    vec3 tint = blended(s, tintAt(clamp(lumaOf(s), 0.0, 1.0)));
    vec3 tinted = mix(s, tint, fBlend * toneWeight(s));
    gl_FragColor = vec4(nInvert == 1 ? 1.0 - s : tinted, source.a);
}
