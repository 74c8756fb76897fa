#include "apps/lumiset/command_line.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cmath>
#include <map>
#include <memory>

#include "apps/lumiset/assignment.h"
#include "apps/lumiset/help.h"
#include "apps/lumiset/preset_options.h"
#include "hostkit/names.h"
#include "hostkit/parameter_text.h"

namespace lumiset::app {
namespace {

EffectRequest::Key parseKey(const std::string& text) {
    constexpr const char* kForm = "Label@SECONDS=value";
    Assignment assignment = splitAssignment(text, "--key", kForm);
    const std::size_t at = assignment.name.rfind('@');
    EffectRequest::Key key{{}, 0.0, std::move(assignment.value)};
    if (at == std::string::npos ||
        !hostkit::parseNumber(hostkit::trimmed(std::string_view(assignment.name).substr(at + 1)), key.timeSeconds)) {
        throw UsageError(std::string("--key takes \"") + kForm + "\", not \"" + text + "\".");
    }
    key.label = assignment.name.substr(0, at);
    return key;
}

/// Seconds, or minutes and hours before them with colons: "90", "1:30", "0:01:30.5".
double parseTime(const std::string& text, const std::string& option) {
    double seconds = 0.0;
    std::string_view rest = text;
    for (int part = 0;; ++part) {
        const std::size_t colon = rest.find(':');
        double number = 0.0;
        if (part > 2 || !hostkit::parseNumber(rest.substr(0, colon), number) || number < 0.0) {
            std::string sentence = option;
            sentence.append(" takes seconds or [hours:]minutes:seconds, not \"").append(text).append("\".");
            throw UsageError(sentence);
        }
        seconds = seconds * 60.0 + number;
        if (colon == std::string_view::npos) {
            return seconds;
        }
        rest.remove_prefix(colon + 1);
    }
}

/// A whole number of pictures a second, one with up to three decimals, or a fraction of whole numbers.
RenderRequest::Rate parseRate(const std::string& text) {
    const std::string_view whole = text;
    const std::size_t slash = whole.find('/');
    const bool fraction = slash != std::string_view::npos;
    double num = 0.0;
    double den = fraction ? 0.0 : 1.0;
    const bool read = hostkit::parseNumber(whole.substr(0, slash), num) &&
                      (!fraction || hostkit::parseNumber(whole.substr(slash + 1), den));
    const double scale = fraction ? 1.0 : 1000.0;
    if (!read || !(num * scale >= 1.0) || !(num * scale <= 1e7) || !(den >= 1.0) || !(den <= 1e7)) {
        throw UsageError("--fps takes a number or a fraction of pictures a second, not \"" + text + "\".");
    }
    return {static_cast<int>(std::lround(num * scale)), static_cast<int>(std::lround(den * scale))};
}

/// The `render` command's options; those of one effect are put together from the order in which they came.
class RenderOptions {
public:
    explicit RenderOptions(CLI::App& app) : m_app(app) {
        app.add_option("INPUT", request.input, "what to read")->required();
        app.add_option("OUTPUT", request.output, "what to write")->required();
        m_effect = addRepeated("--effect,-e", m_effects, "NAME", "effect to apply; several are applied in turn");
        m_preset = addRepeated("--preset,-p", m_presets, "NAME", "preset of the --effect before it");
        m_presetFile = addRepeated("--preset-file", m_presetFiles, "FILE", "preset file for the --effect before it");
        m_set = addRepeated("--set,-s", m_sets, "\"Label=value\"", "value for the --effect before it");
        m_key = addRepeated("--key,-k", m_keys, "\"Label@SECONDS=value\"", "keyframe for the --effect before it");
        app.add_option("--depth", m_depth, "samples that the effects work in: 8 or float [8]")
            ->check(CLI::IsMember({"8", "float"}))
            ->option_text("DEPTH");
        app.add_option("--layout", m_layout, "sample order that the effects work in: bgra or argb [bgra]")
            ->check(CLI::IsMember({"bgra", "argb"}))
            ->option_text("LAYOUT");
        app.add_option("--threads,-j", request.threads, "frames rendered at the same time [one a core]")
            ->check(CLI::Range(1, 1024))
            ->option_text("N");
        app.add_option("--start", m_start, "time in the input to start at, in seconds or h:m:s")->option_text("TIME");
        app.add_option("--duration", m_duration, "how much of the input to render, likewise")->option_text("TIME");
        app.add_option("--codec", request.codec, "video codec of the output [the usual one for its extension]")
            ->option_text("NAME");
        app.add_option("--quality", request.quality, "H.264, VP9: constant rate factor; JPEG: 2 (best) to 31")
            ->check(CLI::Range(0, 63))
            ->option_text("N");
        app.add_option("--fps", m_rate, "pictures a second of an input image sequence, as 24 or 24000/1001 [25]")
            ->option_text("RATE");
        app.add_flag("--alpha", request.alpha,
                     "write transparency; without it only where the input has it or the first result shows it");
        app.add_flag(
            "--gpu", request.gpu,
            "render in OpenGL; frames that cannot be are left to the processor, as all are where there is none");
        app.add_flag("--quiet,-q", request.quiet, "no progress and no summary");
    }

