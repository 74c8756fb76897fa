#version 120
// White balance, saturation and tone curves. Inputs: Texture0 the source; SwapChannelsSrc, 1 where its channels are in
// the other order; colorMult, gains of blue, green and red; fGrayScale and fColorScale, shares of luma and colour;
// fContrast, how much of the film curve; fWarp, how far the middle of that curve is lifted; fOffset, the brightness;
// fWhiteLimit and fBlackLimit, shares of twenty levels kept free at either end.
#include "pieces/stage0.glsl"
#include "pieces/channel_order.glsl"
uniform int SwapChannelsSrc;
uniform vec3 colorMult;
uniform float fGrayScale;
uniform float fColorScale;
uniform float fContrast;
uniform float fWarp;
uniform float fOffset;
uniform float fWhiteLimit;
uniform float fBlackLimit;

const float kRangeSpan = 0.078431375;

vec3 sigmoid(vec3 x, float strength) {
    float low = 1.0 / (exp(3.0) + 1.0);
    float high = 1.0 / (exp(-3.0) + 1.0);
    vec3 at = 1.0 / (exp(x * 6.0 - 3.0) + 1.0);
    return (1.0 - (at / (high - low) - low)) * strength + (1.0 - strength) * x;
}

void main() {
    vec4 source = ordered(SwapChannelsSrc, texelAt(texelHere()));
    float luma = dot(source.rgb, vec3(76.0, 149.0, 30.0)) / 256.0;
    vec3 balanced = min(source.rgb * colorMult.bgr, 1.0);
    vec3 mixed = clamp(2.0 * (fColorScale * balanced + fGrayScale * luma), 0.0, 1.0);
    vec3 film = (sin((mixed - 0.5) * 3.14159265) + 1.0) * 0.5 * fContrast + (1.0 - fContrast) * mixed;
    film += fWarp * mixed * (1.0 - mixed);
    float span = 1.0 - (fWhiteLimit + fBlackLimit) * kRangeSpan;
    // A base of 0 has no logarithm, which powers are made of.
    vec3 bright = pow(max(film, 1e-9), vec3(pow(0.5, fOffset * 2.0 - 1.0)));
    vec3 ranged = sigmoid(bright, min((1.0 - span) * 6.5, 1.0)) * span + kRangeSpan * fBlackLimit;
    gl_FragColor = vec4(clamp(ranged, 0.0, 1.0), source.a);
}
