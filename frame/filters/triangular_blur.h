#pragma once

#include <cstdint>

#include "frame/memory_allocator.h"

namespace lumiset {

/// Layout of the pixels to blur.
enum class BlurPixels { kMask8, kColor8, kMaskFloat, kColorFloat };

struct TriangularBlurJob {
    const std::uint8_t* src;
    std::int32_t srcStride;  ///< bytes
    std::uint8_t* dst;       ///< must not overlap `src`
    std::int32_t dstStride;
    std::int32_t width;
    std::int32_t height;
    std::int32_t sizeX;  ///< 1..1000
    std::int32_t sizeY;
    BlurPixels pixels;
    std::int32_t keptSample;  ///< position in `src` of a sample that is copied instead, -1 for none
    bool reverseSamples;      ///< store the four samples of a pixel in reverse order
};

/// Blurs as `FrameBlur` describes. False, before anything is written, when there is no memory.
[[nodiscard]] bool triangularBlur(const TriangularBlurJob& job, MemoryAllocator& allocator) noexcept;

}  // namespace lumiset
