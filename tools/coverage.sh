#!/usr/bin/env bash
# Line and branch coverage of the library's own sources and headers by the native tests. Prints the tables of files
# that are not covered wholly and the totals; build/coverage/report/index.html shows every line.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/install.sh build test coverage
cmake --preset coverage >/dev/null
cmake --build --preset coverage
find build/coverage -name '*.gcda' -delete
ctest --test-dir build/coverage -j2 --timeout 600 --output-on-failure | tail -4

# Branches that only an exception takes are left out: the allocation tests count allocations, not branches.
report() {
  gcovr --root . --object-directory build/coverage -j2 --exclude-throw-branches --exclude-unreachable-branches \
    --filter '(core|vectors|matrix|poly|geometry|include/tessarn)/' "$@"
}
mkdir -p build/coverage/report
report --json build/coverage/report/coverage.json --html-details build/coverage/report/index.html
table() { gcovr --root . --add-tracefile build/coverage/report/coverage.json "$@"; }
echo "Lines not covered"
table --txt | grep -vE ' 100% *$' | sed -n '/^File/,$p'
echo "Branches not taken"
table --branches --txt | grep -vE ' 100% *$' | sed -n '/^File/,$p'
table --print-summary --output build/coverage/report/summary.txt
