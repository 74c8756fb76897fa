#version 120
// One picture inside a mask and another outside, with the alpha of the first. Inputs: Texture0 the picture where the
// mask is 0; Texture1 the one where it is 1; Texture2 the mask.
#include "pieces/stage0.glsl"
#include "pieces/stage1.glsl"
#include "pieces/stage2.glsl"

void main() {
    vec4 inside = texelAt(texelHere());
    gl_FragColor = vec4(mix(inside.rgb, texelHere1().rgb, texelHere2().a), inside.a);
}
