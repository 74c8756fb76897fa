#include "hostkit/look.h"

#include <algorithm>
#include <new>
#include <utility>

namespace lumiset::hostkit {
namespace {

const ParameterDescription& parameterOf(const EffectDescription& effect, std::uint32_t index) {
    const ParameterDescription* found = effect.parameterAt(index);
    return found != nullptr ? *found : effect.parameter('#' + std::to_string(index));  // which says that it has none
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
