#!/usr/bin/env bash
# Builds both Windows modules, runs all of their tests under Wine and prints how the replay compares.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/suites.sh
. windows/common.sh
check_tools
start_wine
write_replay_file
for build in windows-msvc-abi windows-mingw; do
  echo "== $build"
  configure $build
  quietly cmake --build --preset $build
  ctest --test-dir build/$build -j2 --output-on-failure --timeout 300 --quiet -O build/$build/tests.log ||
    { cat build/$build/tests.log; exit 1; }
  tail -4 build/$build/tests.log
done
for build in windows-msvc-abi windows-mingw; do
  echo "== replay by $build: every operation with the bits of the native build"
  windows/toolchain/run-wine.sh "$TESSARN_WINEPREFIX" build/$build/bin/replay.exe check build/operations.bin | tr -d '\r'
done
echo "== the modules"
tests/windows/exported_names.sh build/windows-msvc-abi/bin/Tessarn_x64.dll tests/windows/exported_names.txt
tests/windows/check_module.sh imports build/windows-msvc-abi/bin/Tessarn_x64.dll
ls -l build/windows-{msvc-abi,mingw}/bin/Tessarn_x64.* build/windows-msvc-abi/Tessarn_x64.lib build/windows-mingw/Tessarn_x64.dll.a
