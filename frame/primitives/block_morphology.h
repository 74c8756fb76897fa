#pragma once

#include <bit>
#include <cstdint>

#include "frame/memory_allocator.h"

namespace lumiset {

/// A rectangle of a mask, in pixels from the anchor, each side included: columns -left..right, rows -up..down (any
/// of them may be negative). The maximum over it is that over four blocks in its corners whose sides are the powers
/// of two given by their logarithms; a block is no larger than the rectangle.
struct BlockRectangle {
    std::int32_t left;
    std::int32_t right;
    std::int32_t up;
    std::int32_t down;
    std::int32_t blockWidthLog;
    std::int32_t blockHeightLog;
};

/// Of a positive number.
constexpr std::int32_t floorLog2(std::int32_t value) {
    return static_cast<std::int32_t>(std::bit_width(static_cast<std::uint32_t>(value))) - 1;
}

struct BlockMorphologyJob {
    const std::uint8_t* src;
    std::int32_t srcStride;  ///< bytes
    std::uint8_t* dst;       ///< must not overlap `src`
    std::int32_t dstStride;
    std::int32_t width;
    std::int32_t height;
    std::int32_t channels;  ///< 1 or 4
    bool isFloat;
    bool minimum;  ///< minimum (erosion) instead of maximum (dilation)
    const BlockRectangle* rectangles;
    std::int32_t count;     ///< at least 1
    bool firstHasEveryRow;  ///< no rectangle reaches further up or down than the first one
};

/// Maximum or minimum over a mask, border pixels replicated. False, before anything is written, when there is no
/// memory.
[[nodiscard]] bool blockMorphology(const BlockMorphologyJob& job, MemoryAllocator& allocator) noexcept;

}  // namespace lumiset
