#!/usr/bin/env bash
# package_test.sh CPACK BUILD_FOLDER: makes the Debian package of what is built, and uses it unpacked, which needs no
# root.
source "$(dirname "$0")/common.sh"
cpack=$1 build=$2

(cd "$build" && "$cpack" -G DEB -B "$root/packed" -D CPACK_DEBIAN_COMPRESSION_TYPE=none >"$root/log" 2>&1) || fail "$(cat "$root/log")"
package=$(echo "$root"/packed/lumiset_*.deb)
dpkg-deb -x "$package" "$root/system"
works "$root/system/usr"

# What it is linked with must be installed with it.
depends=$(dpkg-deb -f "$package" Depends)
for library in libc6 libavcodec libhwy libfmt; do
    [[ $depends == *"$library"* ]] || fail "the package does not depend on $library: $depends"
done
cd "$root/system/usr"
for file in share/man/man1/lumiset.1.gz share/doc/lumiset/{copyright,changelog.gz} \
    share/zsh/vendor-completions/_lumiset include/lumiset/host/effect_library.h lib/pkgconfig/lumiset.pc; do
    [ -s "$file" ] || fail "$file is missing or empty"
done
wrong=$(find . ! -perm -u=r,g=r,o=r -o -type d ! -perm 755 -o -perm /022)
[ -z "$wrong" ] || fail "These have wrong permissions:" "$wrong"
gzip -dc share/doc/lumiset/changelog.gz | dpkg-parsechangelog -l - -S Version | grep -qxF \
    "$(dpkg-deb -f "$package" Version)" || fail "the changelog is of another version"
