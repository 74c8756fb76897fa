#!/usr/bin/env bash
# dll_test.sh OBJDUMP MODULE: the module gives away its entry points under their plain names, and nothing else, and
# needs no library but those that Windows has.
set -euo pipefail

headers=$("$1" -p "$2")
status=0

expected=$'CanUnloadDLLNow\nDisplayPromotionW\nGetEffectsLibrary'
found=$(sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/p' <<<"$headers" | sed -n 's/^\t\[ *[0-9]*\] \(.*\)$/\1/p' | sort)
if [ "$found" != "$expected" ]; then
    printf 'exports expected:\n%s\nfound:\n%s\n' "$expected" "$found"
    status=1
fi

imports=$(sed -n 's/^.*DLL Name: //p' <<<"$headers" | sort)
foreign=$(grep -viE '^(kernel32|msvcrt|advapi32|user32|comdlg32|ole32|gdi32|shell32|opengl32|glu32)\.dll$' <<<"$imports" || true)
if [ -z "$imports" ] || [ -n "$foreign" ]; then
    printf 'imports:\n%s\nof these Windows does not have:\n%s\n' "$imports" "$foreign"
    status=1
fi
exit $status
