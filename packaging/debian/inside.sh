#!/bin/sh
# The steps of test.sh within the bare system: install the packages, use them, remove them.
set -eu
export DEBIAN_FRONTEND=noninteractive HOME=/root LC_ALL=C.UTF-8
apt-get install -y --no-install-recommends /packages/*.deb
cd /consumer
dpkg --verify libtessarn1 libtessarn-dev tessarn-tools

g++ -std=c++17 consumer.cpp -ltessarn -o by_hand && ./by_hand
g++ -std=c++17 consumer.cpp -l:libtessarn.a -o by_hand_static && ./by_hand_static
echo "== g++ by hand, shared and static: runs"

g++ -std=c++17 consumer.cpp $(pkg-config --cflags --libs tessarn) -o by_pkg_config && ./by_pkg_config
echo "== pkg-config: runs"

cmake -S . -B build -DCMAKE_BUILD_TYPE=Release && cmake --build build
build/consumer_tessarn && build/consumer_static
echo "== CMake, shared and static: runs"

tessarn-selfcheck --line
tessarn --version
tessarn curve water.csv -m 5 | grep '^maximum'
tessarn curve water.csv --json >/dev/null
echo "== tessarn and tessarn-selfcheck: run"

# gdb finds the view by itself: a vector prints by its coordinates.
cat >view.cpp <<'end'
#include <tessarn/tessarn.h>
vector v(3, 4);
int main() {
  mat<long double> m(1, 1);
  return static_cast<int>(m.get(0, 0));
}
end
g++ -g -O0 view.cpp -ltessarn -o view
gdb -q -batch -ex 'break main' -ex run -ex 'print v' ./view | tee view.txt
grep -q '^\$1 = .*(3, 4)' view.txt
echo "== gdb: shows a vector by itself"
test -f /usr/share/tessarn/tessarn_lldb.py && test -f /usr/share/tessarn/tessarn.natvis

# The reference must be whole: every file that a page names is there.
test -f /usr/share/doc/tessarn-doc/html/index.html
echo "== the documentation is installed"

if dpkg-query -W python3-tessarn >/dev/null 2>&1; then
  python3 -c 'import tessarn, numpy; x = numpy.arange(5.0); print(tessarn.polyfit(x, 2 * x + 1, 1))'
  echo "== Python: runs"
fi

apt-get remove -y --purge libtessarn1 >/dev/null
test ! -e /usr/include/tessarn
echo "== removed without a trace"
