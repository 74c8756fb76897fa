#pragma once

#include <array>

#include "host/effect_library.h"
#include "host/host_services.h"
#include "hostkit/com_ptr.h"

namespace lumiset::app {

/// One of the user's options, which the module keeps.
struct UserOption {
    const char* name;
    const char* meaning;
    bool (LUMISET_CALL IHostServices::*get)() noexcept;
    bool (LUMISET_CALL IHostServices::*set)(bool) noexcept;
};

inline constexpr auto kUserOptions = std::to_array<UserOption>({
    {"Forced CPU", "effects render on the processor alone", &IHostServices::GetForcedCpu, &IHostServices::SetForcedCpu},
    {"Knobs Drag Vertical", "knobs of a host's panel follow vertical drags", &IHostServices::GetKnobsDragVertical,
     &IHostServices::SetKnobsDragVertical},
    {"Key Frames vs Presets", "hosts offer key frames in place of presets", &IHostServices::GetKeyFramesVsPresets,
     &IHostServices::SetKeyFramesVsPresets},
    {"Crop Overscan", "hosts cut off what lies behind a screen's edge", &IHostServices::GetCropOverscan,
     &IHostServices::SetCropOverscan},
});

[[nodiscard]] inline hostkit::ComPtr<IHostServices> servicesOf(IEffectLibrary& library) {
    return hostkit::ComPtr<IHostServices>::adopt(library.GetHostServices());
}

}  // namespace lumiset::app
