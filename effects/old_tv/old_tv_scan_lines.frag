#version 120
// Darkens rows by a sine, which begins at the picture's bottom. Inputs: Texture0; fIntensity; fResolution, 0..1 from
// fLenMin to fLenMax (turns of the sine over the picture, times 2 pi); nSizeY, its rows.
#include "pieces/stage0.glsl"
uniform float fIntensity;
uniform float fResolution;
uniform int nSizeY;
uniform float fLenMin;
uniform float fLenMax;

void main() {
    vec2 here = texelHere();
    vec4 pixel = texelAt(here);
    float turn = (fLenMin + (fLenMax - fLenMin) * fResolution) / float(nSizeY);
    float light = (sin(turn * (float(nSizeY) - 1.0 - here.y)) + 1.0) / 2.0;
    gl_FragColor = vec4(pixel.rgb * ((1.0 - light) * (1.0 - fIntensity) + light), pixel.a);
}
