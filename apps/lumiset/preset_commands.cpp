#include "apps/lumiset/preset_commands.h"

#include <fmt/format.h>

#include "apps/lumiset/chain.h"
#include "hostkit/parameter_text.h"
#include "hostkit/preset_file.h"

namespace lumiset::app {
namespace {

const hostkit::EffectDescription& effectOf(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue,
                                           const std::string& file) {
    const hostkit::EffectDescription* effect = hostkit::effectOfPresetFile(library, catalogue, file);
    if (effect == nullptr) {
        throw hostkit::PresetFileError("The file \"" + file + "\" is a preset for none of these effects.");
    }
    return *effect;
}

}  // namespace

void savePreset(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue, const PresetSaveRequest& request) {
    const hostkit::EffectDescription& effect = catalogue.effect(request.effect.name);
    hostkit::savePresetFile(library, request.file, readParameters(library, effect, request.effect));
}

std::string loadPresetText(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue,
                           const std::string& file) {
    const hostkit::EffectDescription& effect = effectOf(library, catalogue, file);
    hostkit::ParameterStore parameters(effect);
    const std::string name = hostkit::loadPresetFile(library, file, parameters);
    std::string text = fmt::format("{}: {}\n", effect.name, name);
    for (const hostkit::ParameterDescription& parameter : effect.parameters) {
        text += fmt::format("  {}={}\n", effect.shortestName(parameter),
                            hostkit::formatValue(parameter, parameters.valueAt(parameter, 0.0)));
    }
    return text;
}

std::string checkPresetsText(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue,
                             const std::vector<std::string>& files, bool& sound) {
    std::string text;
    for (const std::string& file : files) {
        try {
            hostkit::ParameterStore parameters(effectOf(library, catalogue, file));
            const std::string name = hostkit::loadPresetFile(library, file, parameters);
            text += fmt::format("{}: {}, \"{}\"\n", file, parameters.effect().name, name);
        } catch (const hostkit::PresetFileError& error) {
            text += fmt::format("{}: {}\n", file, error.what());
            sound = false;
        }
    }
    return text;
}

}  // namespace lumiset::app
