#!/usr/bin/env bash
# The library calls no function of the C library's mathematics, nor do the inline members of its headers. sqrt alone is
# allowed: it is an instruction, and IEEE 754 fixes its result. mathematics.sh SOURCE_ROOT LIBRARY
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Every function of <math.h>, as the C library itself lists them.
# awk reads to the end: had it left early, ldconfig would now and then have met a closed pipe, and the script would have ended.
libm=$(ldconfig -p | awk '/libm\.so\.6/ && !found {found = $NF} END {print found}')
nm -D --defined-only "$libm" | awk '{sub(/@.*/, "", $3); print $3}' | sort -u >"$work/mathematics"
for name in acos cos frexp ldexp pow sin sincos sqrt; do
  grep -qx "$name" "$work/mathematics" || { echo "$name is not in $libm"; exit 1; }
done

# Fails when one of the names in the file is a function of mathematics.
check() {
  comm -12 <(sort -u "$2") "$work/mathematics" | grep -vx sqrt >"$work/found" || return 0
  echo "$1 calls: $(tr '\n' ' ' <"$work/found")"
  exit 1
}

nm -D --undefined-only "$2" | awk '{sub(/@.*/, "", $NF); print $NF}' >"$work/names"
check "$2" "$work/names"

# The compiler writes every inline function, each in a section of its own; those of the standard library are passed over.
echo '#include <tessarn/tessarn.h>' >"$work/headers.cpp"
for level in -O0 -O2 -O3; do
  g++ -std=c++17 $level -fkeep-inline-functions -ffunction-sections -I "$1/include" -c "$work/headers.cpp" -o "$work/headers.o"
  objdump -r "$work/headers.o" | awk '
    /^RELOCATION RECORDS FOR/ { ours = $0 ~ /\[\.text\._ZN?K?[0-9N]*(4cplx|6vector|8vector3d|13polarvector3d|9vectormat|3mat|5sqmat|5binom|10hyperbinom|6line3d|5plane|7tessarn)/; count += ours }
    ours && $2 ~ /^R_/ { sub(/[-+]0x.*/, "", $3); print $3 }
    END { if (count < 200) { print "sections_missing"; print count > "/dev/stderr" } }' >"$work/names"
  grep -q sections_missing "$work/names" && { echo "too few inline functions found"; exit 1; }
  grep -q 7tessarn6angles "$work/names" || { echo "no angle found in the headers"; exit 1; }
  check "the headers at $level" "$work/names"
done
echo "none of the $(wc -l <"$work/mathematics") functions is called, sqrt excepted"
