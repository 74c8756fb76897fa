#include "stage.glsl"
// Inputs: Texture3_texture and its place in the allocation.
uniform sampler2D Texture3_texture;
uniform TextureStage Texture3;

vec4 texelHere3() {
    return texture2D(Texture3_texture, normPosition() * Texture3.vScale + Texture3.vShift);
}
