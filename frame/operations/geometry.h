#pragma once

// Resizing and border replication of whole frames. All answer false, with nothing written, for frames without
// pixels and formats or arguments that they do not handle.

#include <cstdint>

#include "frame/frame.h"
#include "frame/primitives/status.h"

namespace lumiset {

/// Filters of the resize operations; other numbers count as linear.
inline constexpr std::int32_t kResizeNearest = 0;
inline constexpr std::int32_t kResizeLinear = 1;
inline constexpr std::int32_t kResizeCubic = 2;
inline constexpr std::int32_t kResizeLanczos = 3;

/// A rectangle of pixels; right and bottom are the first column and row outside.
struct FrameRect {
    std::int32_t left;
    std::int32_t top;
    std::int32_t right;
    std::int32_t bottom;
};

/// Resamples a rectangle of `src` to a rectangle of `dst`: dst(x, y) = src((x - xShift) / xFactor, (y - yShift) /
/// yFactor), counted from the rectangles' corners, pixel centres at whole coordinates; a factor of 0 is computed from
/// the rectangles. Beyond the source rectangle its edge pixel counts. The frames must have one depth and layout
/// (equal bytes per pixel, samples of one type) and not overlap. False for rectangles that are empty or not inside
/// their frames, factors that are negative or not finite, or when there is no memory.
bool FrameResizeRect(const Frame& src, Frame& dst, const FrameRect& srcRect, const FrameRect& dstRect,
                     std::int32_t mode, double xFactor, double yFactor, double xShift, double yShift) noexcept;

/// Bytes that a resize takes from the allocator, in one block.
std::int64_t FrameResizeScratch(ImgSize from, ImgSize to, std::int32_t channels, std::int32_t mode,
                                const MemoryAllocator& allocator);

/// Resizes the whole of `src` to the whole of `dst`.
bool FrameResizeInto(const Frame& src, Frame& dst, std::int32_t mode) noexcept;

/// Takes the picture of `src` without `left` columns and `top` rows on each side and writes it to the same place of
/// `dst`, with its edge pixels repeated around it. The two may be one frame; otherwise they must have one size and
/// not overlap. False for frames of different bytes per pixel and when the insets are negative or leave no picture.
bool FrameReplicateBorder(const Frame& src, Frame& dst, std::int32_t left, std::int32_t top) noexcept;

}  // namespace lumiset
