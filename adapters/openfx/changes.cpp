#include "adapters/openfx/changes.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "adapters/openfx/abi/names.h"
#include "adapters/openfx/messages.h"
#include "hostkit/preset_file.h"

namespace lumiset::openfx {
namespace {

namespace fs = std::filesystem;

void applyPreset(const Instance& instance, double time) {
    const int item = instance.choiceAt(Role::kPreset, time);
    if (item == 0) {
        return;
    }
    const hostkit::PresetDescription& preset =
        instance.effect().description.presets[static_cast<std::size_t>(item) - 1];
    hostkit::ParameterStore values = instance.valuesAt(time);
    values.apply(preset);
    // First, so that a render in between has no preset under the values that are on their way.
    instance.setChoice(Role::kPreset, 0);
    instance.setValues(values, time, "Preset " + preset.uniqueName);
}

/// The chosen file. Throws `PresetFileError` where there is none.
std::string chosenFile(const Instance& instance, double time) {
    std::string file = instance.textAt(Role::kPresetFile, time);
    if (file.empty()) {
        throw hostkit::PresetFileError("Choose a preset file first, in the field above the button.");
    }
    return file;
}

void loadFile(const Instance& instance, double time) {
    hostkit::ParameterStore values = instance.valuesAt(time);
    const std::string name =
        hostkit::loadPresetFile(instance.bundle().effectLibrary(), chosenFile(instance, time), values);
    instance.setValues(values, time, "Preset " + name);
}

void saveFile(const Instance& instance, double time) {
    std::string file = chosenFile(instance, time);
    if (!fs::path(file).has_extension()) {
        file += hostkit::presetExtension(instance.effect().description);
    }
    std::error_code error;
    if (fs::exists(file, error) && !agrees(instance.host(), instance.handle(), "Replace the file \"" + file + "\"?")) {
        return;
    }
    // Values that move are saved as they are now.
    hostkit::savePresetFile(instance.bundle().effectLibrary(), file, instance.valuesAt(time));
}

}  // namespace

Status instanceChanged(const Instance& instance, const Properties& inArgs) {
    if (inArgs.getString(prop::kChangeReason) != value::kUserEdited) {
        return kReplyDefault;
    }
    const std::string name = inArgs.getString(prop::kName);
    const double time = inArgs.getDouble(prop::kTime, 0.0);
    const std::vector<Parameter>& parameters = instance.effect().parameters;
    const auto changed =
        std::find_if(parameters.begin(), parameters.end(), [&](const Parameter& each) { return each.name == name; });
    if (changed == parameters.end()) {
        return kReplyDefault;
    }
    try {
        switch (changed->role) {
            case Role::kPreset:
                applyPreset(instance, time);
                return kOk;
            case Role::kLoadFile:
                loadFile(instance, time);
                return kOk;
            case Role::kSaveFile:
                saveFile(instance, time);
                return kOk;
            default:
                return kReplyDefault;
        }
    } catch (const hostkit::PresetFileError& error) {
        complain(instance.host(), instance.handle(), error.what());
        return kFailed;
    }
}

}  // namespace lumiset::openfx
