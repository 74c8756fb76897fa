#version 120
// One picture inside a mask and another outside, with the alpha of the first. Inputs: Texture0 the picture where the
// mask is 0, whose order SwapChannels tells too; Texture1 the one where it is 1; Texture2 the mask; SwapChannelsSrc0 to
// SwapChannelsSrc2, 1 where the texture of that number has its channels in the other order.
#include "pieces/stage0.glsl"
#include "pieces/stage1.glsl"
#include "pieces/stage2.glsl"
#include "pieces/swizzle.glsl"
uniform int SwapChannelsSrc0;
uniform int SwapChannelsSrc1;
uniform int SwapChannelsSrc2;

void main() {
    vec4 here = texelAt(texelHere());
    vec3 inside = ordered(SwapChannelsSrc0, here).rgb;
    vec3 outside = ordered(SwapChannelsSrc1, texelHere1()).rgb;
    float mask = ordered(SwapChannelsSrc2, texelHere2()).a;
    gl_FragColor = vec4(mix(inside, outside, mask), plainOrder(here).a);
}
