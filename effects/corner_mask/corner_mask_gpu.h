#pragma once

// The corner-pinned mask in OpenGL: drawn of the same rectangles, softened by the same steps.

#include "effects/corner_mask/corner_mask.h"
#include "effects/gpu_image_ops.h"

namespace lumiset {

inline constexpr GPUProgramSource kFillValueProgram{shaders::kPassVert, shaders::kFillValueFrag};
inline constexpr GPUProgramSource kResizeRegionProgram{shaders::kPassVert, shaders::kResizeRegionFrag};

/// Places of the programs that the mask takes.
struct CornerMaskPrograms {
    std::size_t fillValue;
    std::size_t resizeRegion;
    std::size_t blurVertical;
    std::size_t blurHorizontal;
};

/// Draws the same mask into all channels of `mask`. `outline` has been traced; `scratch` may hold anything afterwards.
bool drawCornerMask(GPUFrame& frame, const CornerMaskPrograms& programs, const CornerMaskSettings& settings,
                    const FrameFacts& facts, const CornerOutline& outline, const GPUTexture& mask,
                    const GPUTexture& scratch);

/// A blur's size, at least 1, in whole texels as `FrameBlur` counts it.
std::int32_t blurTaps(float size);
/// Fills all four channels of `to` with one value.
bool fillTexture(GPUFrame& frame, std::size_t fillValue, const GPUTexture& to, float value);

}  // namespace lumiset
