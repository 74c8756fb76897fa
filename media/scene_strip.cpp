#include <cmath>
#include <cstdio>
#include <numbers>

#include "media/lettering.h"
#include "media/scene_parts.h"

namespace lumiset::media {
namespace {

constexpr float kStripHeight = 0.088F;
constexpr float kStripLeft = -0.80F;
constexpr float kStripWidth = 0.97F;
constexpr float kClockSize = 0.030F;

float stripTop(const SceneCanvas& canvas) {
    return canvas.half().y - 0.065F - 0.022F - kStripHeight;
}

Color colorBar(int i) {
    const float low = 0.04F;
    const float high = 0.92F;
    return {(i & 2) == 0 ? high : low, (i & 4) == 0 ? high : low, (i & 1) == 0 ? high : low};
}

}  // namespace

void drawTestStrip(SceneCanvas& canvas) {
    const float top = stripTop(canvas);
    const float bottom = top + kStripHeight;
    const Vec middle = {kStripLeft + kStripWidth / 2, (top + bottom) / 2};
    const Vec half = {kStripWidth / 2, kStripHeight / 2};
    const float inner = 0.010F;
    const float barsEnd = kStripLeft + 0.30F;
    const float linesEnd = kStripLeft + 0.66F;
    canvas.draw({kStripLeft, top, kStripLeft + kStripWidth, bottom}, [&](Vec p) -> Paint {
        Color color = {0.10F, 0.11F, 0.13F};
        const bool inside = p.y > top + inner && p.y < bottom - inner;
        if (inside && p.x > kStripLeft + inner && p.x < barsEnd) {
            const float along = (p.x - kStripLeft - inner) / (barsEnd - kStripLeft - inner);
            const float level = std::floor(along * 16) / 15;
            color = p.y < middle.y + 0.008F ? colorBar(std::min(7, static_cast<int>(along * 8)))
                                            : Color{level, level, level};
        } else if (inside && p.x > barsEnd + inner && p.x < linesEnd) {
            // Gratings of 2, 3, 4, 6, 8 and 12 pixels a pair, upright above and lying below.
            static constexpr int kPeriods[] = {2, 3, 4, 6, 8, 12};
            const float along = (p.x - barsEnd - inner) / (linesEnd - barsEnd - inner) * 6;
            const int period = kPeriods[std::min(5, static_cast<int>(along))];
            const bool upright = p.y < middle.y;
            const auto step = static_cast<int>(
                std::floor(upright ? p.x * canvas.unit() + 0.5F * static_cast<float>(canvas.width())
                                   : p.y * canvas.unit() + 0.5F * static_cast<float>(canvas.height())));
            const bool gap = along - std::floor(along) > 0.92F;
            const float level = !gap && (step % period + period) % period < (period + 1) / 2 ? 0.95F : 0.06F;
            color = gap ? color : Color{level, level, level};
        } else if (inside && p.x > linesEnd + inner && p.x < linesEnd + inner + 0.068F) {
            // A star whose rays meet in the middle.
            const Vec q = p - Vec{linesEnd + inner + 0.034F, middle.y};
            const float angle = std::atan2(q.y, q.x) * 36 / (2 * std::numbers::pi_v<float>);
            const float distance =
                (std::abs(angle - std::round(angle)) - 0.25F) * 2 * std::numbers::pi_v<float> / 36 * length(q);
            const float level = 0.06F + 0.89F * canvas.coverage(distance);
            color = mix(color, {level, level, level}, canvas.coverage(length(q) - 0.033F));
        }
        return {color, canvas.coverage(roundedBox(p, middle, half, 0.016F))};
    });
}

void drawClock(SceneCanvas& canvas, double seconds) {
    const Vec center = {kStripLeft + kStripWidth - 0.028F - kClockSize / 2, stripTop(canvas) + kStripHeight / 2};
    const auto turn = static_cast<float>(2 * std::numbers::pi * (seconds - std::floor(seconds)));
    const Vec hand = {std::sin(turn), -std::cos(turn)};
    const float reach = kClockSize + 0.004F;
    canvas.draw({center.x - reach, center.y - reach, center.x + reach, center.y + reach}, [&](Vec p) -> Paint {
        const float d = circle(p, center, kClockSize);
        Color color = mix({0.93F, 0.93F, 0.90F}, {0.20F, 0.22F, 0.26F}, canvas.coverage(std::abs(d + 0.002F) - 0.002F));
        color = mix(color, {0.84F, 0.10F, 0.10F},
                    canvas.lineCoverage(segment(p, center, center + hand * (kClockSize * 0.78F), 0), 0.0016F));
        return {color, canvas.coverage(d)};
    });
    char text[32];
    std::snprintf(text, sizeof text, "%05.2f", std::fmod(seconds, 100.0));
    const float unit = canvas.unit();
    const float place = (canvas.half().x + center.x - 0.048F) * unit - textWidth(text, 0.026F * unit);
    const TextImage letters = drawText(text, 0.026F * unit, place - std::floor(place));
    const float top = std::round((canvas.half().y + center.y - 0.013F) * unit) + static_cast<float>(letters.top);
    const float left = std::floor(place) + static_cast<float>(letters.left);
    const auto width = static_cast<float>(letters.width);
    const auto height = static_cast<float>(letters.height);
    canvas.drawPixels({left, top, left + width - 1, top + height - 1}, [&](float x, float y) {
        const float alpha = letters.at(static_cast<int>(x - left), static_cast<int>(y - top));
        return std::array<float, 4>{0.45F * alpha, 0.95F * alpha, 0.55F * alpha, alpha};
    });
}

}  // namespace lumiset::media
