#!/usr/bin/env bash
# Builds and runs the consumer project against the install tree, the build tree, or through pkg-config.
# usage: run.sh install|build|pkg-config SOURCE_DIR BUILD_DIR
set -euo pipefail
kind=$1 source=$2 build=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

run_both() {
  "$1/consumer_tessarn"
  "$1/consumer_static"
}

case $kind in
  install)
    cmake --install "$build" --prefix "$work/prefix" >/dev/null
    mv "$work/prefix" "$work/moved"  # the package must not know where it was installed
    cmake -S "$source" -B "$work/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$work/moved" >/dev/null
    cmake --build "$work/consumer" >/dev/null
    run_both "$work/consumer" ;;
  build)
    cmake -S "$source" -B "$work/consumer" -G Ninja -Dtessarn_DIR="$build" >/dev/null
    cmake --build "$work/consumer" >/dev/null
    run_both "$work/consumer" ;;
  pkg-config)
    cmake --install "$build" --prefix "$work/prefix" >/dev/null
    mv "$work/prefix" "$work/moved"
    pc=$(dirname "$(find "$work/moved" -name tessarn.pc)")
    flags=$(PKG_CONFIG_PATH=$pc pkg-config --cflags --libs tessarn)
    # shellcheck disable=SC2086
    ${CXX:-c++} -std=c++17 "$source/consumer.cpp" $flags -o "$work/consumer"
    LD_LIBRARY_PATH=$(PKG_CONFIG_PATH=$pc pkg-config --variable=libdir tessarn) "$work/consumer" ;;
  *) echo "unknown kind: $kind"; exit 2 ;;
esac
