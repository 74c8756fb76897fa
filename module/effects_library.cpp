#include "module/effects_library.h"

#include <array>
#include <new>

#include "effects/alpha_processor/alpha_processor.h"
#include "effects/background_generator/background_generator.h"
#include "effects/color_fixer/color_fixer.h"
#include "effects/old_tv/old_tv.h"
#include "effects/outline/outline.h"
#include "effects/progressive_stretch/progressive_stretch.h"
#include "effects/selective_color/selective_color.h"
#include "effects/selective_focus/selective_focus.h"
#include "effects/selective_tint/selective_tint.h"
#include "effects/viewfinder/viewfinder.h"
#include "frame/frame_processor.h"
#include "gpu/process_names.h"
#include "module/host_services.h"
#include "support/preset_saver.h"

namespace lumiset {
namespace {

using Factory = IVideoGPUEffect* (*)();

template <class EffectClass>
IVideoGPUEffect* make() {
    return new (std::nothrow) EffectClass;
}

/// Effects by library index. The places never change: hosts and preset files know effects by them.
constexpr auto kEffects = std::to_array<Factory>({
    make<CProgressiveStretch>,    // Progressive Stretch
    make<CBackgroundGenerator>,   // Background Generator
    make<COutline>,               // Outline
    make<CSelectiveFocus>,        // Selective Focus
    make<CMaskedGradientTint>,    // Selective Tint
    make<CImprovedColorbalance>,  // Color Fixer Pro
    make<CViewfinder>,            // Viewfinder
    make<COldTV>,                 // Old TV
    make<CSelectColor>,           // Selective Color
    make<CAlphaProcessor>,        // Alpha Processor
});

}  // namespace

Result CLumisetEffects5::QueryInterface(const Guid& iid, void** out) noexcept {
    return queryOneInterface<IEffectLibrary>(this, iid, out, kResultNoInterface);
}

std::uint32_t CLumisetEffects5::AddRef() noexcept {
    return m_references.add();
}

std::uint32_t CLumisetEffects5::Release() noexcept {
    const std::uint32_t remaining = m_references.release();
    if (remaining == 0) {
        delete this;
    }
    return remaining;
}

const char* CLumisetEffects5::GetLibraryName() noexcept {
    return "Vantrel Lumiset V";
}

IVideoGPUEffect* CLumisetEffects5::CreateEffect(std::uint32_t index) noexcept {
    HostServices::instance();  // effects obey the user's options from the start
    setLibrarySource(GetEffectsLibrary);
    return index < kEffects.size() ? kEffects[index]() : nullptr;
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
