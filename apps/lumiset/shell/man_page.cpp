#include <fmt/format.h>

#include <sstream>
#include <string>

#include "apps/lumiset/command_line.h"
#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/help.h"

namespace lumiset::app {
namespace {

/// Text as it stands in a page's source: nothing of it is taken for a request or becomes a typographic sign.
std::string escaped(const std::string& text) {
    std::string out;
    for (const char c : text) {
        switch (c) {
            case '\\':
                out += "\\e";
                break;
            case '-':
                out += "\\-";
                break;
            case '\'':
                out += "\\(aq";
                break;
            case '"':
                out += "\\(dq";
                break;
            case '~':
                out += "\\(ti";
                break;
            case '^':
                out += "\\(ha";
                break;
            default:
                out += c;
        }
    }
    return !out.empty() && out.front() == '.' ? "\\&" + out : out;
}

/// The help's text: indented lines stand as they are, the others are filled.
std::string paragraphs(const std::string& text) {
    std::string out;
    std::istringstream lines(text);
    enum { kGap, kFilled, kLiteral } state = kGap;
    for (std::string line; std::getline(lines, line);) {
        const bool literal = !line.empty() && line.front() == ' ';
        if (line.empty() || literal != (state == kLiteral)) {
            out += state == kLiteral ? ".fi\n.RE\n" : "";
            state = line.empty() || state == kLiteral ? kGap : state;
        }
        if (line.empty()) {
            continue;
        }
        if (literal && state != kLiteral) {
            out += ".RS 2\n.nf\n";
        } else if (!literal && state == kGap && !out.empty()) {
            out += ".PP\n";
        }
        state = literal ? kLiteral : kFilled;
        out += escaped(literal ? line.substr(2) : line) + '\n';
    }
    return out + (state == kLiteral ? ".fi\n.RE\n" : "");
}

/// Option names in bold, what they take in italics.
std::string optionText(const CLI::Option& option) {
    std::string names;
    for (const std::string& name : option.get_lnames()) {
        names += (names.empty() ? "" : ", ") + ("\\fB" + escaped("--" + name) + "\\fR");
    }
    for (const std::string& name : option.get_snames()) {
        names += (names.empty() ? "" : ", ") + ("\\fB" + escaped("-" + name) + "\\fR");
    }
    if (!option.get_option_text().empty()) {
        names += " \\fI" + escaped(option.get_option_text()) + "\\fR";
    }
    return names.empty() ? "\\fI" + escaped(option.get_name(true)) + "\\fR" : names;
}

/// The arguments and options of a command, save those that every command has.
std::string optionList(const CLI::App& command) {
    std::string out;
    for (const bool positional : {true, false}) {
        for (const CLI::Option* option : command.get_options()) {
            if (option->get_positional() == positional && option != command.get_help_ptr() &&
                !option->get_group().empty()) {
                out += ".TP\n" + optionText(*option) + '\n' + escaped(option->get_description()) + '\n';
            }
        }
    }
    return out;
}

/// The introduction that a command's own help begins with. It is put in place only when help is asked for, so a command
/// line of its own is made for that.
std::string introduction(const std::string& path) {
    Program program;
    CLI::App app;
    describeCommandLine(app, program);
    try {
        app.parse("lumiset " + path + " --help", true);
    } catch (const CLI::Success&) {
    }
    const CLI::App* command = &app;
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().front();
    }
    return command->get_description();
}

void addCommandSections(std::string& page, const CLI::App& app, const std::string& above) {
    for (const CLI::App* command : shownCommands(app)) {
        const std::string path = above + command->get_name();
        if (!shownCommands(*command).empty()) {
            addCommandSections(page, *command, path + ' ');
            continue;
        }
        std::string usage = "lumiset " + path;
        for (const CLI::Option* option : command->get_options()) {
            if (option->get_positional()) {
                const std::string name = option->get_name(true);
                usage += ' ' + (option->get_required() ? name : '[' + name + ']') +
                         (option->get_items_expected_max() > 1 ? "..." : "");
            }
        }
        const std::string footer = paragraphs(command->get_footer());
        page += ".SS \"" + escaped(usage) + "\"\n" + paragraphs(introduction(path)) + optionList(*command) +
                (footer.empty() ? "" : ".PP\n" + footer);
    }
}

std::string effectsText(const hostkit::EffectCatalogue& catalogue) {
    std::string out;
    for (const hostkit::EffectDescription& effect : catalogue.effects()) {
        out += ".TP\n.B " + escaped(effect.name) + "\nParameters: ";
        for (const hostkit::ParameterDescription& each : effect.parameters) {
            const std::string name = effect.shortestName(each);
            out += &each == effect.parameters.data() ? "" : ", ";
            out += escaped(name.front() == '#' ? each.path() + " (" + name + ")" : name);
        }
        out += ".\n.br\nPresets: ";
        for (const hostkit::PresetDescription& each : effect.presets) {
            out += (&each == effect.presets.data() ? "" : ", ") + escaped(each.uniqueName);
        }
        out += ".\n";
    }
    return out;
}

/// The manual page in the macros of man(7).
std::string manPage(const CLI::App& app, const hostkit::EffectCatalogue& catalogue) {
    std::string page = ".TH LUMISET 1 \"" LUMISET_DATE "\" \"lumiset " LUMISET_VERSION "\" \"User Commands\"\n";
    page += ".SH NAME\nlumiset \\- renders video effects over images and video\n";
    page += ".SH SYNOPSIS\n.B lumiset\n[\\fB\\-\\-module\\fR \\fIPATH\\fR]\n.I COMMAND\n[\\fIOPTION\\fR]...\n";
    page += "[\\fIARGUMENT\\fR]...\n";
    page += ".SH DESCRIPTION\n" + paragraphs(help::kProgram + std::string("\n") + help::kProgramFooter);
    page += ".SH OPTIONS\n" + optionList(app) + ".TP\n\\fB\\-\\-help\\fR, \\fB\\-h\\fR\n";
    page += "print the help of the program, or of the command before it, and exit\n";
    page += ".SH COMMANDS\n";
    addCommandSections(page, app, {});
    page += ".SH EFFECTS\n" + effectsText(catalogue);
    page += ".SH ENVIRONMENT\n.TP\n.B LUMISET_MODULE\nthe effects module to use; \\-\\-module goes before it\n";
    page += ".TP\n.B FREI0R_PATH\nwhere hosts look for frei0r plug-ins, folders parted by colons\n";
    page += ".SH FILES\n.TP\n.I $XDG_CONFIG_HOME/vantrel/Common.ini\nthe user\\(aqs options; ";
    page += "XDG_CONFIG_HOME is \\(ti/.config where it is not set\n";
    page += ".SH SEE ALSO\n.BR ffmpeg (1),\n.BR melt (1)\n";
    return page;
}

}  // namespace

void addManCommand(CLI::App& app, Program& program) {
    CLI::App& command =
        addCommand(app, "man", "Prints the manual page", "Prints the manual page: lumiset man | man -l -\n");
    program.onChosen(command, [&app, &program] {
        printText(manPage(app, program.catalogue()));
        return kDone;
    });
}

}  // namespace lumiset::app
