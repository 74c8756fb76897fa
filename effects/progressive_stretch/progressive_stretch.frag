#version 120
// Moves columns of the uniformly stretched picture: the middle keeps its proportions, the sides stretch.
// Inputs: Texture0 the stretched picture; uXSize its columns; fStretch and fCrop, 0..1.
#include "pieces/stage0.glsl"
uniform float uXSize;
uniform float fStretch;
uniform float fCrop;

float curve(float x, float share) {
    if (share < 0.0001) {
        return x;
    }
    float k = 1.0 - fStretch;
    float e = 1.0 - share;
    float f = k * share + e;
    float q = x / e * f * (x - 1.0) / (e - 1.0) + x * (x - e) / (1.0 - e);
    float v = x <= e ? (1.0 - x * x) * ((x / e - x) * k + x) + q * x * x : q;
    return clamp(v, 0.0, 1.0);
}

void main() {
    float middle = floor(uXSize * 0.5);
    float cropped = floor(uXSize - fCrop * 0.25 * uXSize);
    float left = floor((uXSize - cropped) * 0.5);
    float side = (uXSize - uXSize * 0.75) * 0.5 - left;
    side = sign(side) * floor(abs(side));
    vec2 here = texelHere();
    float moved = curve(abs(here.x - middle) / middle, side / middle) * middle;
    float column = clamp(here.x > middle ? middle + moved : middle - moved, 0.0, uXSize - 2.0);
    float first = floor(column);
    gl_FragColor = mix(texelAt(vec2(first, here.y)), texelAt(vec2(first + 1.0, here.y)), column - first);
}
