#pragma once

// The corner-pinned mask in OpenGL: drawn of the same rectangles, softened by the same steps.

#include "effects/corner_mask/corner_mask.h"
#include "effects/gpu_image_ops.h"

namespace lumiset {

inline constexpr GPUProgramSource kFillValueProgram{shaders::kPassVert, shaders::kFillValueFrag};
inline constexpr GPUProgramSource kResizeRegionProgram{shaders::kPassVert, shaders::kResizeRegionFrag};
inline constexpr GPUProgramSource kMixByMaskProgram{shaders::kPassVert, shaders::kMixByMaskFrag};

struct CornerMaskPrograms {
    ShaderProgram& fillValue;
    ShaderProgram& resizeRegion;
    ShaderProgram& blurVertical;
    ShaderProgram& blurHorizontal;
};

/// Draws the same mask into all channels of `mask`. `outline` has been traced; `scratch` may hold anything afterwards.
bool drawCornerMask(GPUFrame& frame, const CornerMaskPrograms& programs, const CornerMaskSettings& settings,
                    const FrameFacts& facts, const CornerOutline& outline, const GPUTexture& mask,
                    const GPUTexture& scratch);

/// A blur's size, at least 1, in whole texels as `FrameBlur` counts it.
std::int32_t blurTaps(float size);
/// Fills all four channels of `to` with one value.
bool fillTexture(GPUFrame& frame, ShaderProgram& fillValue, const GPUTexture& to, float value);
/// `outside` where the mask is full, `inside`, with its alpha everywhere, where it is empty.
bool mixByMask(GPUFrame& frame, ShaderProgram& mixer, const GPUTexture& inside, const GPUTexture& outside,
               const GPUTexture& mask, const GPUTexture& to);

}  // namespace lumiset
