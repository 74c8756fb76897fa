#pragma once

// Maxima and minima over a mask. The state of a mask is made once by `ImgMorphInit*` and serves any number of calls,
// from any threads, until `ImgMorphFree`. Dilation: out(x, y) = maximum of in(x + i - anchorX, y + j - anchorY) over
// the mask elements (i, j) that are not zero; erosion the minimum. Beyond the region the nearest pixel counts. A mask
// without a set element copies. Each channel is taken for itself. Source and destination must not overlap.

#include <cstdint>

#include "frame/primitives/status.h"

namespace lumiset {

struct ImgMorphState;

/// Stores the state of a mask of `maskSize` bytes, row after row without gaps, for rows of `width` pixels.
/// `kImgNullPointer`; `kImgBadSize` for a width or mask size below 1; `kImgBadMaskSize` for an anchor outside the
/// mask; `kImgNoMemory`. Nothing is stored on a failure.
ImgStatus ImgMorphInit8C1(std::int32_t width, const std::uint8_t* mask, ImgSize maskSize, std::int32_t anchorX,
                          std::int32_t anchorY, ImgMorphState** out) noexcept;
ImgStatus ImgMorphInit8C4(std::int32_t width, const std::uint8_t* mask, ImgSize maskSize, std::int32_t anchorX,
                          std::int32_t anchorY, ImgMorphState** out) noexcept;
ImgStatus ImgMorphInitFC1(std::int32_t width, const std::uint8_t* mask, ImgSize maskSize, std::int32_t anchorX,
                          std::int32_t anchorY, ImgMorphState** out) noexcept;
ImgStatus ImgMorphInitFC4(std::int32_t width, const std::uint8_t* mask, ImgSize maskSize, std::int32_t anchorX,
                          std::int32_t anchorY, ImgMorphState** out) noexcept;

/// Frees a state; null does nothing.
void ImgMorphFree(ImgMorphState* state) noexcept;

/// `kImgNullPointer`, `kImgBadSize` (a region wider than the state's rows too), `kImgBadStep`; `kImgBadMaskSize` for
/// a state of another kind of plane; `kImgNoMemory`.
ImgStatus ImgDilate8C1(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                       ImgSize size, const ImgMorphState* state) noexcept;
ImgStatus ImgDilate8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                       ImgSize size, const ImgMorphState* state) noexcept;
ImgStatus ImgDilateFC1(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size,
                       const ImgMorphState* state) noexcept;
ImgStatus ImgDilateFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size,
                       const ImgMorphState* state) noexcept;
ImgStatus ImgErode8C1(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                      ImgSize size, const ImgMorphState* state) noexcept;
ImgStatus ImgErode8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                      ImgSize size, const ImgMorphState* state) noexcept;
ImgStatus ImgErodeFC1(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size,
                      const ImgMorphState* state) noexcept;
ImgStatus ImgErodeFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep, ImgSize size,
                      const ImgMorphState* state) noexcept;

}  // namespace lumiset
