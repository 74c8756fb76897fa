#version 120
// How far a pixel's colour lies outside the wedges around two key colours: the masks in red and green. Inputs:
// Texture0 the source, SwapChannels; wholeLevels, 1 for 8-bit frames. For each key, in levels of 255: fKeyY, its luma;
// fKeyCb and fKeyCr, its direction; fKeyGL, its distance from grey; fAcceptAngleTg and fAcceptAngleCtg, tangent and
// cotangent of the acceptance angle; fValue, the distance within which everything counts as the colour; fValueRC,
// levels by which the mask falls for each level beyond it, 0 where the whole wedge is kept. For both: fNoiseLevel, how
// much luma counts; fAngleRC, the largest distance from the axis along the wedge.
#include "pieces/stage0.glsl"
#include "pieces/swizzle.glsl"
uniform int wholeLevels;
uniform vec2 fKeyY;
uniform vec2 fKeyCb;
uniform vec2 fKeyCr;
uniform vec2 fKeyGL;
uniform vec2 fAcceptAngleTg;
uniform vec2 fAcceptAngleCtg;
uniform vec2 fValue;
uniform vec2 fValueRC;
uniform float fNoiseLevel;
uniform float fAngleRC;

// The fractions that occur are thousandths or larger: less is an error of rounding.
vec3 truncated(vec3 v) {
    return wholeLevels == 1 ? sign(v) * floor(abs(v) + 0.0005) : v;
}
vec2 truncated(vec2 v) {
    return truncated(vec3(v, 0.0)).xy;
}
vec2 floored(vec2 v) {
    return wholeLevels == 1 ? floor(v + 0.0005) : v;
}

void main() {
    vec4 source = plainOrder(texelAt(texelHere())) * 255.0;
    source = wholeLevels == 1 ? floor(source + 0.5) : source;
    // The differences of a grey are exactly 0.
    vec3 ycc = truncated(vec3(dot(source.rgb, vec3(0.257, 0.504, 0.098)),
                              dot(source.bb - source.rg, vec2(0.148, 0.291)),
                              dot(source.rr - source.gb, vec2(0.368, 0.071))));
    vec2 x = clamp(floored(ycc.y * fKeyCb + ycc.z * fKeyCr), -128.0, 127.0);
    vec2 z = clamp(floored(ycc.z * fKeyCb - ycc.y * fKeyCr), -128.0, 127.0);
    vec2 outside = vec2(greaterThan(abs(z), floored(x * fAcceptAngleTg)));
    vec2 detour = min(abs(floored(z * fAcceptAngleCtg)), fAngleRC);
    vec2 lumaApart = truncated(abs(ycc.x - fKeyY) * fNoiseLevel);
    vec2 along = x - fKeyGL;
    vec2 apart2 = z * z + along * along + lumaApart * lumaApart;
    vec2 isKey = max(vec2(lessThan(apart2, fValue * fValue)), vec2(equal(fValueRC, vec2(0.0))));
    vec2 value = clamp(255.0 - truncated(max(x - detour, 0.0) * fValueRC) + lumaApart, 0.0, 255.0);
    vec2 inside = (1.0 - isKey) * (wholeLevels == 1 ? floor(source.a * value / 256.0) : source.a * value / 255.0);
    gl_FragColor = vec4(mix(inside, source.aa, outside) / 255.0, 0.0, 1.0);
}
