#pragma once

// The glass of an old television: its rounded shape and its soft edge. Frames are top-down.

#include <cstdint>

#include "effects/effect.h"
#include "frame/frame.h"

namespace lumiset {

/// How far the corners lie inwards on a side of `length` pixels, `curvature` 0..1.
std::int32_t tubeCornerDepth(std::int32_t length, float curvature);

/// Size of the box filter, applied twice, that softens the edge; `amount` 0..1.
struct TubeSoftness {
    std::int32_t columns;
    std::int32_t rows;
};
TubeSoftness tubeSoftness(float amount, const FrameFacts& facts);

/// Bends the picture's four sides inwards towards the corners, `curvature` 0..1; outside it becomes transparent.
/// `source` and `destination` are two frames of one kind, of at least 16 pixels in each direction. False when there is
/// no memory.
bool bendTube(const Frame& source, Frame& destination, float curvature, MemoryAllocator& allocator) noexcept;

/// In place: softens the picture's alpha inwards from every transparent edge by `soften`, 0..1, and puts black of
/// `opacity`, 0..1, behind it. Either is left out at 0. False when there is no memory.
bool finishTube(Frame& frame, float soften, float opacity, const RenderContext& context) noexcept;

/// What either of the two takes from the allocator's reserve.
std::int64_t tubeScratch(float soften, const RenderContext& context, std::int32_t format);

}  // namespace lumiset
