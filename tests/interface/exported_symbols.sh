#!/usr/bin/env bash
# Compares the names that the shared library exports with the list in the repository. A change of the binary
# interface is a failing test until the list is changed on purpose: exported_symbols.sh LIBRARY LIST --update
set -euo pipefail
names=$(nm -D --defined-only "$1" | awk '{print $3}' | c++filt | sort -u)
if [ "${3:-}" = --update ]; then echo "$names" >"$2"; exit; fi
diff <(echo "$names") "$2" && echo "$(wc -l <"$2") exported names as listed"
