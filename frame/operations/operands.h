#pragma once

// What the pointwise operations ask of their frames before they hand planes to a primitive.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <tuple>

#include "frame/bands.h"
#include "frame/frame.h"
#include "frame/primitives/status.h"
#include "host/frame_record.h"

namespace lumiset {

/// True for a frame with pixels that can be worked on as its format says.
[[nodiscard]] inline bool isSound(const Frame& frame) {
    VideoFrameDesc record;
    frame.ToDesc(&record);
    return isSound(&record);
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

/// True when the first `size` pixels of two frames share memory.
[[nodiscard]] bool shareMemory(const Frame& a, const Frame& b, ImgSize size);

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

/// A plane of a frame, from sample `position` of its first pixel on, for a primitive of bytes or of floats.
struct PlaneOperand {
    std::uint8_t* data;
    std::int32_t step;

    operator std::uint8_t*() const { return data; }
    operator float*() const { return reinterpret_cast<float*>(data); }
};
[[nodiscard]] inline PlaneOperand planeOf(const Frame& frame, std::int32_t position = 0) {
    return {frame.Data() + std::ptrdiff_t{position} * BytesPerChannel(frame.Format()), frame.Stride()};
}

/// What a primitive is given of an argument for the rows from `first` on.
inline std::tuple<PlaneOperand, std::int32_t> argumentsFrom(const PlaneOperand& plane, std::int32_t first) {
    return {{plane.data + static_cast<std::ptrdiff_t>(plane.step) * first, plane.step}, plane.step};
}
template <class T>
std::tuple<const T&> argumentsFrom(const T& argument, std::int32_t /*first*/) {
    return {argument};
}

/// Runs `primitive(arguments..., size)` with planes as pointer and step, in bands on the threads of `target`.
template <class Primitive, class... Arguments>
bool runPrimitive(const Frame& target, ImgSize size, Primitive primitive, const Arguments&... arguments) {
    return inBands(target.Resources(), size, [&](std::int32_t first, std::int32_t rows) {
        return std::apply(primitive, std::tuple_cat(argumentsFrom(arguments, first)...,
                                                    std::tuple<ImgSize>({size.width, rows}))) == kImgOk;
    });
}
/// The same with the one of two primitives that fits the samples of `target`.
template <class ByteLoop, class FloatLoop, class... Arguments>
bool runEither(const Frame& target, ImgSize size, ByteLoop bytes, FloatLoop floats, const Arguments&... arguments) {
    return isFloat(target) ? runPrimitive(target, size, floats, arguments...)
                           : runPrimitive(target, size, bytes, arguments...);
}

}  // namespace lumiset
