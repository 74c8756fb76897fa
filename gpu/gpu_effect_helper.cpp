#include "gpu/gpu_effect_helper.h"

#include "gpu/forced_cpu.h"
#include "host/pixel_format.h"

namespace lumiset {

IHostGL* GPUEffectHelper::queryGL(IEffectHost* host) noexcept {
    void* gl = nullptr;
    if (host == nullptr || host->QueryInterface(IHostGL::kId, &gl) != kResultOk) {
        return nullptr;
    }
    return static_cast<IHostGL*>(gl);
}

bool GPUEffectHelper::InitGPU(IEffectHost* host, GPUResources* resources, GPUProgramSet* status,
                              std::uint32_t reserved) noexcept {
    if (forcedCpu()) {
        return false;
    }
    IHostGL* gl = queryGL(host);
    if (gl == nullptr) {
        return false;
    }
    bool ready = false;
    if (resources != nullptr && loadCore()) {
        Bind(resources, gl);
        markProjectionSet();  // nothing is drawn
        ready = LoadGPUPrograms(host, status, reserved);
        Bind(nullptr, nullptr);
    }
    gl->Release();
    return ready;
}

bool GPUEffectHelper::ProcessFrameGPU(std::uint32_t /*reserved*/, IEffectHost* host, GPUResources* resources,
                                      const GPUFrameDesc* source, void* extra, GPUFrameDesc* destination,
                                      const FrameRenderInfo* info) noexcept {
    if (host == nullptr || resources == nullptr || source == nullptr || destination == nullptr ||
        !isHostFormat(source->format)) {
        return false;
    }
    IHostGL* gl = queryGL(host);
    if (gl == nullptr) {
        return false;
    }
    bool rendered = false;
    if (loadCore()) {
        // The frame starts here ...
        Bind(resources, gl);
        rendered = RenderFrameGPU(host, source, extra, destination, info);
        Bind(nullptr, nullptr);
        // ... and has ended here: a driver that fails does so in between.
    }
    gl->Release();
    return rendered;
}

}  // namespace lumiset
