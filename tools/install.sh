#!/usr/bin/env bash
# Installs the Debian packages of the named groups, as far as they are missing.
set -euo pipefail

declare -A groups=(
  [build]="g++ cmake ninja-build make"
  [demo]="libcli11-dev nlohmann-json3-dev gnuplot-nox fonts-dejavu-core"
  [test]="libgtest-dev libmpfr-dev libgmp-dev liblapacke-dev libeigen3-dev clang-14 clang-22 pkg-config binutils gdb lldb-22 python3-lldb-22 valgrind python3"
  [check]="clang-tidy-14 clang-format-14"
  [coverage]="gcovr"
  [windows]="clang-22 lld-22 llvm-22 libc++-22-dev libwine-dev wine wine64 wine64-preloader g++-mingw-w64-x86-64-posix libgtest-dev libeigen3-dev libcli11-dev nlohmann-json3-dev zip unzip python3"
  [portable]="qemu-user-static g++-aarch64-linux-gnu g++-arm-linux-gnueabihf g++-riscv64-linux-gnu g++-powerpc64le-linux-gnu g++-s390x-linux-gnu g++-i686-linux-gnu emscripten nodejs libgtest-dev libeigen3-dev python3"
  [python]="pybind11-dev python3 python3-dev python3-numpy python3-pytest python3-pip python3-setuptools python3-venv python3-wheel mypy"
  [bench]="libbenchmark-dev libeigen3-dev libopenblas-dev liblapacke-dev libgsl-dev libboost-math-dev libcgal-dev gnuplot-nox python3 python3-numpy python3-scipy"
  [fuzz]="clang-22 libclang-rt-22-dev"
  [docs]="doxygen python3-sphinx furo python3-myst-parser python3-sphinx-copybutton python3-matplotlib chromium nodejs emscripten"
  [npm]="npm"
  [package]="debhelper dh-python dpkg-dev lintian mmdebstrap libcli11-dev nlohmann-json3-dev pybind11-dev python3-dev python3-numpy"
)

missing=()
for group in "$@"; do
  for package in ${groups[$group]}; do
    dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null | grep -q '^installed' || missing+=("$package")
  done
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=""
[ "$(id -u)" -eq 0 ] || as_root="sudo"
echo "installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$as_root apt-get update -qq
$as_root apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
