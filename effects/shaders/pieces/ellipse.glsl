#include "stage0.glsl"
// The extreme texel under a small ellipse, exactly. `extreme` is defined by whoever includes this.
// Inputs: half axes in whole texels; 1 where the size is even, which leaves out the last column or row.
uniform vec2 radius;
uniform vec2 evenSize;

vec4 extremeUnderEllipse() {
    vec2 here = texelHere();
    vec4 result = clampedTexelAt(here);
    for (float y = -radius.y; y <= radius.y - evenSize.y; y += 1.0) {
        float share = radius.y > 0.0 ? y / radius.y : 0.0;
        float chord = floor(radius.x * sqrt(max(0.0, 1.0 - share * share)) + 0.001);
        float last = min(chord, radius.x - evenSize.x);
        for (float x = -chord; x <= last; x += 1.0) {
            result = extreme(result, clampedTexelAt(here + vec2(x, y)));
        }
    }
    return result;
}
