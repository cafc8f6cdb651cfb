#!/usr/bin/env bash
# Builds and runs a project of a user of the library, in the named way:
#   run.sh install|build|pkg-config|components|shared|static|add_subdirectory|FetchContent|debugger CONSUMERS BUILD
# CONSUMERS is this folder, BUILD a build folder in which both libraries are made.
set -euo pipefail
kind=$1 consumers=$2 build=$3
root=$consumers/../..
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "$*"; exit 1; }

# A build here takes the library's objects from BUILD instead of compiling the same sources anew.
reuse=$consumers/reuse_objects.sh
export REUSE_OBJECTS_OF=$build

# configure SOURCE FOLDER [OPTION...]
configure() {
  cmake -S "$1" -B "$2" -G Ninja "${@:3}" >"$work/log" 2>&1 || { cat "$work/log"; fail "no configuration: $*"; }
}
make() {
  cmake --build "$1" -j2 >"$work/log" 2>&1 || { tail -40 "$work/log"; fail "not built: $1"; }
}
# An installed tree that was moved, since a package must not know where it was installed.
install_moved() {
  cmake --install "$1" --prefix "$work/prefix" >/dev/null
  mv "$work/prefix" "$work/moved"
}
consume() {
  configure "$consumers" "$work/consumer" "$@"
  make "$work/consumer"
  "$work/consumer/consumer_tessarn"
}
libraries() { find "$1" \( -name '*tessarn*.so*' -o -name '*tessarn*.a' \) ! -name '*-gdb.py' -printf '%f\n' | sort | paste -sd' '; }

case $kind in
  install)
    install_moved "$build"
    env -u LD_LIBRARY_PATH "$work/moved/bin/tessarn-selfcheck" --line
    consume -DCMAKE_PREFIX_PATH="$work/moved"
    "$work/consumer/consumer_static" ;;
  build)
    consume -Dtessarn_DIR="$build"
    "$work/consumer/consumer_static" ;;
  pkg-config)  # as README.md says
    install_moved "$build"
    PKG_CONFIG_PATH=$(dirname "$(find "$work/moved" -name tessarn.pc)")
    export PKG_CONFIG_PATH
    libdir=$(pkg-config --variable=libdir tessarn)
    # shellcheck disable=SC2046
    {
      ${CXX:-c++} -std=c++17 "$consumers/consumer.cpp" $(pkg-config --cflags --libs tessarn) -Wl,-rpath,"$libdir" -o "$work/shared"
      ${CXX:-c++} -std=c++17 "$consumers/consumer.cpp" $(pkg-config --cflags tessarn) "$libdir/libtessarn.a" -o "$work/static"
    }
    env -u LD_LIBRARY_PATH "$work/shared"
    "$work/static" ;;
  components)
    install_moved "$build"
    if cmake -S "$consumers" -B "$work/wrong" -G Ninja -DCMAKE_PREFIX_PATH="$work/moved" -DCOMPONENTS=matrix >"$work/log" 2>&1; then
      fail "a component that there is not was found"
    fi
    tr -s '\n ' ' ' <"$work/log" | grep -o 'tessarn has no component "matrix"[^:]*: leave COMPONENTS out and link tessarn::tessarn or tessarn::static' ||
      { cat "$work/log"; fail "no reason given"; }
    consume -DCMAKE_PREFIX_PATH="$work/moved" -DOPTIONAL_COMPONENTS=matrix ;;
  shared | static)
    only=ON names="libtessarn.so libtessarn.so.1 libtessarn.so.$(sed -n 's/.*_VERSION_[A-Z]* //p' "$root/include/tessarn/version.h" | paste -sd.)"
    [ "$kind" = shared ] || only=OFF names=libtessarn.a
    configure "$root" "$work/one" -DBUILD_SHARED_LIBS=$only -DTESSARN_TESTS=OFF -DTESSARN_EXAMPLES=OFF -DTESSARN_PROGRAMS=OFF \
      -DCMAKE_CXX_COMPILER_LAUNCHER="$reuse"
    make "$work/one"
    install_moved "$work/one"
    [ "$(libraries "$work/moved")" = "$names" ] || fail "installed: $(libraries "$work/moved"), not $names"
    consume -DCMAKE_PREFIX_PATH="$work/moved"
    if [ $kind = shared ]; then
      [ ! -e "$work/consumer/consumer_static" ] || fail "there is a static library"
    else
      "$work/consumer/consumer_static"
      ! ldd "$work/consumer/consumer_tessarn" | grep tessarn || fail "a shared library is needed"
    fi ;;
  add_subdirectory | FetchContent)
    parent=$consumers/subproject
    configure "$parent" "$work/parent" -DWAY="$kind" -DTESSARN_SOURCE="$(realpath "$root")" -DCMAKE_CXX_COMPILER_LAUNCHER="$reuse"
    ! grep -q '^CMAKE_BUILD_TYPE:.*=.' "$work/parent/CMakeCache.txt" || fail "the project was given a build type"
    # Without a build type the library is optimised all the same, and nothing else is.
    commands=$(grep '"command"' "$work/parent/compile_commands.json")
    [ "$(grep -c 'tessarn_objects' <<<"$commands")" -gt 40 ] || fail "the library is not compiled"
    ! grep 'tessarn_objects' <<<"$commands" | grep -v -e ' -O3 ' || fail "compiled without optimisation"
    ! grep -v 'tessarn_objects' <<<"$commands" | grep -e ' -O' || fail "the project's own files are compiled with our options"
    # A level among the project's own flags holds.
    configure "$parent" "$work/own" -DWAY="$kind" -DTESSARN_SOURCE="$(realpath "$root")" -DCMAKE_CXX_FLAGS=-O1
    ! grep -e ' -O3 ' "$work/own/compile_commands.json" || fail "the project's own level of optimisation does not hold"
    make "$work/parent"
    "$work/parent/parent"
    # Nothing of the library is installed with the project, unless it asks for that.
    cmake --install "$work/parent" --prefix "$work/prefix" >/dev/null
    found=$(cd "$work/prefix" && find . -type f)
    [ "$found" = ./bin/parent ] || fail "installed with the project: $found"
    configure "$parent" "$work/parent" -DTESSARN_INSTALL=ON
    make "$work/parent"
    cmake --install "$work/parent" --prefix "$work/moved" >/dev/null
    consume -DCMAKE_PREFIX_PATH="$work/moved" ;;
  debugger)  # gdb loads the views by itself, LLDB when told
    install_moved "$build"
    libdir=$(dirname "$(find "$work/moved" -name libtessarn.so)")
    ${CXX:-c++} -std=c++17 -g -O0 -I"$work/moved/include" "$root/tests/debugger/shown.cpp" -L"$libdir" -ltessarn \
      -Wl,-rpath,"$libdir" -o "$work/shown"
    "$root/tests/debugger/run.sh" gdb-finds "$work/moved" "$root/tests/debugger" "$work/shown"
    LLDB=$(command -v lldb-22 || command -v lldb) || fail "lldb is not installed"
    export LLDB
    "$root/tests/debugger/run.sh" lldb "$work/moved/share/tessarn/tessarn_lldb.py" "$root/tests/debugger" "$work/shown"
    # Under /usr they are where gdb looks without being told.
    DESTDIR=$work/root cmake --install "$build" --prefix /usr >/dev/null
    library=$(cd "$work/root" && find usr/lib* -type f -name 'libtessarn.so.*')
    [ -f "$work/root/usr/share/gdb/auto-load/$library-gdb.py" ] || fail "no views for /$library" ;;
  *) echo "unknown kind: $kind"; exit 2 ;;
esac
