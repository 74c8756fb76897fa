#include "stage.glsl"
// Inputs: Texture0_texture and its place in the allocation.
uniform sampler2D Texture0_texture;
uniform TextureStage Texture0;

// Largest texel position in each direction.
vec2 lastTexel() {
    return Texture0.vNORM2TEXi_Scale;
}

// Texel position under this fragment.
vec2 texelHere() {
    return floor(normPosition() * Texture0.vNORM2TEXi_Scale + 0.5);
}

// A whole texel position inside the picture.
vec4 texelAt(vec2 texel) {
    return texture2D(Texture0_texture, texel * Texture0.vScaleTEXi + Texture0.vShiftTEXi);
}

// Any texel position; the edges repeat outwards.
vec4 clampedTexelAt(vec2 texel) {
    return texelAt(clamp(texel, vec2(0.0), lastTexel()));
}
