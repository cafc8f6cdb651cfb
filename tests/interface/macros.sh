#!/usr/bin/env bash
# Every public header compiles by itself after what callers write before it: the macros min and
# max of the Windows headers, and `using namespace std`. usage: macros.sh SOURCE_ROOT
set -euo pipefail
root=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/macros" "$work/names"

standard_headers=$(printf '#include <%s>\n' algorithm array atomic cmath complex cstddef cstdint cstdio cstdlib cstring \
  functional initializer_list iosfwd iostream iterator limits memory new numeric ostream sstream stdexcept string tuple \
  type_traits utility vector)
more_headers=$(printf '#include <%s>\n' filesystem fstream ranges)
count=0
for header in "$root"/include/tessarn/*.h; do
  name=$(basename "$header")
  more=
  case $name in files.h | std.h) more=$more_headers ;; esac
  # The standard headers first: they take such macros away, and guard themselves against being read again.
  cat >"$work/macros/$name.cpp" <<end
$standard_headers
$more
#define min(a, b) (((a) < (b)) ? (a) : (b))
#define max(a, b) (((a) > (b)) ? (a) : (b))
#define small char
#define near
#define far
#include <tessarn/$name>
int caller() { return max(1, 2); }
end
  cat >"$work/names/$name.cpp" <<end
$standard_headers
using namespace std;
#include <tessarn/$name>
int caller() { return 0; }
end
  count=$((count + 1))
done
[ "$count" -gt 5 ] || { echo "only $count headers"; exit 1; }

failed=0
for compiler in "g++ -std=c++17" "clang++-22 -std=c++20"; do
  for kind in macros names; do
    for file in "$work/$kind"/*.cpp; do
      # shellcheck disable=SC2086
      $compiler -Wall -Wextra -Wpedantic -fsyntax-only -I"$root/include" -isystem /usr/include/eigen3 "$file" >"$work/log" 2>&1 && continue
      echo "$compiler, $kind before <tessarn/$(basename "$file" .cpp)>:"
      grep -m2 error "$work/log"
      failed=1
    done
  done
done
[ "$failed" -eq 0 ] && echo "$count headers compile after both"
