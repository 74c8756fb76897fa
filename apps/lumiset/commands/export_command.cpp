#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "adapters/frei0r/hosts/command_lines.h"
#include "adapters/frei0r/hosts/kdenlive.h"
#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/help.h"
#include "apps/lumiset/render/effect_options.h"
#include "apps/lumiset/usage_error.h"

namespace lumiset::app {
namespace {

/// What the plug-ins of another program can do of a request.
std::vector<frei0r::Settings> readSettings(Program& program, const EffectOptions& options) {
    std::vector<frei0r::Settings> settings;
    for (const EffectRequest& request : options.requests()) {
        const hostkit::Look look = lookOf(program.effectLibrary(), program.catalogue(), request);
        for (const hostkit::LookEffect& each : look.effects) {
            const bool moves = std::any_of(each.parameters.begin(), each.parameters.end(),
                                           [](const hostkit::LookParameter& set) { return !set.keys.empty(); });
            if (moves || each.strength < 100.0 || look.strength < 100.0) {
                throw UsageError(fmt::format("The look \"{}\" has {}, which plug-ins of other programs do not do.",
                                             look.name, moves ? "keys" : "a strength below 100"));
            }
            settings.push_back(
                frei0r::settingsOf(hostkit::valuesOf(program.catalogue().effect(each.effect), each, 0.0)));
        }
    }
    return settings;
}

using WriteCommand = std::string (*)(const std::vector<frei0r::Settings>& settings, const std::string& input,
                                     const std::string& output);

void addCommandLine(CLI::App& parent, Program& program, const char* name, WriteCommand write) {
    struct Request {
        explicit Request(CLI::App& command) : effect(command, EffectOptions::kNamedEffect) {}
        EffectOptions effect;
        std::string input = "input.mp4";
        std::string output = "output.mp4";
    };
    CLI::App& command = addCommand(parent, name, std::string("Prints a command line for ") + name);
    const auto request = std::make_shared<Request>(command);
    command.add_option("--input,-i", request->input, "file that it reads [input.mp4]")->option_text("FILE");
    command.add_option("--output,-o", request->output, "file that it writes [output.mp4]")->option_text("FILE");
    program.onChosen(command, [request, write, &program] {
        printText(write(readSettings(program, request->effect), request->input, request->output) + '\n');
        return kDone;
    });
}

void addKdenlive(CLI::App& parent, Program& program) {
    struct Request {
        explicit Request(CLI::App& command) : effect(command, EffectOptions::kNamedEffect) {}
        EffectOptions effect;
        std::string name;
    };
    CLI::App& command = addCommand(parent, "kdenlive", "Prints an effect of one's own for Kdenlive");
    const auto request = std::make_shared<Request>(command);
    command.add_option("--name,-n", request->name, "what Kdenlive calls it [the effect and its preset]")
        ->option_text("NAME");
    program.onChosen(command, [request, &program] {
        const EffectRequest effect = request->effect.request();
        const std::vector<frei0r::Settings> settings = readSettings(program, request->effect);
        if (settings.size() != 1) {
            throw UsageError("An effect for Kdenlive has one effect in it.");
        }
        std::string name = request->name;
        if (name.empty()) {
            name = effect.look.empty()
                       ? settings[0].effect->name + ": " + (effect.preset.empty() ? "my own" : effect.preset)
                       : effect.look;
        }
        printText(frei0r::kdenliveTemplate(settings[0], name, name));
        return kDone;
    });
}

}  // namespace

void addExportCommands(CLI::App& app, Program& program) {
    CLI::App& command = addCommand(app, "export", "Prints an effect's settings for other programs", help::kExport);
    command.require_subcommand(1);
    addCommandLine(command, program, "ffmpeg", frei0r::ffmpegCommand);
    addCommandLine(command, program, "melt", frei0r::meltCommand);
    addKdenlive(command, program);
}

}  // namespace lumiset::app
