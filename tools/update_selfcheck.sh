#!/usr/bin/env bash
# Writes the hashes that the library of this tree gives into selfcheck/stored.h: after a change of results that is wanted.
set -euo pipefail
cd "$(dirname "$0")/.."
folder=build/release
cmake --preset release >/dev/null
update() {
  cmake --build --preset release --target tessarn-selfcheck >/dev/null
  "$folder/tessarn-selfcheck" --table >"$folder/stored.h" && cat "$folder/stored.h" >selfcheck/stored.h
}
update
cmake --build --preset release --target tessarn-selfcheck >/dev/null
"$folder/tessarn-selfcheck" --line
