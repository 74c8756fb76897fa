#version 120
// A picture with another alpha. Inputs: Texture0 the picture, Texture1 the alpha.
#include "pieces/stage0.glsl"
#include "pieces/stage1.glsl"

void main() {
    gl_FragColor = vec4(texelAt(texelHere()).rgb, texelHere1().a);
}
