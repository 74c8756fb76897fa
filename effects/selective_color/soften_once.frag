#version 120
// One pass of the 3 by 3 binomial filter; the outermost ring of texels stays. Inputs: Texture0 the picture; wholeLevels,
// 1 to round to whole levels of 255, halves upwards.
#include "pieces/stage0.glsl"
uniform int wholeLevels;

vec4 alongRow(vec2 texel) {
    return texelAt(texel - vec2(1.0, 0.0)) + 2.0 * texelAt(texel) + texelAt(texel + vec2(1.0, 0.0));
}

void main() {
    vec2 here = texelHere();
    vec2 up = vec2(0.0, 1.0);
    bool ring = any(lessThan(here, vec2(1.0))) || any(greaterThan(here, lastTexel() - 1.0));
    if (ring) {
        gl_FragColor = texelAt(here);
    } else {
        vec4 mean = (alongRow(here - up) + 2.0 * alongRow(here) + alongRow(here + up)) / 16.0;
        // A sixteenth of a level is the smallest fraction.
        gl_FragColor = wholeLevels == 1 ? floor(mean * 255.0 + 0.51) / 255.0 : mean;
    }
}
