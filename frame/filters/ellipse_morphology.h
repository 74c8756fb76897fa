#pragma once

#include <cstdint>

#include "frame/memory_allocator.h"

namespace lumiset {

/// Half width of an ellipse's row: the set elements of row `y` of a mask of `maskWidth` by `maskHeight` run from
/// column ax - c to ax + c (at most maskWidth - 1) about the anchor ax = maskWidth / 2. Below 0: none is set.
[[nodiscard]] std::int32_t ellipseHalfChord(std::int32_t maskWidth, std::int32_t maskHeight, std::int32_t y);

struct EllipseJob {
    const std::uint8_t* src;
    std::int32_t srcStride;  ///< bytes
    std::uint8_t* dst;       ///< must not overlap `src`
    std::int32_t dstStride;
    std::int32_t width;
    std::int32_t height;
    std::int32_t channels;  ///< 1 or 4
    bool isFloat;
    bool minimum;             ///< minimum (erosion) instead of maximum (dilation)
    std::int32_t maskWidth;   ///< at least 2
    std::int32_t maskHeight;  ///< at least 2
};

/// Maximum or minimum over an ellipse, border pixels replicated. False, before anything is written, when there is
/// no memory.
[[nodiscard]] bool ellipseMorphology(const EllipseJob& job, MemoryAllocator& allocator) noexcept;

}  // namespace lumiset
