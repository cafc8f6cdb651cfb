#!/usr/bin/env bash
# The short check for developers: links, arrows of the includes, format, lint of the files that differ from the last commit or
# its base, and the unit tests with the best build of the kernels. `make test` is the whole.
# usage: check.sh [BASE]   BASE: the commit to compare with, HEAD unless given
set -euo pipefail
cd "$(dirname "$0")/.."
base=${1:-HEAD}
tools/check_links.py
tools/check_arrows.py
# Files that a program writes, and those in place of another compiler's headers, have a form of their own.
git ls-files '*.h' '*.cpp' '*.inl' | grep -vE '^core/angles/tables.inl|^selfcheck/stored.h|^windows/toolchain/' |
  xargs clang-format-14 --dry-run -Werror
cmake --preset release >/dev/null
mapfile -t changed < <(git diff --name-only --diff-filter=d "$base" -- '*.cpp' | grep -vE '/kernels/|^tests/consumers|^windows/|^python/|^packaging/' || true)
if [ ${#changed[@]} -gt 0 ]; then
  # Without what GCC alone can read: its precompiled headers and one option. Where no standard is named GCC takes C++17.
  mkdir -p build/lint
  sed -e 's/ -Winvalid-pch//g' -e 's/ -include [^ ]*cmake_pch.hxx//g' -e 's/ -femit-class-debug-always//g' \
    build/release/compile_commands.json >build/lint/compile_commands.json
  clang-tidy-14 -p build/lint --extra-arg-before=-std=c++17 --quiet "${changed[@]}" 2>/dev/null
fi
cmake --build --preset release --target tests_core tests_vectors tests_matrix tests_poly tests_geometry tests_allocation \
  tests_analysis tests_selfcheck
for family in core vectors matrix poly geometry allocation analysis selfcheck; do
  build/release/tests/tests_$family --gtest_brief=1
done
