#include "channel_order.glsl"
// Input: 1 when the source, which is the first texture, has its channels in the other order.
uniform int SwapChannels;

vec4 plainOrder(vec4 texel) {
    return ordered(SwapChannels, texel);
}
