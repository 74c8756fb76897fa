// Straight alpha, not divided by the resulting alpha.
vec4 straightOver(vec4 top, vec4 bottom) {
    return vec4(mix(bottom.rgb, top.rgb, top.a), top.a + bottom.a * (1.0 - top.a));
}
