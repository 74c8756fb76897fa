#version 120
// A triangular filter along one axis. Inputs: Texture0; axis, (1, 0) or (0, 1); halfWidth of the triangle and its
// centre, from the fragment, in texels.
#include "pieces/stage0.glsl"
uniform vec2 axis;
uniform float halfWidth;
uniform float centre;

void main() {
    vec2 here = texelHere();
    vec4 sum = vec4(0.0);
    float total = 0.0;
    float reach = ceil(halfWidth);
    for (float k = -reach; k <= reach; k += 1.0) {
        float weight = max(halfWidth - abs(k - centre), 0.0);
        sum += clampedTexelAt(here + k * axis) * weight;
        total += weight;
    }
    gl_FragColor = sum / total;
}
