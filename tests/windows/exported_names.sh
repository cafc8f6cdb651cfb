#!/usr/bin/env bash
# Compares the names that the module exports, decorated and readable, with the list in the repository. A change
# of the binary interface is a failing test until the list is changed on purpose:
#   exported_names.sh MODULE LIST --update
set -euo pipefail
tool() { command -v "$1-${LLVM_VERSION:-22}" || command -v "$1"; }
readobj=$(tool llvm-readobj) undname=$(tool llvm-undname)

decorated=$("$readobj" --coff-exports "$1" | tr -d '\r' | awk '$1 == "Name:" && $2 != "" {print $2}' | LC_ALL=C sort)
readable=$("$undname" <<<"$decorated" | awk 'NF && NR % 3 == 2')
names=$(paste -d' ' <(echo "$decorated") <(echo "$readable"))
[ "$(wc -l <<<"$decorated")" -eq "$(wc -l <<<"$readable")" ] || { echo "some names have no readable form"; exit 1; }
if [ "${3:-}" = --update ]; then echo "$names" >"$2"; exit; fi
diff <(echo "$names") "$2" && echo "$(wc -l <"$2") exported names as listed"
