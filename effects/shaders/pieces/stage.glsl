// How the render target maps to a texture. Each program uses those members that it needs.
varying vec2 rtPosition;
uniform vec2 vRT2NORM_Scale;
uniform vec2 vRT2NORM_Shift;

struct TextureStage {
    vec2 vScale;  // from 0..1 between the first and the last texel's centre to the allocation
    vec2 vShift;
    vec2 vScaleTEXi;  // from texels to the allocation
    vec2 vShiftTEXi;
    vec2 vNORM2TEXi_Scale;  // texels from the first to the last centre
};

// 0..1 from the first to the last pixel's centre of the render target.
vec2 normPosition() {
    return rtPosition * vRT2NORM_Scale + vRT2NORM_Shift;
}
