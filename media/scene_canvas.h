#pragma once

// The scene's frame: layers are put over it, and what is as fine as its pixels is drawn by signed distances, a function
// that tells colour and coverage at a point. Points are in units of the design's height, the origin in the middle of
// the frame, y down; the design is 16:9 and fits into any frame.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include "media/layer.h"

namespace lumiset::media {

struct Vec {
    float x = 0;
    float y = 0;
};
inline Vec operator+(Vec a, Vec b) {
    return {a.x + b.x, a.y + b.y};
}
inline Vec operator-(Vec a, Vec b) {
    return {a.x - b.x, a.y - b.y};
}
inline Vec operator*(Vec a, float s) {
    return {a.x * s, a.y * s};
}
inline float dot(Vec a, Vec b) {
    return a.x * b.x + a.y * b.y;
}
inline float length(Vec a) {
    return std::sqrt(dot(a, a));
}

struct Color {
    float r = 0;
    float g = 0;
    float b = 0;
};
inline Color mix(Color a, Color b, float t) {
    return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t};
}
inline Color operator*(Color a, float s) {
    return {a.r * s, a.g * s, a.b * s};
}
inline float clamp01(float v) {
    return std::min(std::max(0.0F, v), 1.0F);
}
inline float smooth(float from, float to, float v) {
    const float t = clamp01((v - from) / (to - from));
    return t * t * (3 - 2 * t);
}

struct Paint {
    Color color;
    float alpha = 0;
};

struct Box {
    float left, top, right, bottom;
};
/// The same in pixels from the frame's top left corner.
struct PixelBox {
    float left, top, right, bottom;
};

/// Signed distances, negative inside.
inline float circle(Vec p, Vec center, float radius) {
    return length(p - center) - radius;
}
inline float segment(Vec p, Vec a, Vec b, float radius) {
    const Vec pa = p - a;
    const Vec ba = b - a;
    const float t = clamp01(dot(pa, ba) / std::max(dot(ba, ba), 1e-12F));
    return length(pa - ba * t) - radius;
}
inline float roundedBox(Vec p, Vec center, Vec half, float radius) {
    const Vec q = {std::abs(p.x - center.x) - half.x + radius, std::abs(p.y - center.y) - half.y + radius};
    const Vec outside = {std::max(q.x, 0.0F), std::max(q.y, 0.0F)};
    return length(outside) + std::min(std::max(q.x, q.y), 0.0F) - radius;
}

/// A frame of premultiplied R, G, B, A.
class SceneCanvas {
public:
    SceneCanvas(int width, int height)
        : m_width(width),
          m_height(height),
          m_unit(std::min(static_cast<float>(height), static_cast<float>(width) * 9 / 16)),
          m_data(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4) {}

    int width() const { return m_width; }
    int height() const { return m_height; }
    float pixel() const { return 1 / m_unit; }  ///< size of a pixel in design units
    float unit() const { return m_unit; }
    Vec half() const {
        return {0.5F * static_cast<float>(m_width) / m_unit, 0.5F * static_cast<float>(m_height) / m_unit};
    }
    float* row(int y) { return m_data.data() + index(0, y) * 4; }
    const float* row(int y) const { return m_data.data() + index(0, y) * 4; }
    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x);
    }
    std::size_t size() const { return m_data.size() / 4; }
    void copyFrom(const SceneCanvas& other) { std::copy(other.m_data.begin(), other.m_data.end(), m_data.begin()); }

    /// How much of a pixel lies inside a shape.
    float coverage(float distance) const { return clamp01(0.5F - distance * m_unit); }
    /// How much of a pixel is covered by a line that may be thinner than it.
    float lineCoverage(float distanceToMiddle, float halfWidth) const {
        const float drawn = std::max(halfWidth, 0.5F * pixel());
        return coverage(distanceToMiddle - drawn) * (halfWidth / drawn);
    }

    /// Paints `shape(point) -> Paint` over the pixels of a box, behind what covers each pixel by `cover`; null means
    /// nothing.
    template <class Shape>
    void draw(Box box, const Shape& shape, const float* cover = nullptr) {
        const int left = toPixel(box.left, m_width, -1);
        const int right = toPixel(box.right, m_width, 2);
        const int bottom = toPixel(box.bottom, m_height, 2);
        for (int y = toPixel(box.top, m_height, -1); y < bottom; y++) {
            float* pixels = row(y);
            for (int x = left; x < right; x++) {
                const float shown = cover == nullptr ? 1 : 1 - cover[index(x, y)];
                if (!(shown > 0)) {
                    continue;
                }
                const Paint paint = shape(pointAt(x, y));
                const float alpha = paint.alpha * shown;
                if (alpha > 0) {
                    float* p = pixels + 4 * x;
                    p[0] += (paint.color.r - p[0]) * alpha;
                    p[1] += (paint.color.g - p[1]) * alpha;
                    p[2] += (paint.color.b - p[2]) * alpha;
                    p[3] += (1 - p[3]) * alpha;
                }
            }
        }
    }
    /// Draws `sample(x, y)`, premultiplied R, G, B, A at a place in pixels, over the pixels of a box.
    template <class Sample>
    void drawPixels(PixelBox box, const Sample& sample, const float* cover = nullptr) {
        const auto inside = [](float at, int size) {
            return static_cast<int>(std::clamp(at, 0.0F, static_cast<float>(size)));
        };
        const int right = inside(box.right + 1, m_width);
        const int bottom = inside(box.bottom + 1, m_height);
        for (int y = inside(box.top, m_height); y < bottom; y++) {
            for (int x = inside(box.left, m_width); x < right; x++) {
                const std::array<float, 4> over = sample(static_cast<float>(x) + 0.5F, static_cast<float>(y) + 0.5F);
                const float shown = cover != nullptr ? 1 - cover[index(x, y)] : 1;
                float* p = row(y) + 4 * x;
                for (int c = 0; c < 4; c++) {
                    p[c] = over[static_cast<std::size_t>(c)] * shown + p[c] * (1 - over[3] * shown);
                }
            }
        }
    }
    /// Puts a layer over the pixels, its top left corner at a pixel.
    void put(const Layer& layer, int left, int top) {
        const int bottom = std::min(top + layer.height, m_height);
        const int right = std::min(left + layer.width, m_width);
        for (int y = std::max(top, 0); y < bottom; y++) {
            for (int x = std::max(left, 0); x < right; x++) {
                const std::uint8_t* from = layer.pixel(x - left, y - top);
                float* to = row(y) + 4 * x;
                const float alpha = static_cast<float>(from[3]) / 255;
                for (int c = 0; c < 3; c++) {
                    to[c] += (static_cast<float>(from[c]) / 255 - to[c]) * alpha;
                }
                to[3] += (1 - to[3]) * alpha;
            }
        }
    }
    Vec pointAt(int x, int y) const {
        return {(static_cast<float>(x) + 0.5F - 0.5F * static_cast<float>(m_width)) / m_unit,
                (static_cast<float>(y) + 0.5F - 0.5F * static_cast<float>(m_height)) / m_unit};
    }
    Box everywhere() const { return {-half().x, -half().y, half().x, half().y}; }

private:
    int toPixel(float position, int size, int margin) const {
        const float pixel = position * m_unit + 0.5F * static_cast<float>(size);
        return static_cast<int>(
            std::clamp(std::floor(pixel) + static_cast<float>(margin), 0.0F, static_cast<float>(size)));
    }

    int m_width;
    int m_height;
    float m_unit;
    std::vector<float> m_data;
};

}  // namespace lumiset::media
