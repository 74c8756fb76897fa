#pragma once

// Sums, products and roots, sample by sample. Arguments are checked and pointers may be advanced as told
// in copy.h. A destination may be one of the sources. One-channel functions serve whole four-channel rows too,
// with the width given in samples.

#include <cstdint>

#include "frame/primitives/status.h"

namespace lumiset {

/// Sample times value: 8-bit by `scaledProduct`, so that 255 changes nothing; float plainly. The four-channel
/// functions take `values[4]`.
ImgStatus ImgScaleByColor8C1(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                             std::uint8_t value, ImgSize size) noexcept;
ImgStatus ImgScaleByColor8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                             const std::uint8_t* values, ImgSize size) noexcept;
ImgStatus ImgScaleByColorFC1(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, float value,
                             ImgSize size) noexcept;
ImgStatus ImgScaleByColorFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                             const float* values, ImgSize size) noexcept;

/// The first three samples of each pixel plus, or times, `values[3]`; the fourth of `dst` stays.
ImgStatus ImgAddFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, const float* values,
                    ImgSize size) noexcept;
ImgStatus ImgAddInPlaceFA4(float* plane, std::int32_t step, const float* values, ImgSize size) noexcept;
ImgStatus ImgMulFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, const float* values,
                    ImgSize size) noexcept;
ImgStatus ImgMulInPlaceFA4(float* plane, std::int32_t step, const float* values, ImgSize size) noexcept;

/// In place: sample * value / 2^scale, rounded half to even, at most 255. `kImgBadRange` for a scale outside
/// 0..15.
ImgStatus ImgMulScaled8C1(std::uint8_t* plane, std::int32_t step, std::uint8_t value, std::int32_t scale,
                          ImgSize size) noexcept;
/// In place: sample * value.
ImgStatus ImgMulFC1(float* plane, std::int32_t step, float value, ImgSize size) noexcept;

/// In place: the square, or the square root. The root answers `kImgBadRange`, with nothing written, when a sample
/// is negative.
ImgStatus ImgSquareFC1(float* plane, std::int32_t step, ImgSize size) noexcept;
ImgStatus ImgSquareRootFC1(float* plane, std::int32_t step, ImgSize size) noexcept;

}  // namespace lumiset
