#!/usr/bin/env bash
# Makes the ZIP for Windows callers and proves it: a project outside finds the unpacked package, links and runs.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/suites.sh
. windows/common.sh
check_tools zip unzip
start_wine
version=$(sed -n 's/^#define TESSARN_VERSION_[A-Z]* *//p' include/tessarn/version.h | paste -sd.)
name=tessarn-$version-windows-x64
stage=$PWD/build/package
rm -rf "$stage"
mkdir -p "$stage"

echo "== building"
quietly cmake --preset windows-msvc-abi -DTESSARN_REPLAY_FILE=
quietly cmake --build --preset windows-msvc-abi --target tessarn tessarn-selfcheck
quietly cmake --install build/windows-msvc-abi --prefix "$stage/$name"
quietly cmake --preset windows-mingw -DTESSARN_TESTS=OFF
quietly cmake --build --preset windows-mingw --target tessarn-program
cp build/windows-mingw/bin/tessarn.exe "$stage/$name/bin/"
mkdir -p "$stage/$name/examples/tour"
cp windows/examples/CMakeLists.txt examples/first.cpp "$stage/$name/examples/"
cp examples/tour/*.cpp examples/tour/*.h "$stage/$name/examples/tour/"
sed "s/@VERSION@/$version/" windows/README.txt.in | sed 's/$/\r/' >"$stage/$name/README.txt"
[ -f LICENSE ] && cp LICENSE "$stage/$name/"
(cd "$stage" && TZ=UTC zip -qrX "$name.zip" "$name")
rm -rf "${stage:?}/$name"

echo "== a project that uses the package"
mkdir "$stage/elsewhere"
(cd "$stage/elsewhere" && unzip -q "../$name.zip")
for way in CMAKE_PREFIX_PATH="$stage/elsewhere/$name" tessarn_DIR="$stage/elsewhere/$name/lib/cmake/tessarn"; do
  rm -rf "$stage/consumer"
  quietly cmake -S tests/consumers -B "$stage/consumer" -G Ninja -DCMAKE_BUILD_TYPE=Release "-D$way" \
    --toolchain "$PWD/windows/toolchain/windows-msvc-abi.cmake"
  quietly cmake --build "$stage/consumer"
  cp "$stage/elsewhere/$name/bin/Tessarn_x64.dll" "$stage/consumer"
  windows/toolchain/run-wine.sh "$TESSARN_WINEPREFIX" "$stage/consumer/consumer_tessarn.exe"
  windows/toolchain/run-wine.sh "$TESSARN_WINEPREFIX" "$stage/elsewhere/$name/bin/tessarn-selfcheck.exe" --line
done
echo "== the examples compile"  # their streams need a C++ library for Windows, which this machine lacks: they are not linked
quietly cmake -S "$stage/elsewhere/$name/examples" -B "$stage/consumer" -G Ninja -DCMAKE_BUILD_TYPE=Release --fresh \
  --toolchain "$PWD/windows/toolchain/windows-msvc-abi.cmake"
objects=$(ninja -C "$stage/consumer" -t targets all | sed -n 's/^\(.*\.obj\): .*/\1/p')
[ "$(wc -l <<<"$objects")" -eq "$(ls examples/first.cpp examples/tour/*.cpp | wc -l)" ]
quietly ninja -C "$stage/consumer" $objects
echo "== the program"
program() { windows/toolchain/run-wine.sh "$TESSARN_WINEPREFIX" "$stage/elsewhere/$name/bin/tessarn.exe" "$@"; }
program --version
program selfcheck --line
program curve examples/data/water.csv -m 5 | grep '^maximum'
rm -rf "$stage/consumer" "$stage/elsewhere"
unzip -l "$stage/$name.zip"
echo "build/package/$name.zip"
