#pragma once

// Divisions of sums of 8-bit samples, rounded to nearest.

#include <cmath>
#include <cstdint>
#include <optional>

namespace lumiset {

/// A factor that divides sums of 8-bit samples by multiplication: with it, (sum + divisor / 2) / divisor are the
/// low bits of the single-precision number sum * factor + 2^23. None where no single-precision factor is
/// exact. The expression never falls as the sum grows, so trying both sides of each of its 255 steps tries all sums.
[[nodiscard]] inline std::optional<float> roundingFactor(std::int32_t divisor) {
    constexpr float kUnitsInLowBits = 8388608.0F;
    if (divisor > (1 << 24) / 255) {
        return std::nullopt;  // the sums themselves are not exact
    }
    const auto quotient = [](std::int32_t sum, float factor) {
        return static_cast<std::int32_t>(static_cast<float>(sum) * factor + kUnitsInLowBits - kUnitsInLowBits);
    };
    float factor = 1.0F / static_cast<float>(divisor);
    for (int attempt = 0; attempt < 4; ++attempt, factor = std::nextafterf(factor, 1.0F)) {
        bool exact = true;
        for (std::int32_t step = 1; step <= 255 && exact; ++step) {
            const std::int32_t first = step * divisor - divisor / 2;  // the least sum that gives `step`
            exact = quotient(first, factor) == step && quotient(first - 1, factor) == step - 1;
        }
        if (exact) {
            return factor;
        }
    }
    return std::nullopt;
}

/// The same division for sums below 2^26 by whole numbers: ((sum + divisor / 2) * factor) >> (32 + shift).
struct WholeDivision {
    explicit constexpr WholeDivision(std::int32_t divisor) {
        while ((std::int64_t{2} << shift) < divisor) {
            ++shift;
        }
        const std::uint64_t one = std::uint64_t{1} << (32 + shift);
        factor = static_cast<std::uint32_t>((one + static_cast<std::uint64_t>(divisor) - 1) /
                                            static_cast<std::uint64_t>(divisor));
    }
    std::uint32_t factor = 0;
    int shift = 0;
};

}  // namespace lumiset
