#!/usr/bin/env bash
# c_host_test.sh HOST LUMISET: the host in C renders the same bytes as the command line host.
set -euo pipefail
host=$1 lumiset=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
"$lumiset" render -q scene-full:97x54 in.ppm --duration 0.03 --effect Outline --preset "Reset to None"
same() {
    "$host" "$1" "$2" "$3" in.ppm host.ppm
    "$lumiset" render -q --overwrite in.ppm lumiset.ppm --start "$3" --effect "$1" --preset "$2"
    cmp host.ppm lumiset.ppm
    ! cmp -s host.ppm in.ppm || { echo "$1 has changed nothing" && exit 1; }
}
same "Old TV" "Messed Up" 1.2
same "Selective Tint" "Blue Vignette" 0
same "Progressive Stretch" "Blurred Edges" 0 # which lies over black
if "$host" "Old TV" "Mesed Up" 0 in.ppm host.ppm 2>error.txt; then
    echo "the host takes a preset that there is not"
    exit 1
fi
cmp error.txt <("$lumiset" render in.ppm out.ppm --effect "Old TV" --preset "Mesed Up" 2>&1 | sed 's/^lumiset: //')
