#pragma once

#include <cstdint>

#include "frame/memory_allocator.h"

namespace lumiset {

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

/// Maximum or minimum over an ellipse as `FrameDilate` describes. False, before anything is written, when there is
/// no memory.
[[nodiscard]] bool ellipseMorphology(const EllipseJob& job, MemoryAllocator& allocator) noexcept;

}  // namespace lumiset
