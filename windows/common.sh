# Shared by the scripts of this folder. Sourced in the root of the sources.

# The run-time parts of the two toolchains, and what the scripts call.
tools="clang-cl-22 lld-link-22 llvm-lib-22 llvm-rc-22 llvm-dlltool-22 llvm-readobj-22 llvm-undname-22 llvm-nm-22
       llvm-objdump-22 wine wineserver x86_64-w64-mingw32-g++-posix x86_64-w64-mingw32-windres cmake ninja python3"

# Fails with the names of the tools that are missing.
check_tools() {
  local missing="" tool
  for tool in $tools "$@"; do
    command -v "$tool" >/dev/null || missing="$missing $tool"
  done
  [ -d /usr/include/wine/wine/msvcrt ] || missing="$missing libwine-dev"
  [ -d /usr/lib/llvm-22/include/c++/v1 ] || missing="$missing libc++-22-dev"
  [ -f /usr/src/googletest/CMakeLists.txt ] || missing="$missing libgtest-dev"
  [ -z "$missing" ] && return
  echo "missing:$missing (tools/install.sh build windows)"
  return 1
}

configure() {
  quietly cmake --preset "$1" -DTESSARN_REPLAY_FILE="$PWD/build/operations.bin" -DTESSARN_NATIVE_PROGRAM="$(native_program)"
}

# One prefix and one server for both builds; the server ends with the script.
start_wine() {
  export TESSARN_WINEPREFIX=$PWD/build/wine
  trap stop_wine EXIT
}
stop_wine() {
  [ -d "$TESSARN_WINEPREFIX" ] && windows/toolchain/run-wine.sh "$TESSARN_WINEPREFIX" --stop
  true
}
