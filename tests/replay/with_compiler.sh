#!/usr/bin/env bash
# Builds the library with another compiler, repeats the operations of a file, and asks the self-check.
# usage: with_compiler.sh SOURCE_DIR COMPILER FILE [OPTION_OF_CMAKE...]
set -euo pipefail
case $(basename "$2") in
  clang++-14) level=-O1 ;;
  *) level=-O2 ;;
esac
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake -S "$1" -B "$work" -G Ninja -DCMAKE_CXX_COMPILER="$2" -DCMAKE_CXX_FLAGS_RELEASE=$level -DTESSARN_TESTS=OFF \
      -DTESSARN_REPLAY=ON -DTESSARN_EXAMPLES=OFF -DTESSARN_PROGRAMS=OFF "${@:4}" >/dev/null
cmake --build "$work" --target replay tessarn-selfcheck >"$work/build.log" || { tail -40 "$work/build.log"; exit 1; }
"$work/tessarn-selfcheck" >"$work/selfcheck.txt" || { cat "$work/selfcheck.txt"; exit 1; }
"$work/tests/replay/replay" check "$3"