    /// The request, once the arguments have been read. Throws `UsageError`.
    RenderRequest finish() {
        groupByEffect();
        request.floatDepth = m_depth == "float";
        request.argb = m_layout == "argb";
        if (!m_start.empty()) {
            request.startSeconds = parseTime(m_start, "--start");
        }
        if (!m_duration.empty()) {
            request.durationSeconds = parseTime(m_duration, "--duration");
            if (!(request.durationSeconds > 0.0)) {
                throw UsageError("--duration must be longer than 0.");
            }
        }
        if (!m_rate.empty()) {
            request.frameRate = parseRate(m_rate);
        }
        return std::move(request);
    }

    RenderRequest request;

private:
    CLI::Option* addRepeated(const char* names, std::vector<std::string>& values, const char* form, const char* tip) {
        return m_app.add_option(names, values, tip)->allow_extra_args(false)->option_text(form);
    }

    void groupByEffect() {
        std::map<const CLI::Option*, std::size_t> used;
        for (const CLI::Option* option : m_app.parse_order()) {
            if (option == m_effect) {
                request.effects.push_back({m_effects[used[option]++], {}, {}, {}, {}});
            } else if (option == m_preset || option == m_presetFile || option == m_set || option == m_key) {
                if (request.effects.empty()) {
                    throw UsageError(option->get_name() + " must stand behind the --effect that it belongs to.");
                }
                addTo(request.effects.back(), option, used[option]++);
            }
        }
        if (request.effects.empty()) {
            throw UsageError("render needs at least one --effect; \"lumiset list\" shows them.");
        }
    }

    void addTo(EffectRequest& effect, const CLI::Option* option, std::size_t i) {
        if (option == m_set) {
            Assignment assignment = splitAssignment(m_sets[i], "--set", "Label=value");
            effect.settings.push_back({std::move(assignment.name), std::move(assignment.value)});
        } else if (option == m_key) {
            effect.keys.push_back(parseKey(m_keys[i]));
        } else if (effect.preset.empty() && effect.presetFile.empty()) {
            (option == m_preset ? effect.preset : effect.presetFile) =
                (option == m_preset ? m_presets : m_presetFiles)[i];
        } else {
            throw UsageError("The effect \"" + effect.name + "\" is given two presets; one is possible.");
        }
    }

