#!/usr/bin/env bash
# layers_test.sh SOURCE_FOLDER: every folder includes only what lies below it, and only the platform layer and
# the boundary's calling convention know the operating system.
set -euo pipefail
cd "$1"

status=0
# allow FOLDER ALLOWED...: complains about includes of other project folders.
allow() {
    local folder=$1 pattern
    shift
    pattern=$(IFS='|'; echo "$*")
    local found
    found=$(grep -rnE '#include "' "$folder" --include='*.h' --include='*.cpp' | grep -vE "#include \"($pattern|hwy)/" || true)
    if [ -n "$found" ]; then
        printf '%s may include %s only:\n%s\n' "$folder" "$*" "$found"
        status=1
    fi
}

allow frame frame host
allow gpu gpu host platform
allow effects effects gpu frame host platform
allow support support host platform
allow module module effects support gpu frame host platform
allow platform platform host
allow hostkit hostkit host platform
allow adapters/frei0r adapters/frei0r hostkit host
allow adapters/frei0r_lines adapters/frei0r_lines adapters/frei0r render media hostkit host
allow adapters/openfx adapters/openfx hostkit host
allow apps/gpu_monitor apps/gpu_monitor platform
allow media media hostkit host platform
allow render render media hostkit host platform
allow apps/lumiset apps/lumiset adapters/frei0r adapters/frei0r_lines adapters/openfx render media hostkit host platform
allow apps/studio/core apps/studio/core adapters/frei0r_lines render media hostkit host platform
allow bindings/c bindings/c hostkit host
allow bindings/python bindings/python media hostkit host
allow examples/kit_host hostkit
allow apps/studio/model apps/studio/model apps/studio/core render media hostkit host
allow apps/studio/views apps/studio/views apps/studio/model apps/studio/core render media hostkit host
allow examples/minimal_host host
allow examples/two_tones examples/two_tones effects gpu frame host platform

# The boundary's headers stand alone: a host includes them and nothing else.
found=$(grep -nE '#include "' host/*.h | grep -vE '#include "host/[a-z_]+\.h"' || true)
if [ -n "$found" ]; then
    printf 'host/ is for hosts:\n%s\n' "$found"
    status=1
fi

# What is installed of the host kit includes nothing that is not.
while IFS= read -r include; do
    if ! grep -qE "^  ${include#hostkit/}$" hostkit/CMakeLists.txt; then
        printf 'installed headers of the host kit include %s, which is not installed\n' "$include"
        status=1
    fi
done < <(sed -n '/LUMISET_HOSTKIT_HEADERS/,/PARENT_SCOPE/s|^  \(.*\.h\)$|hostkit/\1|p' hostkit/CMakeLists.txt |
    xargs sed -n 's|^#include "\(hostkit/.*\)"$|\1|p')

# Hosts know the module by its boundary alone.
found=$(grep -rnE '#include "module/' hostkit media render adapters apps bindings || true)
if [ -n "$found" ]; then
    printf 'hosts include no part of the module:\n%s\n' "$found"
    status=1
fi

found=$(grep -rnE '\b(_WIN32|__linux__|__unix__)\b' frame gpu effects support module host hostkit media render adapters apps bindings \
    --include='*.h' --include='*.cpp' | grep -vE '/(posix|win32)/|^host/platform_call\.h' || true)
if [ -n "$found" ]; then
    printf 'the operating system shows outside the platform layer:\n%s\n' "$found"
    status=1
fi
exit $status
