#pragma once

// The last steps of the Background Generator: clarity, opacity, saturation, tint and brightness, in this order.

#include <array>

#include "frame/frame.h"

namespace lumiset {

struct BackgroundGrade {
    float clarity;               ///< 0..1: share of the sharp picture
    float opacity;               ///< 0..1: what alpha is multiplied by
    float saturation;            ///< -1 grey, 0 unchanged, 1 doubled
    float brightness;            ///< -1 black, 0 unchanged, 1 white
    std::array<float, 3> tints;  ///< red, green, blue: -1 crushes the lower half of the levels, 1 lifts them by half

    [[nodiscard]] bool hasSaturation() const;
    [[nodiscard]] bool hasLevels() const;
    [[nodiscard]] bool isNeutral() const;
};

/// Weight of luma against colour, of 128; the colour's weight is 127 less this one. Whole for 8-bit frames.
float lumaWeight(const BackgroundGrade& grade, bool wholeNumbers);

/// What tint and brightness make of a sample of 0..1: max(v * gain + offset, least) * spread + floor.
struct LevelCurve {
    float gain;
    float offset;
    float least;
    float spread;
    float floor;
};
LevelCurve levelCurve(float tint, float brightness);

/// Grades `soft` mixed with `sharp` into `destination`: three frames of one size and colour format, of which the
/// first two may be one.
void gradeBackground(const Frame& soft, const Frame& sharp, Frame& destination, const BackgroundGrade& grade) noexcept;

}  // namespace lumiset
