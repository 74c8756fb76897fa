#pragma once

// The pixel work of an old television, step by step, on colour frames of any host format. Frames are top-down.
// 8-bit results are truncated. Frames of other formats stay as they are.

#include <cstdint>
#include <span>

#include "effects/old_tv/plan.h"
#include "frame/frame.h"

namespace lumiset {

/// In place: a copy of the picture's brightness, moved right by `shift` pixels round the row's ends, shows
/// through wherever it is brighter. Colour differences stay. `luma` has room for `ghostFloats` of the width.
void addGhost(Frame& frame, std::int32_t shift, float* luma) noexcept;
std::int64_t ghostFloats(std::int32_t width);

/// In place: composites the grey picture `noise` (a mask of the frame's size and depth) over the frame with
/// `opacity`, 0..255, straight alpha.
void addStatic(Frame& frame, const Frame& noise, std::uint8_t opacity) noexcept;

/// In place: row y's colours become colour + colour * gain(y), no more than white.
void brightenRow(Frame& frame, std::int32_t y, float gain) noexcept;

/// In place: row y's colours times `factor`, 0..1.
void darkenRow(Frame& frame, std::int32_t y, float factor) noexcept;

/// Copies the picture, the rows of each strip turned left round their ends.
void tearRows(const Frame& source, Frame& destination, std::span<const TearStrip> strips) noexcept;

/// Copies the picture as the roll says, on opaque black.
void rollPicture(const Frame& source, Frame& destination, const RollEvent& roll) noexcept;

}  // namespace lumiset
