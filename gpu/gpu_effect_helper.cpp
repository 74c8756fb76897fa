#include "gpu/gpu_effect_helper.h"

#include "gpu/crash_guard.h"
#include "gpu/forced_cpu.h"
#include "gpu/process_names.h"
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
    if (forcedCpu() || crashReported(processLibraryName(), GetEffectName())) {
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
        const char* const hostName = processHostName(*host);
        const char* const libraryName = processLibraryName();
        char guid[kFrameGuidSize];
        const bool announced = MakeFrameGuid(guid, sizeof guid) &&
                               SendMonitorMessage(hostName, libraryName, GetEffectName(), guid, kFrameStarts);
        Bind(resources, gl);
        rendered = RenderFrameGPU(host, source, extra, destination, info);
        Bind(nullptr, nullptr);
        if (announced) {
            SendMonitorMessage(hostName, libraryName, GetEffectName(), guid, kFrameEnded);
        }
    }
    gl->Release();
    return rendered;
}

}  // namespace lumiset
