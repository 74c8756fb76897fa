#include "stage0.glsl"
// A triangular filter along one axis. Inputs: its number of taps is 2 * blurSize + isOdd, at least 1.
uniform int blurSize;
uniform int isOdd;

// The middle of an even number of taps lies half a texel before the fragment. The two outermost texels count as
// those just inside them, as the processor's blur has it.
vec4 triangularBlur(vec2 axis) {
    vec2 first = min(vec2(2.0), floor(lastTexel() * 0.5));
    vec2 last = lastTexel() - first;
    vec2 here = texelHere();
    float odd = float(isOdd);
    vec4 sum = texelAt(clamp(here, first, last)) * (float(blurSize + 1) * odd);
    vec2 before = here - axis;
    vec2 behind = here + axis * odd;
    float weight = float(blurSize);
    for (int k = 0; k < blurSize; ++k) {
        sum += (texelAt(clamp(before, first, last)) + texelAt(clamp(behind, first, last))) * weight;
        before -= axis;
        behind += axis;
        weight -= 1.0;
    }
    return sum / (float(blurSize + 1) * (float(blurSize) + odd));
}
