#pragma once

// Brightness, colour matrices and hue. Arguments are checked and pointers may be advanced as told in copy.h. A
// destination of the same layout may be the source. 8-bit results are floor(v + 0.5) limited to 0..255, with v
// computed in single precision, each product and each sum rounded, in the order in which they are written here.

#include <cstdint>

#include "frame/primitives/status.h"

namespace lumiset {

/// One channel: k[0] * s0 + k[2] * s2 + k[1] * s1. The outer two are added first, so that red, green, blue and blue,
/// green, red round alike.
ImgStatus ImgLuma8C3(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                     const float* coefficients, ImgSize size) noexcept;
ImgStatus ImgLuma8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                     const float* coefficients, ImgSize size) noexcept;
ImgStatus ImgLumaFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                     const float* coefficients, ImgSize size) noexcept;

/// out[i] = m[i][0] * s0 + m[i][1] * s1 + m[i][2] * s2 + m[i][3] for the first three samples; `matrix` is its three
/// rows of four, offsets of the 8-bit one on 0..255. The fourth sample of `dst` stays.
ImgStatus ImgColorTwist8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                           const float* matrix, ImgSize size) noexcept;
ImgStatus ImgColorTwistFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                           const float* matrix, ImgSize size) noexcept;
ImgStatus ImgColorTwistInPlaceFA4(float* plane, std::int32_t step, const float* matrix, ImgSize size) noexcept;

/// How the three colour samples of a pixel follow each other. Hue stands where red stood, saturation in green's
/// place, value in blue's.
enum class ImgColorOrder : std::int32_t {
    kRgb,
    kBgr,
};

/// Hue, saturation and value (A. R. Smith, "Color Gamut Transform Pairs", 1978). In bytes a full turn of hue is
/// 255, and 255 itself is stored as 0; in floats hue is 0 to below 1. Grey has hue 0. The fourth sample of `dst`
/// stays. Any hue is taken modulo one turn on the way back.
ImgStatus ImgRgbToHsv8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                         ImgColorOrder order, ImgSize size) noexcept;
ImgStatus ImgHsvToRgb8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                         ImgColorOrder order, ImgSize size) noexcept;
ImgStatus ImgRgbToHsvFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgColorOrder order,
                         ImgSize size) noexcept;
ImgStatus ImgHsvToRgbFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgColorOrder order,
                         ImgSize size) noexcept;

}  // namespace lumiset
