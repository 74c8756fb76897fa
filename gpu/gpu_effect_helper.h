#pragma once

#include "host/video_effect.h"

namespace lumiset {

/// The common base of all effects: the OpenGL entry points that are the same for every effect. This build has
/// no OpenGL renderer, so they answer false, and hosts render by `ProcessFrame`.
class GPUEffectHelper : public IVideoGPUEffect {
public:
    bool LUMISET_CALL InitGPU(IEffectHost* host, GPUResources* resources, GPUProgramSet* status,
                              std::uint32_t reserved) noexcept override;
    bool LUMISET_CALL ProcessFrameGPU(std::uint32_t reserved, IEffectHost* host, GPUResources* resources,
                                      const GPUFrameDesc* source, void* extra, GPUFrameDesc* destination,
                                      const FrameRenderInfo* info) noexcept override;
    bool LUMISET_CALL LoadGPUPrograms(IEffectHost* host, GPUProgramSet* status,
                                      std::uint32_t reserved) noexcept override;
    bool LUMISET_CALL RenderFrameGPU(IEffectHost* host, const GPUFrameDesc* source, void* extra,
                                     GPUFrameDesc* destination, const FrameRenderInfo* info) noexcept override;

protected:
    ~GPUEffectHelper() = default;
};

}  // namespace lumiset
