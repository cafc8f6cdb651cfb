#!/usr/bin/env bash
# Makes the source archive of the last commit, and proves it: unpacked somewhere else, without git, it configures, builds,
# installs, and a project finds what was installed.
# usage: source.sh [FOLDER]   FOLDER receives the archive, build/package unless given
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/suites.sh
stage=${1:-$PWD/build/package}
version=$(sed -n 's/^#define TESSARN_VERSION_[A-Z]* *//p' include/tessarn/version.h | paste -sd.)
name=tessarn-$version
mkdir -p "$stage"
git rev-parse --git-dir >/dev/null || { echo "the archive is made from a git checkout"; exit 1; }
git diff --quiet HEAD || echo "note: changes that are not committed are not in the archive"
# The same commit gives the same bytes: git takes the times of the files from the commit, gzip writes none.
git archive --format=tar --prefix="$name/" HEAD | gzip -9n >"$stage/$name.tar.gz"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
tar -xf "$stage/$name.tar.gz" -C "$work"
mkdir "$work/no-git"
printf '#!/bin/sh\necho "git was called"\nexit 1\n' >"$work/no-git/git"
chmod +x "$work/no-git/git"
export PATH=$work/no-git:$PATH
quietly cmake -S "$work/$name" -B "$work/build" -G Ninja -DTESSARN_TESTS=OFF -DTESSARN_EXAMPLES=OFF
quietly cmake --build "$work/build"
quietly cmake --install "$work/build" --prefix "$work/prefix"
"$work/prefix/bin/tessarn-selfcheck" --line
quietly cmake -S "$work/$name/tests/consumers" -B "$work/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix"
quietly cmake --build "$work/consumer"
"$work/consumer/consumer_tessarn"
"$work/consumer/consumer_static"
echo "build/package/$name.tar.gz"
