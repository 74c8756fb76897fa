#version 120
// A rectangle of the source, stretched over the target. Inputs: Texture0 the source, SwapChannels; regionOrigin, its
// first texel; regionSize and targetSize in texels.
#include "pieces/linear_sampling.glsl"
#include "pieces/swizzle.glsl"
uniform vec2 regionOrigin;
uniform vec2 regionSize;
uniform vec2 targetSize;

void main() {
    vec2 here = floor(normPosition() * (targetSize - 1.0) + 0.5);
    vec2 position = here * regionSize / targetSize + regionOrigin;
    gl_FragColor = plainOrder(linearTexel(position, regionOrigin, regionOrigin + regionSize - 1.0));
}
