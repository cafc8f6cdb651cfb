#!/usr/bin/env bash
# Builds both Windows modules and their tests and runs them under Wine. The last line is the total, unless this is part
# of tools/test.sh, which counts on.
set -uo pipefail
cd "$(dirname "$0")/.."
. windows/common.sh
. tools/suites.sh
start_counting
start_wine
built=()
if ! check_tools; then
  failure "Windows modules" "tools are missing"
elif ! write_replay_file; then
  failure "Windows modules" "there is no file of operations to repeat"
else
  program=$(native_program) || failure "tessarn.exe" "there is no program of this machine to compare with"
  for each in windows-msvc-abi windows-mingw; do
    build $each -DTESSARN_REPLAY_FILE="$PWD/build/operations.bin" -DTESSARN_NATIVE_PROGRAM="$program" && built+=("$each")
  done
fi

# Side by side, one processor each: programs under Wine wait much.
for each in "${built[@]}"; do
  suite "$each under Wine" "build/$each" --timeout 300 --jobs 1 >"build/$each/suite.log" 2>&1 &
done
wait
for each in "${built[@]}"; do cat "build/$each/suite.log"; done
[ -n "${TESSARN_TEST_TOTALS:-}" ] || close_counting
