#version 120
// Mean of alpha along one axis; outside the picture nothing counts. Inputs: Texture0; size, taps of the mean; axis,
// (1, 0) or (0, 1); fTreshold: below it the result is 0; SwapChannelsSrc0, 1 where the channels are in the other order.
#include "pieces/stage0.glsl"
#include "pieces/channel_order.glsl"
uniform int size;
uniform vec2 axis;
uniform float fTreshold;
uniform int SwapChannelsSrc0;

void main() {
    vec2 at = texelHere() - axis * float(size / 2);
    vec2 last = lastTexel();
    float sum = 0.0;
    for (int i = 0; i < size; ++i) {
        if (all(greaterThanEqual(at, vec2(-0.5))) && all(lessThanEqual(at, last + 0.5))) {
            sum += ordered(SwapChannelsSrc0, texelAt(at)).a;
        }
        at += axis;
    }
    float mean = sum / float(size);
    gl_FragColor = vec4(mean < fTreshold ? 0.0 : mean);
}
