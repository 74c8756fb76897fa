#version 120
// Coverage of a shape of strokes, filtered as the scaled pictures are, in all channels for a white mark, in red alone
// for the record light. Inputs: rectSize of this quad in texels, rectStart, its place in the shape's cell; scale, pixels of the
// shape's picture to a texel; reach, half the filter's size in those pixels; strokes and their number; isLight, 1 or 0.
varying vec2 rtPosition;
uniform vec2 rectSize;
uniform vec2 rectStart;
uniform vec2 scale;
uniform vec2 reach;
uniform int strokeCount;
uniform float isLight;

struct Stroke {
    vec4 ends;
    float radius;
};
uniform Stroke strokes[20];

const int kTaps = 8;
const float kThinnest = 96.0;  // about the thickness of a stroke

// Distance to the shape's edge, below 0 inside.
float outside(vec2 position) {
    float nearest = 1e9;
    for (int i = 0; i < strokeCount; ++i) {
        vec2 along = strokes[i].ends.zw - strokes[i].ends.xy;
        vec2 from = position - strokes[i].ends.xy;
        float share = clamp(dot(from, along) / max(dot(along, along), 1.0), 0.0, 1.0);
        nearest = min(nearest, length(from - share * along) - strokes[i].radius);
    }
    return nearest;
}

// A triangular filter. Away from edges one sample tells as much as all.
float coverage(vec2 position) {
    vec2 gap = reach * 2.0 / float(kTaps);
    float soft = min(0.5 * (gap.x + gap.y), kThinnest);
    float middle = outside(position);
    if (abs(middle) > length(reach) + soft) {
        return middle < 0.0 ? 1.0 : 0.0;
    }
    float sum = 0.0;
    float weights = 0.0;
    for (int row = 0; row < kTaps; ++row) {
        for (int column = 0; column < kTaps; ++column) {
            vec2 tap = (vec2(float(column), float(row)) + 0.5) * 2.0 / float(kTaps) - 1.0;
            float weight = (1.0 - abs(tap.x)) * (1.0 - abs(tap.y));
            sum += weight * clamp(0.5 - outside(position + tap * reach) / soft, 0.0, 1.0);
            weights += weight;
        }
    }
    return sum / weights;
}

void main() {
    vec2 texel = rectStart + floor(rtPosition * rectSize) + 0.5;
    gl_FragColor = coverage(texel * scale) * vec4(1.0, vec3(1.0 - isLight));
}
