#!/usr/bin/env bash
# install_test.sh CMAKE BUILD_FOLDER COMPILER: installs into an empty folder, and uses what is there.
source "$(dirname "$0")/common.sh"
here=$(cd "$(dirname "$0")" && pwd)
cmake=$1 build=$2 compiler=$3

first=$root/first
"$cmake" --install "$build" --prefix "$first" >"$root/log" || fail "$(cat "$root/log")"
DESTDIR=$root/staged "$cmake" --install "$build" --prefix /usr >"$root/log" || fail "$(cat "$root/log")"
diff <(files_in "$first") <(files_in "$root/staged/usr") || fail "DESTDIR installs something else"
for file in share/man/man1/lumiset.1 share/bash-completion/completions/lumiset share/zsh/site-functions/_lumiset \
    share/fish/vendor_completions.d/lumiset.fish; do
    [ -s "$first/$file" ] || fail "$file is missing or empty"
done
for effect in Outline "Old TV"; do
    [ -n "$(find "$first/OFX/Plugins/Lumiset.ofx.bundle/Contents/Resources/Presets/$effect" -name '*.lumv?')" ] ||
        fail "The bundle has no presets of $effect"
done
if grep -rlF -e "$build" -e "$first" "$first"; then
    fail "These files name the folder that they were built or installed in."
fi
works "$first"

# Authors of hosts.
export PKG_CONFIG_PATH=$first/lib/pkgconfig
# shellcheck disable=SC2046
"$compiler" -std=c++20 $(pkg-config --cflags lumiset) "$here/host/host.cpp" $(pkg-config --libs lumiset) -o "$root/host"
"$first/bin/lumiset" list | sed 's/   *[0-9].*//' >"$root/effects"
"$root/host" | diff "$root/effects" - || fail "the host built by pkg-config"
[ -f "$(pkg-config --variable=module lumiset)" ] || fail "pkg-config's module is not there"
unset PKG_CONFIG_PATH

# Moved, and to a name with spaces.
second="$root/a second place"
mv "$first" "$second"
works "$second"
"$cmake" -S "$here/host" -B "$root/stranger" -DCMAKE_PREFIX_PATH="$second" -DCMAKE_CXX_COMPILER="$compiler" \
    >"$root/log" || fail "$(cat "$root/log")"
"$cmake" --build "$root/stranger" >"$root/log" 2>&1 || fail "$(cat "$root/log")"
for host in linked loading; do
    "$root/stranger/$host" | diff "$root/effects" - || fail "the host that is $host"
done

# What is missing is told.
rm "$second/lib/lumiset/GPUMonitor" "$second/lib/frei0r-1/lumiset_outline.so"
report=$(FREI0R_PATH="$second/lib/frei0r-1" "$second/bin/lumiset" doctor)
grep -q 'Monitor  *not beside the module' <<<"$report" || fail "doctor finds a monitor" "$report"
count=$(wc -l <"$root/effects")
grep -q "$((count - 1)) of $count plug-ins; missing: lumiset_outline$" <<<"$report" || fail "doctor finds all plug-ins" "$report"
rm "$second/lib/lumiset/libvantrel_lumiset5.so" "$second"/OFX/Plugins/*/Contents/*/libvantrel_lumiset5.so
if "$second/bin/lumiset" doctor >"$root/log"; then
    fail "doctor is content without a module" "$(cat "$root/log")"
fi
