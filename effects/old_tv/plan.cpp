#include "effects/old_tv/plan.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace lumiset {
namespace {

/// Below this a speed or rate stands still.
constexpr float kStill = 0.001F;
/// A picture of fewer columns or rows has no tube.
constexpr std::int32_t kSmallestTube = 16;
/// Seconds that the picture takes to roll through once, and the band to travel once, at full speed.
constexpr float kFullSpeedCycle = 0.3F;

}  // namespace

RandomSequence::RandomSequence(float seed) : m_state(std::bit_cast<std::uint32_t>(seed)) {}

std::uint32_t RandomSequence::next() {
    m_state = m_state * 214013U + 2531011U;
    return (m_state >> 16U) & 0x7FFFU;
}

float RandomSequence::range(float a, float b) {
    return a + (b - a) * (static_cast<float>(next()) / 32767.0F);
}

float eventTime(double timeSeconds) {
    return static_cast<float>(std::fmod(timeSeconds, 1'000'000.0));
}

std::optional<TearEvent> findTear(float frequency, float time) {
    RandomSequence random(frequency);
    const float shortestGap = 4.0F * (1.0F - frequency);
    const float longestGap = 6.0F * (1.0F - frequency);
    float start = 0.0F;
    float length = 0.0F;
    do {
        start = start + length + random.range(shortestGap, longestGap);
        length = random.range(0.3F, 1.0F);
    } while (time > start + length);
    if (time < start) {
        return std::nullopt;
    }
    const float phase = (time - start) / length;
    return TearEvent{start, phase - std::floor(phase)};
}

std::size_t tearStrips(const TearEvent& tear, float severity, std::int32_t width, std::int32_t height,
                       std::span<TearStrip, kTearSteps> strips) {
    constexpr auto kLast = static_cast<std::int32_t>(kTearSteps) - 1;
    const auto rows = static_cast<float>(height);
    // Strong in the middle of the event, nothing at its ends.
    const float envelope = std::sqrt(std::sqrt(1.0F - std::fabs(2.0F * tear.phase - 1.0F)));
    const float reach = static_cast<float>(width) * 0.025F * severity * envelope;
    RandomSequence random(tear.start);
    float offset = 0.0F;
    float direction = 1.0F;
    std::size_t count = 0;
    std::int32_t row = 0;
    for (std::int32_t step = 0; step <= kLast && row < height; ++step) {
        offset += random.range(0.0F, reach) * direction;
        if (random.range(0.0F, 1.0F) > 0.9F) {
            direction = -direction;
        }
        // The height, not the width, wraps the offset: the look of the tears depends on it.
        while (offset > rows) {
            offset -= rows;
        }
        while (offset < -rows) {
            offset += rows;
        }
        const auto next = static_cast<std::int32_t>(std::int64_t{height} * step / kLast) + 1;
        if (next > row) {
            const std::int32_t turn = (static_cast<std::int32_t>(offset) % width + width) % width;
            strips[count++] = {height - std::min(next, height), height - row, turn};
            row = next;
        }
    }
    return count;
}

std::optional<RollEvent> findRoll(const OldTVSettings& settings, std::int32_t height, float& time) {
    const float speed = settings.rollSpeed;
    if (!(std::fabs(speed) > kStill)) {
        return std::nullopt;
    }
    const float roll = 300.0F / (std::fabs(speed) * 1000.0F);
    const float pause = 10.0F * settings.rollPeriod;
    RandomSequence random(speed);
    const auto drawPause = [&] { return 0.5F * pause + random.range(0.0F, 1.0F) * pause; };
    float cyclePause = drawPause();
    while (time > roll + cyclePause) {
        time = time - roll - cyclePause;
        cyclePause = drawPause();
    }
    const float cycle = roll + cyclePause;
    const float inCycle = time - std::trunc(time / cycle) * cycle;
    if (inCycle >= roll) {
        return std::nullopt;
    }
    const float progress = inCycle / roll;
    const float position = speed < 0.0F ? progress : 1.0F - progress;
    const auto rows = static_cast<float>(height);
    const std::int32_t bar = settings.verticalBlank ? static_cast<std::int32_t>(rows * 0.05F) : 0;
    const auto bars = static_cast<float>(bar);
    const auto upper = static_cast<std::int32_t>((rows + bars) * position - rows - bars);
    const std::int32_t upperRow = std::clamp(upper, 0, height - 1);
    return RollEvent{upperRow - upper, upperRow, upper + height + bar};
}

std::int32_t RollEvent::rowAt(std::int32_t y, std::int32_t height) const {
    if (y >= lowerRow) {
        return y - lowerRow;
    }
    const std::int32_t row = y - upperRow + upperSource;
    return y >= upperRow && row < height ? row : -1;
}

BrightBand findBand(const OldTVSettings& settings, std::int32_t height, float time) {
    const float rate = std::fabs(settings.bandRate);
    const auto rows = static_cast<float>(height);
    float phase = 0.0F;
    if (rate >= kStill) {
        const float cycles = time / (kFullSpeedCycle / rate);
        phase = cycles - std::floor(cycles);
    }
    auto top = static_cast<std::int32_t>(rows * phase * (settings.bandRate < 0.0F ? -1.0F : 1.0F));
    if (top < 0) {
        top += height;
    }
    top = height - top;
    return {top, static_cast<std::int32_t>(static_cast<float>(top) + rows * settings.bandHeight)};
}

float BrightBand::gain(std::int32_t y) const {
    const float along = static_cast<float>(y - top) / static_cast<float>(bottom - top);
    const float shade = (std::sin(6.28F * along - 4.71F) + 1.0F) / 2.0F;
    return std::sqrt(std::max(1.0F - shade, 0.0F));
}

float BrightBand::gainAt(std::int32_t y, std::int32_t height) const {
    for (const std::int32_t at : {y, y + height}) {
        if (at >= top && at < bottom) {
            return gain(at);
        }
    }
    return 0.0F;
}

OldTVEvents findEvents(const OldTVSettings& settings, std::int32_t width, std::int32_t height, double timeSeconds) {
    OldTVEvents events{};
    events.time = eventTime(timeSeconds);
    events.cycleTime = events.time;
    if (settings.frequency > kOldTVOff) {
        events.tear = findTear(settings.frequency, events.time);
    }
    events.hasTube = width >= kSmallestTube && height >= kSmallestTube;
    const auto roll = findRoll(settings, height, events.cycleTime);
    if (events.hasTube) {
        events.roll = roll;
    }
    return events;
}

float scanLineFactor(const OldTVSettings& settings, std::int32_t height, std::int32_t rowsBelow) {
    const float turn = (kFewestScanLineTurns + (kMostScanLineTurns - kFewestScanLineTurns) * settings.resolution) /
                       static_cast<float>(height);
    const float light = (std::sin(turn * static_cast<float>(rowsBelow)) + 1.0F) / 2.0F;
    return (1.0F - light) * (1.0F - settings.intensity) + light;
}

std::uint32_t staticSeed(float time) {
    constexpr float kSpeed = 0.5F;
    constexpr float kTimeScale = 8.0F;
    constexpr float period = 1.0F / (29.0F * kSpeed * kSpeed * kSpeed + 0.2F);
    return static_cast<std::uint32_t>(time * kTimeScale / period);
}

}  // namespace lumiset
