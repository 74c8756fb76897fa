#version 120
// Bends two opposite sides inwards towards the corners, in straight pieces of eight texels. Inputs: Texture0; depth, how
// far the corners lie inwards; along, (1, 0) to bend top and bottom, (0, 1) to bend left and right; leastAlpha, what the
// target cannot tell from nothing.
#include "pieces/linear_sampling.glsl"
uniform float depth;
uniform vec2 along;
uniform float leastAlpha;

const float kPi = 3.14159265358979;
const float kStrip = 8.0;

float inset(float at, float length) {
    return depth - depth * sin(kPi * at / length);
}

void main() {
    vec2 here = texelHere();
    vec2 last = lastTexel();
    float position = dot(here, along);
    float length = dot(last, along) + 1.0;
    // The last piece takes a short rest with it.
    float from = floor(position / kStrip) * kStrip;
    if (from > 0.0 && from >= length - 3.0) {
        from -= kStrip;
    }
    float to = from + kStrip >= length - 3.0 ? length - 1.0 : from + kStrip;
    float share = to > from ? (position - from) / (to - from) : 0.0;
    float insetFrom = inset(from, length);
    float insetTo = inset(to, length);
    float side = mix(insetFrom, insetTo, share);
    float across = dot(here, along.yx);
    float end = dot(last, along.yx);
    float source = clamp((across - side) / (end - 2.0 * side) * end, 0.0, end);
    vec4 pixel = linearTexel(position * along + source * along.yx, vec2(0.0), last);
    float slope = to > from ? (insetTo - insetFrom) / (to - from) : 0.0;
    float perpendicular = inversesqrt(1.0 + slope * slope);
    float coverage = clamp(1.0 + (across - side) * perpendicular, 0.0, 1.0) *
                     clamp(1.0 + (end - side - across) * perpendicular, 0.0, 1.0);
    // A pixel that its side only touches shows no more than its cover.
    bool shown = coverage > 0.999 || pixel.a * coverage > leastAlpha;
    gl_FragColor = shown ? vec4(pixel.rgb, pixel.a * coverage) : vec4(0.0);
}
