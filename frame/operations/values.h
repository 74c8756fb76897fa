#pragma once

// Constants, limits and inversions of whole frames. The rules told in copy.h hold here too.

#include <cstdint>

#include "frame/frame.h"

namespace lumiset {

/// In place: limits every sample, alpha too, to low..high, which are first limited to 0..1 (and truncated to whole
/// levels for 8-bit frames). False for a limit that is not a number.
bool FrameClampValues(Frame& frame, float low, float high) noexcept;

/// Sets one channel of a colour frame to `value` of 255; false for a value outside 0..255.
bool FrameSetChannel(Frame& frame, std::int32_t channel, std::int32_t value) noexcept;

/// Fills a frame with a colour 0xAARRGGBB, float frames with its levels / 255; masks take its low byte.
bool FrameFillColor(Frame& frame, std::uint32_t color) noexcept;

/// Multiplies each sample by `color[i]`, given in the frame's sample order, where 1 changes nothing. Float colour
/// frames take the values as they stand. The others limit them to 0..1, and 8-bit frames make whole levels of 255 of
/// them and round the product down. Masks take the first value alone. False for a value used that is not finite.
/// Both frames must have the same kind of samples.
bool FrameMultiplyColor(const Frame& src, Frame& dst, const float color[4]) noexcept;

/// 1 - sample or 255 - sample, alpha included.
bool FrameInvert(const Frame& src, Frame& dst) noexcept;
/// In place, one channel of a colour frame, or all of a mask.
bool FrameInvertChannel(Frame& frame, std::int32_t channel) noexcept;

/// The smaller of two masks, sample by sample. All three frames have one format.
bool FrameMinOf(const Frame& a, const Frame& b, Frame& dst) noexcept;

/// In place, float colour frames only, every sample: its square; its square root (false, with nothing changed, when
/// one is negative); at most `limits[i]` at position i (false for a limit that is not a number).
bool FrameSquareSamples(Frame& frame) noexcept;
bool FrameSquareRootSamples(Frame& frame) noexcept;
bool FrameLimitSamples(Frame& frame, const float limits[4]) noexcept;

/// In place: new sample i is old sample `order[i]`. Colour frames; false for an entry above 3.
bool FrameSwapChannels(Frame& frame, const std::uint32_t order[4]) noexcept;

}  // namespace lumiset
