#!/usr/bin/env bash
# binary_test.sh OBJDUMP FILE [EXPORT]...: the program or library gives away these entry points under their plain names
# and nothing else, needs no library but those that Windows has, can be loaded anywhere, tells its name and version, and
# takes vectors wider than 16 bytes from wherever they lie: the stack is aligned to no more.
set -euo pipefail

objdump=$1
file=$2
shift 2
headers=$("$objdump" -p "$file")
status=0
complain() {
    printf '%s: %s\n' "${file##*/}" "$*"
    status=1
}

found=$(sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/p' <<<"$headers" | sed -n 's/^\t\[ *[0-9]*\] \(.*\)$/\1/p' | sort | xargs)
[ "$found" = "$*" ] || complain "exports $found instead of $*"

imports=$(sed -n 's/^.*DLL Name: //p' <<<"$headers" | sort)
foreign=$(grep -viE '^(kernel32|msvcrt|advapi32|user32|comdlg32|ole32|gdi32|shell32|opengl32|glu32)\.dll$' <<<"$imports" || true)
[ -n "$imports" ] || complain "imports nothing"
[ -z "$foreign" ] || complain "Windows does not have" $foreign

for mark in DYNAMIC_BASE NX_COMPAT; do
    grep -q "$mark" <<<"$headers" || complain "lacks $mark"
done

texts=$(strings -el "$file")
for text in VS_VERSION_INFO OriginalFilename "${file##*/}"; do
    grep -qxF "$text" <<<"$texts" || complain "has no $text among its resources"
done

aligned=$("$objdump" -d --no-show-raw-insn "$file" | grep -E '\bvmov(ap[sd]|dqa(32|64)?|nt\w+)\s.*%[yz]mm' | grep -c '(' || true)
[ "$aligned" -eq 0 ] || complain "$aligned moves of wide vectors trap where memory is not aligned to them"
exit $status
