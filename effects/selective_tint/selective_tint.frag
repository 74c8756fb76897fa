#version 120
// A tint in red, green and blue, and in alpha how much of it a pixel takes. Inputs: Texture0 the source, SwapChannels;
// colorGrad, the tint's red, green and blue; fBlend, its share; fMaskStrength, how strictly only colours like it are
// affected; fMaskCuttof and fFadeRange, where and over what chroma difference that begins; fMaskVal1, which softens the
// chroma of greys.
#include "pieces/stage0.glsl"
#include "pieces/swizzle.glsl"
uniform vec3 colorGrad;
uniform float fBlend;
uniform float fMaskStrength;
uniform float fMaskCuttof;
uniform float fFadeRange;
uniform float fMaskVal1;

vec2 softenedChroma(vec3 color) {
    vec2 chroma = vec2(0.564, 0.713) * (color.br - dot(color, vec3(0.299, 0.587, 0.114)));
    return chroma / (length(chroma) + fMaskVal1);
}

void main() {
    vec3 source = plainOrder(texelAt(texelHere())).rgb;
    float apart = distance(softenedChroma(source), softenedChroma(colorGrad));
    float tone = 1.0 - fMaskStrength * smoothstep(fMaskCuttof, fMaskCuttof + fFadeRange, apart);
    gl_FragColor = vec4(colorGrad, fBlend * tone);
}
