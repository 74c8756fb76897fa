#include "hostkit/effect_catalogue.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "hostkit/names.h"
#include "hostkit/parameter_text.h"

namespace lumiset::hostkit {
namespace {

/// Further indices than the module has effects: a build may leave out any of them, so a null answer does not
/// tell the end.
constexpr std::uint32_t kMostEffects = 64;
/// Bounds what a broken module could make us read.
constexpr std::uint32_t kMostParameters = 1024;
constexpr std::uint32_t kMostPresets = 1024;

template <std::size_t kSize>
std::string fixedText(const char (&text)[kSize]) {
    return {text, ::strnlen(text, kSize)};
}

std::string textOrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

std::string joined(const std::vector<std::string>& groups) {
    std::string path;
    for (const std::string& group : groups) {
        path += path.empty() ? group : '/' + group;
    }
    return path;
}

ParameterDescription describeParameter(const ParamInfo& info, std::uint32_t index) {
    ParameterDescription parameter;
    parameter.index = index;
    parameter.type = static_cast<ParamType>(info.type);
    parameter.label = fixedText(info.label);
    parameter.defaultValue = info.defaultValue;
    parameter.panelRect = info.panelRect;
    if (parameter.type == kParamSlider) {
        parameter.minimum = info.minimum;
        parameter.maximum = info.slider.maximum;
        parameter.wholeNumbers = info.slider.showDecimals == 0;
    } else if (parameter.type == kParamChoice) {
        for (std::size_t i = 0; i < std::min<std::size_t>(info.itemCount, kMaxChoiceItems); ++i) {
            parameter.items.push_back(fixedText(info.items[i]));
        }
    }
    return parameter;
}

void describeParameters(IVideoGPUEffect& effect, EffectDescription& description) {
    const auto self = ComPtr<IVideoGPUEffect>::adopt((effect.AddRef(), &effect));
    const ComPtr<IParamToolTip> tips = self.query<IParamToolTip>();
    std::vector<std::string> groups;
    ParamInfo info;
    std::uint32_t index = 0;
    for (; index < kMostParameters && effect.GetParamInfo(index, &info); ++index) {
        if (info.type != kParamGroup) {
            ParameterDescription parameter = describeParameter(info, index);
            parameter.group = joined(groups);
            parameter.tip = tips ? textOrEmpty(tips->GetParamToolTip(index)) : "";
            description.parameters.push_back(std::move(parameter));
        } else if (info.groupEnd == 0) {
            groups.push_back(fixedText(info.label));
        } else if (!groups.empty()) {
            // Whatever its label says: a closing marker ends the innermost box.
            groups.pop_back();
        }
    }
    description.indexCount = index;
}

std::string uniqueName(const std::string& name, const std::vector<PresetDescription>& before) {
    const auto isTaken = [&](const std::string& wanted) {
        return std::any_of(before.begin(), before.end(),
                           [&](const PresetDescription& each) { return equalIgnoringCase(each.uniqueName, wanted); });
    };
    std::string unique = name;
    for (int number = 2; isTaken(unique); ++number) {
        unique = name + ' ' + std::to_string(number);
    }
    return unique;
}

void describePresets(IVideoGPUEffect& effect, EffectDescription& description) {
    ParamValue value;
    std::uint32_t slots = 0;
    while (slots < kMostParameters && effect.GetPresetValue(0, slots, &value)) {
        ++slots;
    }
    const bool slotsAreIndices = slots == description.indexCount;
    for (std::uint32_t i = 0; i < kMostPresets; ++i) {
        const char* name = effect.GetPresetName(i);
        if (name == nullptr) {
            break;
        }
        PresetDescription preset{i, name, uniqueName(name, description.presets), {}};
        std::uint32_t slot = 0;
        for (const ParameterDescription& parameter : description.parameters) {
            const bool has = effect.GetPresetValue(i, slotsAreIndices ? parameter.index : slot, &value);
            preset.values.push_back(has ? std::optional(value) : std::nullopt);
            ++slot;
        }
        description.presets.push_back(std::move(preset));
    }
}

/// `nameOf` is the member that holds a thing's name.
template <class Thing>
const Thing& findNamed(const std::vector<Thing>& things, std::string Thing::*nameOf, std::string_view name,
                       const std::string& complaint) {
    const std::string_view wanted = trimmed(name);
    std::vector<std::string> names;
    for (const Thing& thing : things) {
        if (equalIgnoringCase(thing.*nameOf, wanted)) {
            return thing;
        }
        names.push_back(thing.*nameOf);
    }
    std::string hint = didYouMean(wanted, names);
    if (hint.empty()) {
        hint = names.empty() ? " It has none." : " There is " + quotedList(names) + ".";
    }
    throw ParameterError(complaint + hint);
}

bool isCalled(const ParameterDescription& parameter, std::string_view name) {
    return equalIgnoringCase(parameter.label, name) || equalIgnoringCase(parameter.path(), name);
}

std::optional<std::uint32_t> indexIn(std::string_view name) {
    std::uint32_t index = 0;
    const char* end = name.data() + name.size();
    if (name.size() < 2 || name.front() != '#') {
        return std::nullopt;
    }
    const auto [stop, error] = std::from_chars(name.data() + 1, end, index);
    return error == std::errc() && stop == end ? std::optional(index) : std::nullopt;
}

}  // namespace

const ParameterDescription* EffectDescription::parameterAt(std::uint32_t wanted) const {
    const auto found = std::find_if(parameters.begin(), parameters.end(),
                                    [&](const ParameterDescription& each) { return each.index == wanted; });
    return found != parameters.end() ? &*found : nullptr;
}

const ParameterDescription& EffectDescription::parameter(std::string_view asked) const {
    const std::string_view wanted = trimmed(asked);
    if (const std::optional<std::uint32_t> number = indexIn(wanted)) {
        if (const ParameterDescription* found = parameterAt(*number)) {
            return *found;
        }
        throw ParameterError(name + " has no parameter #" + std::to_string(*number) + ".");
    }
    std::vector<const ParameterDescription*> found;
    std::vector<std::string> known;
    for (const ParameterDescription& each : parameters) {
        if (isCalled(each, wanted)) {
            found.push_back(&each);
        }
        known.push_back(shortestName(each));
    }
    if (found.size() == 1) {
        return *found.front();
    }
    if (found.empty()) {
        std::string hint = didYouMean(wanted, known);
        throw ParameterError(name + " has no parameter \"" + std::string(wanted) + "\"." +
                             (hint.empty() ? " It has " + quotedList(known) + "." : hint));
    }
    std::string ways;
    for (const ParameterDescription* each : found) {
        ways += ways.empty() ? "" : " or ";
        ways += '"' + shortestName(*each) + "\" (" + describeRange(*each) + ')';
    }
    throw ParameterError(name + " has more than one \"" + std::string(wanted) + "\": say " + ways + ".");
}

std::string EffectDescription::shortestName(const ParameterDescription& wanted) const {
    const auto isTheOnly = [&](const std::string& text) {
        return std::count_if(parameters.begin(), parameters.end(),
                             [&](const ParameterDescription& each) { return isCalled(each, text); }) == 1;
    };
    if (isTheOnly(wanted.label)) {
        return wanted.label;
    }
    return isTheOnly(wanted.path()) ? wanted.path() : '#' + std::to_string(wanted.index);
}

std::string EffectDescription::plainName(const ParameterDescription& wanted) const {
    bool sameBox = false;
    bool otherBox = false;
    for (const ParameterDescription& other : parameters) {
        if (&other != &wanted && other.label == wanted.label) {
            (other.group == wanted.group ? sameBox : otherBox) = true;
        }
    }
    std::string plain = sameBox && wanted.type == kParamColor ? wanted.label + " Color" : wanted.label;
    if (!otherBox || wanted.group.empty()) {
        return plain;
    }
    std::string box = wanted.group;
    std::replace(box.begin(), box.end(), ':', ' ');
    return box + ": " + plain;
}

const PresetDescription& EffectDescription::preset(std::string_view asked) const {
    return findNamed(presets, &PresetDescription::uniqueName, asked,
                     name + " has no preset \"" + std::string(trimmed(asked)) + "\".");
}

EffectDescription describeEffect(IVideoGPUEffect& effect, std::uint32_t index) {
    EffectDescription description;
    description.index = index;
    description.name = textOrEmpty(effect.GetEffectName());
    description.flags = effect.GetEffectFlags();
    describeParameters(effect, description);
    describePresets(effect, description);
    return description;
}

EffectCatalogue::EffectCatalogue(IEffectLibrary& library) {
    for (std::uint32_t index = 0; index < kMostEffects; ++index) {
        if (const auto effect = ComPtr<IVideoGPUEffect>::adopt(library.CreateEffect(index))) {
            m_effects.push_back(describeEffect(*effect.get(), index));
        }
    }
}

const EffectDescription& EffectCatalogue::effect(std::string_view name) const {
    return findNamed(m_effects, &EffectDescription::name, name,
                     "There is no effect \"" + std::string(trimmed(name)) + "\".");
}

}  // namespace lumiset::hostkit
