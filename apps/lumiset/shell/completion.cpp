#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/shell/completion_scripts.h"
#include "apps/lumiset/shell/shell_line.h"
#include "apps/lumiset/user_options.h"
#include "hostkit/look_files.h"
#include "hostkit/names.h"
#include "hostkit/parameter_text.h"

namespace lumiset::app {
namespace {

using hostkit::EffectDescription;
using hostkit::ParameterDescription;

/// What may stand at the end of a command line that is being typed.
struct Completion {
    enum Kind {
        kWords,       ///< the candidates are whole words
        kBeginnings,  ///< the candidates go on: "Width=" is followed by a value
        kFiles,       ///< a file's name stands here
    };
    struct Candidate {
        std::string text;
        std::string description;
    };
    Kind kind = kWords;
    std::vector<Candidate> candidates;
};

bool takesValue(const CLI::Option& option) {
    return option.get_items_expected_max() > 0;
}

const CLI::Option* findOption(const CLI::App& command, const std::string& word) {
    for (const CLI::Option* option : command.get_options()) {
        if (option->nonpositional() && option->check_name(word)) {
            return option;
        }
    }
    return nullptr;
}

const CLI::App* findCommand(const CLI::App& above, const std::string& word) {
    const std::vector<const CLI::App*> found =
        above.get_subcommands([&word](const CLI::App* each) { return each->check_name(word); });
    return found.empty() ? nullptr : found.front();
}

/// What the words before the last one have led to.
class PlaceInLine {
public:
    PlaceInLine(const CLI::App& app, Program& program) : m_command(&app), m_program(program) {}

    /// Takes one whole word.
    void pass(const std::string& word);
    [[nodiscard]] Completion completed(const std::string& word);

private:
    [[nodiscard]] bool readsOptions() const { return !m_optionsEnded; }
    [[nodiscard]] const CLI::Option* positional() const;
    void take(const CLI::Option& option, const std::string& value);
    [[nodiscard]] const EffectDescription* effect();
    void add(const std::string& text, const std::string& description = {});
    void addOptions();
    void addCommands();
    void addValues(const CLI::Option& option, std::string_view word);
    void addLooks();
    void addParameters(const EffectDescription& effect, char mark);
    void addLookParameters(char mark);
    void addParameterValues(const ParameterDescription& parameter, const std::string& label);

