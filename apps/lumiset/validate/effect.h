#pragma once

#include <string>
#include <vector>

#include "host/effect_library.h"
#include "hostkit/com_ptr.h"

namespace lumiset::app::validate {

/// One effect of the module with what it tells of itself.
struct Effect {
    std::uint32_t index = 0;
    std::string name;
    hostkit::ComPtr<IVideoGPUEffect> object;
    std::vector<ParamInfo> params;
    std::uint32_t presets = 0;
    std::uint32_t slots = 0;  ///< values of a preset

    /// Parameter that slot `slot` of a preset is for.
    [[nodiscard]] std::uint32_t paramOf(std::uint32_t slot) const;
    /// The values of a preset, by parameter; defaults where the preset has none.
    [[nodiscard]] std::vector<ParamValue> valuesOf(std::uint32_t preset) const;
};

/// Every effect of the library. Throws `Broken` for a library without one, and for lists that do not end.
[[nodiscard]] std::vector<Effect> effectsOf(IEffectLibrary& library);

[[nodiscard]] inline bool hasValue(const ParamInfo& info) {
    return info.type != kParamGroup;
}

}  // namespace lumiset::app::validate
