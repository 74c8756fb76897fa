#pragma once

#include "gpu/gpu_helper.h"
#include "host/video_effect.h"

namespace lumiset {

/// The common base of all effects: the two OpenGL entry points that are the same for every effect.
class GPUEffectHelper : public IVideoGPUEffect, public GPUHelper {
public:
    bool LUMISET_CALL InitGPU(IEffectHost* host, GPUResources* resources, GPUProgramSet* status,
                              std::uint32_t reserved) noexcept override;
    bool LUMISET_CALL ProcessFrameGPU(std::uint32_t reserved, IEffectHost* host, GPUResources* resources,
                                      const GPUFrameDesc* source, void* extra, GPUFrameDesc* destination,
                                      const FrameRenderInfo* info) noexcept override;

protected:
    ~GPUEffectHelper() = default;

    /// The host's OpenGL interface with one reference, or null.
    [[nodiscard]] static IHostGL* queryGL(IEffectHost* host) noexcept;
};

}  // namespace lumiset
