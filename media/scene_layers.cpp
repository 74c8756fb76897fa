// Puts the scene's painted layers together. The numbers beside a layer say where it was painted, in the design's units.

#include <cmath>
#include <numbers>
#include <utility>

#include "media/scene_parts.h"

namespace lumiset::media {
namespace {

constexpr float kSmallUnit = 540;  // the design's height in pixels up to which the small layers are sharp

// Where frames that are taller than 16:9 look: between the house and the sun.
constexpr float kFocus = -0.22F;
constexpr Vec kSun = {-0.335F, -0.185F};

struct Cloud {
    float x, y, size, speed;
};
constexpr Cloud kClouds[] = {
    {-0.13F, -0.20F, 0.85F, 0.030F}, {0.33F, -0.22F, 0.72F, 0.022F}, {0.08F, -0.105F, 0.50F, 0.016F}};
constexpr Vec kCloudCorner = {-0.14352F / 0.85F, -0.09630F / 0.85F};  // from its middle, for a size of 1
constexpr Vec kCloudSize = {0.28333F / 0.85F, 0.13796F / 0.85F};

struct Balloon {
    float x, y, size;
    float swing, lift, period, phase;
    Color color;
};
constexpr Balloon kBalloons[] = {
    {-0.150F, -0.060F, 0.070F, 0.030F, 0.060F, 6.0F, 0.0F, {0.90F, 0.05F, 0.08F}},
    {0.060F, -0.170F, 0.052F, 0.040F, 0.050F, 5.0F, 0.3F, {1.00F, 0.78F, 0.02F}},
    {0.200F, 0.020F, 0.060F, 0.030F, 0.070F, 7.0F, 0.6F, {0.04F, 0.32F, 0.92F}},
    {-0.020F, 0.090F, 0.046F, 0.050F, 0.050F, 4.5F, 0.15F, {0.05F, 0.68F, 0.22F}},
    {0.760F, -0.230F, 0.075F, 0.070F, 0.090F, 8.0F, 0.5F, {0.86F, 0.05F, 0.70F}},
    {-0.790F, -0.300F, 0.060F, 0.055F, 0.080F, 6.5F, 0.8F, {0.98F, 0.42F, 0.02F}},
};
constexpr float kLargestBalloon = 0.075F;  // which is the one that is painted
constexpr Vec kBalloonCorner = {-0.06574F / kLargestBalloon, -0.08139F / kLargestBalloon};
constexpr Vec kBalloonSize = {0.13148F / kLargestBalloon, 0.38148F / kLargestBalloon};

Layer chosen(EmbeddedFile large, EmbeddedFile small, float unit) {
    return storedLayer(unit <= kSmallUnit ? small : large);
}

int rounded(float value) {
    return static_cast<int>(std::lround(value));
}

}  // namespace

Landscape::Landscape(const SceneCanvas& canvas)
    : unit(static_cast<float>(canvas.height())),
      ground(scaled(chosen(EmbeddedFile::kLandscape, EmbeddedFile::kLandscapeSmall, unit), unit * 16 / 9,
                    unit * 0.75545F)) {
    const float seen = 0.5F * static_cast<float>(canvas.width()) / unit;
    const float room = std::max(8.0F / 9 - seen, 0.0F);
    middle = 0.5F * static_cast<float>(canvas.width()) - std::max(kFocus, -room) * unit;
}

void drawSky(SceneCanvas& canvas, const Landscape& landscape, const float* cover) {
    const float scale = canvas.unit() / landscape.unit;
    const float shift = 0.5F * static_cast<float>(canvas.width()) - landscape.middle;
    const auto sky = [&](Vec at) -> Paint {
        const Vec p = {at.x * scale + shift / landscape.unit, at.y * scale};
        const float t = clamp01((p.y + 0.5F) / 0.62F);
        Color color = mix({0.16F, 0.42F, 0.80F}, {0.55F, 0.78F, 0.95F}, smooth(0, 0.75F, t));
        color = mix(color, {1.0F, 0.90F, 0.74F}, smooth(0.55F, 1.05F, t) * 0.9F);
        const float d = length(p - kSun);
        color = mix(color, {1.0F, 0.95F, 0.80F}, 0.75F * std::exp(-d * 7.0F));
        color = mix(color, {1.0F, 0.985F, 0.90F}, clamp01(0.5F - (d - 0.055F) * landscape.unit));
        return {color, 1};
    };
    canvas.draw(canvas.everywhere(), sky, cover);
}

void putGround(SceneCanvas& canvas, const Landscape& landscape) {
    const Layer& ground = landscape.ground;
    const int top = canvas.height() - ground.height;
    const int left = rounded(landscape.middle - 0.5F * static_cast<float>(ground.width));
    canvas.put(ground, left, top);
    if (left <= 0 && left + ground.width >= canvas.width()) {
        return;
    }
    const Layer turned = mirrored(ground);
    for (int i = 1; left - i * ground.width > -ground.width || left + i * ground.width < canvas.width(); i++) {
        const Layer& next = i % 2 != 0 ? turned : ground;
        canvas.put(next, left - i * ground.width, top);
        canvas.put(next, left + i * ground.width, top);
    }
}

MovingFigures::MovingFigures(const SceneCanvas& canvas, const Landscape& landscape)
    : m_unit(landscape.unit), m_middle(landscape.middle) {
    const Layer cloud = storedLayer(EmbeddedFile::kCloud);
    for (const Cloud& each : kClouds) {
        const float scale = each.size * m_unit;
        m_clouds.push_back(scaled(cloud, kCloudSize.x * scale, kCloudSize.y * scale));
    }
    Layer balloon = storedLayer(EmbeddedFile::kBalloon);
    if (const float enough = 2 * kLargestBalloon * canvas.unit();
        kBalloonSize.x * enough < static_cast<float>(balloon.width)) {
        balloon = scaled(balloon, kBalloonSize.x * enough, kBalloonSize.y * enough);  // and not large for each of them
    }
    for (const Balloon& each : kBalloons) {
        const float scale = each.size * canvas.unit();
        m_balloons.push_back(scaled(balloon, kBalloonSize.x * scale, kBalloonSize.y * scale));
    }
}

void MovingFigures::drawClouds(SceneCanvas& canvas, double seconds, const float* cover) const {
    for (std::size_t i = 0; i < m_clouds.size(); i++) {
        // Clouds leave on the right and come back on the left.
        const auto width = static_cast<double>(static_cast<float>(canvas.width()) / m_unit);
        const double start = static_cast<double>(kClouds[i].x + m_middle / m_unit) + 0.25;
        const double along = std::fmod(start + static_cast<double>(kClouds[i].speed) * seconds, width + 0.5) - 0.25;
        const float left = static_cast<float>(along) * m_unit + kCloudCorner.x * kClouds[i].size * m_unit;
        const float top = (kClouds[i].y + 0.5F + kCloudCorner.y * kClouds[i].size) * m_unit;
        const Layer& cloud = m_clouds[i];
        const PixelBox box = {left, top, left + static_cast<float>(cloud.width),
                              top + static_cast<float>(cloud.height)};
        canvas.drawPixels(
            box, [&](float x, float y) { return cloud.sampleAt(x - left, y - top); }, cover);
    }
}

void MovingFigures::drawBalloons(SceneCanvas& canvas, double seconds, const float* cover) const {
    for (std::size_t i = 0; i < m_balloons.size(); i++) {
        const Balloon& balloon = kBalloons[i];
        const auto turn = [&](double period) {
            return static_cast<float>(2 * std::numbers::pi * (seconds / period + static_cast<double>(balloon.phase)));
        };
        const double period = static_cast<double>(balloon.period);
        const float s = balloon.size * canvas.unit();
        const float x = 0.5F * static_cast<float>(canvas.width()) +
                        (balloon.x + balloon.swing * std::sin(turn(period * 1.31))) * canvas.unit();
        const float y = 0.5F * static_cast<float>(canvas.height()) +
                        (balloon.y + balloon.lift * std::sin(turn(period))) * canvas.unit();
        const float tilt = 0.18F * std::cos(turn(period * 1.31));
        const Layer& picture = m_balloons[i];
        canvas.drawPixels(
            {x - 1.6F * s, y - 1.5F * s, x + 1.6F * s, y + 4.2F * s},
            [&](float px, float py) {
                const Vec q = {(px - x) / s, (py - y) / s};
                // The balloon leans; the string below its knot waves.
                const float sway = 0.10F * std::sin(q.y * 2.6F + turn(2.0)) * smooth(1.2F, 2.4F, q.y);
                const Vec p = {q.x + tilt * std::min(q.y, 1.2F) - sway, q.y - tilt * q.x * smooth(2.4F, 1.2F, q.y)};
                std::array<float, 4> sample =
                    picture.sampleAt((p.x - kBalloonCorner.x) * s, (p.y - kBalloonCorner.y) * s);
                // Painted for any colour: its red is how much of that shows, its green how much white.
                const float own = sample[0];
                const float white = sample[1];
                sample[0] = balloon.color.r * own + white;
                sample[1] = balloon.color.g * own + white;
                sample[2] = balloon.color.b * own + white;
                return sample;
            },
            cover);
    }
}

PlacedLayer portraitIn(const SceneCanvas& canvas) {
    const float unit = canvas.unit();
    Layer portrait =
        scaled(chosen(EmbeddedFile::kPortrait, EmbeddedFile::kPortraitSmall, unit), 0.58241F * unit, 0.65833F * unit);
    const int top = canvas.height() - portrait.height;
    return {std::move(portrait), rounded((canvas.half().x + 0.17870F) * unit), top};
}

PlacedLayer titleIn(const SceneCanvas& canvas) {
    const float unit = canvas.unit();
    return {scaled(storedLayer(EmbeddedFile::kTitle), 0.84120F * unit, 0.18796F * unit),
            rounded((canvas.half().x - 0.41898F) * unit), rounded(0.02083F * unit)};
}

}  // namespace lumiset::media
