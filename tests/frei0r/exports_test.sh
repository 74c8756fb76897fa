#!/usr/bin/env bash
# exports_test.sh FOLDER COUNT: the folder holds that many plug-ins, each named by its file alone, which show their
# host the entry points of frei0r and nothing else, and which stay loaded.
set -euo pipefail

status=0
expected=$'f0r_construct\nf0r_deinit\nf0r_destruct\nf0r_get_param_info\nf0r_get_param_value\nf0r_get_plugin_info\nf0r_init
f0r_set_param_value\nf0r_update'
plugins=("$1"/lumiset_*.so)
if [ ${#plugins[@]} -ne "$2" ]; then
    echo "${#plugins[@]} plug-ins instead of $2"
    status=1
fi
for plugin in "${plugins[@]}"; do
    found=$(nm -D --defined-only --format=just-symbols "$plugin" | sort)
    if [ "$found" != "$expected" ]; then
        printf '%s shows:\n%s\n' "$plugin" "$found"
        status=1
    fi
    if ! readelf -d "$plugin" | grep -q NODELETE; then
        echo "$plugin can be unloaded"
        status=1
    fi
done
exit $status
