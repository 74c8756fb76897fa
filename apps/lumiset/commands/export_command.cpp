#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "adapters/frei0r/hosts/kdenlive.h"
#include "adapters/frei0r_lines/look_lines.h"
#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/help.h"
#include "apps/lumiset/messages.h"
#include "apps/lumiset/render/effect_options.h"
#include "apps/lumiset/usage_error.h"
#include "media/input_name.h"
#include "media/scene_source.h"

namespace lumiset::app {
namespace {

/// The looks of a request as one, whose name it has for messages.
hostkit::Look readLook(Program& program, const EffectOptions& options) {
    hostkit::Look all;
    for (const EffectRequest& request : options.requests()) {
        const hostkit::Look look = lookOf(program.effectLibrary(), program.catalogue(), request);
        all.name = look.name;
        all.strength = std::min(all.strength, look.strength);
        all.effects.insert(all.effects.end(), look.effects.begin(), look.effects.end());
    }
    return all;
}

std::vector<frei0r::Settings> settingsOf(Program& program, const hostkit::Look& look) {
    try {
        return frei0r::settingsOf(program.catalogue(), look);
    } catch (const hostkit::LookError& error) {
        throw UsageError(error.what());
    }
}

std::string commandLine(Program& program, const EffectOptions& options, frei0r::Clip clip,
                        std::string (*write)(const std::vector<frei0r::Settings>&, const frei0r::Clip&)) {
    if (clip.input == "-" || clip.output == "-" || media::isSceneName(clip.input)) {
        throw UsageError("export takes the names of files that the other program reads and writes.");
    }
    const hostkit::Look look = readLook(program, options);
    const std::vector<frei0r::Settings> chain = settingsOf(program, look);
    if (media::filesNamed(clip.input).empty()) {
        tell("lumiset: There is no \"" + clip.input +
             "\" to look at; the line is for whole pictures of square pixels, and a width that 16 divides.\n");
    } else {
        clip = frei0r::clipOf(program.effectLibrary(), program.catalogue(), look, clip.input, clip.output);
    }
    try {
        return write(chain, clip) + '\n';
    } catch (const frei0r::NameError& error) {
        throw UsageError(error.what());
    }
}

void addCommandLine(CLI::App& parent, Program& program, const char* name,
                    std::string (*write)(const std::vector<frei0r::Settings>&, const frei0r::Clip&)) {
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
        frei0r::Clip clip;
        clip.input = request->input;
        clip.output = request->output;
        printText(commandLine(program, request->effect, clip, write));
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
        const std::vector<frei0r::Settings> settings = settingsOf(program, readLook(program, request->effect));
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
    addScriptCommands(command, program);
}

}  // namespace lumiset::app
