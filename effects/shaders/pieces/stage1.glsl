#include "stage.glsl"
// Inputs: Texture1_texture and its place in the allocation.
uniform sampler2D Texture1_texture;
uniform TextureStage Texture1;

vec4 texelHere1() {
    return texture2D(Texture1_texture, normPosition() * Texture1.vScale + Texture1.vShift);
}
