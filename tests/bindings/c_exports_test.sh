#!/usr/bin/env bash
# c_exports_test.sh LIBRARY HEADER: the library exports what the header declares, and nothing else.
set -euo pipefail
diff <(nm -D --defined-only "$1" | sed 's/.* //; s/@.*//' | grep -v ^LUMISET_ | sort) \
    <(tr '\n' ' ' <"$2" | grep -oE 'LUMISET_API [a-z_0-9 *]*lumiset_[a-z_]+\(' | grep -oE 'lumiset_[a-z_]+\(' | tr -d '(' | sort)
