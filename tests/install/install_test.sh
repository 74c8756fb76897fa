#!/usr/bin/env bash
# install_test.sh CMAKE BUILD_FOLDER COMPILER: installs into an empty folder, and uses what is there.
source "$(dirname "$0")/common.sh"
here=$(cd "$(dirname "$0")" && pwd)
examples=$here/../../examples
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
# shellcheck disable=SC2046
"$compiler" -std=c++20 "$examples/kit_host/kit_host.cpp" $(pkg-config --cflags --libs lumiset-hostkit) -o "$root/kit"
# shellcheck disable=SC2046
"${CC:-cc}" "$examples/c_host/c_host.c" $(pkg-config --cflags --libs lumiset-c) -o "$root/c_host"
unset PKG_CONFIG_PATH

# Moved, and to a name with spaces.
second="$root/a second place"
mv "$first" "$second"
works "$second"
"$cmake" -S "$here/host" -B "$root/stranger" -DCMAKE_PREFIX_PATH="$second" -DCMAKE_CXX_COMPILER="$compiler" \
    -DEXAMPLES="$examples" >"$root/log" || fail "$(cat "$root/log")"
"$cmake" --build "$root/stranger" >"$root/log" 2>&1 || fail "$(cat "$root/log")"
for host in linked loading; do
    "$root/stranger/$host" | diff "$root/effects" - || fail "the host that is $host"
done

# The hosts on the kit make the picture that the program makes.
(cd "$root" && printf 'P6\n320 180\n255\n' && head -c 172800 /dev/zero | tr '\0' '\200') >"$root/grey.ppm"
"$second/bin/lumiset" render -q "$root/grey.ppm" "$root/wanted.ppm" --start 1.2 --effect "Old TV" --preset Snow \
    --set Noise=30 --effect Outline
for host in "$root/kit" "$root/stranger/kit"; do
    (cd "$root" && LUMISET_MODULE=$second/lib/lumiset/libvantrel_lumiset5.so "$host") || fail "$host does not run"
    cmp "$root/picture.ppm" "$root/wanted.ppm" || fail "$host renders something else than lumiset"
    ! cmp -s "$root/picture.ppm" "$root/grey.ppm" || fail "$host changes nothing"
    rm "$root/picture.ppm"
done

"$second/bin/lumiset" render -q "$root/grey.ppm" "$root/wanted.ppm" --overwrite --effect "Old TV" --preset Snow
for host in "$root/c_host" "$root/stranger/c_host"; do
    LD_LIBRARY_PATH=$second/lib "$host" "Old TV" Snow 0 "$root/grey.ppm" "$root/picture.ppm" || fail "$host does not run"
    cmp "$root/picture.ppm" "$root/wanted.ppm" || fail "$host renders something else than lumiset"
done

# What is missing is told.
rm "$second/lib/lumiset/GPUMonitor" "$second/lib/frei0r-1/lumiset_outline.so"
report=$(FREI0R_PATH="$second/lib/frei0r-1" "$second/bin/lumiset" doctor)
grep -q 'Monitor  *not beside the module' <<<"$report" || fail "doctor finds a monitor" "$report"
count=$(wc -l <"$root/effects")
grep -q "$((count - 1)) of $count plug-ins; missing: lumiset_outline$" <<<"$report" || fail "doctor finds all plug-ins" "$report"
rm "$second/lib/lumiset/libvantrel_lumiset5.so" "$second"/OFX/Plugins/*/Contents/*/libvantrel_lumiset5.so
if [ ! -e /usr/lib/lumiset ] && [ ! -e /usr/local/lib/lumiset ] && "$second/bin/lumiset" doctor >"$root/log"; then
    fail "doctor is content without a module" "$(cat "$root/log")"
fi
