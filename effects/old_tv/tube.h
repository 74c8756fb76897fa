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

/// The glass of a frame; each of its steps is left out at 0.
struct TubeLook {
    float curvature;  ///< 0..1
    float soften;     ///< 0..1
    float opacity;    ///< 0..1: of the black around the picture
};

/// Bends the four sides of `picture` inwards towards the corners, outside which it becomes transparent, into
/// `destination`, softens the alpha there inwards from every transparent edge, and puts black behind it. Two frames of
/// one kind, of at least 16 pixels in each direction; without curvature they are one frame. False when there is no
/// memory.
bool drawTube(const Frame& picture, Frame& destination, const TubeLook& look, const RenderContext& context) noexcept;

/// What it takes from the allocator's reserve.
std::int64_t tubeScratch(const TubeLook& look, const RenderContext& context, std::int32_t format);

}  // namespace lumiset
