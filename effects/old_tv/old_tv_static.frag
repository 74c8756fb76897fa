#version 120
// Grey static over the picture. Inputs: Texture0; fASeed, 0..99, one picture of static each; fMean, fDeviation2 and
// fDev2, the bell curve that random numbers become grey by; fTransparency, how much the static covers.
#include "pieces/stage0.glsl"
#include "pieces/alpha_over.glsl"
uniform float fMean;
uniform float fDeviation2;
uniform float fDev2;
uniform float fASeed;
uniform float fTransparency;

// A number 0..1 for each texel and seed, without a pattern that the eye finds.
float random(vec2 texel) {
    vec3 p = fract(vec3(texel.xyx) * vec3(0.1031, 0.1030, 0.0973) + fASeed * 0.173);
    p += dot(p, p.yzx + 33.33);
    return fract((p.x + p.y) * p.z);
}

void main() {
    vec2 here = texelHere();
    // Three quarters of the bell on either side of its middle.
    float along = fMean + (random(here) - 0.5) * 1.5;
    float grey = fDev2 * exp(-(along - fMean) * (along - fMean) / (2.0 * fDeviation2));
    gl_FragColor = straightOver(vec4(vec3(grey), fTransparency), texelAt(here));
}
