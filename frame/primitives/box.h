#pragma once

// Box filter: out(x, y) = mean of the window of mask.width by mask.height pixels whose left and upper pixel is
// (x - anchorX, y - anchorY). The caller provides a source region with valid pixels around it. 8-bit means are
// rounded to nearest; float samples that are not finite count as 0, and sums are kept in double precision. The
// cost does not depend on the window's size.
//
// `kImgNullPointer`, `kImgBadSize`, `kImgBadStep`; `kImgBadMaskSize` for a window side below 1, an anchor outside
// the window, or 2^23 pixels and more in an 8-bit window; `kImgNoMemory`. Nothing has been written then.

#include <cstdint>

#include "frame/memory_allocator.h"
#include "frame/primitives/status.h"

namespace lumiset {

/// Source and destination must not overlap.
ImgStatus ImgBox8C1(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                    ImgSize size, ImgSize mask, std::int32_t anchorX, std::int32_t anchorY) noexcept;
ImgStatus ImgBoxFC1(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size,
                    ImgSize mask, std::int32_t anchorX, std::int32_t anchorY) noexcept;

/// The region of a plane from itself; the pixels around it stay as they are. Memory and threads are those of
/// `allocator`; null: the module's heap, and the calling thread.
ImgStatus ImgBoxInPlace8C1(std::uint8_t* plane, std::int32_t step, ImgSize size, ImgSize mask, std::int32_t anchorX,
                           std::int32_t anchorY, MemoryAllocator* allocator = nullptr) noexcept;
ImgStatus ImgBoxInPlaceFC1(float* plane, std::int32_t step, ImgSize size, ImgSize mask, std::int32_t anchorX,
                           std::int32_t anchorY, MemoryAllocator* allocator = nullptr) noexcept;
/// Bytes that these take from the allocator, in one block.
std::int64_t boxInPlaceScratch(ImgSize size, ImgSize mask, bool isFloat, const MemoryAllocator& allocator);

}  // namespace lumiset
