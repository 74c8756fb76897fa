#pragma once

#include <cstdint>
#include <optional>

namespace lumiset {

/// What is found once for a picture; sums of a band, which are kept between groups of rows, and a group between the
/// passes.
struct ByteBlurScratch {
    std::optional<float> factorX;  ///< `roundingFactor` of the divisors
    std::optional<float> factorY;
    std::int32_t* slopes;       ///< S of each sample of a row
    std::int32_t* sums;         ///< T of each sample of a row
    std::uint32_t* packed;      ///< masks: four groups of four rows, a sample's four in one word
    std::uint8_t* interleaved;  ///< sixteen samples for each x, with columns left of the picture before them
    std::uint8_t* spareRow;     ///< takes rows beyond the picture
    std::int32_t packedStride;  ///< words
};

constexpr std::int32_t kInterleave = 16;

}  // namespace lumiset
