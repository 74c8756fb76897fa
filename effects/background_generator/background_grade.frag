#version 120
// Clarity, opacity, saturation, tint and brightness of the picture in the window's middle. Inputs: Texture0 the soft
// window, reduced by `reduction`; Texture1 the sharp one; frameSize, texels of the target; margin of the windows;
// clarity, share of the sharp picture; fMul, what alpha is multiplied by; fSaturation, weight of luma; the curves of
// levels: max(v * gain + offset, least) * spread + floorLevel; SwapChannelsSrc0, 1 where the soft window has its channels
// in the other order.
#include "pieces/linear_sampling.glsl"
#include "pieces/stage1.glsl"
#include "pieces/channel_order.glsl"
uniform int SwapChannelsSrc0;
uniform vec2 frameSize;
uniform vec2 margin;
uniform vec2 reduction;
uniform float clarity;
uniform float fMul;
uniform int hasSaturation;
uniform float fSaturation;
uniform int hasLevels;
uniform vec3 gain;
uniform vec3 offset;
uniform vec3 least;
uniform vec3 spread;
uniform vec3 floorLevel;

void main() {
    vec2 here = floor(normPosition() * (frameSize - 1.0) + 0.5) + margin;
    vec4 soft = ordered(SwapChannelsSrc0, linearTexel((here + 0.5) / reduction - 0.5, vec2(0.0), lastTexel()));
    vec4 sharp = texture2D(Texture1_texture, here * Texture1.vScaleTEXi + Texture1.vShiftTEXi);
    vec4 pixel = mix(soft, sharp, clarity);
    vec3 color = pixel.rgb;
    if (hasSaturation == 1) {
        float luma = dot(color, vec3(76.0, 149.0, 30.0) / 256.0);
        color = clamp(color * (127.0 / 128.0 - fSaturation) + luma * fSaturation, 0.0, 1.0);
    }
    if (hasLevels == 1) {
        color = max(color * gain + offset, least) * spread + floorLevel;
    }
    gl_FragColor = vec4(color, pixel.a * fMul);
}