    const CLI::App* m_command;
    Program& m_program;
    const CLI::Option* m_waiting = nullptr;  // an option whose value comes next
    std::size_t m_positionals = 0;
    bool m_optionsEnded = false;  // by "--"
    std::string m_effect;
    std::string m_look;
    Completion m_completion;
    std::string m_before;  // stands before each candidate: "--effect="
};

const CLI::Option* PlaceInLine::positional() const {
    std::size_t i = 0;
    for (const CLI::Option* option : m_command->get_options()) {
        if (option->get_positional() && (i++ == m_positionals || option->get_items_expected_max() > 1)) {
            return option;
        }
    }
    return nullptr;
}

void PlaceInLine::take(const CLI::Option& option, const std::string& value) {
    if (option.check_lname("effect") || option.get_name(true) == "EFFECT") {
        m_effect = value;
        m_look.clear();
    } else if (option.check_lname("look")) {
        m_look = value;
        m_effect.clear();
    } else if (option.check_lname("module")) {
        m_program.modulePath = value;
    }
}

void PlaceInLine::pass(const std::string& word) {
    if (m_waiting != nullptr) {
        take(*m_waiting, word);
        m_waiting = nullptr;
    } else if (readsOptions() && word == "--") {
        m_optionsEnded = true;
    } else if (readsOptions() && word.size() > 1 && word.front() == '-') {
        const std::size_t equals = word.find('=');
        const CLI::Option* option = findOption(*m_command, word.substr(0, equals));
        if (option != nullptr && equals != std::string::npos) {
            take(*option, word.substr(equals + 1));
        } else if (option != nullptr && takesValue(*option)) {
            m_waiting = option;
        }
    } else if (const CLI::App* command = findCommand(*m_command, word)) {
        m_command = command;
    } else if (const CLI::Option* option = positional()) {
        take(*option, word);
        ++m_positionals;
    }
}

const EffectDescription* PlaceInLine::effect() {
    try {
        return m_effect.empty() ? nullptr : &m_program.catalogue().effect(m_effect);
    } catch (const hostkit::ParameterError&) {
        return nullptr;
    }
}

void PlaceInLine::add(const std::string& text, const std::string& description) {
    m_completion.candidates.push_back({m_before + text, description});
}

void PlaceInLine::addOptions() {
    for (const CLI::Option* option : m_command->get_options()) {
        if (!option->get_lnames().empty() && !option->get_group().empty()) {
            add("--" + option->get_lnames().front(), option->get_description());
        }
    }
}

void PlaceInLine::addCommands() {
    for (const CLI::App* command : shownCommands(*m_command)) {
        add(command->get_name(), command->get_description());
    }
}

void PlaceInLine::addParameters(const EffectDescription& effect, char mark) {
    m_completion.kind = Completion::kBeginnings;
    for (const ParameterDescription& parameter : effect.parameters) {
        add(effect.shortestName(parameter) + mark,
            parameter.path() + ", " + (parameter.items.empty() ? hostkit::describeRange(parameter) : "a list"));
    }
}

void PlaceInLine::addLooks() {
    std::vector<std::string> faults;
    for (const hostkit::KnownLook& each : hostkit::knownLooks(m_program.catalogue(), faults)) {
        add(each.look.name, each.look.about);
    }
    m_completion.kind = m_completion.candidates.empty() ? Completion::kFiles : m_completion.kind;
}

void PlaceInLine::addLookParameters(char mark) {
    try {
        const hostkit::Look look = hostkit::findLook(m_program.catalogue(), m_look).look;
        const std::string before = m_before;
        for (const hostkit::LookEffect& each : look.effects) {
            m_before = before + each.effect + '/';
            addParameters(m_program.catalogue().effect(each.effect), mark);
        }
        m_before = before;
    } catch (const hostkit::LookError&) {
        return;  // what is not there has nothing to offer
    }
}

void PlaceInLine::addParameterValues(const ParameterDescription& parameter, const std::string& label) {
    m_before += label + '=';
    if (parameter.type == kParamBoolean) {
        add("on");
        add("off");
    }
    for (const std::string& item : parameter.items) {
        add(item);
    }
}

/// Which values these are is told by the option's name, and where that says nothing by what its help calls the value.
void PlaceInLine::addValues(const CLI::Option& option, std::string_view word) {
    const std::string name = option.nonpositional() ? option.get_name() : option.get_name(true);
    const std::string& form = option.get_option_text();
    const std::string type = option.get_type_name();
    if (name == "--effect" || name == "EFFECT") {
        for (const EffectDescription& each : m_program.catalogue().effects()) {
            add(each.name);
        }
    } else if (name == "--look" || name == "LOOK") {
        addLooks();
    } else if (name == "--preset") {
        const EffectDescription* known = effect();
        for (std::size_t i = 0; known != nullptr && i < known->presets.size(); ++i) {
            add(known->presets[i].uniqueName);
        }
    } else if (name == "--set" || name == "--key") {
        const EffectDescription* known = effect();
        const std::size_t equals = word.find('=');
        if (!m_look.empty() && equals == std::string_view::npos) {
            addLookParameters(name == "--set" ? '=' : '@');
        } else if (known != nullptr && equals == std::string_view::npos) {
            addParameters(*known, name == "--set" ? '=' : '@');
        } else if (known != nullptr) {
            const std::string label(word.substr(0, equals));
            addParameterValues(known->parameter(std::string_view(label).substr(0, label.rfind('@'))), label);
        }
    } else if (m_command->get_name() == "options") {
        if (name == "VALUE") {
            add("yes");
            add("no");
        }
        for (std::size_t i = 0; name == "NAME" && i < kUserOptions.size(); ++i) {
            add(kUserOptions[i].name, kUserOptions[i].meaning);
        }
    } else if (const std::size_t set = type.find('{'); set != std::string::npos) {
        // CLI11 writes what IsMember allows as {one,two}.
        for (const std::string& item : CLI::detail::split(type.substr(set + 1, type.find('}') - set - 1), ',')) {
            add(item);
        }
    } else {
        const std::string& what = option.nonpositional() ? form : name;
        for (const char* file : {"FILE", "FOLDER", "PATH", "INPUT", "OUTPUT", "IN", "OUT", "PART"}) {
            if (what == file) {
                m_completion.kind = Completion::kFiles;
            }
        }
    }
}

Completion PlaceInLine::completed(const std::string& word) {
    if (m_waiting != nullptr) {
        addValues(*m_waiting, word);
    } else if (readsOptions() && !word.empty() && word.front() == '-') {
        const std::size_t equals = word.find('=');
        const CLI::Option* option =
            equals == std::string::npos ? nullptr : findOption(*m_command, word.substr(0, equals));
        if (option != nullptr) {
            m_before = word.substr(0, equals + 1);
            addValues(*option, std::string_view(word).substr(equals + 1));
        } else {
            addOptions();
        }
    } else {
        addCommands();
        const CLI::Option* option = positional();
        if (option != nullptr) {
            addValues(*option, word);
        } else if (readsOptions() && m_completion.candidates.empty()) {
            addOptions();
        }
    }
    return std::move(m_completion);
}

bool beginsWith(const std::string& text, const std::string& beginning) {
    return text.size() >= beginning.size() &&
           hostkit::equalIgnoringCase(std::string_view(text).substr(0, beginning.size()), beginning);
}

/// The candidates for the last of `words`, whose first is the program and whose last may be empty. Commands and options
/// are those of `app`; effects, presets and parameters are the module's, which is loaded when they are asked for.
/// Throws where the module cannot be loaded.
Completion complete(const CLI::App& app, Program& program, const std::vector<std::string>& words) {
    PlaceInLine place(app, program);
    for (std::size_t i = 1; i + 1 < words.size(); ++i) {
        place.pass(words[i]);
    }
    Completion completion = place.completed(words.back());
    std::set<std::string> seen;
    std::vector<Completion::Candidate> wanted;
    for (Completion::Candidate& each : completion.candidates) {
        if (beginsWith(each.text, words.back()) && seen.insert(each.text).second) {
            wanted.push_back(std::move(each));
        }
    }
    completion.candidates = std::move(wanted);
    return completion;
}

struct Request {
    std::string shell;
    std::string line;
    std::string breaks;
};

CLI::Option* addShell(CLI::App& command, std::string& shell) {
    return command.add_option("SHELL", shell, "bash, zsh or fish")
        ->required()
        ->check(CLI::IsMember(std::vector<std::string>{"bash", "zsh", "fish"}));
}

std::string answer(const CLI::App& app, Program& program, const Request& request) {
    const std::vector<ShellWord> line = splitShellLine(request.line, request.breaks);
    std::vector<std::string> words;
    words.reserve(line.size());
    for (const ShellWord& word : line) {
        words.push_back(word.text);
    }
    const Completion completion = complete(app, program, words);
    constexpr std::array<const char*, 3> kKinds{"words", "beginnings", "files"};
    std::string text = fmt::format("{}\n", kKinds[completion.kind]);
    for (const Completion::Candidate& each : completion.candidates) {
        if (request.shell == "bash") {
            text += bashReplacement(line.back(), each.text);
        } else {
            text += each.text + (each.description.empty() ? "" : "\t" + each.description);
        }
        text += '\n';
    }
    return text;
}

}  // namespace

void addCompletionCommands(CLI::App& app, Program& program) {
    const auto request = std::make_shared<Request>();
    CLI::App& script = addCommand(app, "completions", "Prints what completes the command line in a shell",
                                  "Prints a script that completes commands, options, effects, presets and parameters "
                                  "in a shell.\n\nIn bash: eval \"$(lumiset completions bash)\"\n");
    addShell(script, request->shell);
    program.onChosen(script, [request] {
        printText(kCompletionScripts.at(request->shell));
        return kDone;
    });

    CLI::App& complete = addCommand(app, "complete", "Prints the candidates for the end of a command line");
    complete.group("");  // For the scripts alone, so help does not list it.
    addShell(complete, request->shell);
    complete.add_option("LINE", request->line, "the command line as far as it is typed")->required();
    complete.add_option("BREAKS", request->breaks, "COMP_WORDBREAKS of bash");
    program.onChosen(complete, [request, &app, &program] {
        printText(answer(app, program, *request));
        return kDone;
    });
}

}  // namespace lumiset::app
