#pragma once

#include <cstdint>

#include "frame/memory_allocator.h"

namespace lumiset {

struct TriangularBlurJob {
    const std::uint8_t* src;
    std::int32_t srcStride;  ///< bytes
    std::uint8_t* dst;       ///< must not overlap `src`
    std::int32_t dstStride;
    std::int32_t width;
    std::int32_t height;
    std::int32_t sizeX;  ///< 1..1000
    std::int32_t sizeY;
    std::int32_t channels;    ///< 1 or 4
    std::int32_t keptSample;  ///< position in `src` of a sample that is copied instead, -1 for none
    bool reverseSamples;      ///< store the four samples of a pixel in reverse order
};

/// Blur as `FrameBlur` describes, for 8-bit and for float samples. False, before anything is written, when there is
/// no memory.
[[nodiscard]] bool triangularBlurBytes(const TriangularBlurJob& job, MemoryAllocator& allocator) noexcept;
[[nodiscard]] bool triangularBlurFloats(const TriangularBlurJob& job, MemoryAllocator& allocator) noexcept;

}  // namespace lumiset
