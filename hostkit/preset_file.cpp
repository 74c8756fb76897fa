#include "hostkit/preset_file.h"

#include <cstring>
#include <new>
#include <optional>
#include <utility>

#include "host/reference_count.h"
#include "hostkit/com_ptr.h"
#include "platform/text.h"

namespace lumiset::hostkit {
namespace {

/// What the module asks of the host in a preset's call: an effect with the store's values. Lives on the stack of the
/// call that it is made for.
class PresetEffect final : public Counted<IPresetEffect> {
public:
    PresetEffect(IEffectLibrary& library, const ParameterStore& parameters)
        : m_library(library),
          m_parameters(parameters),
          m_effect(ComPtr<IVideoGPUEffect>::adopt(library.CreateEffect(parameters.effect().index))) {
        if (!m_effect) {
            throw std::bad_alloc();
        }
    }

    Result LUMISET_CALL QueryInterface(const Guid& /*iid*/, void** out) noexcept override {
        *out = nullptr;
        return kResultNoInterface;
    }
    const char* LUMISET_CALL GetEffectName() noexcept override { return m_effect->GetEffectName(); }
    const char* LUMISET_CALL GetLibraryName() noexcept override { return m_library.GetLibraryName(); }
    bool LUMISET_CALL GetParamInfo(std::uint32_t index, ParamInfo* out) noexcept override {
        return m_effect->GetParamInfo(index, out);
    }
    void LUMISET_CALL GetParamValue(std::uint32_t index, ParamValue* out, std::uint32_t type) noexcept override {
        RenderHost(m_parameters, 0.0).GetParamValue(index, out, type);
    }

private:
    IEffectLibrary& m_library;
    const ParameterStore& m_parameters;
    ComPtr<IVideoGPUEffect> m_effect;
};

ComPtr<IPresetSaver> presetSaver(IEffectLibrary& library) {
    auto saver = ComPtr<IPresetSaver>::adopt(library.CreatePresetSaver());
    if (!saver) {
        throw std::bad_alloc();
    }
    return saver;
}

std::wstring wide(const std::string& path) {
    std::optional<std::wstring> text = platform::fromUtf8(path);
    if (!text) {
        throw PresetFileError("The name of the preset file \"" + path + "\" is not a text in UTF-8.");
    }
    return *std::move(text);
}

std::uint32_t load(IEffectLibrary& library, const std::string& path, const ParameterStore& parameters,
                   PresetOutcome& outcome) {
    PresetEffect effect(library, parameters);
    presetSaver(library)->LoadPreset(nullptr, &effect, parameters.effect().index, wide(path).c_str(), &outcome);
    if (outcome.status != kPresetDone && outcome.status != kPresetMismatched) {
        throw PresetFileError("The file \"" + path + "\" cannot be read or is not a preset.");
    }
    return outcome.status;
}

}  // namespace

std::string presetExtension(const EffectDescription& effect) {
    return std::string(".") + lumiset::presetExtension(effect.index).data();
}

std::string loadPresetFile(IEffectLibrary& library, const std::string& path, ParameterStore& parameters) {
    PresetOutcome outcome{};
    if (load(library, path, parameters, outcome) != kPresetDone) {
        throw PresetFileError("The file \"" + path + "\" is not a preset for the effect \"" + parameters.effect().name +
                              "\".");
    }
    for (const ParameterDescription& parameter : parameters.effect().parameters) {
        if (parameter.index < outcome.count) {
            parameters.set(parameter, outcome.entries[parameter.index].value);
        }
    }
    return outcome.name;
}

void loadPresetFile(IEffectLibrary& library, const EffectDescription& effect, const std::string& path,
                    LookEffect& wanted) {
    ParameterStore values(effect);
    loadPresetFile(library, path, values);
    for (const ParameterDescription& parameter : effect.parameters) {
        const ParamValue value = values.valueAt(parameter, 0.0);
        if (std::memcmp(&value, &parameter.defaultValue, sizeof value) != 0) {
            wanted.of(parameter) = {parameter.index, value, {}};
        }
    }
}

void savePresetFile(IEffectLibrary& library, const std::string& path, const ParameterStore& parameters) {
    PresetEffect effect(library, parameters);
    if (!presetSaver(library)->SavePreset(nullptr, &effect, parameters.effect().index, wide(path).c_str(), nullptr)) {
        throw PresetFileError("The preset file \"" + path + "\" cannot be written.");
    }
}

const EffectDescription& effectOfPresetFile(IEffectLibrary& library, const EffectCatalogue& catalogue,
                                            const std::string& path) {
    for (const EffectDescription& effect : catalogue.effects()) {
        PresetOutcome outcome{};
        if (load(library, path, ParameterStore(effect), outcome) == kPresetDone) {
            return effect;
        }
    }
    throw PresetFileError("The file \"" + path + "\" is a preset for none of these effects.");
}

}  // namespace lumiset::hostkit
