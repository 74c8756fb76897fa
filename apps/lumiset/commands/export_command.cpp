#include <memory>
#include <string>

#include "adapters/frei0r/hosts/command_lines.h"
#include "adapters/frei0r/hosts/kdenlive.h"
#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/help.h"
#include "apps/lumiset/render/effect_options.h"

namespace lumiset::app {
namespace {

frei0r::Settings readSettings(Program& program, const EffectRequest& request) {
    const hostkit::EffectDescription& effect = program.catalogue().effect(request.name);
    return frei0r::settingsOf(readParameters(program.effectLibrary(), effect, request));
}

using WriteCommand = std::string (*)(const frei0r::Settings& settings, const std::string& input,
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
        const frei0r::Settings settings = readSettings(program, request->effect.request());
        printText(write(settings, request->input, request->output) + '\n');
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
        const frei0r::Settings settings = readSettings(program, effect);
        std::string name = request->name;
        if (name.empty()) {
            name = settings.effect->name + ": " + (effect.preset.empty() ? "my own" : effect.preset);
        }
        printText(frei0r::kdenliveTemplate(settings, name, name));
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
