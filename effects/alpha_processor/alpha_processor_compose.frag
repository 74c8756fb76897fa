#version 120
// The source with its new alpha. Inputs: Texture0 the source, SwapChannels; Texture1 the reshaped alpha; invert;
// multiply, 1 to multiply the colours by the alpha; testMask, 1 to show the alpha as an opaque grey picture.
#include "pieces/stage0.glsl"
#include "pieces/stage1.glsl"
#include "pieces/swizzle.glsl"
uniform int invert;
uniform int multiply;
uniform int testMask;

void main() {
    float alpha = texelHere1().a;
    alpha = invert == 1 ? 1.0 - alpha : alpha;
    vec3 color = plainOrder(texelAt(texelHere())).rgb;
    gl_FragColor = testMask == 1 ? vec4(vec3(alpha), 1.0) : vec4(color * (multiply == 1 ? alpha : 1.0), alpha);
}
