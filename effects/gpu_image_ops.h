#pragma once

// Image operations of several passes that effects share in OpenGL. Each has its programs, which the effect makes
// along with its own in `GPUFrame::create` and names by their places there.

#include <cstddef>
#include <cstdint>

#include "effects/picture_passes.h"
#include "effects/shaders/shader_texts.h"
#include "gpu/gpu_frame.h"

namespace lumiset {

inline constexpr GPUProgramSource kBlurVerticalProgram{shaders::kPassVert, shaders::kBlurVerticalFrag};
inline constexpr GPUProgramSource kBlurHorizontalProgram{shaders::kPassVert, shaders::kBlurHorizontalFrag};
inline constexpr GPUProgramSource kDilateEllipseProgram{shaders::kPassVert, shaders::kDilateEllipseFrag};
inline constexpr GPUProgramSource kDilateRingProgram{shaders::kPassVert, shaders::kDilateRingFrag};
inline constexpr GPUProgramSource kErodeEllipseProgram{shaders::kPassVert, shaders::kErodeEllipseFrag};
inline constexpr GPUProgramSource kErodeRingProgram{shaders::kPassVert, shaders::kErodeRingFrag};

/// Size of an elliptical mask in whole texels. The mask is the one of `FrameDilate`: an even size lacks its last
/// column or row, and a size of 1 in either direction leaves the picture as it is.
struct EllipseSize {
    std::int32_t width;
    std::int32_t height;
};

/// Grows (dilation programs) or shrinks (erosion programs) the bright shapes of a mask, which stands in all channels
/// alike, by an ellipse. The mask is the picture of `passes`.
///
/// A small ellipse is done exactly, from the extremes of runs of texels in its rows. A larger one is grown from a
/// small one by rings: the Minkowski sum of two ellipses of one shape is the ellipse with the sum of their half axes,
/// and of the ring's ellipse only as many points of the boundary are needed as keep the gaps between them below half
/// a texel (and its centre, as long as the ring is at most twice as large as what it grows). So the
/// number of texels read grows with the square root of the size: about 155 for a diameter of 192. The edge of
/// a large ellipse stays within about one texel of the true one's.
void growByEllipse(PicturePasses& passes, std::size_t ellipse, std::size_t ring, EllipseSize size) noexcept;

}  // namespace lumiset
