#version 120
// A window on the endless pattern. Inputs: Texture0, one period of it; windowSize, the texels of the target; fShift,
// the position of the window's first texel in the pattern; texelStep, from one texel to the next.
#include "pieces/stage0.glsl"
uniform vec2 windowSize;
uniform vec2 fShift;
uniform float texelStep;

void main() {
    vec2 here = floor(normPosition() * (windowSize - 1.0) + 0.5);
    vec2 period = lastTexel() + 1.0;
    vec2 position = here * texelStep + fShift;
    position -= floor(position / period) * period;
    vec2 corner = min(floor(position), lastTexel());
    vec2 along = position - corner;
    vec2 next = mod(corner + 1.5, period) - 0.5;
    vec4 upper = mix(texelAt(corner), texelAt(vec2(next.x, corner.y)), along.x);
    vec4 lower = mix(texelAt(vec2(corner.x, next.y)), texelAt(next), along.x);
    gl_FragColor = mix(upper, lower, along.y);
}
