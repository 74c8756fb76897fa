#include <fmt/format.h>

#include <cmath>
#include <cstring>
#include <set>
#include <string_view>

#include "apps/lumiset/validate/check.h"
#include "apps/lumiset/validate/effect.h"
#include "apps/lumiset/validate/host.h"
#include "hostkit/dynamic_library.h"
#include "hostkit/module.h"

namespace lumiset::app::validate {
namespace {

using hostkit::ComPtr;
using hostkit::Module;

constexpr Guid kStranger{0x12345678, 0x9ABC, 0xDEF0, {1, 2, 3, 4, 5, 6, 7, 8}};

void need(bool holds, const std::string& otherwise) {
    if (!holds) {
        throw Broken(otherwise);
    }
}

bool isText(const char* text, std::size_t most) {
    return text != nullptr && ::strnlen(text, most) > 0 && ::strnlen(text, most) < most;
}

void checkExports(const Subject& subject) {
    hostkit::DynamicLibrary file(subject.module);
    const auto canUnload = reinterpret_cast<std::int32_t (*)()>(file.symbol("CanUnloadDLLNow"));
    const auto get = reinterpret_cast<IEffectLibrary* (*)()>(file.symbol("GetEffectsLibrary"));
    need(get != nullptr, "GetEffectsLibrary is not exported.");
    need(canUnload != nullptr, "CanUnloadDLLNow is not exported.");
    need(canUnload() == 1, "CanUnloadDLLNow does not answer 1.");
    const auto library = ComPtr<IEffectLibrary>::adopt(get());
    need(static_cast<bool>(library), "GetEffectsLibrary answers null.");
    need(isText(library->GetLibraryName(), 1000), "The library has no name.");
    std::set<std::string> names;
    for (const Effect& effect : effectsOf(*library.get())) {
        need(!effect.name.empty(), fmt::format("Effect {} has no name.", effect.index));
        need(names.insert(effect.name).second, fmt::format("Two effects are called {}.", effect.name));
        need(std::string(effect.object->GetEffectName()) == effect.name, effect.name + ": its name changes.");
    }
    for (const std::uint32_t index : {static_cast<std::uint32_t>(names.size()), 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        const auto beyond = ComPtr<IVideoGPUEffect>::adopt(library->CreateEffect(index));
        need(!beyond, fmt::format("There is an effect {} past the last one.", index));
    }
}

/// `object` answers for `own`, each time with one reference more, and for nothing else. `counted` is asked for counts.
void checkInterfaces(const std::string& name, IUnknown& object, std::span<const Guid> own) {
    const std::uint32_t before = (object.AddRef(), object.Release());
    for (const Guid& iid : own) {
        void* out = nullptr;
        need(object.QueryInterface(iid, &out) == kResultOk && out != nullptr,
             name + ": QueryInterface does not answer for an interface of its own.");
        auto* const found = static_cast<IUnknown*>(out);
        need(object.AddRef() == before + 2, name + ": QueryInterface adds no reference, or more than one.");
        object.Release();
        void* root = nullptr;
        need(found->QueryInterface(IUnknown::kId, &root) == kResultOk && root == static_cast<void*>(&object),
             name + ": its interfaces do not lead back to one object.");
        found->Release();
        need(found->Release() == before, name + ": a reference that QueryInterface added is not given back.");
    }
    void* out = &out;
    need(object.QueryInterface(kStranger, &out) == kResultNoInterface,
         name + ": QueryInterface answers for an unknown interface.");
    need(out == nullptr, name + ": QueryInterface does not store null for an unknown interface.");
    need(object.QueryInterface(IUnknown::kId, nullptr) != kResultOk,
         name + ": QueryInterface takes a null place to store an interface.");
}

void checkIdentity(const Subject& subject) {
    const Module module(subject.module);
    IEffectLibrary& library = module.effectLibrary();
    const Guid libraryIds[] = {IUnknown::kId, IEffectLibrary::kId};
    checkInterfaces("The library", library, libraryIds);
    const Guid effectIds[] = {IUnknown::kId, IVideoEffect::kId, IVideoGPUEffect::kId};
    for (const Effect& effect : effectsOf(library)) {
        checkInterfaces(effect.name, *effect.object.get(), effectIds);
        void* tips = nullptr;
        if (effect.object->QueryInterface(IParamToolTip::kId, &tips) == kResultOk) {
            static_cast<IParamToolTip*>(tips)->Release();
            const Guid tipIds[] = {IParamToolTip::kId};
            checkInterfaces(effect.name, *effect.object.get(), tipIds);
        }
    }
    const Guid saverIds[] = {IUnknown::kId, IPresetSaver::kId};
    const auto saver = ComPtr<IPresetSaver>::adopt(library.CreatePresetSaver());
    need(static_cast<bool>(saver), "There is no preset saver.");
    checkInterfaces("The preset saver", *saver.get(), saverIds);
}

void checkCounting(const Subject& subject) {
    const Module module(subject.module);
    IEffectLibrary& library = module.effectLibrary();
    for (std::uint32_t index = 0;; ++index) {
        IVideoGPUEffect* const first = library.CreateEffect(index);
        if (first == nullptr) {
            break;
        }
        IVideoGPUEffect* const second = library.CreateEffect(index);
        need(second != nullptr && second != first, "CreateEffect hands out one object twice.");
        const std::string name = first->GetEffectName();
        need(first->AddRef() == 2, name + ": an object is not born with one reference.");
        need(first->Release() == 1, name + ": Release does not answer what is left.");
        need(second->Release() == 0, name + ": the last Release does not answer 0.");
        need(first->GetEffectName() == name, name + ": one object's end harms another.");
        need(first->Release() == 0, name + ": the last Release does not answer 0.");
    }
    IHostServices* const services = library.GetHostServices();
    need(services != nullptr && services == library.GetHostServices(), "The host services are not one object.");
    services->Release();
    services->Release();
}

/// Boundaries of a parameter's value, by its type.
bool isInRange(const ParamInfo& info, const ParamValue& value) {
    const auto isShare = [](float v) { return v >= 0.0F && v <= 1.0F; };
    switch (info.type) {
        case kParamSlider:
            return isShare(value.slider);
        case kParamPoint:
            return isShare(value.point.x) && isShare(value.point.y);
        case kParamChoice:
            return value.choice < info.itemCount;
        default:
            return true;
    }
}

/// The record as it lies in memory, with what no member names.
std::string_view bytesOf(const ParamInfo& info) {
    return {reinterpret_cast<const char*>(&info), sizeof info};
}

void checkParameters(const Subject& subject) {
    const Module module(subject.module);
    for (const Effect& effect : effectsOf(module.effectLibrary())) {
        int open = 0;
        for (std::uint32_t index = 0; index < effect.params.size(); ++index) {
            const std::string name = fmt::format("{}, parameter {}", effect.name, index);
            ParamInfo info;
            std::memset(&info, 0xEE, sizeof info);
            need(effect.object->GetParamInfo(index, &info), name + " is not described twice.");
            ParamInfo again{};
            effect.object->GetParamInfo(index, &again);
            need(bytesOf(info) == bytesOf(again), name + ": not all of its record is filled.");
            need(info.type <= kParamGroup, name + " is of no known type.");
            need(isText(info.label, sizeof info.label), name + " has no label that ends.");
            need(info.visible == 1, name + " is not visible.");
            need(isInRange(info, info.defaultValue), name + ": its default is out of range.");
            if (info.type == kParamSlider) {
                need(std::isfinite(info.minimum) && info.minimum < info.slider.maximum,
                     name + " has no range to show.");
            } else if (info.type == kParamChoice) {
                need(info.itemCount >= 1 && info.itemCount <= kMaxChoiceItems, name + " has no items, or too many.");
                for (std::uint32_t item = 0; item < info.itemCount; ++item) {
                    need(isText(info.items[item], kChoiceLabelSize), name + ": an item has no label that ends.");
                }
            } else if (info.type == kParamGroup) {
                open += info.groupEnd != 0 ? -1 : 1;
                need(open == 0 || open == 1, name + ": group boxes overlap.");
            }
        }
        need(open == 0, effect.name + ": a group box stays open.");
        ParamInfo beyond{};
        beyond.type = 77;
        need(!effect.object->GetParamInfo(0xFFFFFFFFU, &beyond) && beyond.type == 77,
             effect.name + ": there is a parameter past the last one.");
        need(!effect.object->GetParamInfo(0, nullptr), effect.name + ": a null record is taken.");
        void* object = nullptr;
        if (effect.object->QueryInterface(IParamToolTip::kId, &object) == kResultOk) {
            const auto tips = ComPtr<IParamToolTip>::adopt(static_cast<IParamToolTip*>(object));
            for (std::uint32_t index = 0; index < effect.params.size(); ++index) {
                const char* const tip = tips->GetParamToolTip(index);
                need(tip != nullptr && (hasValue(effect.params[index]) == (*tip != '\0')),
                     fmt::format("{}, parameter {} has no text of its own.", effect.name, index));
            }
            need(tips->GetParamToolTip(static_cast<std::uint32_t>(effect.params.size())) == nullptr,
                 effect.name + ": there is a text past the last parameter.");
        }
    }
}

void checkPresets(const Subject& subject) {
    const Module module(subject.module);
    for (const Effect& effect : effectsOf(module.effectLibrary())) {
        std::size_t valued = 0;
        for (const ParamInfo& info : effect.params) {
            valued += hasValue(info) ? 1U : 0U;
        }
        need(effect.presets == 0 || effect.slots == valued || effect.slots == effect.params.size(),
             effect.name + ": a preset has neither a value for each parameter nor for each that has one.");
        ParamValue value{};
        for (std::uint32_t preset = 0; preset < effect.presets; ++preset) {
            const std::string name = fmt::format("{}, preset {}", effect.name, preset);
            need(isText(effect.object->GetPresetName(preset), 1000), name + " has no name.");
            for (std::uint32_t slot = 0; slot < effect.slots; ++slot) {
                need(effect.object->GetPresetValue(preset, slot, &value), name + " lacks a value.");
                const ParamInfo& info = effect.params[effect.paramOf(slot)];
                need(!hasValue(info) || isInRange(info, value),
                     fmt::format("{}: {} is out of range.", name, info.label));
            }
            need(!effect.object->GetPresetValue(preset, effect.slots, &value), name + " has a value too many.");
            need(!effect.object->GetPresetValue(preset, 0, nullptr), name + ": a null value is taken.");
        }
        need(!effect.object->GetPresetValue(effect.presets, 0, &value), effect.name + " has a preset without a name.");
        need(effect.object->GetPresetName(0xFFFFFFFFU) == nullptr, effect.name + ": there is a preset past the last.");
    }
}

void checkLoading(const Subject& subject) {
    for (int cycle = 0; cycle < 50; ++cycle) {
        const Module module(subject.module);
        const std::vector<Effect> effects = effectsOf(module.effectLibrary());
        const Effect& effect = effects[static_cast<std::size_t>(cycle) % effects.size()];
        std::mt19937 random = subject.random();
        Picture source(24, 18);
        source.draw(random);
        renderWell(effect, effect.valuesOf(0), source, Picture(24, 18));
    }
}

constexpr Check kLibraryChecks[] = {
    {"exports", "The module exports its two functions, and a library with a name hands out effects with names.",
     checkExports},
    {"identity", "An object answers for its own interfaces, with a reference each, and for no others.", checkIdentity},
    {"counting", "Objects are born with one reference, count what is left, and do not depend on each other.",
     checkCounting},
    {"parameters", "Every parameter is described whole, with a default in range, and none past the last.",
     checkParameters},
    {"presets", "Every preset has a name and all of its values, in range, and there is none past the last.",
     checkPresets},
    {"loading", "The module can be loaded, used and unloaded again and again.", checkLoading},
};

}  // namespace

std::span<const Check> libraryChecks() {
    return kLibraryChecks;
}

}  // namespace lumiset::app::validate
