#!/usr/bin/env bash
# The certificate: the operations that the release build writes are repeated by every other build that this machine can run,
# and the table of docs/reproducibility.md is written anew. What cannot run here keeps its last row, with its date. Ends with 1
# when a build failed or gave other bits. usage: certify.sh [ROW...], names of functions below; all of them unless given
set -uo pipefail
cd "$(dirname "$0")/.." || exit
. windows/common.sh
. tools/suites.sh
page=docs/reproducibility.md
folder=$PWD/build/certify
file=$PWD/build/operations.bin
mkdir -p "$folder"
rows=$folder/rows.txt
: >"$rows"
failed=0

# row NAME HOW COMMAND...: the command prints what replay prints; its line "all" has the operations and the differing ones.
row() {
  local name=$1 how=$2 log=$folder/$1.log result started=$SECONDS
  "${@:3}" >"$log" 2>&1
  result=$(tr -d '\r' <"$log" | sed 's/^[0-9]*: //' | awk '$1 == "all" && NF >= 3 {print $2 "|" $3}')
  if [ -z "$result" ]; then
    echo "$name: no result, see $log"
    failed=1
    return
  fi
  echo "$name|$how|$result|$(date +%F)" >>"$rows"
  [ "${result#*|}" = 0 ] || failed=1
  echo "$name: ${result%|*} operations, ${result#*|} differing, $((SECONDS - started)) s"
}

# built LEVEL COMPILER [OPTION...]: library and replay at an optimisation level.
built() { tests/replay/with_compiler.sh . "$2" "$file" "-DCMAKE_CXX_FLAGS_RELEASE=-$1" "${@:3}"; }

# Library and replay for another processor; ctest knows the emulator.
processor() {
  cmake --preset "$1" -DTESSARN_REPLAY_FILE="$file" && cmake --build --preset "$1" --target replay &&
    ctest --test-dir "build/$1" -R '^replay$' -V
}

module() {
  configure "$1" && cmake --build --preset "$1" --target replay &&
    windows/toolchain/run-wine.sh "$TESSARN_WINEPREFIX" "build/$1/bin/replay.exe" check "$file"
}

# The program of a caller with flags of its own, and the library of the release build.
caller() {
  "$1" -std=c++20 -O3 -march=native -ffp-contract=fast -DREPLAY_INSTRUCTION_SETS -I. -Iinclude -Itests tests/replay/*.cpp \
    build/release/libtessarn.a -o "$folder/caller" && "$folder/caller" check "$file"
}

version() { "$1" -dumpfullversion 2>/dev/null || "$1" -dumpversion; }
emulator() { echo "emulated, $("$1" --version | sed -n '1s/.*version \([0-9.]*\).*/qemu \1/p')"; }

levels() {
  local compiler level
  for compiler in g++ clang++-22; do
    for level in O0 O2 O3; do
      row "${compiler%-*} -$level" "natively, version $(version $compiler)" built $level $compiler
    done
  done
}
sets() {
  local set
  for set in $(sed -n 's/^#define TESSARN_SETS_x86_64(X) //p' simd/sets.h | tr -d 'X()'); do
    if build/release/tests/replay/replay check "$file" "$set" >"$folder/set.log" 2>&1 || [ $? -ne 77 ]; then
      row "kernels for $set" natively cat "$folder/set.log"
    else
      echo "kernels for $set: this processor has no such set"
    fi
  done
}
scalar() { row "scalar lanes" natively built O2 g++ -DTESSARN_SCALAR_LANES=ON; }
callers() {
  row "callers: g++ -O3 -march=native -ffp-contract=fast" "natively, version $(version g++)" caller g++
  row "callers: clang++ -O3 -march=native -ffp-contract=fast" "natively, version $(version clang++-22)" caller clang++-22
}
modules() {
  start_wine
  row "Windows module, Microsoft's C++ ABI" "under Wine" module windows-msvc-abi
  row "Windows module, MinGW-w64" "under Wine" module windows-mingw
}
processors() {
  row "AArch64" "$(emulator qemu-aarch64-static)" processor aarch64
  row "ARMv7, hard float" "$(emulator qemu-arm-static)" processor armv7
  row "RISC-V 64" "$(emulator qemu-riscv64-static)" processor riscv64
  row "POWER8, little-endian" "$(emulator qemu-ppc64le-static)" processor ppc64le
  row "IBM Z (s390x), big-endian" "$(emulator qemu-s390x-static)" processor s390x
  row "i686 with SSE2" natively processor i686
  row "WebAssembly with SIMD" "node $(node --version | tr -d v)" processor wasm
}

started=$SECONDS
# The release build, whose library and program the rows of sets and callers take.
quietly cmake --preset release && quietly cmake --build --preset release --target replay || exit 1
write_replay_file || { echo "there is no file of operations to repeat"; exit 1; }
[ $# -gt 0 ] || set -- levels sets scalar callers modules processors
for each; do "$each"; done
tools/certificate.py "$page" "$rows"
echo "$((SECONDS - started)) s"
exit $failed
