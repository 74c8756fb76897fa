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
/// mask; `kImgNoMemory`. Nothing is stored on a failure. These and what follows are constants that are called like
/// functions.
struct ImgMorphInit {
    std::int32_t channels;
    bool isFloat;
    ImgStatus operator()(std::int32_t width, const std::uint8_t* mask, ImgSize maskSize, std::int32_t anchorX,
                         std::int32_t anchorY, ImgMorphState** out) const noexcept;
};
inline constexpr ImgMorphInit ImgMorphInit8C1{1, false};
inline constexpr ImgMorphInit ImgMorphInit8C4{4, false};
inline constexpr ImgMorphInit ImgMorphInitFC1{1, true};
inline constexpr ImgMorphInit ImgMorphInitFC4{4, true};

/// Frees a state; null does nothing.
void ImgMorphFree(ImgMorphState* state) noexcept;

/// `kImgNullPointer`, `kImgBadSize` (a region wider than the state's rows too), `kImgBadStep`; `kImgBadMaskSize` for
/// a state of another kind of plane; `kImgNoMemory`.
template <class T>
struct ImgMorph {
    std::int32_t channels;
    bool minimum;  ///< erosion
    ImgStatus operator()(const T* src, std::int32_t srcStep, T* dst, std::int32_t dstStep, ImgSize size,
                         const ImgMorphState* state) const noexcept;
};
inline constexpr ImgMorph<std::uint8_t> ImgDilate8C1{1, false};
inline constexpr ImgMorph<std::uint8_t> ImgDilate8C4{4, false};
inline constexpr ImgMorph<float> ImgDilateFC1{1, false};
inline constexpr ImgMorph<float> ImgDilateFC4{4, false};
inline constexpr ImgMorph<std::uint8_t> ImgErode8C1{1, true};
inline constexpr ImgMorph<std::uint8_t> ImgErode8C4{4, true};
inline constexpr ImgMorph<float> ImgErodeFC1{1, true};
inline constexpr ImgMorph<float> ImgErodeFC4{4, true};

}  // namespace lumiset
