#include "apps/lumiset/validate/effect.h"

#include "apps/lumiset/validate/check.h"

namespace lumiset::app::validate {
namespace {

/// Lists that go on for longer have no end.
constexpr std::uint32_t kMostOfAKind = 1000;

}  // namespace

std::uint32_t Effect::paramOf(std::uint32_t slot) const {
    if (slots == params.size()) {
        return slot;
    }
    std::uint32_t param = 0;
    for (std::uint32_t left = slot; param < params.size(); ++param) {
        if (hasValue(params[param]) && left-- == 0) {
            break;
        }
    }
    return param;
}

std::vector<ParamValue> Effect::valuesOf(std::uint32_t preset) const {
    std::vector<ParamValue> values;
    for (const ParamInfo& info : params) {
        values.push_back(info.defaultValue);
    }
    for (std::uint32_t slot = 0; slot < slots; ++slot) {
        const std::uint32_t param = paramOf(slot);
        if (param < values.size() && hasValue(params[param])) {
            object->GetPresetValue(preset, slot, &values[param]);
        }
    }
    return values;
}

std::vector<Effect> effectsOf(IEffectLibrary& library) {
    std::vector<Effect> effects;
    for (std::uint32_t index = 0; index < kMostOfAKind; ++index) {
        Effect effect;
        effect.index = index;
        effect.object = hostkit::ComPtr<IVideoGPUEffect>::adopt(library.CreateEffect(index));
        if (!effect.object) {
            break;
        }
        const char* const name = effect.object->GetEffectName();
        effect.name = name != nullptr ? name : "";
        for (ParamInfo info{}; effect.object->GetParamInfo(static_cast<std::uint32_t>(effect.params.size()), &info);) {
            effect.params.push_back(info);
            if (effect.params.size() > kMostOfAKind) {
                throw Broken(effect.name + ": its parameters do not end.");
            }
        }
        while (effect.object->GetPresetName(effect.presets) != nullptr) {
            if (++effect.presets > kMostOfAKind) {
                throw Broken(effect.name + ": its presets do not end.");
            }
        }
        for (ParamValue value{}; effect.object->GetPresetValue(0, effect.slots, &value);) {
            if (++effect.slots > kMostOfAKind) {
                throw Broken(effect.name + ": a preset's values do not end.");
            }
        }
        effects.push_back(std::move(effect));
    }
    if (effects.empty()) {
        throw Broken("The library has no effect.");
    }
    return effects;
}

}  // namespace lumiset::app::validate
