#version 120
// The shape that the outline follows: the source's alpha. Inputs: Texture0 the source, SwapChannels.
#include "pieces/stage0.glsl"
#include "pieces/swizzle.glsl"

void main() {
    gl_FragColor = vec4(plainOrder(texelAt(texelHere())).a);
}
