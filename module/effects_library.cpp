#include "module/effects_library.h"

#include <iterator>
#include <new>

#include "effects/effect_list.h"
#include "frame/frame_processor.h"
#include "gpu/process_names.h"
#include "module/host_services.h"
#include "support/preset_saver.h"

namespace lumiset {
Result CLumisetEffects5::QueryInterface(const Guid& iid, void** out) noexcept {
    return queryOneInterface<IEffectLibrary>(this, iid, out, kResultNoInterface);
}

const char* CLumisetEffects5::GetLibraryName() noexcept {
    return "Vantrel Lumiset V";
}

IVideoGPUEffect* CLumisetEffects5::CreateEffect(std::uint32_t index) noexcept {
    HostServices::instance();  // effects obey the user's options from the start
    setLibrarySource(GetEffectsLibrary);
    return index < std::size(kEffects) ? kEffects[index]() : nullptr;
}

std::uint32_t CLumisetEffects5::LibraryQuery(std::uint32_t a, std::uint32_t b) noexcept {
    return HostServices::instance().query(a, b, 0);
}

IHostServices* CLumisetEffects5::GetHostServices() noexcept {
    void* services = nullptr;
    HostServices::instance().QueryInterface(IHostServices::kId, &services);
    return static_cast<IHostServices*>(services);
}

IFrameProcessor* CLumisetEffects5::CreateFrameProcessor() noexcept {
    return createFrameProcessor();
}

IPresetSaver* CLumisetEffects5::CreatePresetSaver() noexcept {
    return new (std::nothrow) CPresetSaver;
}

}  // namespace lumiset
