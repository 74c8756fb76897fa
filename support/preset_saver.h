#pragma once

#include "host/preset_saver.h"
#include "host/reference_count.h"

namespace lumiset {

/// Preset files with their dialogs and messages.
class CPresetSaver final : public Counted<IPresetSaver> {
public:
    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override;

    bool LUMISET_CALL LoadPreset(void* owner, IPresetEffect* effect, std::uint32_t index, const wchar_t* path,
                                 PresetOutcome* outcome) noexcept override;
    bool LUMISET_CALL SavePreset(void* owner, IPresetEffect* effect, std::uint32_t index, const wchar_t* path,
                                 PresetOutcome* outcome) noexcept override;
    void LUMISET_CALL DeleteThis() noexcept override;

private:
    void lastReleased() noexcept override { DeleteThis(); }
};

}  // namespace lumiset
