#version 120
// A copy of the picture's brightness shows through wherever it is brighter. Inputs: Texture0; fGhosting, 0..0.5; nSizeX
// and nSizeY, the picture's size.
#include "pieces/stage0.glsl"
uniform float fGhosting;
uniform int nSizeX;
uniform int nSizeY;

const vec3 kLuma = vec3(0.299, 0.587, 0.114);

void main() {
    vec2 here = texelHere();
    vec4 pixel = texelAt(here);
    float shift = floor(fGhosting * 0.5 * float(nSizeY));
    vec4 shifted = texelAt(vec2(mod(here.x - shift + 0.5, float(nSizeX)) - 0.5, here.y));
    float y = max(dot(pixel.rgb, kLuma), 0.8 * dot(shifted.rgb, kLuma));
    float u = dot(pixel.rgb, vec3(-0.14713, -0.28886, 0.436));
    float v = dot(pixel.rgb, vec3(0.615, -0.51499, -0.10001));
    vec3 color = vec3(y + 1.13983 * v, y - 0.39465 * u - 0.5806 * v, y + 2.03211 * u);
    gl_FragColor = vec4(clamp(color, 0.0, 1.0), pixel.a);
}
