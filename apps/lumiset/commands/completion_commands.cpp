#include <fmt/format.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/shell/completion.h"
#include "apps/lumiset/shell/shell_line.h"

namespace lumiset::app {
namespace {

// Each script asks the program that is being typed, so it offers what that program's own module has. The program
// answers with the kind of the completion in a line and a line for each candidate.

constexpr const char* kBash = R"(# bash completion for lumiset
_lumiset() {
    local kind=
    COMPREPLY=()
    { read -r kind && mapfile -t COMPREPLY; } < \
        <("${1/#\~\//$HOME/}" complete bash "${COMP_LINE:0:COMP_POINT}" "$COMP_WORDBREAKS" 2>/dev/null)
    # Without candidates bash goes on with the names of files.
    case $kind in
        words) compopt +o default ;;
        beginnings) compopt -o nospace +o default ;;
    esac
}
complete -o default -F _lumiset lumiset
)";

constexpr const char* kZsh = R"(#compdef lumiset
_lumiset() {
    local -a lines texts options
    local program=${(Q)words[1]}
    lines=("${(@f)$(${program/#\~\//$HOME/} complete zsh "${(j: :)words[1,CURRENT]}" 2>/dev/null)}")
    case $lines[1] in
        files) _files; return ;;
        beginnings) options=(-S '') ;;
    esac
    shift lines
    texts=("${(@)lines//$'\t'/  -- }")
    lines=("${(@)lines%%$'\t'*}")
    compadd -l -d texts -M 'm:{a-zA-Z}={A-Za-z}' "${(@)options}" -a lines
}
if [ "$funcstack[1]" = _lumiset ]; then
    _lumiset "$@"
else
    compdef _lumiset lumiset
fi
)";

constexpr const char* kFish = R"(# fish completion for lumiset
function __lumiset_complete
    set -l program (string replace -r '^~/' $HOME/ -- (commandline -opc)[1])
    set -l lines ($program complete fish (commandline -cp | string collect) 2>/dev/null)
    if test "$lines[1]" = files
        __fish_complete_path (commandline -ct)
    else
        printf '%s\n' $lines[2..]
    end
end
complete -c lumiset -f -a '(__lumiset_complete)'
)";

const std::map<std::string, const char*> kScripts = {{"bash", kBash}, {"fish", kFish}, {"zsh", kZsh}};

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
        printText(kScripts.at(request->shell));
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
