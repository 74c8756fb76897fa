#version 120
// What a mask leaves free, painted in its colour on black. Inputs: Texture0 the mask in red; border, texels at each edge
// that repeat the one inside; color.
#include "pieces/stage0.glsl"
uniform float border;
uniform vec3 color;

void main() {
    float free = 1.0 - texelAt(clamp(texelHere(), vec2(border), lastTexel() - border)).r;
    gl_FragColor = vec4(color * max(free, 0.0), 1.0);
}
