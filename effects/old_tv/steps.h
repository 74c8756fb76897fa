#pragma once

// The pixel work of an old television, step by step, on colour frames of any host format. Frames are top-down.
// 8-bit results are truncated. Frames of other formats stay as they are.

#include <cstdint>

#include "frame/frame.h"

namespace lumiset {

/// In place: a copy of the picture's brightness, moved right by `shift` pixels round the row's ends, shows through
/// wherever it is brighter. Colour differences stay. `shift` is below the width, `luma` has room for `ghostFloats` of
/// it.
void addGhost(Frame& frame, std::int32_t shift, float* luma) noexcept;
std::int64_t ghostFloats(std::int32_t width);

/// In place: composites the grey picture `noise` (a mask of the frame's size and depth) over the frame with
/// `opacity`, 0..255, straight alpha.
void addStatic(Frame& frame, const Frame& noise, std::uint8_t opacity) noexcept;

/// How a row is shown: turned left round its ends by `turn` pixels, 0..width - 1, colours times `light`, 0..1, and then
/// brightened to colour + colour * `gain`, no more than white.
struct RowLook {
    std::int32_t turn;
    float light;
    float gain;
};
/// Copies a frame of one row to another like that.
void showRow(const Frame& source, Frame& destination, const RowLook& look) noexcept;

}  // namespace lumiset
