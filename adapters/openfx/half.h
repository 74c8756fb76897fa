#pragma once

#include <bit>
#include <cstdint>

namespace lumiset::openfx {

/// IEEE 754 numbers of 16 bits (binary16) as the bits they are stored in. Every one of them is a float too.
[[nodiscard]] inline float floatOfHalf(std::uint16_t half) {
    const std::uint32_t sign = (half & 0x8000U) << 16U;
    const std::uint32_t magnitude = half & 0x7FFFU;
    if (magnitude >= 0x7C00U) {  // infinite, or not a number
        return std::bit_cast<float>(sign | 0x7F800000U | (magnitude & 0x03FFU) << 13U);
    }
    // The exponent's place is right after the shift, but its bias is 112 too small; the product mends that, for
    // numbers below the normal ones too.
    const float scaled = std::bit_cast<float>(magnitude << 13U) * 0x1p112F;
    return std::bit_cast<float>(sign | std::bit_cast<std::uint32_t>(scaled));
}

/// The nearest, ties to even; infinite beyond the range.
[[nodiscard]] inline std::uint16_t halfOfFloat(float value) {
    const std::uint32_t bits = std::bit_cast<std::uint32_t>(value);
    const auto sign = static_cast<std::uint16_t>(bits >> 16U & 0x8000U);
    const std::uint32_t magnitude = bits & 0x7FFFFFFFU;
    if (magnitude > 0x7F800000U) {
        return static_cast<std::uint16_t>(sign | 0x7E00U);
    }
    if (magnitude >= 0x477FF000U) {  // 65520 and more is nearest to what would be the next number, 65536
        return static_cast<std::uint16_t>(sign | 0x7C00U);
    }
    if (magnitude < 0x38800000U) {
        // Below 2^-14 halves are multiples of 2^-24: adding a number whose last place is just that rounds.
        const float rounded = std::bit_cast<float>(magnitude) + 0.5F;
        return static_cast<std::uint16_t>(sign | (std::bit_cast<std::uint32_t>(rounded) - 0x3F000000U));
    }
    const std::uint32_t odd = magnitude >> 13U & 1U;
    return static_cast<std::uint16_t>(sign | (magnitude - 0x38000000U + 0x0FFFU + odd) >> 13U);
}

}  // namespace lumiset::openfx
