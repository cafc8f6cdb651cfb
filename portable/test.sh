#!/usr/bin/env bash
# Builds the library and its tests for other processors, runs them under emulators, and repeats the operations that the build
# for this machine has written. The last line is the total. usage: portable/test.sh [PROCESSOR...], all seven unless given
set -uo pipefail
cd "$(dirname "$0")/.." || exit
. tools/suites.sh
[ $# -gt 0 ] || set -- aarch64 armv7 riscv64 ppc64le s390x i686 wasm
start_counting
if ! write_replay_file; then
  failure "other processors" "there is no file of operations to repeat"
else
  for each; do
    build "$each" -DTESSARN_REPLAY_FILE="$PWD/build/operations.bin" && suite "$each" "build/$each" --timeout 1500
  done
fi
[ -n "${TESSARN_TEST_TOTALS:-}" ] || close_counting --other-processors
