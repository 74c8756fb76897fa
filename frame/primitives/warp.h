#pragma once

// Resampling along affine maps. Arguments are checked as told in copy.h; source and destination must
// not overlap. Pixel centres lie at whole coordinates.

#include <cstdint>

#include "frame/primitives/interpolation.h"
#include "frame/primitives/status.h"

namespace lumiset {

/// Added to an interpolation code: pixels at the picture's edge are blended with what the destination holds.
inline constexpr std::uint32_t kImgSmoothEdge = 0x80000000U;

/// Maps the source by `matrix[2][3]`: (x, y) goes to (m[0][0] x + m[0][1] y + m[0][2], m[1][0] x + m[1][1] y +
/// m[1][2]). Writes the destination pixels that the source covers, whose centres come from within its outer pixel
/// centres, and leaves the others. `interpolation` is `kImgNearest` or `kImgLinear`, with `kImgSmoothEdge` or
/// without: with it, a pixel up to one pixel outside is blended in by its coverage. `kImgBadRange` for other codes and
/// for a matrix that is not finite or cannot be inverted.
ImgStatus ImgWarpAffine8C1(const std::uint8_t* src, std::int32_t srcStep, ImgSize srcSize, std::uint8_t* dst,
                           std::int32_t dstStep, const double (*matrix)[3], std::uint32_t interpolation,
                           ImgSize dstSize) noexcept;
ImgStatus ImgWarpAffine8C4(const std::uint8_t* src, std::int32_t srcStep, ImgSize srcSize, std::uint8_t* dst,
                           std::int32_t dstStep, const double (*matrix)[3], std::uint32_t interpolation,
                           ImgSize dstSize) noexcept;

}  // namespace lumiset
