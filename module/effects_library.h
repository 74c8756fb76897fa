#pragma once

#include "host/effect_library.h"
#include "host/reference_count.h"

namespace lumiset {

/// The effect library that the module hands out. It has no state beside its reference count.
class CLumisetEffects5 final : public Counted<IEffectLibrary> {
public:
    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override;

    const char* LUMISET_CALL GetLibraryName() noexcept override;
    IVideoGPUEffect* LUMISET_CALL CreateEffect(std::uint32_t index) noexcept override;
    std::uint32_t LUMISET_CALL LibraryQuery(std::uint32_t a, std::uint32_t b) noexcept override;
    IHostServices* LUMISET_CALL GetHostServices() noexcept override;
    IFrameProcessor* LUMISET_CALL CreateFrameProcessor() noexcept override;
    IPresetSaver* LUMISET_CALL CreatePresetSaver() noexcept override;

private:
    void lastReleased() noexcept override { delete this; }
};

}  // namespace lumiset
