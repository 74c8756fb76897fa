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
/// The picture goes through `scratch`, a frame of the same kind, and comes back. False when there is no memory.
bool bendTube(Frame& frame, Frame& scratch, float curvature, MemoryAllocator& allocator) noexcept;

/// Softens the picture's alpha inwards from every transparent edge, `amount` 0..1. False when there is no memory.
bool softenTubeEdge(Frame& frame, float amount, const RenderContext& context) noexcept;

/// What either of the two takes from the allocator's reserve.
std::int64_t tubeScratch(float softenAmount, const RenderContext& context, std::int32_t format);

}  // namespace lumiset
