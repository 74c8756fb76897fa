#pragma once

#include <map>
#include <string>

namespace lumiset::app {

// Each script asks the program that is being typed, so it offers what that program's own module has. The program
// answers with the kind of the completion in a line and a line for each candidate.

inline constexpr const char* kBash = R"(# bash completion for lumiset
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

inline constexpr const char* kZsh = R"(#compdef lumiset
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

inline constexpr const char* kFish = R"(# fish completion for lumiset
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

inline const std::map<std::string, const char*> kCompletionScripts = {{"bash", kBash}, {"fish", kFish}, {"zsh", kZsh}};

}  // namespace lumiset::app
