#pragma once

// Copies, channel moves and change of depth of whole frames. Unless said otherwise an operation works on the common
// rectangle of its frames (the smaller width and height, from the first stored pixel) and answers false, with
// nothing written, for frames without pixels or formats that it does not handle. `src` and `dst` may be one frame,
// but must not overlap otherwise. A channel is a sample position 0..3 of a colour frame; others are refused.

#include <cstdint>

#include "frame/frame.h"

namespace lumiset {

/// Copies samples as they stand, without reordering. Both frames must hold the same kind of samples.
bool FrameCopy(const Frame& src, Frame& dst) noexcept;

/// Copies w x h pixels from (x, y) to (dx, dy). Negative positions count as 0, the size is clipped to what fits
/// in both frames. False when nothing is left. The rectangles may overlap.
bool FrameCopyRect(const Frame& src, std::int32_t x, std::int32_t y, std::int32_t w, std::int32_t h, Frame& dst,
                   std::int32_t dx, std::int32_t dy) noexcept;

/// Copies one channel. One of the frames may be a mask of the same depth; its channel number does not count.
bool FrameCopyChannel(const Frame& src, Frame& dst, std::int32_t srcChannel, std::int32_t dstChannel) noexcept;
/// The same, written at (x, y) of `dst`, which must lie inside it.
bool FrameCopyChannelAt(const Frame& src, Frame& dst, std::int32_t srcChannel, std::int32_t dstChannel, std::int32_t x,
                        std::int32_t y) noexcept;

/// Copies a mask into the three colour channels and sets all of the alpha of `dst` to full.
bool FrameSpreadGrayToColor(const Frame& mask, Frame& dst) noexcept;

/// Reverses the samples of every pixel: B, G, R, A to A, R, G, B and back. Colour frames of one depth.
bool FrameSwapChannelOrder(const Frame& src, Frame& dst) noexcept;

/// Converts between the 8-bit and the float format of one layout: 0..255 and 0..1. Floats are rounded to nearest
/// and clamped. `src` and `dst` must not overlap.
bool FrameConvertDepth(const Frame& src, Frame& dst) noexcept;

}  // namespace lumiset
