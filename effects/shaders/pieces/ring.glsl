#include "stage0.glsl"
// The extreme texel of a ring around the fragment and of the fragment itself. After an ellipse of half axes r a ring
// of half axes s makes it an ellipse of half axes r + s. `extreme` is defined by whoever includes this.
// Inputs: half axes of the ring in texels; points on a quarter of it; cosine and sine of the angle between them.
uniform vec2 radius;
uniform int quarterPoints;
uniform vec2 turn;

// To whole texels, a little towards the centre: so the grown shapes overshoot no more than they fall short.
vec2 onGrid(vec2 offset) {
    return sign(offset) * floor(abs(offset) + 0.45);
}

vec4 extremeOnRing() {
    vec2 here = texelHere();
    vec4 result = clampedTexelAt(here);
    vec2 direction = vec2(1.0, 0.0);
    for (int i = 0; i < quarterPoints; ++i) {
        vec2 along = onGrid(radius * direction);
        vec2 across = onGrid(radius * vec2(-direction.y, direction.x));
        result = extreme(result, extreme(clampedTexelAt(here + along), clampedTexelAt(here - along)));
        result = extreme(result, extreme(clampedTexelAt(here + across), clampedTexelAt(here - across)));
        direction = vec2(direction.x * turn.x - direction.y * turn.y, direction.x * turn.y + direction.y * turn.x);
    }
    return result;
}
