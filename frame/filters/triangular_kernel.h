#pragma once

// The triangular kernel by second differences. With n weights 1, 2, ... half, ... 2, 1 (the middle weight twice
// for an even n) anchored at n / 2, the weighted sum T(x) of the samples p has
//     T(x + 1) = T(x) + S(x),   S(x) = S(x - 1) + p(x + half) - p(x) - p(x - e) + p(x - e - half)
// where e is 1 for an even n, else 0: three or four samples a step, whatever the size.

#include <cmath>
#include <cstdint>
#include <optional>

namespace lumiset {

struct TriangularKernel {
    explicit constexpr TriangularKernel(std::int32_t size)
        : half((size + 1) / 2), even(size % 2 == 0), divisor((half + 1) * half - (even ? 0 : half)) {}

    /// Sum of the weights left of the anchor.
    [[nodiscard]] constexpr std::int32_t weightBefore() const { return divisor - half * (half + 1) / 2; }

    std::int32_t half;
    bool even;
    std::int32_t divisor;  ///< sum of all weights
};

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
