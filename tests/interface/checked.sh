#!/usr/bin/env bash
# The checked mode stops at each misuse with the caller's file and line.
# Linked with the static library by one compiler, with the shared one by the other: inline members call both.
# usage: checked.sh SOURCE_ROOT STATIC_LIBRARY SHARED_LIBRARY
set -euo pipefail
root=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for compiler in g++ clang++-22; do
  library=$2
  [ $compiler = g++ ] || library=$3
  "$compiler" -std=c++17 -Wall -Wextra -Wpedantic -Wconversion -Werror -I"$root/include" "$root/tests/interface/checked.cpp" \
    "$library" "-Wl,-rpath,$(dirname "$library")" -o "$work/checked"
  "$work/checked" >"$work/lines"
  number=0
  while read -r line; do
    status=0
    (ulimit -c 0; timeout 20 "$work/checked" "$number" >"$work/out" 2>&1) 2>/dev/null || status=$?
    [ "$status" -eq 134 ] || { echo "$compiler: the misuse of line $line ended with status $status"; exit 1; }
    grep -q "checked.cpp:$line: tessarn: " "$work/out" || { echo "$compiler: line $line said: $(cat "$work/out")"; exit 1; }
    number=$((number + 1))
  done <"$work/lines"
  [ "$number" -gt 20 ] || { echo "only $number cases"; exit 1; }
  echo "$compiler: $number misuses stopped at their lines"
done
