#!/usr/bin/env bash
# Builds both Windows modules and their tests and runs them under Wine. The last line is the total.
set -uo pipefail
cd "$(dirname "$0")/.."
. windows/common.sh
passed=0
failed=0

# Runs ctest in a build folder and adds its counts.
suite() {
  local log status p f
  log=$(mktemp)
  echo "== $1 under Wine"
  ctest --test-dir "build/$1" -j2 --output-on-failure --timeout 300 >"$log" 2>&1
  status=$?
  grep -vE '^ *[0-9]+/[0-9]+ Test +#.*Passed|^ +Start |^$|changing into directory|^Test project' "$log"
  p=$(grep -cE '^ *[0-9]+/[0-9]+ Test .* Passed' "$log")
  f=$(grep -cE '^ *[0-9]+/[0-9]+ Test .*\*\*\*' "$log")
  rm -f "$log"
  [ "$status" -ne 0 ] && [ "$f" -eq 0 ] && f=1
  [ "$p" -eq 0 ] && f=$((f + 1))
  passed=$((passed + p))
  failed=$((failed + f))
}

step() {
  "$@" && return
  failed=$((failed + 1))
  return 1
}

start_wine
if step check_tools && step write_replay_file; then
  for build in windows-msvc-abi windows-mingw; do
    step configure $build && step quietly cmake --build --preset $build && suite $build
  done
fi
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
