#!/usr/bin/env bash
# exports_test.sh MODULE: the module shows its two entry points to the loader, and nothing else.
set -euo pipefail

expected=$'CanUnloadDLLNow\nGetEffectsLibrary'
found=$(nm -D --defined-only --format=just-symbols "$1" | sort)
if [ "$found" != "$expected" ]; then
    printf 'expected:\n%s\nfound:\n%s\n' "$expected" "$found"
    exit 1
fi
