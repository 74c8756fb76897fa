#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "hostkit/effect_catalogue.h"

namespace lumiset::openfx {

/// What an entry of a plug-in's panel stands for.
enum class Role {
    kGroup,       ///< a box around the entries that name it as their parent
    kEffect,      ///< a parameter of the effect
    kPreset,      ///< a choice: nothing, then the effect's presets
    kPresetFile,  ///< the path of a preset file
    kLoadFile,    ///< buttons for that file
    kSaveFile,
    kFields,  ///< a choice of `FieldSetting`
};

/// How interlaced pictures are told, in the order of the choice.
enum class FieldSetting { kFromHost, kProgressive, kUpperFirst, kLowerFirst };

/// One entry of a plug-in's panel.
struct Parameter {
    Role role = Role::kEffect;
    std::string name;  ///< letters, digits and underscores; projects keep it, so it is for good
    std::string label;
    std::string hint;
    std::string parent;  ///< name of a group before it, or empty
    /// Of the effect's parameters: place in `EffectDescription::parameters`.
    std::size_t source = 0;
    std::vector<std::string> items;  ///< choices
};

/// A plug-in's entries in their order. Choices may grow at their end only: projects keep numbers.
[[nodiscard]] std::vector<Parameter> parameterList(const hostkit::EffectDescription& effect);

/// The place of the only entry with that role.
[[nodiscard]] std::size_t placeOf(const std::vector<Parameter>& parameters, Role role);

/// A slider's value in the numbers of its panel, and back, made safe: within its range, and its default for what is not
/// a number. Values of `float` precision come back to the bit.
[[nodiscard]] double panelNumber(const hostkit::ParameterDescription& slider, float value);
[[nodiscard]] float sliderValue(const hostkit::ParameterDescription& slider, double panelNumber);

/// True where no panel shows a difference to the default.
[[nodiscard]] bool isDefault(const hostkit::ParameterDescription& parameter, const ParamValue& value);

}  // namespace lumiset::openfx
