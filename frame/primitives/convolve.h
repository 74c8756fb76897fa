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

/// What tells the convolutions apart. Each is a constant that is called like a function.
struct ImgConvolution {
    std::int32_t channels;
    bool skipsFourth;
    bool alongRows;
};
struct ImgConvolution8 : ImgConvolution {
    ImgStatus operator()(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                         ImgSize size, const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor,
                         std::int32_t divisor) const noexcept;
};
struct ImgConvolutionF : ImgConvolution {
    ImgStatus operator()(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size,
                         const float* kernel, std::int32_t kernelSize, std::int32_t anchor) const noexcept;
};

inline constexpr ImgConvolution8 ImgConvolveRows8C1{{1, false, true}};
inline constexpr ImgConvolution8 ImgConvolveRows8C4{{4, false, true}};
inline constexpr ImgConvolution8 ImgConvolveRows8A4{{4, true, true}};
inline constexpr ImgConvolution8 ImgConvolveColumns8C1{{1, false, false}};
inline constexpr ImgConvolution8 ImgConvolveColumns8C4{{4, false, false}};
inline constexpr ImgConvolution8 ImgConvolveColumns8A4{{4, true, false}};
inline constexpr ImgConvolutionF ImgConvolveRowsFC1{{1, false, true}};
inline constexpr ImgConvolutionF ImgConvolveRowsFC4{{4, false, true}};
inline constexpr ImgConvolutionF ImgConvolveRowsFA4{{4, true, true}};
inline constexpr ImgConvolutionF ImgConvolveColumnsFC1{{1, false, false}};
inline constexpr ImgConvolutionF ImgConvolveColumnsFC4{{4, false, false}};
inline constexpr ImgConvolutionF ImgConvolveColumnsFA4{{4, true, false}};

}  // namespace lumiset
