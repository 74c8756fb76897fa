// A texel of a texture in the plain channel order; swap is 1 where the texture has the other one, which reads as
// G, R, A, B.
vec4 ordered(int swap, vec4 texel) {
    return swap == 1 ? texel.grab : texel;
}
