#version 120
// The picture over a plain colour. Inputs: Texture0; Color, straight alpha.
#include "pieces/stage0.glsl"
#include "pieces/alpha_over.glsl"
uniform vec4 Color;

void main() {
    gl_FragColor = straightOver(texelAt(texelHere()), Color);
}
