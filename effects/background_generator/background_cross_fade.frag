#version 120
// One period of a pattern without seams: the picture's right and lower ends are faded into its left and upper ones.
// Inputs: Texture0 the picture; period, the texels of the target; fCrossFade, texels of the bands.
#include "pieces/stage0.glsl"
uniform vec2 period;
uniform vec2 fCrossFade;

void main() {
    vec2 here = floor(normPosition() * (period - 1.0) + 0.5);
    vec2 share = min((here + 0.5) / max(fCrossFade, vec2(0.5)), vec2(1.0));
    vec2 behind = min(here + period, lastTexel());
    vec4 upper = mix(texelAt(vec2(behind.x, here.y)), texelAt(here), share.x);
    vec4 lower = mix(texelAt(behind), texelAt(vec2(here.x, behind.y)), share.x);
    gl_FragColor = mix(lower, upper, share.y);
}
