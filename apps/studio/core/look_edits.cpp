#include "apps/studio/core/look_edits.h"

#include <algorithm>
#include <cmath>

#include "hostkit/parameter_text.h"

namespace lumiset::studio {
namespace {

using Key = LookParameter::Key;

auto keyAt(std::vector<Key>& keys, const Moment& moment) {
    return std::find_if(keys.begin(), keys.end(), [&](const Key& key) {
        return std::abs(key.time.seconds(moment.clipSeconds) - moment.seconds) < kSameMoment;
    });
}

LookParameter* settingOf(LookEffect& effect, std::uint32_t parameter) {
    return const_cast<LookParameter*>(studio::settingOf(std::as_const(effect), parameter));
}

/// A time as the keys beside it are told: in parts of the clip where they are.
hostkit::LookTime timeLike(const std::vector<Key>& keys, const Moment& moment) {
    if (!keys.empty() && keys.front().time.isPart && moment.clipSeconds > 0.0) {
        return {std::clamp(100.0 * moment.seconds / moment.clipSeconds, 0.0, 100.0), true};
    }
    return {moment.seconds, false};
}

void putKey(std::vector<Key>& keys, const Moment& moment, const ParamValue& value) {
    if (const auto found = keyAt(keys, moment); found != keys.end()) {
        found->value = value;
        return;
    }
    const auto behind = std::find_if(keys.begin(), keys.end(), [&](const Key& key) {
        return key.time.seconds(moment.clipSeconds) > moment.seconds;
    });
    keys.insert(behind, {timeLike(keys, moment), value});
}

}  // namespace

const LookParameter* settingOf(const LookEffect& effect, std::uint32_t parameter) {
    const auto found = std::find_if(effect.parameters.begin(), effect.parameters.end(),
                                    [parameter](const LookParameter& each) { return each.index == parameter; });
    return found != effect.parameters.end() ? &*found : nullptr;
}

ParamValue valueAt(const EffectDescription& description, const LookEffect& effect,
                   const ParameterDescription& parameter, const Moment& moment) {
    const LookParameter* setting = settingOf(effect, parameter.index);
    if (setting == nullptr) {
        return presetValueOf(description, effect, parameter);
    }
    return setting->keys.empty()
               ? setting->value
               : hostkit::valuesOf(description, effect, moment.clipSeconds).valueAt(parameter, moment.seconds);
}

ParamValue presetValueOf(const EffectDescription& description, const LookEffect& effect,
                         const ParameterDescription& parameter) {
    if (!effect.preset.empty()) {
        const auto place = static_cast<std::size_t>(&parameter - description.parameters.data());
        if (const auto& value = description.preset(effect.preset).values[place]) {
            return *value;
        }
    }
    return parameter.defaultValue;
}

bool sameValue(const ParameterDescription& parameter, const ParamValue& a, const ParamValue& b) {
    switch (parameter.type) {
        case kParamPoint:
            return a.point.x == b.point.x && a.point.y == b.point.y;
        case kParamSlider:
            return a.slider == b.slider;
        case kParamBoolean:
            return (a.boolean != 0) == (b.boolean != 0);
        default:
            return a.words[0] == b.words[0];
    }
}

void setValue(const EffectDescription& description, LookEffect& effect, const ParameterDescription& parameter,
              const ParamValue& value, const Moment& moment) {
    if (LookParameter* setting = settingOf(effect, parameter.index); setting != nullptr && !setting->keys.empty()) {
        putKey(setting->keys, moment, value);
    } else if (sameValue(parameter, value, presetValueOf(description, effect, parameter))) {
        resetValue(effect, parameter.index);
    } else {
        effect.of(parameter).value = value;
    }
}

void resetValue(LookEffect& effect, std::uint32_t parameter) {
    std::erase_if(effect.parameters, [parameter](const LookParameter& each) { return each.index == parameter; });
}

KeyState keyStateAt(const LookEffect& effect, std::uint32_t parameter, const Moment& moment) {
    const LookParameter* setting = settingOf(effect, parameter);
    if (setting == nullptr || setting->keys.empty()) {
        return KeyState::kNone;
    }
    auto& keys = const_cast<std::vector<Key>&>(setting->keys);
    return keyAt(keys, moment) != keys.end() ? KeyState::kHere : KeyState::kElsewhere;
}

std::vector<double> keyTimes(const LookEffect& effect, std::optional<std::uint32_t> parameter, double clipSeconds) {
    std::vector<double> times;
    for (const LookParameter& each : effect.parameters) {
        if (!parameter || each.index == *parameter) {
            for (const Key& key : each.keys) {
                times.push_back(key.time.seconds(clipSeconds));
            }
        }
    }
    std::sort(times.begin(), times.end());
    times.erase(
        std::unique(times.begin(), times.end(), [](double a, double b) { return std::abs(a - b) < kSameMoment; }),
        times.end());
    return times;
}

void toggleKey(const EffectDescription& description, LookEffect& effect, const ParameterDescription& parameter,
               const Moment& moment) {
    const ParamValue value = valueAt(description, effect, parameter, moment);
    LookParameter& setting = effect.of(parameter);
    const auto found = keyAt(setting.keys, moment);
    if (found == setting.keys.end()) {
        putKey(setting.keys, moment, value);
        return;
    }
    setting.keys.erase(found);
    if (setting.keys.empty()) {
        setValue(description, effect, parameter, value, moment);
    }
}

void moveKey(LookEffect& effect, std::uint32_t parameter, const Moment& from, double toSeconds, bool copies) {
    LookParameter* setting = settingOf(effect, parameter);
    if (setting == nullptr) {
        return;
    }
    const auto found = keyAt(setting->keys, from);
    if (found == setting->keys.end() || std::abs(toSeconds - from.seconds) < kSameMoment) {
        return;
    }
    const Key key = *found;
    if (!copies) {
        setting->keys.erase(found);
    }
    const Moment to{std::max(0.0, toSeconds), from.clipSeconds};
    if (setting->keys.empty()) {  // so that its time is told as it was
        setting->keys.push_back({timeLike({key}, to), key.value});
    } else {
        putKey(setting->keys, to, key.value);
    }
}

void setKeyValue(LookEffect& effect, std::uint32_t parameter, const Moment& at, const ParamValue& value) {
    if (LookParameter* setting = settingOf(effect, parameter); setting != nullptr) {
        if (const auto found = keyAt(setting->keys, at); found != setting->keys.end()) {
            found->value = value;
        }
    }
}

std::string unitOf(const ParameterDescription& parameter) {
    if (parameter.type == kParamPoint) {
        return "%";
    }
    if (parameter.type != kParamSlider) {
        return "";
    }
    if (parameter.maximum == 360.0F) {
        return "°";
    }
    return parameter.maximum == 100.0F ? "%" : "";
}

std::string valueText(const ParameterDescription& parameter, const ParamValue& value) {
    const std::string unit = unitOf(parameter);
    return hostkit::formatValue(parameter, value) + (unit == "%" ? " %" : unit);
}

const ParameterDescription* maskViewOf(const EffectDescription& description) {
    for (const ParameterDescription& parameter : description.parameters) {
        if (parameter.type == kParamBoolean && (parameter.label == "Test Mask" || parameter.label == "Show Masks")) {
            return &parameter;
        }
    }
    return nullptr;
}

bool showsMask(const hostkit::EffectCatalogue& catalogue, const Look& look) {
    return std::any_of(look.effects.begin(), look.effects.end(), [&](const LookEffect& each) {
        const EffectDescription& description = catalogue.effect(each.effect);
        const ParameterDescription* view = maskViewOf(description);
        if (view == nullptr || each.off) {
            return false;
        }
        const LookParameter* setting = settingOf(each, view->index);
        return setting != nullptr && !setting->keys.empty()
                   ? std::any_of(setting->keys.begin(), setting->keys.end(),
                                 [](const Key& key) { return key.value.boolean != 0; })
                   : valueAt(description, each, *view, {}).boolean != 0;
    });
}

Look inputOf(const Look& look, std::size_t effect) {
    Look input = look;
    input.effects.resize(std::min(effect, input.effects.size()));
    return input;
}

Look without(const Look& look, std::size_t effect) {
    Look rest = look;
    if (effect < rest.effects.size()) {
        rest.effects.erase(rest.effects.begin() + static_cast<std::ptrdiff_t>(effect));
    }
    return rest;
}

}  // namespace lumiset::studio
