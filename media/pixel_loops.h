#pragma once

// Loops over the samples of pictures: between planes and interleaved samples, between depths, and over black.

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "media/media.h"

namespace lumiset::media {

template <class Sample>
constexpr Sample kOpaque = Sample(255);
template <>
inline constexpr float kOpaque<float> = 1.0F;

template <class Sample>
Sample* samples(Picture& picture, int y) {
    return reinterpret_cast<Sample*>(picture.row(y));
}
template <class Sample>
const Sample* samples(const Picture& picture, int y) {
    return reinterpret_cast<const Sample*>(picture.row(y));
}

/// The nearest level of 0..`levels` to a float sample; NaN is 0.
inline std::uint16_t quantize(float value, float levels) {
    return static_cast<std::uint16_t>(std::min(std::max(0.0F, value), 1.0F) * levels + 0.5F);
}

inline void toFloat(const Picture& from, Picture& to) {
    to.allocate(from.width, from.height, Depth::kFloat);
    for (int y = 0; y < from.height; y++) {
        const std::uint8_t* source = from.row(y);
        float* target = samples<float>(to, y);
        for (int i = 0; i < from.width * 4; i++) {
            target[i] = static_cast<float>(source[i]) / 255.0F;
        }
    }
}

inline void toEightBit(const Picture& from, Picture& to) {
    to.allocate(from.width, from.height, Depth::kEightBit);
    for (int y = 0; y < from.height; y++) {
        const float* source = samples<float>(from, y);
        std::uint8_t* target = to.row(y);
        for (int i = 0; i < from.width * 4; i++) {
            target[i] = static_cast<std::uint8_t>(quantize(source[i], 255.0F));
        }
    }
}

template <class Sample>
bool isOpaque(const Picture& picture) {
    for (int y = 0; y < picture.height; y++) {
        const Sample* row = samples<Sample>(picture, y);
        int transparent = 0;
        for (int x = 0; x < picture.width; x++) {
            transparent |= static_cast<int>(!(row[4 * x + 3] >= kOpaque<Sample>));
        }
        if (transparent != 0) {
            return false;
        }
    }
    return true;
}
inline bool isOpaque(const Picture& picture) {
    return picture.depth == Depth::kFloat ? isOpaque<float>(picture) : isOpaque<std::uint8_t>(picture);
}

inline std::uint8_t overBlack(std::uint8_t color, std::uint8_t alpha) {
    return static_cast<std::uint8_t>((color * alpha + 127) / 255);
}
inline float overBlack(float color, float alpha) {
    return color * alpha;
}

template <class Sample>
void blendOverBlack(const Picture& from, Picture& to) {
    to.allocate(from.width, from.height, from.depth);
    for (int y = 0; y < from.height; y++) {
        const Sample* source = samples<Sample>(from, y);
        Sample* target = samples<Sample>(to, y);
        for (int x = 0; x < from.width; x++) {
            const Sample alpha = source[4 * x + 3];
            for (int c = 0; c < 3; c++) {
                target[4 * x + c] = overBlack(source[4 * x + c], alpha);
            }
            target[4 * x + 3] = kOpaque<Sample>;
        }
    }
}

/// One row of the libraries' planar RGB (green, blue, red, and alpha or null) to interleaved samples.
template <class Sample>
void interleaveRow(const std::uint8_t* const planes[4], Sample* target, int width) {
    const Sample* green = reinterpret_cast<const Sample*>(planes[0]);
    const Sample* blue = reinterpret_cast<const Sample*>(planes[1]);
    const Sample* red = reinterpret_cast<const Sample*>(planes[2]);
    const Sample* alpha = reinterpret_cast<const Sample*>(planes[3]);
    const auto clean = [](Sample value) { return std::min(std::max(Sample(0), value), kOpaque<Sample>); };
    if (alpha == nullptr) {
        for (int x = 0; x < width; x++) {
            target[4 * x] = clean(blue[x]);
            target[4 * x + 1] = clean(green[x]);
            target[4 * x + 2] = clean(red[x]);
            target[4 * x + 3] = kOpaque<Sample>;
        }
    } else {
        for (int x = 0; x < width; x++) {
            target[4 * x] = clean(blue[x]);
            target[4 * x + 1] = clean(green[x]);
            target[4 * x + 2] = clean(red[x]);
            target[4 * x + 3] = clean(alpha[x]);
        }
    }
}

inline void splitRow(const float* source, std::uint8_t* const planes[4], int width) {
    float* green = reinterpret_cast<float*>(planes[0]);
    float* blue = reinterpret_cast<float*>(planes[1]);
    float* red = reinterpret_cast<float*>(planes[2]);
    float* alpha = reinterpret_cast<float*>(planes[3]);
    const auto clean = [](float value) { return std::min(std::max(0.0F, value), 1.0F); };
    for (int x = 0; x < width; x++) {
        blue[x] = clean(source[4 * x]);
        green[x] = clean(source[4 * x + 1]);
        red[x] = clean(source[4 * x + 2]);
        alpha[x] = clean(source[4 * x + 3]);
    }
}

}  // namespace lumiset::media
