#!/usr/bin/env bash
# hardening_test.sh CMAKE BUILD_FOLDER: every program and library that is installed has what makes a fault in it hard to
# use: addresses by chance, tables of addresses that are read-only once it runs, no memory both written to and run,
# guarded stacks, checked copies, and marked targets for jumps.
source "$(dirname "$0")/common.sh"

"$1" --install "$2" --prefix "$root/tree" >/dev/null
problems=()
checked=0
while IFS= read -r file; do
    [ "$(head -c 4 "$file")" = $'\x7fELF' ] || continue
    checked=$((checked + 1))
    name=${file#"$root/tree/"}
    lacks() { problems+=("$name: $1"); }
    header=$(readelf -hW "$file")
    segments=$(readelf -lW "$file")
    dynamic=$(readelf -dW "$file")
    imports=$(readelf -W --dyn-syms "$file" | grep ' UND ' || true)
    grep -qE 'Type: +DYN' <<<"$header" || lacks "stands at a fixed address"
    grep -q GNU_RELRO <<<"$segments" || lacks "no read-only relocations"
    grep -qE '\(FLAGS(_1)?\).*NOW|BIND_NOW' <<<"$dynamic" || lacks "binds its functions late"
    grep -qE 'GNU_STACK .* RW +0x' <<<"$segments" || lacks "the stack can be run"
    ! grep -qE '^ +LOAD .* RWE ' <<<"$segments" || lacks "memory that can be written to and run"
    ! grep -qE 'TEXTREL|RPATH|RUNPATH' <<<"$dynamic" || lacks "text relocations or a search path"
    grep -q __stack_chk_fail <<<"$imports" || lacks "no guards on its stacks"
    # Calls that the compiler checks are in whatever writes texts; a small plug-in may have none.
    case $name in
        lib/frei0r-1/* | OFX/*) ;;
        *) grep -qE ' __[a-z]+_chk(@| |$)' <<<"$imports" || lacks "no checked copies" ;;
    esac
    # Every exported function begins with a mark for indirect jumps.
    symbols=$(readelf -W --dyn-syms "$file" | awk '$4 == "FUNC" && $7 != "UND" && $5 == "GLOBAL" {print $8}')
    code=$(objdump -d --no-show-raw-insn "$file")
    if [ "$(grep -c endbr64 <<<"$code")" -lt 10 ]; then
        lacks "no marks for indirect jumps"
    fi
    for symbol in ${symbols//@*/}; do
        grep -A1 "<$symbol>:$" <<<"$code" | grep -qE "endbr64|^$" || lacks "no mark at $symbol"
    done
done < <(find "$root/tree" -type f \( -perm -u+x -o -name '*.so*' -o -name '*.ofx' \))
[ "$checked" -ge 14 ] || problems+=("only $checked programs and libraries were looked at")
[ ${#problems[@]} -eq 0 ] || fail "${problems[@]}"
