#version 120
// The source in the plain channel order. Inputs: Texture0, SwapChannels.
#include "pieces/stage0.glsl"
#include "pieces/swizzle.glsl"

void main() {
    gl_FragColor = plainOrder(texelAt(texelHere()));
}
