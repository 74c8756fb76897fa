#version 120
// Many passes of a binomial filter along one axis at once; the outermost ring of texels stays. Inputs: Texture0 the
// picture; axis; passes; centreWeight, the largest weight; taps on either side.
#include "pieces/stage0.glsl"
uniform vec2 axis;
uniform float passes;
uniform float centreWeight;
uniform int taps;

// What the ring holds still acts like an odd continuation of the picture beyond it.
vec4 continued(vec2 texel) {
    vec2 inside = clamp(texel, vec2(0.0), lastTexel());
    if (inside == texel) {
        return texelAt(texel);
    }
    return 2.0 * texelAt(inside) - clampedTexelAt(2.0 * inside - texel);
}

void main() {
    vec2 here = texelHere();
    vec4 centre = texelAt(here);
    bool ring = any(lessThan(here, vec2(1.0))) || any(greaterThan(here, lastTexel() - 1.0));
    vec4 sum = centre * centreWeight;
    float weight = centreWeight;
    for (int i = 1; i <= taps; ++i) {
        float d = float(i);
        weight *= (passes - d + 1.0) / (passes + d);
        sum += (continued(here - d * axis) + continued(here + d * axis)) * weight;
    }
    gl_FragColor = ring ? centre : sum;
}
