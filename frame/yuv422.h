#pragma once

// Packed 4:2:2 video: two pixels share their chroma and stand in four bytes, Y, U, Y, V. Rec. 601 weights, limited
// range: Y 16..235, U and V 16..240 around 128. Planes are given and checked as told in primitives/copy.h, with 2
// bytes a pixel here, and must not overlap; `kImgBadSize` for less than two pixels in a row.
//
// A row of odd width ends with one pixel's Y and U. Its V lies outside the row: `wholeGroups` says that it is there
// nevertheless because the region ends inside a wider picture; otherwise the pixel takes the V of the group before.

#include <cstdint>

#include "frame/primitives/status.h"

namespace lumiset {

/// To B, G, R, A with one alpha. Each colour is within 0.6 levels of the exact sum.
ImgStatus ImgYuv422ToBgra(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                          std::uint8_t alpha, bool wholeGroups, ImgSize size) noexcept;

/// From B, G, R, A. Y = (6423 B + 33030 G + 16843 R + 0x108000) >> 16; U and V are made from the sum of the colours
/// of both pixels with weights of 17 fractional bits, rounded to nearest.
ImgStatus ImgBgraToYuv422(const std::uint8_t* src, std::int32_t srcStep, std::uint8_t* dst, std::int32_t dstStep,
                          bool wholeGroups, ImgSize size) noexcept;

}  // namespace lumiset
