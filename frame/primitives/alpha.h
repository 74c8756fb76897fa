#pragma once

// Compositing. All four samples of each pixel are read and written. `alphaIndex` is the position of alpha, 0 or 3
// (`kImgBadRange` otherwise); the names in A4 have it last. Other arguments are checked as told in copy.h. The
// destination may be one of the sources.

#include <cstdint>

#include "frame/primitives/status.h"

namespace lumiset {

/// Modes of the over operation; others answer `kImgBadRange`.
inline constexpr std::int32_t kImgOverStraight = 0;       ///< colours are not multiplied by their alpha
inline constexpr std::int32_t kImgOverPremultiplied = 6;  ///< colours are

/// Colour times alpha; alpha is copied.
ImgStatus ImgPremultiply8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                            ImgSize size) noexcept;
ImgStatus ImgPremultiply8C4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                            std::int32_t alphaIndex, ImgSize size) noexcept;
ImgStatus ImgPremultiplyFC4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                            std::int32_t alphaIndex, ImgSize size) noexcept;

/// Top over bottom, with a the top's alpha. Straight: colour top * a + bottom * (1 - a). Premultiplied: colour
/// top + bottom * (1 - a). Alpha in both: a + bottom's alpha * (1 - a). The 8-bit products are `scaledProduct`,
/// their sums limited to 255.
ImgStatus ImgAlphaOver8A4(const std::uint8_t* top, std::int32_t topStep, const std::uint8_t* bottom,
                          std::int32_t bottomStep, std::uint8_t* dst, std::int32_t dstStep, std::int32_t mode,
                          ImgSize size) noexcept;
ImgStatus ImgAlphaOver8C4(const std::uint8_t* top, std::int32_t topStep, const std::uint8_t* bottom,
                          std::int32_t bottomStep, std::uint8_t* dst, std::int32_t dstStep, std::int32_t mode,
                          std::int32_t alphaIndex, ImgSize size) noexcept;
ImgStatus ImgAlphaOverFC4(const float* top, std::int32_t topStep, const float* bottom, std::int32_t bottomStep,
                          float* dst, std::int32_t dstStep, std::int32_t mode, std::int32_t alphaIndex,
                          ImgSize size) noexcept;

}  // namespace lumiset
