#!/usr/bin/env bash
# package_test.sh CPACK BUILD_FOLDER: makes the Debian package of what is built, and uses it unpacked, which needs no
# root.
source "$(dirname "$0")/common.sh"
cpack=$1 build=$2

(cd "$build" && "$cpack" -G DEB -B "$root/packed" -D CPACK_DEBIAN_COMPRESSION_TYPE=none >"$root/log" 2>&1) || fail "$(cat "$root/log")"
package=$(echo "$root"/packed/lumiset_*.deb)
python=$(echo "$root"/packed/python3-lumiset_*.deb)
dpkg-deb -x "$package" "$root/system"
[ ! -e "$root/system/usr/lib/python3" ] || fail "the package has the Python package in it"
if [ -e "$python" ]; then
    dpkg-deb -x "$python" "$root/system"
    depends=$(dpkg-deb -f "$python" Depends)
    for wanted in "lumiset (= $(dpkg-deb -f "$package" Version))" python3-numpy "python3 (>= 3." libc6; do
        [[ $depends == *"$wanted"* ]] || fail "the Python package does not depend on $wanted: $depends"
    done
fi
works "$root/system/usr"

# What it is linked with must be installed with it.
depends=$(dpkg-deb -f "$package" Depends)
for library in libc6 libavcodec libhwy libfmt; do
    [[ $depends == *"$library"* ]] || fail "the package does not depend on $library: $depends"
done
[[ $depends != *libqt6* ]] || fail "the package for servers needs a window system: $depends"
studio=$(echo "$root"/packed/lumiset-studio_*.deb)
if [ -f "$studio" ]; then
    dpkg-deb -f "$studio" Depends | grep -q 'libqt6widgets6.*lumiset (= \|lumiset (= .*libqt6widgets6' || fail "lumiset-studio does not say what it needs"
    dpkg-deb -x "$studio" "$root/system"
    QT_QPA_PLATFORM=offscreen "$root/system/usr/bin/lumiset-studio" --version | grep -qx "lumiset-studio [0-9.]*" || fail "lumiset-studio does not start"
    for file in bin/lumiset-studio share/applications/lumiset-studio.desktop share/man/man1/lumiset-studio.1.gz \
        share/icons/hicolor/scalable/apps/lumiset-studio.svg share/metainfo/org.lumiset.Studio.metainfo.xml; do
        [ -s "$root/system/usr/$file" ] || fail "$file is missing or empty"
    done
fi
cd "$root/system/usr"
for file in share/man/man1/lumiset.1.gz share/doc/lumiset/{copyright,changelog.gz} \
    share/zsh/vendor-completions/_lumiset include/lumiset/host/effect_library.h lib/pkgconfig/lumiset.pc; do
    [ -s "$file" ] || fail "$file is missing or empty"
done
wrong=$(find . ! -type l \( ! -perm -u=r,g=r,o=r -o -type d ! -perm 755 -o -perm /022 \))
[ -z "$wrong" ] || fail "These have wrong permissions:" "$wrong"
gzip -dc share/doc/lumiset/changelog.gz | dpkg-parsechangelog -l - -S Version | grep -qxF \
    "$(dpkg-deb -f "$package" Version)" || fail "the changelog is of another version"
