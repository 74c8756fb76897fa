#pragma once

// The arithmetic of Color Fixer Pro: what is derived from its settings, and the grade applied to rows of pixels.

#include <array>
#include <cstdint>

#include "frame/frame.h"

namespace lumiset {

struct ColorFixerSettings {
    std::uint32_t sample;  ///< 0x00BBGGRR, what ought to be neutral
    float correction;
    float saturation;  ///< -1..1
    float brightness;  ///< 0.15..0.85
    float filmGamma;
    float top;     ///< 0..1 of the range that is kept free above white
    float bottom;  ///< 0..1 of the range that is kept free below black
};

/// Gains that turn the sample neutral, for red, green and blue; 1 leaves a channel alone. A channel of the sample,
/// 0..255, counts as at least `leastLevel`.
std::array<double, 3> neutralGains(const ColorFixerSettings& settings, double leastLevel);

/// The film curve at x, 0..1.
double filmCurve(double x, double filmGamma);
/// Brightness and output range at x, 0..1.
double rangeCurve(double x, const ColorFixerSettings& settings);

/// Grades the common rectangle of two frames of one colour format; alpha is copied.
void gradeFrame(const Frame& source, Frame& destination, const ColorFixerSettings& settings) noexcept;

}  // namespace lumiset
