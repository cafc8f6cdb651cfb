#!/usr/bin/env bash
# Searches arguments next to the middle of two doubles, for each function, and compares the results there with MPFR's:
#   hard_cases.sh SEARCH CHECK COUNT [SEED]
set -euo pipefail
for function in sin cos asin acos; do
  "$1" "$function" "$3" "${4:-1}" | "$2" read
done
