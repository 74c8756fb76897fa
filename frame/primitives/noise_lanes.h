#pragma once

// The generators that noise is made from: 32 side by side, each the sum of a linear congruential and a
// subtract-with-borrow sequence (after Marsaglia and Zaman's combined generators), which a third congruential sequence
// starts from the seed.

#include <cstddef>
#include <cstdint>

namespace lumiset {

/// State of the generators. A step sets `congruential` to itself times `kMultiplier` less `kDecrement`, and `newest` to
/// `older - newest - borrow`, and its value is the sum of the two.
struct NoiseLanes {
    static constexpr std::size_t kCount = 32;
    static constexpr std::uint32_t kMultiplier = 475559465U;
    static constexpr std::uint32_t kDecrement = 89601513U;

    /// Advances the seed.
    explicit NoiseLanes(std::uint32_t& seed);
    /// As many steps of every generator as told, in the time of a few.
    void skip(std::uint32_t steps);

    alignas(64) std::uint32_t congruential[kCount];
    alignas(64) std::uint32_t newest[kCount];
    alignas(64) std::uint32_t older[kCount];
    alignas(64) std::uint32_t borrow[kCount] = {};  ///< 0 or 1
};

}  // namespace lumiset
