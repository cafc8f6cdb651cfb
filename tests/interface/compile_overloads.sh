#!/usr/bin/env bash
# Compiles the callers' expressions with every compiler in every standard, with the fastest flags among them,
# and compares what the programs print. Each header must also compile on its own.
# With a compiler, only that one is tried; the first line of g++ is what all others are compared with.
# The additions of the headers are linked with the shared library once more: it must export what they call.
# usage: compile_overloads.sh SOURCE_ROOT STATIC_LIBRARY SHARED_LIBRARY [COMPILER]
set -euo pipefail
root=$1 library=$2 shared=$3
compilers=${4:-g++ clang++-14 clang++-22}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
warnings=(-Wall -Wextra -Wpedantic -Wconversion -Werror)

one() {
  local compiler=$1 standard=$2
  shift 2
  "$compiler" "-std=c++$standard" "${warnings[@]}" "$@" -I"$root/include" "$root/tests/interface/overloads.cpp" "$library" -o "$work/program"
  "$work/program" >"$work/output"
  [ -e "$work/expected" ] || cp "$work/output" "$work/expected"
  diff "$work/expected" "$work/output" || { echo "$compiler c++$standard $*: other bits"; exit 1; }
  echo "$compiler c++$standard $*: the same $(wc -l <"$work/output") results"
}

# A program that says itself what is wrong.
telling() {
  local source=$1 compiler=$2 standard=$3
  "$compiler" "-std=c++$standard" "${warnings[@]}" -O0 -I"$root/include" "$root/tests/interface/$source.cpp" "$library" -o "$work/$source"
  "$work/$source" >"$work/said" || { grep -v '^ok' "$work/said"; echo "$compiler c++$standard: $source"; exit 1; }
  echo "$compiler c++$standard: $source, $(tail -1 "$work/said")"
}

one g++ 17 -O2
for standard in 17 20 23; do
  for compiler in $compilers; do
    name=$standard
    [ "$compiler" = clang++-14 ] && name=${standard/23/2b}
    one $compiler "$name" -O2
    telling comparisons $compiler "$name"
    telling additions $compiler "$name"
  done
done
for compiler in $compilers; do
  "$compiler" -std=c++17 -I"$root/include" "$root/tests/interface/additions.cpp" "$shared" "-Wl,-rpath,$(dirname "$shared")" -o "$work/with_shared"
  "$work/with_shared" >/dev/null && echo "$compiler: the additions, with the shared library"
done
if grep -q '\bfma\b' /proc/cpuinfo; then
  for compiler in $compilers; do one $compiler 17 -O3 -march=native -ffp-contract=fast; done
fi
echo >"$work/empty.cpp"
for compiler in $compilers; do
  for header in "$root"/include/tessarn/*.h "$root"/include/tessarn/detail/*.h; do
    "$compiler" -std=c++17 "${warnings[@]}" -fsyntax-only -I"$root/include" -isystem /usr/include/eigen3 \
        -include "$header" "$work/empty.cpp"
  done
done
