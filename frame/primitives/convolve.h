#pragma once

// One-dimensional convolutions with any kernel of n elements: out(x) = sum over k of
// kernel[n - 1 - k] * in(x + k - anchor), along rows or down columns. The caller provides a source region with
// valid pixels around it: `anchor` before and n - 1 - `anchor` behind. The 8-bit functions take whole numbers and
// a divisor: the sum divided, rounded to nearest, clamped to 0..255. The float ones sum in double precision. The
// `A4` functions may be given pointers advanced by some samples; they do not touch what follows the last sample
// that they work on. Source and destination must not overlap.
//
// Every function answers `kImgNullPointer`, `kImgBadSize` or `kImgBadStep` for such arguments, `kImgBadMaskSize` for
// an empty kernel or an anchor outside it, and `kImgBadRange` for a divisor of 0; it has then written nothing.

#include <cstdint>

#include "frame/primitives/status.h"

namespace lumiset {

ImgStatus ImgConvolveRows8C1(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                             ImgSize size, const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor,
                             std::int32_t divisor) noexcept;
ImgStatus ImgConvolveRows8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                             ImgSize size, const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor,
                             std::int32_t divisor) noexcept;
ImgStatus ImgConvolveRows8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                             ImgSize size, const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor,
                             std::int32_t divisor) noexcept;
ImgStatus ImgConvolveRowsFC1(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size,
                             const float* kernel, std::int32_t kernelSize, std::int32_t anchor) noexcept;
ImgStatus ImgConvolveRowsFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size,
                             const float* kernel, std::int32_t kernelSize, std::int32_t anchor) noexcept;
ImgStatus ImgConvolveRowsFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size,
                             const float* kernel, std::int32_t kernelSize, std::int32_t anchor) noexcept;
ImgStatus ImgConvolveColumns8C1(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                                ImgSize size, const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor,
                                std::int32_t divisor) noexcept;
ImgStatus ImgConvolveColumns8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                                ImgSize size, const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor,
                                std::int32_t divisor) noexcept;
ImgStatus ImgConvolveColumns8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                                ImgSize size, const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor,
                                std::int32_t divisor) noexcept;
ImgStatus ImgConvolveColumnsFC1(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size,
                                const float* kernel, std::int32_t kernelSize, std::int32_t anchor) noexcept;
ImgStatus ImgConvolveColumnsFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size,
                                const float* kernel, std::int32_t kernelSize, std::int32_t anchor) noexcept;
ImgStatus ImgConvolveColumnsFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size,
                                const float* kernel, std::int32_t kernelSize, std::int32_t anchor) noexcept;

}  // namespace lumiset
