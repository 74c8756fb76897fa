#pragma once

// Brightness, contrast, saturation, hue and tint in one colour matrix.

#include <cstdint>

#include "frame/frame.h"

namespace lumiset {

/// Builds the matrix of a colour adjustment: out[i] = m[i][0] * s0 + m[i][1] * s1 + m[i][2] * s2 + m[i][3] on three
/// colour samples in the order B, G, R. All settings are 0..1 with the neutral point 0.5, where the matrix is
/// within one percent of the identity; hue turns by 180 - 360 * `hue` degrees about the grey axis. `tintColor` is
/// 0x00BBGGRR, and `tintAmount` below 0.5 takes it away. Offsets are on 0..255 for the 8-bit `format`s, else on
/// 0..1. Without `keepOrder` the matrix is for samples in the order R, G, B. The hue turn and the saturation are
/// those of P. Haeberli, "Matrix Operations for Image Processing" (1993), with the weight of red standing at the
/// first sample.
void BuildColorMatrix(float contrast, float brightness, float saturation, float hue, std::uint32_t tintColor,
                      float tintAmount, std::int32_t format, float matrix[3][4], bool keepOrder) noexcept;

/// Applies such a matrix, in the order B, G, R, to the common rectangle of two frames of one colour format and keeps
/// alpha. Float colours are clamped to 0..1. `source` and `destination` may be one frame. False for frames that do not
/// fit.
bool FrameColorMatrix(const Frame& source, Frame& destination, const float matrix[3][4]) noexcept;

/// Applies the matrix of these settings to the common rectangle of two frames of one colour format and keeps alpha.
/// Float colours are clamped to 0..1. Frames without colour are copied. `source` and `destination` may be one frame.
/// False for frames that do not fit, and for a setting that is not finite. Needs no scratch memory; `allocator` may be
/// null.
bool ColorAdjust(const Frame& source, Frame& destination, float contrast, float brightness, float saturation, float hue,
                 std::uint32_t tintColor, float tintAmount, MemoryAllocator* allocator) noexcept;

/// `ColorAdjust` with its settings in another order.
bool FrameColorTransform(const Frame& src, Frame& dst, float brightness, float contrast, float hue, float saturation,
                         std::uint32_t tintColor, float tintStrength, MemoryAllocator* allocator) noexcept;

}  // namespace lumiset