    CLI::App& m_app;
    CLI::Option* m_effect = nullptr;
    CLI::Option* m_preset = nullptr;
    CLI::Option* m_presetFile = nullptr;
    CLI::Option* m_set = nullptr;
    CLI::Option* m_key = nullptr;
    std::vector<std::string> m_effects;
    std::vector<std::string> m_presets;
    std::vector<std::string> m_presetFiles;
    std::vector<std::string> m_sets;
    std::vector<std::string> m_keys;
    std::string m_depth = "8";
    std::string m_layout = "bgra";
    std::string m_start;
    std::string m_duration;
    std::string m_rate;
};

/// CLI11's message as a sentence of one line.
std::string sentence(std::string message) {
    message = message.substr(0, message.find('\n'));
    if (!message.empty() && message.back() != '.') {
        message += '.';
    }
    return message;
}

}  // namespace

CommandLine parseCommandLine(int argc, const char* const* argv) {
    CommandLine line;
    CLI::App app(help::kProgram, "lumiset");
    app.require_subcommand(0, 1);
    app.set_version_flag("--version", "lumiset " LUMISET_VERSION, "print the version and exit");
    app.set_help_flag("--help,-h", "print this help and exit");
    const auto format = std::make_shared<CLI::Formatter>();
    format->label("SUBCOMMAND", "COMMAND");
    format->label("Subcommands", "Commands");
    format->label("Positionals", "Arguments");
    format->label("REQUIRED", "");
    format->label("TEXT", "");
    format->column_width(34);
    app.formatter(format);
    app.add_option("--module", line.modulePath, "effects module to use")->option_text("PATH");

    ListRequest list;
    CLI::App* listApp = app.add_subcommand("list", "Lists the effects");
    listApp->add_flag("--json", list.json, "as JSON");

    ShowRequest show;
    CLI::App* showApp = app.add_subcommand("show", "Shows an effect's parameters and presets");
    showApp->add_option("EFFECT", show.effect, "name of the effect")->required();
    showApp->add_flag("--json", show.json, "as JSON");

    CLI::App* gpuApp = app.add_subcommand("gpu", "Tells about rendering in OpenGL");
    gpuApp->require_subcommand(1);
    CLI::App* gpuInfoApp = gpuApp->add_subcommand("info", "The OpenGL of this machine and its extensions");
    gpuInfoApp->group("Commands");

    CLI::App* presetApp = app.add_subcommand("preset", "Writes, shows and checks preset files");
    PresetOptions presets(*presetApp);

    OptionsRequest options;
    CLI::App* optionsApp = app.add_subcommand("options", "Lists the user's options, or sets one");
    CLI::Option* optionName = optionsApp->add_option("NAME", options.name, "the option to set");
    CLI::Option* optionValue = optionsApp->add_option("VALUE", options.value, "yes or no");
    optionName->needs(optionValue);

    CLI::App* renderApp = app.add_subcommand("render", "Renders images or video through effects");
    renderApp->footer(help::kRenderFooter);
    app.footer(help::kProgramFooter);  // Set last, since commands take it over when they are added.
    for (CLI::App* command : {listApp, showApp, renderApp, presetApp, optionsApp, gpuApp}) {
        command->group("Commands");
    }
    RenderOptions render(*renderApp);

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        const std::vector<CLI::App*> chosen = app.get_subcommands();
        // The long introduction stands only in the command's own help, not in the program's list of commands.
        if (*renderApp) {
            renderApp->description(help::kRender);
        } else if (!chosen.empty()) {
            chosen.front()->description(chosen.front()->get_description() + ".\n");
        }
        line.request = TextRequest{chosen.empty() ? app.help() : chosen.front()->help("lumiset")};
        return line;
    } catch (const CLI::Success& version) {
        line.request = TextRequest{std::string(version.what()) + '\n'};
        return line;
    } catch (const CLI::ExtrasError& error) {
        if (app.get_subcommands().empty()) {
            const std::string word = app.remaining().front();
            throw UsageError((word.front() == '-' ? "There is no option \"" : "There is no command \"") + word + "\"." +
                             hostkit::didYouMean(word, {"list", "show", "render", "preset", "options", "gpu"}));
        }
        throw UsageError(sentence(error.what()));
    } catch (const CLI::ParseError& error) {
        throw UsageError(sentence(error.what()));
    }
    if (*listApp) {
        line.request = list;
    } else if (*showApp) {
        line.request = std::move(show);
    } else if (*gpuInfoApp) {
        line.request = GPUInfoRequest{};
    } else if (*presetApp) {
        presets.finish(line);
    } else if (*optionsApp) {
        line.request = std::move(options);
    } else if (*renderApp) {
        line.request = render.finish();
    } else {
        throw UsageError("A command is needed: list, show, render, preset, options or gpu.");
    }
    return line;
}

}  // namespace lumiset::app
