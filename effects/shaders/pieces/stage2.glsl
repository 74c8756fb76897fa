#include "stage.glsl"
// Inputs: Texture2_texture and its place in the allocation.
uniform sampler2D Texture2_texture;
uniform TextureStage Texture2;

vec4 texelHere2() {
    return texture2D(Texture2_texture, normPosition() * Texture2.vScale + Texture2.vShift);
}
