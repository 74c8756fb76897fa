// Input: 1 when the source has its channels in the other order, which reads as G, R, A, B.
uniform int SwapChannels;

vec4 plainOrder(vec4 texel) {
    return SwapChannels == 1 ? texel.grab : texel;
}
