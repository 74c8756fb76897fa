#pragma once

// Resampling along affine and projective maps. Arguments are checked as told in copy.h; source and destination must
// not overlap. Pixel centres lie at whole coordinates.

#include <cstdint>

#include "frame/primitives/resize.h"
#include "frame/primitives/status.h"

namespace lumiset {

struct ImgPoint {
    double x;
    double y;
};

/// A rectangle of pixels, from the centre of the first to the centre of the last column and row.
struct ImgPixelRect {
    std::int32_t left;
    std::int32_t top;
    std::int32_t right;
    std::int32_t bottom;
};

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

/// Maps a rectangle of the source to the quadrilateral `quad[4]` (its corners in the order left top, right top,
/// right bottom, left bottom) by the projective map of the two (Heckbert 1989), with linear sampling that stays
/// inside the rectangle. Pixels whose centres lie in the quadrilateral, its sides included, are written; those up to
/// one pixel outside (and outside its corners, in each direction) have their alpha scaled by their coverage and are
/// written only where that is above the alpha they have. So, in a target cleared to transparent, quadrilaterals with
/// common sides join without a gap or a line. Other pixels stay. `alphaIndex` is the position of alpha, 0 or 3.
/// Quadrilaterals or rectangles without area draw nothing. `kImgBadRange` for a rectangle outside the source, another
/// `alphaIndex`, and for corners that are not finite or not those of a convex quadrilateral (either way round).
ImgStatus ImgWarpQuad8C4(const std::uint8_t* src, std::int32_t srcStep, ImgSize srcSize, const ImgPixelRect& rect,
                         std::uint8_t* dst, std::int32_t dstStep, const ImgPoint* quad, std::int32_t alphaIndex,
                         ImgSize dstSize) noexcept;
ImgStatus ImgWarpQuadFC4(const float* src, std::int32_t srcStep, ImgSize srcSize, const ImgPixelRect& rect, float* dst,
                         std::int32_t dstStep, const ImgPoint* quad, std::int32_t alphaIndex, ImgSize dstSize) noexcept;

}  // namespace lumiset
