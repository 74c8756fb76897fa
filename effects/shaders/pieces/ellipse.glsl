#include "stage0.glsl"
// The extreme of a mask under a small ellipse, exactly, in two passes: first the extremes of four runs of texels
// to the right of every texel, one in each channel, then those of the ellipse's rows, each of which two runs cover.
// `extreme` is defined by whoever includes this. Inputs: step, 0 for the runs and 1 for the rows; half axes in whole
// texels, at most 12; 1 where the size is even, which leaves out the last column or row.
uniform int step;
uniform vec2 radius;
uniform vec2 evenSize;

// Lengths of the runs. Each is at most one more than twice the one before, and no row is longer than 25.
const vec4 runs = vec4(1.0, 3.0, 7.0, 13.0);

vec4 extremesOfRuns() {
    vec2 here = texelHere();
    vec4 result = vec4(clampedTexelAt(here).a);
    for (float x = 1.0; x < runs.w; x += 1.0) {
        float texel = clampedTexelAt(here + vec2(x, 0.0)).a;
        vec4 reached = extreme(result, vec4(texel));
        result = mix(result, reached, vec4(greaterThan(runs, vec4(x))));
    }
    return result;
}

float extremeOfRow(vec2 here, float y, float first, float last) {
    // What lies outside the picture is as its edge, so the row may end there.
    vec2 from = vec2(max(here.x + first, 0.0), clamp(here.y + y, 0.0, lastTexel().y));
    float length = min(here.x + last, lastTexel().x) - from.x + 1.0;
    vec4 fits = vec4(greaterThanEqual(vec4(length), runs));
    vec4 longest = fits - vec4(fits.yzw, 0.0);
    vec2 to = vec2(from.x + length - dot(longest, runs), from.y);
    return extreme(dot(texelAt(from), longest), dot(texelAt(to), longest));
}

float extremeOfRows() {
    vec2 here = texelHere();
    float result = texelAt(here).r;
    for (float y = -radius.y; y <= radius.y - evenSize.y; y += 1.0) {
        float share = y / radius.y;
        float chord = floor(radius.x * sqrt(max(0.0, 1.0 - share * share)) + 0.001);
        result = extreme(result, extremeOfRow(here, y, -chord, min(chord, radius.x - evenSize.x)));
    }
    return result;
}

vec4 extremeUnderEllipse() {
    return step == 0 ? extremesOfRuns() : vec4(extremeOfRows());
}
