#include <array>

#include "media/scene_parts.h"

namespace lumiset::media {
namespace {

constexpr Vec kSun = {-0.335F, -0.185F};

float mountainLine(float x) {
    const float coarse = smoothNoise({x * 3.1F + 20, 3});
    const float fine = smoothNoise({x * 11.0F + 4, 9});
    return 0.135F - 0.25F * coarse - 0.045F * fine;
}
float hillLine(float x) {
    return 0.13F + 0.045F * std::sin(x * 3.3F + 0.6F) + 0.02F * std::sin(x * 7.1F);
}
float meadowLine(float x) {
    return 0.235F + 0.03F * std::sin(x * 2.3F + 2.4F);
}

// Light from the sun's side on a round mass of leaves, with leaves of their own.
Paint foliage(const SceneCanvas& canvas, Vec p, const Vec* centers, const float* radii, int count, float leaf) {
    float d = 1;
    float light = 0;
    float weights = 0;
    for (int i = 0; i < count; i++) {
        const float di = circle(p, centers[i], radii[i]);
        const Vec n = (p - centers[i]) * (1 / radii[i]);
        const float weight = std::exp(-di * 40);
        light += weight * (0.5F + 0.35F * n.x - 0.45F * n.y);
        weights += weight;
        d = smoothUnion(d, di, 0.02F);
    }
    light /= weights;
    const float leaves = fractalNoise(p * leaf, 3);
    d += (leaves - 0.5F) * 0.022F;
    const float tone = clamp01(light * 0.75F + (leaves - 0.5F) * 1.3F + 0.1F);
    Color color = mix({0.07F, 0.22F, 0.08F}, {0.33F, 0.56F, 0.14F}, smooth(0, 0.6F, tone));
    color = mix(color, {0.72F, 0.80F, 0.26F}, smooth(0.62F, 1.0F, tone));
    return {color, canvas.coverage(d)};
}

void drawHouse(SceneCanvas& canvas) {
    const Vec at = {-0.235F, 0.125F};
    canvas.draw({-0.36F, 0.0F, -0.11F, 0.2F}, [&](Vec p) -> Paint {
        const Vec q = p - at;
        const float wall = roundedBox(q, {0, 0.02F}, {0.062F, 0.042F}, 0.002F);
        const float roof = std::max(-q.y - 0.085F + std::abs(q.x) * 0.82F, q.y + 0.018F);
        const float chimney = roundedBox(q, {0.036F, -0.066F}, {0.009F, 0.024F}, 0.001F);
        Paint paint = {{0.93F, 0.88F, 0.78F}, canvas.coverage(wall)};
        paint.color = mix(paint.color, {0.78F, 0.72F, 0.64F}, smooth(-0.01F, 0.06F, q.x));
        const float door = canvas.coverage(roundedBox(q, {0.026F, 0.036F}, {0.011F, 0.026F}, 0.002F));
        paint.color = mix(paint.color, {0.36F, 0.20F, 0.12F}, door);
        for (const float x : {-0.036F, -0.008F}) {
            const Vec center = {x, 0.018F};
            const float frame = roundedBox(q, center, {0.0105F, 0.0125F}, 0.001F);
            paint.color = mix(paint.color, {0.25F, 0.35F, 0.48F}, canvas.coverage(frame));
            const float bars = std::min(std::abs(q.x - center.x), std::abs(q.y - center.y));
            paint.color =
                mix(paint.color, {0.97F, 0.96F, 0.92F}, canvas.coverage(frame) * canvas.lineCoverage(bars, 0.0012F));
        }
        const float brick = canvas.coverage(chimney);
        paint = {mix(paint.color, {0.55F, 0.24F, 0.17F}, brick), std::max(paint.alpha, brick)};
        const float tile = 0.5F + 0.5F * std::sin(q.y * 620);
        const Color tiles = mix({0.66F, 0.16F, 0.11F}, {0.82F, 0.27F, 0.17F}, tile);
        const float roofed = canvas.coverage(roof * 0.77F);
        return {mix(paint.color, tiles, roofed), std::max(paint.alpha, roofed)};
    });
}

void drawTree(SceneCanvas& canvas) {
    canvas.draw({-0.70F, -0.02F, -0.46F, 0.34F}, [&](Vec p) -> Paint {
        const float bend = 0.012F * std::sin(p.y * 14);
        const float width = 0.016F + 0.05F * smooth(0.2F, 0.34F, p.y) * smooth(0.2F, 0.34F, p.y);
        float d = std::max(std::abs(p.x + 0.585F - bend) - width, std::max(0.0F - p.y, p.y - 0.318F));
        d = std::min(d, segment(p, {-0.585F, 0.10F}, {-0.655F, 0.02F}, 0.008F));
        d = std::min(d, segment(p, {-0.585F, 0.12F}, {-0.515F, 0.035F}, 0.008F));
        const float bark = fractalNoise({p.x * 130, p.y * 24}, 3);
        const float side = clamp01(0.5F + (p.x + 0.585F - bend) / (2.6F * width));
        return {mix({0.20F, 0.12F, 0.07F}, {0.56F, 0.40F, 0.25F}, clamp01(side * 0.8F + (bark - 0.5F))),
                canvas.coverage(d)};
    });
    static constexpr std::array<Vec, 9> kCenters = {
        Vec{-0.585F, -0.105F}, Vec{-0.675F, -0.045F}, Vec{-0.500F, -0.050F},
        Vec{-0.635F, -0.135F}, Vec{-0.535F, -0.140F}, Vec{-0.590F, -0.025F},
        Vec{-0.705F, 0.015F},  Vec{-0.470F, 0.015F},  Vec{-0.580F, -0.190F}};
    static constexpr std::array<float, 9> kRadii = {0.11F, 0.085F, 0.085F, 0.075F, 0.075F,
                                                    0.09F, 0.055F, 0.055F, 0.06F};
    canvas.draw({-0.80F, -0.28F, -0.38F, 0.12F}, [&](Vec p) {
        return foliage(canvas, p, kCenters.data(), kRadii.data(), static_cast<int>(kCenters.size()), 52);
    });
}

}  // namespace

void drawSky(SceneCanvas& canvas) {
    canvas.draw(canvas.everywhere(), [&](Vec p) -> Paint {
        const float t = clamp01((p.y + 0.5F) / 0.62F);
        Color color = mix({0.16F, 0.42F, 0.80F}, {0.55F, 0.78F, 0.95F}, smooth(0, 0.75F, t));
        color = mix(color, {1.0F, 0.90F, 0.74F}, smooth(0.55F, 1.05F, t) * 0.9F);
        const float d = length(p - kSun);
        color = mix(color, {1.0F, 0.95F, 0.80F}, 0.75F * std::exp(-d * 7.0F));
        color = mix(color, {1.0F, 0.985F, 0.90F}, canvas.coverage(d - 0.055F));
        return {color, 1};
    });
}

void drawLandscape(SceneCanvas& canvas) {
    const Box ground = {-canvas.half().x, -0.18F, canvas.half().x, canvas.half().y};
    canvas.draw(ground, [&](Vec p) -> Paint {
        const float height = p.y - mountainLine(p.x);
        const float slope = (mountainLine(p.x + 0.01F) - mountainLine(p.x - 0.01F)) * 50;
        const float rock = fractalNoise({p.x * 40, p.y * 60}, 3);
        const float light = clamp01(0.55F - slope * 0.35F + (rock - 0.5F) * 0.9F);
        Color color = mix({0.33F, 0.40F, 0.56F}, {0.66F, 0.68F, 0.78F}, light);
        const float snow = smooth(0.028F, 0.006F, height + (rock - 0.5F) * 0.04F) * smooth(0.03F, -0.02F, p.y);
        color = mix(color, {0.97F, 0.98F, 1.0F}, snow);
        color = mix(color, {0.78F, 0.82F, 0.86F}, smooth(0.0F, 0.14F, p.y) * 0.55F);  // haze
        return {color, canvas.coverage(-height)};
    });
    canvas.draw(ground, [&](Vec p) -> Paint {
        const float height = p.y - hillLine(p.x);
        const float woods = fractalNoise({p.x * 34, p.y * 62}, 3);
        Color color = mix({0.20F, 0.40F, 0.22F}, {0.50F, 0.66F, 0.30F}, clamp01(woods * 1.1F - height * 1.2F));
        const float rows = 0.5F + 0.5F * std::sin((p.y * 1.0F + p.x * 0.35F) * 320);
        color = mix(color, {0.80F, 0.74F, 0.36F},
                    smooth(0.15F, 0.3F, p.x) * smooth(0.02F, 0.035F, height) * (0.55F + 0.35F * rows));
        return {color, canvas.coverage(-height + (woods - 0.5F) * 0.012F)};
    });
    drawHouse(canvas);
    canvas.draw(ground, [&](Vec p) -> Paint {
        const float height = p.y - meadowLine(p.x);
        const float depth = 1 / (0.35F + std::max(height, 0.0F) * 4);
        const float grass = fractalNoise({p.x * 150 * depth, p.y * 46 * depth}, 3);
        Color color = mix({0.16F, 0.36F, 0.08F}, {0.48F, 0.68F, 0.18F}, smooth(0.2F, 0.8F, grass));
        color = mix(color, {0.10F, 0.24F, 0.06F}, smooth(0.06F, 0.22F, height) * 0.5F);
        // Flowers stand one to a cell of a lattice, where chance wants one.
        const Vec cell = {p.x * 42, p.y * 60};
        const int cx = static_cast<int>(std::floor(cell.x));
        const int cy = static_cast<int>(std::floor(cell.y));
        if (latticeNoise(cx, cy) > 0.72F) {
            const Vec center = {(static_cast<float>(cx) + 0.3F + 0.4F * latticeNoise(cx + 71, cy)) / 42,
                                (static_cast<float>(cy) + 0.3F + 0.4F * latticeNoise(cx, cy + 37)) / 60};
            const float kind = latticeNoise(cx + 13, cy + 5);
            const Color petals = kind < 0.35F   ? Color{0.95F, 0.93F, 0.96F}
                                 : kind < 0.65F ? Color{0.96F, 0.80F, 0.12F}
                                                : Color{0.86F, 0.16F, 0.30F};
            const float flower = canvas.coverage(circle(p, center, 0.0042F));
            color = mix(color, petals, flower * smooth(0.015F, 0.03F, height));
        }
        return {color, canvas.coverage(-height + (grass - 0.5F) * 0.006F)};
    });
    drawTree(canvas);
}

void drawClouds(SceneCanvas& canvas, double seconds, const float* cover) {
    struct Cloud {
        float x, y, size, speed;
    };
    static constexpr Cloud kClouds[] = {
        {-0.13F, -0.20F, 0.85F, 0.030F}, {0.33F, -0.22F, 0.72F, 0.022F}, {0.08F, -0.105F, 0.50F, 0.016F}};
    static constexpr Vec kPuffs[] = {{-0.115F, 0.010F}, {-0.060F, -0.022F}, {0.005F, -0.040F},
                                     {0.065F, -0.015F}, {0.118F, 0.012F},   {0.020F, 0.008F}};
    static constexpr float kRadii[] = {0.034F, 0.048F, 0.058F, 0.046F, 0.030F, 0.050F};
    for (const Cloud& cloud : kClouds) {
        // Clouds leave on the right and come back on the left.
        const double span = 2.0 * static_cast<double>(canvas.half().x) + 0.5;
        const double start = static_cast<double>(cloud.x + canvas.half().x) + 0.25;
        const double along = std::fmod(start + static_cast<double>(cloud.speed) * seconds, span);
        const Vec center = {static_cast<float>(along) - canvas.half().x - 0.25F, cloud.y};
        const float s = cloud.size;
        canvas.drawBehind({center.x - 0.19F * s, center.y - 0.13F * s, center.x + 0.19F * s, center.y + 0.075F * s},
                          cover, [&](Vec p) -> Paint {
                              const Vec q = (p - center) * (1 / s);
                              float d = 1;
                              for (int i = 0; i < 6; i++) {
                                  d = smoothUnion(d, circle(q, kPuffs[i], kRadii[i]), 0.03F);
                              }
                              d = std::max(d, q.y - 0.045F + 0.02F * smooth(0, 0.03F, d + 0.03F));
                              if (d > 0.02F) {
                                  return {};
                              }
                              const float wisps = fractalNoise(q * 38, 2);
                              const float alpha = smooth(0.014F, -0.02F, d + (wisps - 0.5F) * 0.018F);
                              const float shade = smooth(-0.05F, 0.045F, q.y + (wisps - 0.5F) * 0.03F);
                              return {mix({1, 1, 1}, {0.70F, 0.76F, 0.86F}, shade), alpha * 0.96F};
                          });
    }
}

}  // namespace lumiset::media
