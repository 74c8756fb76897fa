#version 120
// A strip of rows, turned left round its ends. Inputs: Texture0; nXSize, by how many pixels; stripTop and stripRows.
#include "pieces/stage0.glsl"
uniform int nXSize;
uniform float stripTop;
uniform float stripRows;

void main() {
    float width = lastTexel().x + 1.0;
    vec2 here = floor(vec2(rtPosition.x * width, stripTop + rtPosition.y * stripRows));
    gl_FragColor = texelAt(vec2(mod(here.x + float(nXSize) + 0.5, width) - 0.5, here.y));
}
