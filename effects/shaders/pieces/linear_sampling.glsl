#include "stage0.glsl"
// Between four texels; positions outside first..last take the texel at that side.
vec4 linearTexel(vec2 position, vec2 first, vec2 last) {
    position = clamp(position, first, last);
    vec2 corner = min(floor(position), max(last - 1.0, first));
    vec2 along = position - corner;
    vec2 next = min(corner + 1.0, last);
    vec4 top = mix(texelAt(corner), texelAt(vec2(next.x, corner.y)), along.x);
    vec4 bottom = mix(texelAt(vec2(corner.x, next.y)), texelAt(next), along.x);
    return mix(top, bottom, along.y);
}
