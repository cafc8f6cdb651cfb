#!/usr/bin/env bash
# Makes the Debian packages in build/package/debian from the files under version control, looks at them with lintian,
# and installs and uses them in a bare system (test.sh). The documentation is the site in build/docs/html, made here when
# there is none. DEBFULLNAME and DEBEMAIL name the maintainer, else the last commit's author does.
set -euo pipefail
cd "$(dirname "$0")/../.."
version=$(sed -n 's/^#define TESSARN_VERSION_[A-Z]* *//p' include/tessarn/version.h | paste -sd.)
out=$PWD/build/package/debian
tree=$out/tessarn-$version
maintainer="${DEBFULLNAME:-$(git log -1 --format=%an 2>/dev/null || echo Tessarn)}"
maintainer+=" <${DEBEMAIL:-$(git log -1 --format=%ae 2>/dev/null || echo tessarn@localhost)}>"
date=$(git log -1 --format=%cD 2>/dev/null || date -R)

echo "== exporting"
rm -rf "$out"
mkdir -p "$tree"
if git rev-parse --git-dir >/dev/null 2>&1; then
  git ls-files -z | xargs -0 cp --parents -t "$tree"
else
  tar -c --exclude=./build . | tar -x -C "$tree"
fi
cp -r packaging/debian/debian "$tree/debian"

python_build="" python_package=""
if [ -d python ]; then
  python_build=", dh-python, python3-dev, python3-numpy, pybind11-dev"
  python_package=$(cat packaging/debian/debian/python.in)
  echo "usr/lib/python3*" >"$tree/debian/python3-tessarn.install"
fi
MAINTAINER=$maintainer BUILD=$python_build PACKAGE=$python_package awk '
  { gsub(/@MAINTAINER@/, ENVIRON["MAINTAINER"]) }
  { gsub(/@PYTHON_BUILD@/, ENVIRON["BUILD"]) }
  { gsub(/@PYTHON_PACKAGE@/, ENVIRON["PACKAGE"]); print }
' packaging/debian/debian/control.in | sed -e '$ { /^$/d }' >"$tree/debian/control"
mv "$tree/debian/copyright.in" "$tree/debian/copyright"
rm "$tree/debian/control.in" "$tree/debian/python.in"
printf 'tessarn (%s) bookworm; urgency=medium\n\n  * Version %s; CHANGELOG.md says what is new.\n\n -- %s  %s\n' \
  "$version" "$version" "$maintainer" "$date" >"$tree/debian/changelog"

[ -f build/docs/html/index.html ] || tools/docs.sh >/dev/null
cp -r build/docs/html "$tree/html"
echo html >>"$tree/debian/tessarn-doc.docs"

echo "== building"
(cd "$tree" && dpkg-buildpackage -us -uc -b -j"${JOBS:-2}") >"$out/build.log" 2>&1 || {
  tail -40 "$out/build.log"
  exit 1
}
rm -rf "$tree"

echo "== lintian"
lintian --allow-root --fail-on error --info --no-tag-display-limit "$out"/*.changes >"$out/lintian.log" 2>&1 || {
  cat "$out/lintian.log"
  exit 1
}
grep '^[EW]: ' "$out/lintian.log" || echo "no errors and no warnings"

packaging/debian/test.sh "$out"
ls -l "$out"/*.deb
