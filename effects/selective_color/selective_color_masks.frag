#version 120
// What two masks leave free, painted in their colours on black. Inputs: Texture0 the masks in red and green; border,
// texels at each edge that repeat the one inside; color1 and color2.
#include "pieces/stage0.glsl"
uniform float border;
uniform vec3 color1;
uniform vec3 color2;

void main() {
    vec2 free = 1.0 - texelAt(clamp(texelHere(), vec2(border), lastTexel() - border)).rg;
    float total = free.r + free.g;
    float share = total > 0.0 ? free.r / total : 0.0;
    gl_FragColor = vec4(mix(color2, color1, share) * max(max(free.r, free.g), 0.0), 1.0);
}
