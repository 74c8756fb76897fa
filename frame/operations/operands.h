#pragma once

// What the pointwise operations ask of their frames before they hand planes to a primitive.

#include <algorithm>
#include <cstdint>

#include "frame/frame.h"
#include "frame/primitives/status.h"

namespace lumiset {

/// True for a frame with pixels whose bytes per pixel are those of its format.
[[nodiscard]] inline bool isSound(const Frame& frame) {
    return frame.Data() != nullptr && frame.Width() > 0 && frame.Height() > 0 &&
           frame.BytesPerPixel() == formatBytesPerPixel(frame.Format());
}
[[nodiscard]] inline bool isColor(const Frame& frame) {
    return isSound(frame) && isHostFormat(frame.Format());
}
[[nodiscard]] inline bool isMask(const Frame& frame) {
    return isSound(frame) && !isHostFormat(frame.Format());
}
[[nodiscard]] inline bool isFloat(const Frame& frame) {
    return isFloatFormat(frame.Format());
}
/// True for two colour frames or two masks of the same sample type, whatever the order of their samples.
[[nodiscard]] inline bool sameSamples(const Frame& a, const Frame& b) {
    return isSound(a) && isSound(b) && a.BytesPerPixel() == b.BytesPerPixel() && isFloat(a) == isFloat(b);
}
[[nodiscard]] inline bool sameFormat(const Frame& a, const Frame& b) {
    return isSound(a) && isSound(b) && a.Format() == b.Format();
}

[[nodiscard]] inline ImgSize sizeOf(const Frame& frame) {
    return {frame.Width(), frame.Height()};
}
/// The common rectangle, at the first stored pixel of both.
[[nodiscard]] inline ImgSize sizeOf(const Frame& a, const Frame& b) {
    return {std::min(a.Width(), b.Width()), std::min(a.Height(), b.Height())};
}
/// The frame's rectangle as rows of single samples.
[[nodiscard]] inline ImgSize inSamples(ImgSize size, const Frame& frame) {
    return isHostFormat(frame.Format()) ? ImgSize{size.width * 4, size.height} : size;
}

/// The frame's samples from sample `position` of the first pixel on.
template <class Sample>
[[nodiscard]] Sample* samplesOf(const Frame& frame, std::uint32_t position = 0) {
    return reinterpret_cast<Sample*>(frame.Data()) + position;
}
[[nodiscard]] inline std::uint8_t* bytesOf(const Frame& frame, std::uint32_t position = 0) {
    return frame.Data() + position;
}
[[nodiscard]] inline float* floatsOf(const Frame& frame, std::uint32_t position = 0) {
    return samplesOf<float>(frame, position);
}

}  // namespace lumiset
