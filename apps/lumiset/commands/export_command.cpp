#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "adapters/frei0r/hosts/command_lines.h"
#include "adapters/frei0r/hosts/kdenlive.h"
#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/help.h"
#include "apps/lumiset/messages.h"
#include "apps/lumiset/render/effect_options.h"
#include "apps/lumiset/usage_error.h"
#include "media/input_name.h"
#include "media/picture_color.h"
#include "media/scene_source.h"
#include "render/picture_frame.h"

namespace lumiset::app {
namespace {

/// What the plug-ins of another program can do of a request.
std::vector<frei0r::Settings> readSettings(Program& program, const EffectOptions& options) {
    std::vector<frei0r::Settings> settings;
    for (const EffectRequest& request : options.requests()) {
        const hostkit::Look look = lookOf(program.effectLibrary(), program.catalogue(), request);
        for (const hostkit::LookEffect& each : look.effects) {
            if (each.off) {
                continue;
            }
            const bool moves = std::any_of(each.parameters.begin(), each.parameters.end(),
                                           [](const hostkit::LookParameter& set) { return !set.keys.empty(); });
            if (moves || each.strength < 100.0 || look.strength < 100.0) {
                throw UsageError(
                    fmt::format("The look \"{}\" has {}, which plug-ins of other programs do not do. "
                                "\"lumiset render INPUT - ... | ffmpeg -i - OUTPUT\" hands its pictures on.",
                                look.name, moves ? "keys" : "a strength below 100"));
            }
            settings.push_back(
                frei0r::settingsOf(hostkit::valuesOf(program.catalogue().effect(each.effect), each, 0.0)));
        }
    }
    return settings;
}

/// What another program has to be told of the input's pictures, and whether the effect makes the first one's result
/// transparent. Throws media::MediaError.
void describeClip(frei0r::Clip& clip, Program& program, const std::vector<EffectRequest>& requests) {
    const std::unique_ptr<media::Source> source = media::openSource(clip.input);
    const media::VideoFormat& format = source->format();
    media::Picture picture;
    if (!source->read(picture)) {
        throw media::MediaError("There is no picture in \"" + clip.input + "\".");
    }
    media::Picture result;
    result.allocate(picture.width, picture.height, picture.depth);
    const std::vector<hostkit::EffectStage> chain =
        buildChain(program.effectLibrary(), program.catalogue(), requests, clip.input);
    const hostkit::FrameContext context = render::contextOf(picture, format);
    hostkit::Renderer(chain, kFormatBgra8).render(render::frameOf(picture), render::frameOf(result), context);
    clip.width = format.width;
    clip.height = format.height;
    clip.pixelAspect = context.pixelAspect;
    clip.fields = context.fields;
    clip.alpha = format.color.hasAlpha() || !media::isOpaque(result);
    clip.matrix = media::settledColor(format.color, AV_PIX_FMT_YUV420P, format.width, format.height).matrix;
    if (!media::filesNamed(clip.input).empty() && media::filesNamed(clip.input).front() != clip.input) {
        clip.sequenceRate = format.frameRate.value();
        clip.firstNumber = format.firstNumber;
    }
}

std::string commandLine(Program& program, const EffectOptions& options, frei0r::Clip clip,
                        std::string (*write)(const std::vector<frei0r::Settings>&, const frei0r::Clip&)) {
    if (clip.input == "-" || clip.output == "-" || media::isSceneName(clip.input)) {
        throw UsageError("export takes the names of files that the other program reads and writes.");
    }
    if (media::filesNamed(clip.input).empty()) {
        tell("lumiset: There is no \"" + clip.input +
             "\" to look at; the line is for whole pictures of square pixels, and a width that 16 divides.\n");
    } else {
        describeClip(clip, program, options.requests());
    }
    try {
        return write(readSettings(program, options), clip) + '\n';
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
