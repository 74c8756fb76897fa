#version 120
// The picture in two tones. Inputs: Texture0 the source, SwapChannels; shadows and highlights, what black and white
// become; amount, their share.
#include "pieces/stage0.glsl"
#include "pieces/swizzle.glsl"
uniform vec3 shadows;
uniform vec3 highlights;
uniform float amount;

void main() {
    vec4 source = plainOrder(texelAt(texelHere()));
    float luma = dot(source.rgb, vec3(0.299, 0.587, 0.114));
    gl_FragColor = vec4(mix(source.rgb, mix(shadows, highlights, luma), amount), source.a);
}
