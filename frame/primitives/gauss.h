#pragma once

// Small Gaussian filters of one channel by binomial kernels: mask code 33 is (1 2 1) by (1 2 1) over 16, code 55 is
// (1 4 6 4 1) by (1 4 6 4 1) over 256. 8-bit results are rounded to nearest. The caller provides a source region
// with one or two valid pixels around it. Source and destination must not overlap.
//
// `kImgNullPointer`, `kImgBadSize`, `kImgBadStep`; `kImgBadMaskSize` for any other code. Nothing has been written then.

#include <cstdint>

#include "frame/primitives/status.h"

namespace lumiset {

inline constexpr std::int32_t kImgMask3x3 = 33;
inline constexpr std::int32_t kImgMask5x5 = 55;

ImgStatus ImgGauss8(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                    ImgSize size, std::int32_t maskCode) noexcept;
ImgStatus ImgGaussF(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size,
                    std::int32_t maskCode) noexcept;

}  // namespace lumiset
