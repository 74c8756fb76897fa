#!/usr/bin/env bash
# bash_completion_test.sh PROGRAM: whatever bash puts into the line for a beginning is one word again for bash.
set -euo pipefail
program=$1
eval "$("$program" completions bash)"
complete -p lumiset >/dev/null
compopt() { options+=" $*"; }  # works in readline alone
COMP_WORDBREAKS=$' \t\n"\'@><=;|&(:'

complete_line() {
    COMP_LINE=$1 COMP_POINT=${#1} options=
    COMPREPLY=()
    _lumiset "$program"
}

# offers LINE WANTED...: bash's words for what is offered are WANTED.
offers() {
    local line=$1 words
    shift
    complete_line "$line"
    eval "words=(${COMPREPLY[*]-})"
    if [ "$(printf '%s\n' "${words[@]-}" | sort)" != "$(printf '%s\n' "$@" | sort)" ]; then
        printf 'bash is offered for: %s\n' "$line" "${COMPREPLY[@]-}"
        exit 1
    fi
}

mapfile -t effects < <("$program" list | sed 's/   *[0-9].*//')
offers 'lumiset show ' "${effects[@]}"
for effect in "${effects[@]}"; do
    mapfile -t presets < <("$program" show "$effect" --json | sed -n '/"presets"/,$s/^ *"uniqueName": "\(.*\)",$/\1/p' | sort -u)
    offers "lumiset render a b -e $(printf %q "$effect") -p " "${presets[@]}"
done
offers 'lumiset render a b -s ' ''

complete_line 'lumiset render a b -e Outline -s Wi'
[ "$options" = ' -o nospace +o default' ] || { echo "bash adds a space behind Width="; exit 1; }
complete_line 'lumiset render '
[ -z "$options" ] || { echo "bash offers no files"; exit 1; }
