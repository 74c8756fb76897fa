#version 120
// The bright band. Inputs: Texture0; shiftVal, its first row; nLen, its rows, which wrap at the picture's end.
#include "pieces/stage0.glsl"
uniform float shiftVal;
uniform int nLen;

void main() {
    vec2 here = texelHere();
    vec4 pixel = texelAt(here);
    float rows = lastTexel().y + 1.0;
    float along = mod(here.y - shiftVal + 0.5, rows) - 0.5;
    float gain = 0.0;
    if (along < float(nLen) - 0.25) {
        float shade = (sin(6.28 * along / float(nLen) - 4.71) + 1.0) / 2.0;
        gain = sqrt(max(1.0 - shade, 0.0));
    }
    gl_FragColor = vec4(min(pixel.rgb + pixel.rgb * gain, 1.0), pixel.a);
}
