#version 120
// The source over the band. Inputs: Texture0 the source, SwapChannels; Texture1 the grown and softened shape;
// colors, red green and blue of the band; opacity.
#include "pieces/stage0.glsl"
#include "pieces/stage1.glsl"
#include "pieces/swizzle.glsl"
#include "pieces/alpha_over.glsl"
uniform vec3 colors;
uniform float opacity;

void main() {
    vec4 band = vec4(colors, texelHere1().a * opacity);
    gl_FragColor = straightOver(plainOrder(texelAt(texelHere())), band);
}
