#include "adapters/openfx/parameter_list.h"

#include <algorithm>
#include <cmath>

#include "hostkit/names.h"
#include "hostkit/parameter_text.h"

namespace lumiset::openfx {
namespace {

using hostkit::EffectDescription;
using hostkit::ParameterDescription;

constexpr const char* kFileGroup = "preset_file_group";

std::string groupName(const std::string& path) {
    return path.empty() ? "" : "group_" + hostkit::identifierOf(path);
}

/// Adds the boxes that `path` goes through, "Outer/Inner", as far as they are not there.
void addGroups(std::vector<Parameter>& list, const std::string& path) {
    for (std::size_t end = 0; end < path.size();) {
        const std::size_t start = end == 0 ? 0 : end + 1;
        end = std::min(path.find('/', start), path.size());
        Parameter group;
        group.role = Role::kGroup;
        group.name = groupName(path.substr(0, end));
        group.label = path.substr(start, end - start);
        group.parent = groupName(start == 0 ? "" : path.substr(0, start - 1));
        if (std::none_of(list.begin(), list.end(), [&](const Parameter& each) { return each.name == group.name; })) {
            list.push_back(std::move(group));
        }
    }
}

Parameter own(Role role, const char* name, const char* label, const char* hint, const char* parent = "") {
    Parameter parameter;
    parameter.role = role;
    parameter.name = name;
    parameter.label = label;
    parameter.hint = hint;
    parameter.parent = parent;
    return parameter;
}

Parameter presetChoice(const EffectDescription& effect) {
    Parameter parameter = own(Role::kPreset, "preset", "Preset", "Sets all parameters to those of a preset.");
    parameter.items.emplace_back("Choose a preset");
    for (const hostkit::PresetDescription& preset : effect.presets) {
        parameter.items.push_back(preset.uniqueName);
    }
    return parameter;
}

Parameter effectParameter(const EffectDescription& effect, std::size_t source) {
    const ParameterDescription& description = effect.parameters[source];
    const std::string name = effect.plainName(description);
    Parameter parameter;
    parameter.name = hostkit::identifierOf(name);
    // The box around it says the rest.
    parameter.label =
        description.group.empty() ? name : name.substr(name.find(": ") == std::string::npos ? 0 : name.find(": ") + 2);
    parameter.hint = description.tip;
    parameter.parent = groupName(description.group);
    parameter.source = source;
    parameter.items = description.items;
    return parameter;
}

}  // namespace

std::vector<Parameter> parameterList(const EffectDescription& effect) {
    std::vector<Parameter> list{presetChoice(effect)};
    for (std::size_t i = 0; i < effect.parameters.size(); ++i) {
        addGroups(list, effect.parameters[i].group);
        list.push_back(effectParameter(effect, i));
    }
    list.push_back(own(Role::kGroup, kFileGroup, "Preset File", ""));
    list.push_back(own(Role::kPresetFile, "preset_file", "File", "A preset file, to load or to save.", kFileGroup));
    list.push_back(
        own(Role::kLoadFile, "load_preset_file", "Load", "Sets all parameters to those in the file.", kFileGroup));
    list.push_back(
        own(Role::kSaveFile, "save_preset_file", "Save", "Writes all parameters as they are now.", kFileGroup));
    Parameter fields = own(Role::kFields, "fields", "Fields",
                           "How the picture is interlaced, for hosts that do not tell or tell it wrongly.");
    fields.items = {"From the host", "Progressive", "Upper first", "Lower first"};
    list.push_back(std::move(fields));
    return list;
}

std::size_t placeOf(const std::vector<Parameter>& parameters, Role role) {
    const auto found =
        std::find_if(parameters.begin(), parameters.end(), [role](const Parameter& each) { return each.role == role; });
    return static_cast<std::size_t>(found - parameters.begin());
}

double panelNumber(const ParameterDescription& slider, float value) {
    const auto low = static_cast<double>(slider.minimum);
    return low + static_cast<double>(value) * (static_cast<double>(slider.maximum) - low);
}

float sliderValue(const ParameterDescription& slider, double panelNumber) {
    const auto low = static_cast<double>(slider.minimum);
    const double share = (panelNumber - low) / (static_cast<double>(slider.maximum) - low);
    return std::isnan(share) ? slider.defaultValue.slider : static_cast<float>(std::clamp(share, 0.0, 1.0));
}

bool isDefault(const ParameterDescription& parameter, const ParamValue& value) {
    constexpr float kShown = 0.00005F;
    const auto close = [](float a, float b) { return std::abs(a - b) < kShown; };
    const ParamValue& usual = parameter.defaultValue;
    switch (parameter.type) {
        case kParamPoint:
            return close(value.point.x, usual.point.x) && close(value.point.y, usual.point.y);
        case kParamSlider:
            return close(value.slider, usual.slider);
        case kParamBoolean:
            return (value.boolean != 0) == (usual.boolean != 0);
        default:
            return value.words[0] == usual.words[0];  // choices and colours
    }
}

}  // namespace lumiset::openfx
