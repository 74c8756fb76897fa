#version 120
// Black and white in a coloured light. Inputs: Texture0 the source, SwapChannels; tint, what red, green and blue are
// multiplied with.
#include "pieces/stage0.glsl"
#include "pieces/swizzle.glsl"
uniform vec3 tint;

void main() {
    vec4 source = plainOrder(texelAt(texelHere()));
    gl_FragColor = vec4(tint * dot(source.rgb, vec3(0.299, 0.587, 0.114)), source.a);
}
