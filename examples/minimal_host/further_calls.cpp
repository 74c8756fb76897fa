// What a larger host does beside the minimal one. The page about hosts shows these, and this file has them compiled.

// ---- What it includes
#include "host/effect_library.h"
#include "host/gpu_host.h"

using namespace lumiset;

// ---- Preset files
// `effect` is the host's own object: the effect's names, GetParamInfo and the values as they are now. `set` is the
// host's too: it takes over one value.
bool loadPreset(IEffectLibrary& library, IPresetEffect& effect, std::uint32_t effectIndex, void* window,
                void (*set)(std::uint32_t parameter, std::uint32_t type, const ParamValue& value)) {
    IPresetSaver* saver = library.CreatePresetSaver();
    PresetOutcome outcome{};
    const bool loaded =
        saver != nullptr && saver->LoadPreset(window, &effect, effectIndex, nullptr, &outcome);  // asks for the file
    if (loaded) {
        for (std::uint32_t i = 0; i < outcome.count; ++i) {
            set(i, outcome.entries[i].type, outcome.entries[i].value);  // type 5, a group marker, has no value
        }
    }
    if (saver != nullptr) {
        saver->Release();
    }
    return loaded;
}

// ---- In OpenGL
// `host` answers QueryInterface for IHostGL too. InitGPU is asked once for an effect and a context.
bool renderInOpenGL(IVideoGPUEffect& effect, IEffectHost& host, GPUResources& resources, const GPUFrameDesc& source,
                    GPUFrameDesc& destination, const FrameRenderInfo& info) {
    GPUProgramSet programs{};
    const bool able = effect.InitGPU(&host, &resources, &programs, 0);
    return able && effect.ProcessFrameGPU(0, &host, &resources, &source, nullptr, &destination, &info);
}
