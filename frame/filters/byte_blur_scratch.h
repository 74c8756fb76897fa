#pragma once

#include <cstdint>

namespace lumiset {

/// Sums that are kept between blocks of rows, and the rows of one block.
struct ByteBlurScratch {
    std::int32_t* slopes;       ///< S of each sample of a row
    std::int32_t* sums;         ///< T of each sample of a row
    std::uint32_t* packed;      ///< masks: four groups of four rows, a sample's four in one word
    std::uint8_t* interleaved;  ///< sixteen samples for each x, from `before` columns left of the picture
    std::uint8_t* spareRow;     ///< takes rows beyond the picture
    std::int32_t packedStride;  ///< words
};

constexpr std::int32_t kInterleave = 16;

}  // namespace lumiset
