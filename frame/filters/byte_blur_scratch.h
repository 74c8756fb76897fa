#pragma once

#include <cstdint>
#include <optional>

namespace lumiset {

/// What is found once for a picture; sums that are kept between groups of rows, and the groups between the passes.
struct ByteBlurScratch {
    std::optional<float> factorX;  ///< `roundingFactor` of the divisors
    std::optional<float> factorY;
    std::int32_t* slopes;   ///< S of each sample of a row
    std::int32_t* sums;     ///< T of each sample of a row
    std::uint32_t* packed;  ///< masks: four groups of four rows, a sample's four in one word
    std::uint8_t*
        interleaved;         ///< of each group sixteen samples for each x, with columns left of the picture before them
    std::uint8_t* spareRow;  ///< takes rows beyond the picture
    std::int32_t packedStride;  ///< words
    std::int64_t interleavedStride;

    [[nodiscard]] std::uint8_t* group(std::int32_t index) const { return interleaved + index * interleavedStride; }
};

constexpr std::int32_t kInterleave = 16;

}  // namespace lumiset
