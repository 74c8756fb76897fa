#include <fmt/format.h>

#include <memory>
#include <string>
#include <vector>

#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/presets/preset_conversion.h"
#include "apps/lumiset/render/effect_options.h"
#include "apps/lumiset/render/output_guard.h"
#include "hostkit/parameter_text.h"
#include "hostkit/preset_file.h"

namespace lumiset::app {
namespace {

int savePreset(Program& program, const std::string& file, const EffectRequest& request) {
    hostkit::savePresetFile(program.effectLibrary(), file,
                            readParameters(program.effectLibrary(), program.catalogue(), request));
    return kDone;
}

/// Prints a file's effect, name and values, a line each.
int loadPreset(Program& program, const std::string& file) {
    const hostkit::EffectDescription& effect =
        hostkit::effectOfPresetFile(program.effectLibrary(), program.catalogue(), file);
    hostkit::ParameterStore parameters(effect);
    const std::string name = hostkit::loadPresetFile(program.effectLibrary(), file, parameters);
    std::string text = fmt::format("{}: {}\n", effect.name, name);
    for (const hostkit::ParameterDescription& parameter : effect.parameters) {
        text += fmt::format("  {}={}\n", effect.shortestName(parameter),
                            hostkit::formatValue(parameter, parameters.valueAt(parameter, 0.0)));
    }
    printText(text);
    return kDone;
}

/// Prints a line for each file: what it is or what is wrong with it.
int checkPresets(Program& program, const std::vector<std::string>& files) {
    int status = kDone;
    for (const std::string& file : files) {
        try {
            hostkit::ParameterStore parameters(
                hostkit::effectOfPresetFile(program.effectLibrary(), program.catalogue(), file));
            const std::string name = hostkit::loadPresetFile(program.effectLibrary(), file, parameters);
            printText(fmt::format("{}: {}, \"{}\"\n", file, parameters.effect().name, name));
        } catch (const hostkit::PresetFileError& error) {
            printText(fmt::format("{}: {}\n", file, error.what()));
            status = kFailed;
        }
    }
    return status;
}

void addPresetSave(CLI::App& preset, Program& program) {
    struct Request {
        explicit Request(CLI::App& command) : effect(command, EffectOptions::kOneEffect), guard(command) {}
        EffectOptions effect;
        OutputGuard guard;
        std::string file;
    };
    CLI::App& command = addCommand(preset, "save", "Writes an effect's values to a preset file");
    const auto request = std::make_shared<Request>(command);
    command.add_option("FILE", request->file, "what to write")->required();
    program.onChosen(command, [request, &program] {
        const EffectRequest effect = request->effect.request();
        request->guard.check(request->file, {effect.presetFile});
        return savePreset(program, request->file, effect);
    });
}

void addLoad(CLI::App& preset, Program& program) {
    CLI::App& command = addCommand(preset, "load", "Shows the values in a preset file");
    command.alias("show");
    const auto file = std::make_shared<std::string>();
    command.add_option("FILE", *file, "what to read")->required();
    program.onChosen(command, [file, &program] { return loadPreset(program, *file); });
}

void addCheck(CLI::App& preset, Program& program) {
    CLI::App& command =
        addCommand(preset, "check", "Tells of preset files whether they can be used, and for which effect");
    const auto files = std::make_shared<std::vector<std::string>>();
    command.add_option("FILE", *files, "what to read")->required();
    program.onChosen(command, [files, &program] { return checkPresets(program, *files); });
}

void addConvert(CLI::App& preset, Program& program) {
    struct Request {
        explicit Request(CLI::App& command) : guard(command) {}
        OutputGuard guard;
        std::string from;
        std::string to;
    };
    CLI::App& command =
        addCommand(preset, "convert", "Turns preset files into JSON and back",
                   "Turns a preset file into JSON, or JSON into a preset file; what a file is shows by its extension.\n"
                   "From a preset file to another the same values are written in the usual form.\n\n"
                   "The JSON has the effect's name, the preset's name and the values by their labels, as \"lumiset "
                   "show\" prints them. A value in another form, {\"stored\": 0.5}, is what the preset file holds. "
                   "Parameters that are left out have their defaults.\n");
    const auto request = std::make_shared<Request>(command);
    command.add_option("IN", request->from, "what to read: .json or .lumva to .lumvj")->required();
    command.add_option("OUT", request->to, "what to write: .json or .lumva to .lumvj")->required();
    program.onChosen(command, [request, &program] {
        request->guard.check(request->to, {request->from});
        convertPreset(program.effectLibrary(), program.catalogue(), request->from, request->to);
        return kDone;
    });
}

}  // namespace

void addPresetCommands(CLI::App& app, Program& program) {
    CLI::App& preset = addCommand(app, "preset", "Writes, shows, checks and converts preset files");
    preset.require_subcommand(1);
    addPresetSave(preset, program);
    addLoad(preset, program);
    addCheck(preset, program);
    addConvert(preset, program);
}

}  // namespace lumiset::app
