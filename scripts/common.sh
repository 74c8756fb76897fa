# Shared by the scripts beside it: strict mode, the project's folder, and saying what happens.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[1]}")/.."

say() { printf '\033[1m%s\033[0m\n' "$*" >&2; }
fail() {
    printf '%s\n' "$*" >&2
    exit "${2:-1}"
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        fail "This needs root: $*"
    fi
}

# Prints those of the Debian packages, NAME or NAME:ARCHITECTURE, that are not installed.
missing_packages() {
    local package architecture
    for package in "$@"; do
        architecture=${package#*:}
        [ "$architecture" != "$package" ] || architecture=$(dpkg --print-architecture)
        dpkg-query -W -f '${Architecture} ${db:Status-Status}\n' "${package%:*}" 2>/dev/null |
            grep -xE "($architecture|all) installed" >/dev/null || printf '%s\n' "$package"
    done
}

# Configures a CMake preset, with further arguments for CMake.
configure_preset() {
    mkdir -p build
    cmake --preset "$@" >"build/configure-$1.log" 2>&1 || { cat "build/configure-$1.log" >&2; return 1; }
}

# Builds a configured preset: all of it, or the targets named.
build_targets() {
    local preset=$1
    shift
    cmake --build --preset "$preset" -j "${LUMISET_JOBS:-2}" ${1:+--target "$@"}
}

# Both.
build_preset() {
    configure_preset "$1"
    build_targets "$@"
}
