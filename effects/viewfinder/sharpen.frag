#version 120
// Sharpens colours by their difference from the eight neighbours. Input: Texture0.
#include "pieces/stage0.glsl"

void main() {
    vec2 here = texelHere();
    vec4 pixel = texelAt(here);
    vec3 sum = vec3(0.0);
    for (float y = -1.0; y <= 1.0; y += 1.0) {
        for (float x = -1.0; x <= 1.0; x += 1.0) {
            sum += clampedTexelAt(here + vec2(x, y)).rgb;
        }
    }
    gl_FragColor = vec4(2.0 * pixel.rgb - (sum - pixel.rgb) / 8.0, pixel.a);
}
