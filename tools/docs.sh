#!/usr/bin/env bash
# Makes the reference manual in build/docs/html. A warning is an error.
set -euo pipefail
cd "$(dirname "$0")/.."
version=$(sed -n 's/.*_VERSION_[A-Z]* //p' include/tessarn/version.h | paste -sd.)
mkdir -p build/docs
{
  cat docs/Doxyfile
  echo "PROJECT_NUMBER = $version"
  echo "OUTPUT_DIRECTORY = build/docs"
} | doxygen -
cp -r docs/pictures build/docs/html/ 2>/dev/null || true
echo "build/docs/html/index.html"
