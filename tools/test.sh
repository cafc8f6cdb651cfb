#!/usr/bin/env bash
# Builds and runs every suite: the native tests, the same under the sanitizers, and the Windows modules under Wine.
# Each must pass; the last line is the total. TESSARN_TEST_BEST_SET=avx2 tests as on a processor without AVX-512.
set -uo pipefail
cd "$(dirname "$0")/.."
. tools/suites.sh
start_counting

build release -DTESSARN_PYTHON=ON -DPython3_EXECUTABLE=/usr/bin/python3 && suite "native" build/release
export ASAN_OPTIONS=allocator_may_return_null=1:detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1
build sanitize && suite "address and undefined-behaviour sanitizers" build/sanitize
TESSARN_TEST_TOTALS=$totals windows/test.sh || failure "Windows modules" "windows/test.sh ended with an error"
close_counting
