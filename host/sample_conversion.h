#pragma once

#include <algorithm>
#include <cstdint>

namespace lumiset {

/// 8-bit v as a float sample: v / 255.
constexpr float floatFromByte(std::uint8_t value) {
    return static_cast<float>(value) / 255.0F;
}

/// The nearest 8-bit level to a float sample: floor(255 v + 0.5) limited to 0..255, NaN 0.
constexpr std::uint8_t byteFromFloat(float value) {
    // The constant stands first so that NaN becomes 0.
    const float limited = std::min(std::max(0.0F, value), 1.0F);
    // The value is not negative: truncating is rounding down, and unlike lround it is a vector instruction.
    // NOLINTNEXTLINE(bugprone-incorrect-roundings)
    return static_cast<std::uint8_t>(static_cast<std::int32_t>(limited * 255.0F + 0.5F));
}

}  // namespace lumiset
