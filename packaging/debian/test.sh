#!/usr/bin/env bash
# Installs the packages into a bare Debian system and uses them there: a C++ compiler by hand, CMake, pkg-config, the
# program, the debugger's view, and Python where the module is packaged. usage: test.sh FOLDER_OF_PACKAGES
# Takes root, as mmdebstrap does, and some minutes.
set -euo pipefail
packages=$(cd "$1" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
top=$here/../..
root=$(mktemp -d)
# Only what mmdebstrap made is removed, on one file system.
trap 'rm -rf --one-file-system "$root"' EXIT
. /etc/os-release
as_root=""
[ "$(id -u)" -eq 0 ] || as_root=sudo

wanted=g++,make,cmake,pkg-config,gdb
compgen -G "$packages/python3-tessarn_*.deb" >/dev/null && wanted+=,python3-numpy
echo "== a bare system"
$as_root mmdebstrap --quiet --variant=apt --include="$wanted" --format=directory "$VERSION_CODENAME" "$root" \
  --customize-hook="mkdir -p '$root/packages' '$root/consumer'" \
  --customize-hook="cp '$packages'/*.deb '$root/packages/'" \
  --customize-hook="cp '$top'/tests/consumers/CMakeLists.txt '$top'/tests/consumers/consumer.cpp '$root/consumer/'" \
  --customize-hook="cp '$top'/examples/data/water.csv '$here'/inside.sh '$root/consumer/'" \
  --customize-hook="rm -f '$root'/packages/*-dbgsym_*" \
  --customize-hook="chroot '$root' sh /consumer/inside.sh" >"$packages/test.log" 2>&1 || {
  tail -40 "$packages/test.log"
  exit 1
}
grep '^== ' "$packages/test.log"
