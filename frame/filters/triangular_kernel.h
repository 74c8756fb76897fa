#pragma once

// The triangular kernel by second differences. With n weights 1, 2, ... half, ... 2, 1 (the middle weight twice
// for an even n) anchored at n / 2, the weighted sum T(x) of the samples p has
//     T(x + 1) = T(x) + S(x),   S(x) = S(x - 1) + p(x + half) - p(x) - p(x - e) + p(x - e - half)
// where e is 1 for an even n, else 0: three or four samples a step, whatever the size.

#include <cstdint>

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

}  // namespace lumiset
