#include "apps/lumiset/command_line.h"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <memory>
#include <vector>

#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/help.h"
#include "apps/lumiset/usage_error.h"
#include "hostkit/names.h"

namespace lumiset::app {
namespace {

/// CLI11's message as a sentence of one line.
std::string sentence(std::string message) {
    message = message.substr(0, message.find('\n'));
    if (!message.empty() && message.back() != '.') {
        message += '.';
    }
    return message;
}

std::vector<std::string> commandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : shownCommands(app)) {
        names.push_back(command->get_name());
    }
    return names;
}

/// The command that the arguments lead to, or `app`.
const CLI::App& chosenCommand(const CLI::App& app) {
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    return chosen.empty() ? app : chosenCommand(*chosen.back());
}

std::vector<std::string> optionNames(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

UsageError unknownWord(const CLI::App& app, const CLI::ParseError& error) {
    const CLI::App& command = chosenCommand(app);
    const std::vector<std::string> words = command.remaining();
    if (words.empty()) {
        return UsageError(sentence(error.what()));
    }
    const std::string word = words.front().substr(0, words.front().find('='));
    if (word.starts_with('-')) {
        return UsageError("There is no option \"" + word + "\"." + hostkit::didYouMean(word, optionNames(command)));
    }
    const std::vector<std::string> names = commandNames(command);
    if (names.empty()) {
        return UsageError("\"" + words.front() + "\" is one argument too many.");
    }
    return UsageError("There is no command \"" + words.front() + "\"." + hostkit::didYouMean(words.front(), names));
}

}  // namespace

void describeCommandLine(CLI::App& app, Program& program) {
    app.description(help::kProgram);
    app.name("lumiset");
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
    app.add_option("--module", program.modulePath, "effects module to use")->option_text("PATH");

    addListCommand(app, program);
    addShowCommand(app, program);
    addRenderCommand(app, program);
    addJoinCommand(app, program);
    addGalleryCommand(app, program);
    addCompareCommand(app, program);
    addExportCommands(app, program);
    addPresetCommands(app, program);
    addLookCommands(app, program);
    addOptionsCommand(app, program);
    addGPUCommands(app, program);
    addDoctorCommand(app, program);
    addValidateCommand(app, program);
    addCompletionCommands(app, program);
    addManCommand(app, program);
    app.footer(help::kProgramFooter);  // Set last, since commands take it over when they are added.
}

void parseCommandLine(CLI::App& app, Program& program, const std::vector<std::string>& arguments) {
    const auto print = [&program](const std::string& text) {
        program.setWork([text] {
            printText(text);
            return kDone;
        });
    };
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));  // it takes them from the end
        if (app.get_subcommands().empty()) {
            print(help::kProgram + std::string("\n\"lumiset --help\" lists the commands.\n"));
        }
    } catch (const CLI::CallForHelp&) {
        print(app.help());
    } catch (const CLI::Success& version) {
        print(std::string(version.what()) + '\n');
    } catch (const CLI::ExtrasError& error) {
        throw unknownWord(app, error);
    } catch (const CLI::ParseError& error) {
        const CLI::App& command = chosenCommand(app);
        const std::vector<std::string> names = commandNames(command);
        const bool noCommand = !names.empty() && error.get_name() == "RequiredError";
        // Where a word is unknown what is missing besides does not help.
        if (!command.remaining().empty()) {
            throw unknownWord(app, error);
        }
        throw UsageError(noCommand ? "A command is needed: " + hostkit::quotedList(names) + "."
                                   : sentence(error.what()));
    }
}

}  // namespace lumiset::app
