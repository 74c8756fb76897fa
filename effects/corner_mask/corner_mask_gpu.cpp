#include "effects/corner_mask/corner_mask_gpu.h"

#include <algorithm>

namespace lumiset {
namespace {

/// The upper left part of a texture, as a texture.
GPUTexture partOf(const GPUTexture& texture, std::int32_t width, std::int32_t height) {
    GPUTexture part = texture;
    part.width = width;
    part.height = height;
    return part;
}

/// Scales `from` to the size of `to`.
void resizeTexture(GPUFrame& frame, std::size_t resizeRegion, const GPUTexture& from, const GPUTexture& to) {
    frame.pass(resizeRegion, from, to, [&](ShaderProgram& program) {
        program.SetFloat2("regionOrigin", 0.0F, 0.0F);
        program.SetFloat2("regionSize", static_cast<float>(from.width), static_cast<float>(from.height));
        program.SetFloat2("targetSize", static_cast<float>(to.width), static_cast<float>(to.height));
    });
}

}  // namespace

std::int32_t blurTaps(float size) {
    constexpr float kMostTaps = 1000.0F;
    return static_cast<std::int32_t>(std::min(size, kMostTaps));
}

bool fillTexture(GPUFrame& frame, std::size_t fillValue, const GPUTexture& to, float value) {
    // A pass needs a texture to read, though this one does not look at it.
    return frame.pass(fillValue, frame.source(), to, [&](ShaderProgram& program) { program.SetFloat("value", value); });
}

bool drawCornerMask(GPUFrame& frame, const CornerMaskPrograms& programs, const CornerMaskSettings& settings,
                    const FrameFacts& facts, const CornerOutline& outline, const GPUTexture& mask,
                    const GPUTexture& scratch) {
    fillTexture(frame, programs.fillValue, mask, settings.invert ? 1.0F : 0.0F);
    frame.passRects(programs.fillValue, frame.source(), mask, outline.outside(),
                    [&](ShaderProgram& program) { program.SetFloat("value", settings.invert ? 0.0F : 1.0F); });
    const MaskFeather feather = maskFeather(settings.feather, facts);
    if (!feather.visible) {
        return frame.ok();
    }
    const auto blur = [&](const GPUTexture& texture, const GPUTexture& between) {
        frame.blur(programs.blurVertical, programs.blurHorizontal, blurTaps(feather.blurWidth),
                   blurTaps(feather.blurHeight), texture, between, texture);
    };
    if (feather.copyWidth == facts.width && feather.copyHeight == facts.height) {
        blur(mask, scratch);
    } else {
        const GPUTexture copy = partOf(scratch, feather.copyWidth, feather.copyHeight);
        resizeTexture(frame, programs.resizeRegion, mask, copy);
        blur(copy, partOf(mask, feather.copyWidth, feather.copyHeight));
        resizeTexture(frame, programs.resizeRegion, copy, mask);
    }
    return frame.ok();
}

}  // namespace lumiset
