#pragma once

// Convolution, blur, morphology and sharpening of whole frames. All work on the common rectangle of their frames
// (the smaller width and height, from the top-left corner) and answer false, with `dst` as it was, for frames
// without pixels or formats that they do not handle. `src` and `dst` may be one frame unless stated.

#include <cstdint>

#include "frame/frame.h"
#include "frame/primitives/status.h"

namespace lumiset {

/// Convolves rows where the whole kernel lies inside `src` (source width - kernelSize + 1 columns, source height
/// - 2 * yMargin rows, both limited to `dst`) and writes the result to the middle of `dst`; the middle is rounded
/// up, so that with an anchor of kernelSize / 2 and frames of one size nothing moves. The kernel is given in
/// convolution order: its last element meets the leftmost sample. `anchorX` is the element under the result. Whole
/// numbers are for 8-bit frames: sum / divisor, rounded to nearest and clamped. Without `includeAlpha` the alpha
/// samples of `dst` are those of `src` at the place of each result. `src` and `dst` must not overlap. False if the
/// region is empty, the anchor is not inside the kernel, the divisor is 0, the frames differ in bytes per pixel, or
/// the kernel's type does not fit the format.
bool FrameConvolveRows(const Frame& src, Frame& dst, const std::int32_t* kernel, std::int32_t kernelSize,
                       std::int32_t anchorX, std::int32_t yMargin, std::int32_t divisor, bool includeAlpha) noexcept;
/// The same for float frames.
bool FrameConvolveRows(const Frame& src, Frame& dst, const float* kernel, std::int32_t kernelSize, std::int32_t anchorX,
                       std::int32_t yMargin, bool includeAlpha) noexcept;
/// The same down columns: the kernel's last element meets the uppermost sample.
bool FrameConvolveColumns(const Frame& src, Frame& dst, const std::int32_t* kernel, std::int32_t kernelSize,
                          std::int32_t xMargin, std::int32_t anchorY, std::int32_t divisor, bool includeAlpha) noexcept;
bool FrameConvolveColumns(const Frame& src, Frame& dst, const float* kernel, std::int32_t kernelSize,
                          std::int32_t xMargin, std::int32_t anchorY, bool includeAlpha) noexcept;

/// Separable triangular blur, vertical pass first, of sizes `radiusX` and `radiusY` truncated to whole pixels and
/// limited to 1000; a size below 1 (or not a number) copies. The weights of size n are 1, 2, ... rising to the
/// middle and falling again, n of them, anchored at n / 2. Each pass of an 8-bit frame is rounded to nearest.
/// Beyond the picture the nearest pixel counts, where the picture is the frame without its ring of two pixels:
/// those take the values just inside them. Without `includeAlpha` the alpha of `src` is kept. ARGB into BGRA of
/// the same depth is reordered. Samples that are not finite count as 0. The cost does not grow with the size.
/// False for frames of different bytes per pixel or when there is no memory. `allocator` may be null.
bool FrameBlur(const Frame& src, Frame& dst, float radiusX, float radiusY, MemoryAllocator* allocator,
               bool includeAlpha) noexcept;

/// Maximum over an elliptical mask of `maskWidth` by `maskHeight` pixels anchored at their halves, border pixels
/// replicated, per sample. A mask pixel (x, y) is set where ((x - ax) / ax)^2 + ((y - ay) / ay)^2 <= 1; a mask
/// without a set pixel (a size below 2) copies. Both frames must have one format. Exact. False for a mask size
/// below 1 or when there is no memory. `allocator` may be null.
bool FrameDilate(const Frame& src, Frame& dst, std::int32_t maskWidth, std::int32_t maskHeight,
                 MemoryAllocator* allocator) noexcept;
/// Minimum likewise.
bool FrameErode(const Frame& src, Frame& dst, std::int32_t maskWidth, std::int32_t maskHeight,
                MemoryAllocator* allocator) noexcept;

/// Sharpens the three colour samples by a 3 x 3 kernel, centre 2, each neighbour -1/8, border pixels replicated.
/// Alpha is kept. Colour formats only, both frames of one format; false when there is no memory.
bool FrameSharpen(const Frame& src, Frame& dst, MemoryAllocator* allocator) noexcept;
/// Bytes that it takes from the allocator, in one block, for pictures of a size.
std::int64_t FrameSharpenScratch(ImgSize size, std::int32_t bytesPerPixel, const MemoryAllocator& allocator);

}  // namespace lumiset
