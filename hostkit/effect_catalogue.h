#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/effect_library.h"
#include "host/records.h"
#include "hostkit/com_ptr.h"
#include "hostkit/parameter_description.h"

namespace lumiset::hostkit {

/// A named setting of an effect's parameters.
struct PresetDescription {
    std::uint32_t index = 0;  ///< as `IVideoEffect::GetPresetValue` takes it
    std::string name;
    /// By which `EffectDescription::preset` finds it: the name, with a number from 2 behind it where presets before it
    /// have the same.
    std::string uniqueName;
    /// One entry for each of the effect's `parameters`; empty where the preset leaves the parameter alone.
    std::vector<std::optional<ParamValue>> values;
};

/// One effect as the module describes it. Any number of threads may read it.
struct EffectDescription {
    static constexpr std::uint32_t kDependsOnTime = 0x4000;  ///< in `flags`: the picture moves with time

    std::uint32_t index = 0;  ///< as `IEffectLibrary::CreateEffect` takes it
    std::string name;
    std::uint32_t flags = 0;
    std::uint32_t indexCount = 0;  ///< parameter indices, group markers included
    std::vector<ParameterDescription> parameters;
    std::vector<PresetDescription> presets;

    [[nodiscard]] bool dependsOnTime() const { return (flags & kDependsOnTime) != 0; }
    /// The parameter called `name`: its label, `Group/Label` or `#` and its index, in any case of letters.
    /// Throws `ParameterError` for an unknown name and for a label that several parameters share.
    [[nodiscard]] const ParameterDescription& parameter(std::string_view name) const;
    /// The parameter with that index, or null.
    [[nodiscard]] const ParameterDescription* parameterAt(std::uint32_t index) const;
    /// The shortest name by which `parameter` finds this one.
    [[nodiscard]] std::string shortestName(const ParameterDescription& wanted) const;
    /// A name that no two parameters share, also after they are reduced to letters and digits: the label; where that
    /// occurs again in another group box, "Group: Label"; where it occurs again in the same box a colour says that it
    /// is one.
    [[nodiscard]] std::string plainName(const ParameterDescription& wanted) const;
    /// The preset with that unique name, in any case of letters. Throws `ParameterError` for an unknown one.
    [[nodiscard]] const PresetDescription& preset(std::string_view name) const;
};

/// Reads everything that an effect tells about itself.
[[nodiscard]] EffectDescription describeEffect(IVideoGPUEffect& effect, std::uint32_t index);

/// All effects of a module, in the module's order. Stays what it is: any number of threads may read it, and references
/// into it hold as long as it lives.
class EffectCatalogue {
public:
    /// Asks the library for its effects; those that this build does not have are left out.
    explicit EffectCatalogue(IEffectLibrary& library);

    [[nodiscard]] const std::vector<EffectDescription>& effects() const { return m_effects; }
    /// Throws `ParameterError` for an unknown name.
    [[nodiscard]] const EffectDescription& effect(std::string_view name) const;

private:
    std::vector<EffectDescription> m_effects;
};

}  // namespace lumiset::hostkit
