#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/help.h"
#include "apps/lumiset/messages.h"
#include "apps/lumiset/render/effect_options.h"
#include "apps/lumiset/render/output_guard.h"
#include "apps/lumiset/usage_error.h"
#include "hostkit/look_files.h"
#include "hostkit/look_json.h"
#include "hostkit/parameter_text.h"

namespace lumiset::app {
namespace {

using hostkit::EffectDescription;
using hostkit::KnownLook;
using hostkit::Look;
using hostkit::LookEffect;
using hostkit::LookParameter;
using hostkit::ParameterDescription;

std::string percentText(double percent) {
    return hostkit::formatNumber(percent, 2);
}

int listLooks(Program& program, bool json) {
    std::vector<std::string> faults;
    const std::vector<KnownLook> looks = hostkit::knownLooks(program.catalogue(), faults);
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    std::size_t longest = 0;
    for (const KnownLook& each : looks) {
        longest = std::max(longest, each.look.name.size());
        std::vector<std::string> effects;
        for (const LookEffect& effect : each.look.effects) {
            effects.push_back(effect.effect);
        }
        list.push_back({{"name", each.look.name},
                        {"about", each.look.about},
                        {"author", each.look.author},
                        {"file", each.file.string()},
                        {"effects", effects}});
    }
    std::string text;
    for (const KnownLook& each : looks) {
        text += fmt::format("{:<{}}  {}\n", each.look.name, longest, each.look.about);
    }
    printText(json ? list.dump(2) + '\n' : text);
    for (const std::string& fault : faults) {
        tell("lumiset: " + fault + '\n');
    }
    return kDone;
}

std::string settingText(const EffectDescription& effect, const LookParameter& set) {
    const ParameterDescription& parameter = effect.parameter('#' + std::to_string(set.index));
    const std::string name = effect.shortestName(parameter);
    if (set.keys.empty()) {
        return fmt::format("  {}={}\n", name, hostkit::formatValue(parameter, set.value));
    }
    std::string text;
    for (const LookParameter::Key& key : set.keys) {
        const std::string at = key.time.isPart ? percentText(key.time.at) + '%' : hostkit::formatNumber(key.time.at, 3);
        text += fmt::format("  {}@{}={}\n", name, at, hostkit::formatValue(parameter, key.value));
    }
    return text;
}

int showLook(Program& program, const std::string& name, bool json) {
    const Look look = hostkit::findLook(program.catalogue(), name).look;
    if (json) {
        printText(hostkit::lookToJson(program.catalogue(), look));
        return kDone;
    }
    std::string text = look.name + (look.author.empty() ? "" : ", by " + look.author) + '\n';
    text += look.about.empty() ? "" : look.about + '\n';
    text += look.strength < 100.0 ? fmt::format("Strength {}\n", percentText(look.strength)) : "";
    for (const LookEffect& each : look.effects) {
        const EffectDescription& effect = program.catalogue().effect(each.effect);
        text += '\n' + effect.name;
        text += each.preset.empty() ? "" : fmt::format(", preset \"{}\"", each.preset);
        text += each.strength < 100.0 ? fmt::format(", strength {}", percentText(each.strength)) : "";
        text += each.off ? ", off\n" : "\n";
        for (const LookParameter& set : each.parameters) {
            text += settingText(effect, set);
        }
    }
    printText(text);
    return kDone;
}

struct SaveRequest {
    explicit SaveRequest(CLI::App& command) : effects(command, EffectOptions::kAnimatedChain), guard(command) {}
    EffectOptions effects;
    OutputGuard guard;
    std::string file;
    std::string name;
    std::string about;
    std::string author;
};

/// Everything that the line asks for as one look.
Look joined(Program& program, const std::vector<EffectRequest>& requests) {
    Look look = lookOf(program.effectLibrary(), program.catalogue(), requests.front());
    for (std::size_t i = 1; i < requests.size(); ++i) {
        Look next = lookOf(program.effectLibrary(), program.catalogue(), requests[i]);
        if (look.strength < 100.0 || next.strength < 100.0) {
            throw UsageError("A look of less than full strength can be saved alone, not with other effects.");
        }
        std::move(next.effects.begin(), next.effects.end(), std::back_inserter(look.effects));
    }
    return look;
}

/// A file, or for a name alone one in the person's own folder.
std::filesystem::path fileFor(const std::string& given) {
    const std::filesystem::path file = given;
    if (file.has_parent_path() || file.extension() == ".lumilook") {
        if (file.extension() != ".lumilook") {
            throw UsageError("A look's file has the extension .lumilook, unlike \"" + given + "\".");
        }
        return file;
    }
    const std::filesystem::path folder = hostkit::ownLooksFolder();
    if (folder.empty()) {
        throw UsageError("There is no folder for looks of one's own; name a file, \"" + given + ".lumilook\".");
    }
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    return folder / (given + ".lumilook");
}

int saveLook(Program& program, const SaveRequest& request) {
    const std::vector<EffectRequest> requests = request.effects.requests();
    Look look = joined(program, requests);
    const std::filesystem::path file = fileFor(request.file);
    request.guard.check(file.string(), filesRead(program.catalogue(), requests));
    look.name = request.name.empty() ? file.stem().string() : request.name;
    look.about = !request.about.empty() || requests.size() > 1 ? request.about : look.about;
    look.author = !request.author.empty() || requests.size() > 1 ? request.author : look.author;
    hostkit::saveLook(program.catalogue(), look, file);
    tell("Saved \"" + look.name + "\" as " + file.string() + '\n');
    return kDone;
}

/// Prints a line for each file: what it is or what is wrong with it.
int checkLooks(Program& program, const std::vector<std::string>& files) {
    int status = kDone;
    for (const std::string& file : files) {
        try {
            const Look look = hostkit::loadLook(program.catalogue(), file);
            const std::size_t count = look.effects.size();
            printText(fmt::format("{}: \"{}\", {} effect{}\n", file, look.name, count, count == 1 ? "" : "s"));
        } catch (const hostkit::LookError& error) {
            printText(fmt::format("{}: {}\n", file, error.what()));
            status = kFailed;
        }
    }
    return status;
}

void addLookSave(CLI::App& look, Program& program) {
    CLI::App& command = addCommand(look, "save", "Keeps effects with their settings as a look", help::kLookSave);
    const auto request = std::make_shared<SaveRequest>(command);
    command.add_option("FILE", request->file, "what to write, .lumilook, or a name alone")->required();
    command.add_option("--name,-n", request->name, "what the look is called [the file's name]")->option_text("TEXT");
    command.add_option("--about", request->about, "a sentence about it")->option_text("TEXT");
    command.add_option("--author", request->author, "who made it")->option_text("TEXT");
    program.onChosen(command, [request, &program] { return saveLook(program, *request); });
}

}  // namespace

void addLookCommands(CLI::App& app, Program& program) {
    CLI::App& look = addCommand(app, "look", "Lists, shows, saves and checks looks: chains of effects in a file");
    look.require_subcommand(1);

    CLI::App& list = addCommand(look, "list", "Lists the looks there are: ours and one's own");
    const auto listAsJson = std::make_shared<bool>(false);
    list.add_flag("--json", *listAsJson, "as JSON, for programs");
    program.onChosen(list, [listAsJson, &program] { return listLooks(program, *listAsJson); });

    CLI::App& show = addCommand(look, "show", "Shows a look's effects and their settings");
    const auto shown = std::make_shared<std::pair<std::string, bool>>();
    show.add_option("LOOK", shown->first, "a file or a name")->required();
    show.add_flag("--json", shown->second, "as its file has it");
    program.onChosen(show, [shown, &program] { return showLook(program, shown->first, shown->second); });

    addLookSave(look, program);

    CLI::App& check = addCommand(look, "check", "Tells of look files whether they can be used");
    const auto files = std::make_shared<std::vector<std::string>>();
    check.add_option("FILE", *files, "what to read")->required();
    program.onChosen(check, [files, &program] { return checkLooks(program, *files); });

    addLookGalleryCommand(look, program);
}

}  // namespace lumiset::app
