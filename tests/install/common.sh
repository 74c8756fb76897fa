# Shared by the tests beside it: an empty folder, and programs that see nothing of this user's own installation.
set -euo pipefail
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
export HOME=$root/home XDG_CONFIG_HOME=$root/home/config
mkdir "$HOME"
unset LUMISET_MODULE FREI0R_PATH OFX_PLUGIN_PATH LD_LIBRARY_PATH PKG_CONFIG_PATH

fail() {
    printf '%s\n' "$@"
    exit 1
}

files_in() { (cd "$1" && find . -type f | sort); }

# links_are_whole FOLDER: what its pages link to and show is there.
links_are_whole() {
    local page target count=0
    while IFS=: read -r page target; do
        count=$((count + 1))
        [ -e "$(dirname "$page")/$target" ] || fail "$page links to $target, which is not there"
    done < <(find "$1" -name '*.md' -print0 |
        xargs -0 awk '/^```/ { code = !code } !code { while (match($0, /\]\([^):#]+/)) {
            print FILENAME ":" substr($0, RSTART + 2, RLENGTH - 2); $0 = substr($0, RSTART + RLENGTH) } }')
    [ "$count" -gt 50 ] || fail "$1 has $count links only"
}

# works PREFIX: the programs and plug-ins below it work, and use nothing but what is there.
works() {
    local prefix=$1 count report pictures
    count=$("$prefix/bin/lumiset" list | wc -l)
    "$prefix/bin/lumiset" list | grep -q '^Old TV ' || fail "$prefix: lumiset list"
    "$prefix/bin/lumiset" render -q --overwrite scene:160x90:0.04 "$root/a.png" --effect Outline
    [ "$(head -c 4 "$root/a.png")" = $'\x89PNG' ] || fail "$prefix: no picture"

    report=$(FREI0R_PATH="$prefix/lib/frei0r-1" OFX_PLUGIN_PATH="$prefix/OFX/Plugins" "$prefix/bin/lumiset" doctor)
    for line in "Program         $prefix/bin/lumiset," "Module          $prefix/lib/lumiset/libvantrel_lumiset5.so" \
        "Monitor         $prefix/lib/lumiset/GPUMonitor," \
        "frei0r          $prefix/lib/frei0r-1: $count of $count plug-ins" \
        "OpenFX          $prefix/OFX/Plugins/Lumiset.ofx.bundle: $count of $count plug-ins"; do
        grep -qF "$line" <<<"$report" || fail "doctor does not say: $line" "$report"
    done

    if [ -d "$prefix/lib/python3/dist-packages/lumiset" ]; then
        PYTHONPATH=$prefix/lib/python3/dist-packages "$prefix/bin/lumiset" doctor |
            grep -qx "Python  *$prefix/lib/python3/dist-packages/lumiset" || fail "doctor does not find the Python package"
        PYTHONPATH=$prefix/lib/python3/dist-packages PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 - "$prefix" <<'END' || fail "$prefix: Python"
import sys
import lumiset, numpy
assert lumiset.module_path() == sys.argv[1] + "/lib/lumiset/libvantrel_lumiset5.so", lumiset.module_path()
grey = numpy.full((40, 60, 3), 128, numpy.uint8)
assert (lumiset.old_tv(grey, "Snow") != grey).any()
END
    fi
    links_are_whole "$prefix/share/doc/lumiset"

    pictures=$(for filter in null frei0r=lumiset_old_tv; do
        FREI0R_PATH="$prefix/lib/frei0r-1" ffmpeg -v error -f lavfi -i testsrc=s=160x90 -vf "$filter" -frames:v 1 \
            -pix_fmt rgb24 -f md5 - || fail "$prefix: ffmpeg with $filter"
    done)
    [ "$(sort -u <<<"$pictures" | wc -l)" = 2 ] || fail "$prefix: the plug-in leaves the picture as it is"
}
