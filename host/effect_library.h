#pragma once

#include <cstdint>

#include "host/frame_processor.h"
#include "host/host_services.h"
#include "host/preset_saver.h"
#include "host/video_effect.h"

namespace lumiset {

/// The module's front door. Objects are handed out with one reference, which the caller gives back.
class IEffectLibrary : public IUnknown {
public:
    static constexpr Guid kId{0x9B8D0B5F, 0x065A, 0x46B1, {0x88, 0x9C, 0xF0, 0x57, 0x93, 0x4C, 0xE8, 0xA4}};

    virtual const char* LUMISET_CALL GetLibraryName() noexcept = 0;
    /// A new effect, or null for an index past the last effect or when memory is exhausted.
    virtual IVideoGPUEffect* LUMISET_CALL CreateEffect(std::uint32_t index) noexcept = 0;
    /// Reserved between the module and its services; answers 0.
    virtual std::uint32_t LUMISET_CALL LibraryQuery(std::uint32_t a, std::uint32_t b) noexcept = 0;
    /// The process-wide options. One reference is added for the caller.
    virtual IHostServices* LUMISET_CALL GetHostServices() noexcept = 0;
    /// Null when memory is exhausted.
    virtual IFrameProcessor* LUMISET_CALL CreateFrameProcessor() noexcept = 0;
    /// For preset files. Null when memory is exhausted.
    virtual IPresetSaver* LUMISET_CALL CreatePresetSaver() noexcept = 0;

protected:
    ~IEffectLibrary() = default;
};

}  // namespace lumiset

/// The module's exports.
extern "C" {
/// A new library object with one reference, or null when memory is exhausted.
lumiset::IEffectLibrary* GetEffectsLibrary();
/// 1 when the host may unload the module. Always 1: the host alone keeps track of what it still holds.
std::int32_t CanUnloadDLLNow();
}
