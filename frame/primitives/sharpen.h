#pragma once

// Sharpening by a 3 x 3 kernel: centre 16/8, each of the eight neighbours -1/8. The first three samples of four; the
// fourth stays. 8-bit results are rounded to nearest and clamped. The caller provides a source region with a valid
// pixel around it. Source and destination must not overlap. The pointers may be advanced by some samples.
//
// `kImgNullPointer`, `kImgBadSize`, `kImgBadStep`; nothing has been written then.

#include <cstdint>

#include "frame/primitives/status.h"

namespace lumiset {

ImgStatus ImgSharpen8A4(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                        ImgSize size) noexcept;
/// The same on float samples, not clamped.
ImgStatus ImgSharpenFA4(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                        ImgSize size) noexcept;

}  // namespace lumiset
