#!/usr/bin/env bash
# Checks the descriptions for vcpkg, Conan and NuGet as far as a machine without these tools can: what each says is built and
# used, with stand-ins for the tools' own functions. README.md says what that leaves open.
# usage: check.sh [ARCHIVE]   ARCHIVE: the one for Windows, build/package/tessarn-<version>-windows-x64.zip unless given
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/suites.sh
version=$(sed -n 's/^#define TESSARN_VERSION_[A-Z]* *//p' include/tessarn/version.h | paste -sd.)
archive=${1:-build/package/tessarn-$version-windows-x64.zip}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

echo "== vcpkg"
port=$PWD/packaging/vcpkg/ports/tessarn
python3 - "$port/vcpkg.json" "$version" <<'end'
import json, re, sys
port = json.load(open(sys.argv[1]))
assert port["version"] == sys.argv[2], "vcpkg.json has the version %s, the headers %s" % (port["version"], sys.argv[2])
assert set(port) <= {"name", "version", "description", "homepage", "license", "dependencies", "supports", "features"}
assert re.fullmatch(r"[a-z0-9]+(-[a-z0-9]+)*", port["name"]) and port["description"]
assert all(set(d) <= {"name", "host"} for d in port["dependencies"])
end
quietly cmake -DPORT="$port" -DWORK="$work/vcpkg" -P packaging/vcpkg/stub/run_port.cmake
quietly cmake -S tests/consumers -B "$work/vcpkg/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$work/vcpkg/packages"
quietly cmake --build "$work/vcpkg/consumer"
"$work/vcpkg/consumer/consumer_tessarn"

echo "== Conan"
PYTHONDONTWRITEBYTECODE=1 python3 packaging/conan/stub/run.py "$work/conan"

echo "== NuGet"
if [ ! -f "$archive" ]; then
  echo "there is no $archive: windows/package.sh makes it"
  exit 1
fi
python3 packaging/nuget/check.py "$archive" "$work/nuget"
