#pragma once

#include "frame/frame.h"

namespace lumiset {

/// In place: row i is exchanged with row height - 1 - i. Any format. False for a frame without pixels.
bool FrameFlipVertical(Frame& frame) noexcept;

/// Row i of `src` becomes row h - 1 - i of `dst`, h being the smaller height; a row copies the smaller of the
/// two row lengths. Any format. The two may be one picture (the same first pixel and stride), but must not overlap
/// otherwise. False for a frame without pixels.
bool FrameFlipVerticalCopy(const Frame& src, Frame& dst) noexcept;

}  // namespace lumiset
