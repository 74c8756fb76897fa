#include "hostkit/look.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include "hostkit/parameter_text.h"

namespace lumiset::hostkit {
namespace {

const ParameterDescription& parameterOf(const EffectDescription& effect, std::uint32_t index) {
    const ParameterDescription* found = effect.parameterAt(index);
    return found != nullptr ? *found : effect.parameter('#' + std::to_string(index));  // which says that it has none
}

void checkLook(const Look& look, const Mask* mask) {
    const auto isPercent = [](double number) { return number >= 0.0 && number <= 100.0; };
    bool right = isPercent(look.strength);
    for (const LookEffect& each : look.effects) {
        right = right && isPercent(each.strength);
    }
    if (!right) {
        throw ParameterError("A strength is a number from 0 to 100.");
    }
    if (mask != nullptr &&
        (mask->width < 1 || mask->height < 1 ||
         mask->values.size() != static_cast<std::size_t>(mask->width) * static_cast<std::size_t>(mask->height))) {
        throw ParameterError("A mask has a width, a height and as many values as pixels.");
    }
}

Mix mixOf(double percent, std::shared_ptr<const Mask> mask) {
    return {static_cast<float>(percent / 100.0), std::move(mask)};
}

}  // namespace

LookParameter& LookEffect::of(const ParameterDescription& parameter) {
    const auto found = std::find_if(parameters.begin(), parameters.end(),
                                    [&](const LookParameter& each) { return each.index == parameter.index; });
    if (found != parameters.end()) {
        return *found;
    }
    parameters.push_back({parameter.index, parameter.defaultValue, {}});
    return parameters.back();
}

void LookEffect::set(const EffectDescription& description, std::string_view name, std::string_view value) {
    const ParameterDescription& parameter = description.parameter(name);
    const ParamValue read = parseValue(parameter, value);
    LookParameter& wanted = of(parameter);
    wanted.value = read;
    wanted.keys.clear();
}

void LookEffect::addKey(const EffectDescription& description, std::string_view name, const LookTime& time,
                        std::string_view value) {
    const ParameterDescription& parameter = description.parameter(name);
    const ParamValue read = parseValue(parameter, value);
    if (!std::isfinite(time.at) || time.at < 0.0 || (time.isPart && time.at > 100.0)) {
        throw ParameterError("A keyframe of " + parameter.label +
                             " needs a time of 0 seconds or later, or a part of the clip from 0 to 100 percent.");
    }
    std::vector<LookParameter::Key>& keys = of(parameter).keys;
    const auto same = std::find_if(keys.begin(), keys.end(), [&](const LookParameter::Key& key) {
        return key.time.isPart == time.isPart && !(key.time.at < time.at) && !(time.at < key.time.at);
    });
    if (same != keys.end()) {
        same->value = read;
    } else {
        keys.push_back({time, read});
    }
}

bool hasKeysInParts(const Look& look) {
    for (const LookEffect& effect : look.effects) {
        for (const LookParameter& parameter : effect.parameters) {
            for (const LookParameter::Key& key : parameter.keys) {
                if (key.time.isPart) {
                    return true;
                }
            }
        }
    }
    return false;
}

ParameterStore valuesOf(const EffectDescription& effect, const LookEffect& wanted, double clipSeconds) {
    ParameterStore values(effect);
    if (!wanted.preset.empty()) {
        values.apply(effect.preset(wanted.preset));
    }
    for (const LookParameter& each : wanted.parameters) {
        const ParameterDescription& parameter = parameterOf(effect, each.index);
        if (each.keys.empty()) {
            values.set(parameter, each.value);
        }
        for (const LookParameter::Key& key : each.keys) {
            values.addKey(parameter, key.time.seconds(clipSeconds), key.value);
        }
    }
    return values;
}

std::vector<EffectStage> buildChain(IEffectLibrary& library, const EffectCatalogue& catalogue,
                                    const std::vector<MaskedLook>& looks, double clipSeconds) {
    std::vector<EffectStage> chain;
    for (const auto& [look, mask] : looks) {
        checkLook(look, mask.get());
        std::size_t stages = 0;
        for (const LookEffect& each : look.effects) {
            if (each.off) {
                continue;
            }
            ++stages;
            const EffectDescription& effect = catalogue.effect(each.effect);
            ParameterStore values = valuesOf(effect, each, clipSeconds);
            auto object = ComPtr<IVideoGPUEffect>::adopt(library.CreateEffect(effect.index));
            if (!object) {
                throw std::bad_alloc();
            }
            chain.push_back({std::move(object), std::move(values)});
            if (each.strength < 100.0) {
                chain.back().mixes.push_back({1, mixOf(each.strength, nullptr)});
            }
        }
        if (stages > 0 && (look.strength < 100.0 || mask != nullptr)) {
            chain.back().mixes.push_back({stages, mixOf(look.strength, mask)});
        }
    }
    return chain;
}

}  // namespace lumiset::hostkit
