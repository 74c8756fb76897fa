#pragma once

// Drawing by signed distances: a shape is a function that tells colour and coverage at a point, evaluated once a pixel.
// Points are in units of the design's height, the origin in the middle of the frame, y down; the design is 16:9 and
// fits into any frame.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <vector>

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

/// Signed distances, negative inside.
inline float circle(Vec p, Vec center, float radius) {
    return length(p - center) - radius;
}
/// Close to the distance near the edge, which is where it counts.
inline float ellipse(Vec p, Vec center, Vec radii) {
    const Vec q = {(p.x - center.x) / radii.x, (p.y - center.y) / radii.y};
    const Vec gradient = {q.x / radii.x, q.y / radii.y};
    const float k = length(q);
    return k * (k - 1) / std::max(length(gradient), 1e-6F);
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
/// Union of two shapes whose joint is rounded over `k`.
inline float smoothUnion(float a, float b, float k) {
    const float h = std::max(k - std::abs(a - b), 0.0F) / k;
    return std::min(a, b) - h * h * k * 0.25F;
}

/// Random values 0..1 of a lattice, the same everywhere and always.
inline float latticeNoise(int x, int y) {
    std::uint32_t h = static_cast<std::uint32_t>(x) * 374761393U + static_cast<std::uint32_t>(y) * 668265263U;
    h = (h ^ (h >> 13)) * 1274126177U;
    return static_cast<float>((h ^ (h >> 16)) & 0xFFFFFFU) / 16777215.0F;
}
/// The same, smooth between the lattice's points.
inline float smoothNoise(Vec p) {
    const float fx = std::floor(p.x);
    const float fy = std::floor(p.y);
    const int x = static_cast<int>(fx);
    const int y = static_cast<int>(fy);
    const float u = smooth(0, 1, p.x - fx);
    const float v = smooth(0, 1, p.y - fy);
    const float top = std::lerp(latticeNoise(x, y), latticeNoise(x + 1, y), u);
    const float bottom = std::lerp(latticeNoise(x, y + 1), latticeNoise(x + 1, y + 1), u);
    return std::lerp(top, bottom, v);
}
inline float fractalNoise(Vec p, int octaves) {
    float sum = 0;
    float weight = 0.5F;
    for (int i = 0; i < octaves; i++, weight *= 0.5F) {
        sum += weight * smoothNoise(p);
        p = {p.x * 2.03F + 17.0F, p.y * 2.03F + 5.0F};
    }
    return sum / (1 - weight * 2);
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

    /// Paints `shape(point) -> Paint` over the pixels of a box.
    template <class Shape>
    void draw(Box box, const Shape& shape) {
        drawBehind(box, nullptr, shape);
    }
    /// The same behind what covers each pixel by `cover`; null means nothing.
    template <class Shape>
    void drawBehind(Box box, const float* cover, const Shape& shape) {
        const int left = toPixel(box.left, m_width, -1);
        const int right = toPixel(box.right, m_width, 2);
        const int bottom = toPixel(box.bottom, m_height, 2);
        for (int y = toPixel(box.top, m_height, -1); y < bottom; y++) {
            float* pixels = row(y);
            for (int x = left; x < right; x++) {
                const Paint paint = shape(pointAt(x, y));
                const float alpha = cover == nullptr ? paint.alpha : paint.alpha * (1 - cover[index(x, y)]);
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
