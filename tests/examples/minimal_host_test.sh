#!/usr/bin/env bash
# minimal_host_test.sh HOST MODULE LUMISET: the minimal host renders the same bytes as the command line host.
set -euo pipefail
host=$1 module=$2 lumiset=$3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

# same EFFECT PRESET: of a picture with transparency, at time 0.
same() {
    "$host" "$module" "$1" "$2" in.pam host.pam
    "$lumiset" render in.pam lumiset.pam --overwrite --alpha --quiet --effect "$1" --preset "$2"
    cmp host.pam lumiset.pam
    if cmp -s host.pam in.pam; then
        echo "$1 has changed nothing"
        exit 1
    fi
}
"$lumiset" render scene:96x54 in.pam --alpha --quiet --duration 0.03 --effect Outline --preset "Reset to None"
same "Outline" "Red Glow"              # a preset of values
same "Old TV" "Messed Up"              # one of parameter indices
same "Selective Tint" "Blue Vignette"  # one of values, with groups between

"$host" "$module" >list.txt
grep -qx "Progressive Stretch" list.txt
grep -qx "    Transparent Edges" list.txt
# refuses SENTENCE ARGUMENTS...
refuses() {
    if "$host" "${@:2}" 2>error.txt; then
        echo "the host takes ${*:2}"
        exit 1
    fi
    grep -q "$1" error.txt
}
refuses "there is no effect" "$module" "No Such Effect" "" in.pam out.pam
refuses "is no effects module" /dev/null
refuses "ends too early" "$module" Outline "Red Glow" <(head -c 2000 in.pam) out.pam
