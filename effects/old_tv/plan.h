#pragma once

// What happens when on an old television: the settings, and the random events that they and the time lay
// down. Both renderers read these, so tears and rolls fall on the same rows at the same times.

#include <cstdint>
#include <optional>
#include <span>

#include "effects/param_reader.h"

namespace lumiset {

/// The parameters as the renderers use them.
struct OldTVSettings {
    float noise;
    float hue;  ///< 0.25..0.75: a quarter turn either way
    std::uint32_t tintColor;
    float tint;
    float saturation;
    float brightness;
    float contrast;
    float ghosting;  ///< 0..0.5
    float resolution;
    float intensity;
    float severity;
    float frequency;
    float rollSpeed;  ///< -1..1
    float rollPeriod;
    bool verticalBlank;
    float bandRate;  ///< -1..1
    float bandHeight;
    float curvature;
    float softenEdge;
    float opacity;
};

/// The linear congruential generator behind all events: seeded with the bits of a parameter, never with the
/// clock, so a clip's errors are the same in every render.
class RandomSequence {
public:
    explicit RandomSequence(float seed);
    /// 0..32767
    std::uint32_t next();
    /// a..b, in single precision.
    float range(float a, float b);

private:
    std::uint32_t m_state;
};

/// The time that events run on: single precision, after at most a million seconds it begins anew.
float eventTime(double timeSeconds);

/// A burst of lost horizontal sync.
struct TearEvent {
    float start;  ///< seconds; also the seed of its shape
    float phase;  ///< 0..1 through its length
};
/// The tear that covers `time`, if one does. `frequency` 0..1.
std::optional<TearEvent> findTear(float frequency, float time);

/// Rows `top` up to, not including, `bottom`, counted from the picture's top, that a tear turns left round their ends
/// by `offset` pixels, 0..width - 1.
struct TearStrip {
    std::int32_t top;
    std::int32_t bottom;
    std::int32_t offset;
};
/// The most strips that a tear has.
inline constexpr std::size_t kTearSteps = 1001;
/// Fills in the strips of a tear, from the picture's bottom up, which together cover it; returns how many there are.
std::size_t tearStrips(const TearEvent& tear, float severity, std::int32_t width, std::int32_t height,
                       std::span<TearStrip, kTearSteps> strips);

/// A picture rolling through: where its two copies stand. The upper copy's rows from `upperSource` on appear
/// at `upperRow`, the lower one's from its top at `lowerRow`; a row at or past the height means none.
struct RollEvent {
    std::int32_t upperSource;
    std::int32_t upperRow;
    std::int32_t lowerRow;

    /// The row of a picture of `height` rows that appears at row `y`; -1 for the black bar, where none does.
    [[nodiscard]] std::int32_t rowAt(std::int32_t y, std::int32_t height) const;
};
/// The roll at `time`, if the picture is rolling. `time` becomes the time within the cycles that are not over
/// yet, which is what the bright band runs on.
std::optional<RollEvent> findRoll(const OldTVSettings& settings, std::int32_t height, float& time);

/// The bright band: rows `top` up to, not including, `bottom`, wrapped once at the picture's height.
struct BrightBand {
    std::int32_t top;
    std::int32_t bottom;

    /// How much row `y` of the band is brightened: 0..1.
    [[nodiscard]] float gain(std::int32_t y) const;
    /// The same for a row of a picture of `height` rows, 0 outside the band.
    [[nodiscard]] float gainAt(std::int32_t y, std::int32_t height) const;
};
BrightBand findBand(const OldTVSettings& settings, std::int32_t height, float time);

/// Amounts up to this leave their step out.
inline constexpr float kOldTVOff = 0.001F;

/// What happens in a frame, for both renderers.
struct OldTVEvents {
    float time;
    float cycleTime;  ///< what the bright band runs on
    std::optional<TearEvent> tear;
    std::optional<RollEvent> roll;
    bool hasTube;  ///< tiny pictures have none, and what rolls and glows on it stays unseen
};
OldTVEvents findEvents(const OldTVSettings& settings, std::int32_t width, std::int32_t height, double timeSeconds);

/// Turns of the scan lines' sine over the picture, times 2 pi: 10 and 200 lines, which the panel shows for Resolution.
inline constexpr float kFewestScanLineTurns = 62.8F;
inline constexpr float kMostScanLineTurns = 1256.0F;
/// What a row with `rowsBelow` rows below it is multiplied with.
float scanLineFactor(const OldTVSettings& settings, std::int32_t height, std::int32_t rowsBelow);

/// The seed of the picture of static at a time.
std::uint32_t staticSeed(float time);

}  // namespace lumiset
