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

# Configures and builds one CMake preset.
build_preset() {
    mkdir -p build
    cmake --preset "$1" >"build/configure-$1.log" 2>&1 ||
        { cat "build/configure-$1.log" >&2; return 1; }
    cmake --build --preset "$1" -j "${LUMISET_JOBS:-2}"
}
