#pragma once

#include <cstdint>

namespace lumiset {

inline constexpr std::int32_t kMaxTaps = 6;
/// `resampleTaps` starts at most this many samples before the first one and ends no further after the last.
inline constexpr std::int32_t kTapMargin = 8;

/// Neighbouring samples that make up one interpolated sample, and their shares.
struct ResampleTaps {
    std::int32_t start;
    float weights[kMaxTaps];
};

/// Number of taps of an interpolation code, 0 for an unknown one.
[[nodiscard]] std::int32_t resampleTapCount(std::int32_t interpolation) noexcept;

/// Taps for the coordinate `s` among `size` samples. Nearest stays within the samples; for the others, samples
/// before the first and after the last stand for those two.
[[nodiscard]] ResampleTaps resampleTaps(double s, std::int32_t size, std::int32_t interpolation) noexcept;

}  // namespace lumiset
