#pragma once

#include <cstdint>

#include "frame/frame.h"
#include "frame/primitives/status.h"

namespace lumiset {

/// Bends the picture's sides inwards, top and bottom first and then left and right: by `topDepth` and `sideDepth`
/// pixels in the corners and not at all in the middle, in straight pieces of eight pixels. Each line across is scaled
/// linearly to what is left of it, which within such short pieces is the projective map to a hundredth of a pixel.
/// Pixels that the picture covers in part have their alpha scaled by the cover; beyond them it is transparent.
/// `source` and `destination` are two frames of one size, at least 16 pixels in each direction, and one colour format;
/// all of `destination` is written. `alpha` is a mask of that size that gets a copy of its alpha, or null. False when
/// there is no memory.
bool bendSides(const Frame& source, Frame& destination, std::int32_t topDepth, std::int32_t sideDepth, Frame* alpha,
               MemoryAllocator& allocator) noexcept;

/// What it takes from the allocator's reserve.
std::int64_t bendScratch(ImgSize size, std::int32_t pixelBytes, const MemoryAllocator& allocator);

}  // namespace lumiset
