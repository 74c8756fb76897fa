#pragma once

// Brightness, hue and Y'CbCr of whole frames. The rules told in copy.h hold here too.

#include "frame/frame.h"

namespace lumiset {

/// Rec. 601 brightness, 0.299 R + 0.587 G + 0.114 B, of a colour frame into a mask of the same depth, or of packed
/// B, G, R frames (3 bytes a pixel) into an 8-bit mask.
bool FrameToLuma(const Frame& src, Frame& dst) noexcept;

/// Hue, saturation and value in the places of red, green and blue, and back; alpha is kept. Hue is a full turn over
/// 0..1, or 0..255 in bytes. Both frames have one colour format.
bool FrameRgbToHsv(const Frame& src, Frame& dst) noexcept;
bool FrameHsvToRgb(const Frame& src, Frame& dst) noexcept;

/// The three colour samples plus, or times, one number each. Float A, R, G, B frames only, like what follows; the
/// alpha of `dst` stays.
bool FrameAddRGB(const Frame& src, Frame& dst, float red, float green, float blue) noexcept;
bool FrameMultiplyRGB(const Frame& src, Frame& dst, float red, float green, float blue) noexcept;
/// out[i] = m[i][0] * R + m[i][1] * G + m[i][2] * B + m[i][3] into R, G and B.
bool FrameTwistRGB(const Frame& src, Frame& dst, const float matrix[3][4]) noexcept;

/// Rec. 601 colour to Y, Cb, Cr in the places of R, G, B: Y over 0..219/255, both chroma channels over 16/255 to
/// 240/255 with grey at their middle.
bool FrameColorToYuv(const Frame& src, Frame& dst) noexcept;
/// The way back, with the rounded weights of video equipment; Y counts from 0 to 219/255.
bool FrameYuvToColor(const Frame& src, Frame& dst) noexcept;

}  // namespace lumiset
