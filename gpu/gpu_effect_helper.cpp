#include "gpu/gpu_effect_helper.h"

namespace lumiset {

bool GPUEffectHelper::InitGPU(IEffectHost* /*host*/, GPUResources* /*resources*/, GPUProgramSet* /*status*/,
                              std::uint32_t /*reserved*/) noexcept {
    return false;
}

bool GPUEffectHelper::ProcessFrameGPU(std::uint32_t /*reserved*/, IEffectHost* /*host*/, GPUResources* /*resources*/,
                                      const GPUFrameDesc* /*source*/, void* /*extra*/, GPUFrameDesc* /*destination*/,
                                      const FrameRenderInfo* /*info*/) noexcept {
    return false;
}

bool GPUEffectHelper::LoadGPUPrograms(IEffectHost* /*host*/, GPUProgramSet* /*status*/,
                                      std::uint32_t /*reserved*/) noexcept {
    return false;
}

bool GPUEffectHelper::RenderFrameGPU(IEffectHost* /*host*/, const GPUFrameDesc* /*source*/, void* /*extra*/,
                                     GPUFrameDesc* /*destination*/, const FrameRenderInfo* /*info*/) noexcept {
    return false;
}

}  // namespace lumiset
