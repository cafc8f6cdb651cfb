#!/usr/bin/env bash
# Builds and runs every suite: the native tests, the same under the sanitizers, and the Windows module under
# Wine. Each must pass; the last line is the total.
set -uo pipefail
cd "$(dirname "$0")/.."
passed=0
failed=0

# Runs ctest in a build folder and adds its counts.
suite() {
  local name=$1 folder=$2 log
  log=$(mktemp)
  echo "== $name"
  ctest --test-dir "$folder" -j2 --output-on-failure --timeout 600 "${@:3}" >"$log" 2>&1
  local status=$?
  grep -vE '^ *[0-9]+/[0-9]+ Test +#.*Passed|^ +Start ' "$log"
  local p f
  p=$(grep -cE '^ *[0-9]+/[0-9]+ Test .* Passed' "$log")
  f=$(grep -cE '^ *[0-9]+/[0-9]+ Test .*\*\*\*' "$log")
  [ "$status" -ne 0 ] && [ "$f" -eq 0 ] && f=1
  [ "$p" -eq 0 ] && f=$((f + 1))
  passed=$((passed + p))
  failed=$((failed + f))
  rm -f "$log"
}

build() {
  echo "== building $1"
  cmake --preset "$1" >"build-$1.log" 2>&1 && cmake --build --preset "$1" >>"build-$1.log" 2>&1 && rm "build-$1.log" && return
  tail -40 "build-$1.log"
  echo "building $1 failed"
  failed=$((failed + 1))
  return 1
}

build release && suite "native" build/release
export ASAN_OPTIONS=allocator_may_return_null=1:detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1
build sanitize && suite "address and undefined-behaviour sanitizers" build/sanitize
if [ -x windows/test.sh ]; then
  windows/test.sh >windows.log 2>&1
  status=$?
  cat windows.log
  totals=$(grep -E '^[0-9]+ passed, [0-9]+ failed$' windows.log | tail -1)
  rm -f windows.log
  passed=$((passed + $(echo "${totals:-0 passed, 0 failed}" | cut -d' ' -f1)))
  failed=$((failed + $(echo "${totals:-0 passed, 1 failed}" | cut -d' ' -f3)))
  [ "$status" -ne 0 ] && [ "$(echo "${totals:-0 passed, 1 failed}" | cut -d' ' -f3)" -eq 0 ] && failed=$((failed + 1))
fi
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
