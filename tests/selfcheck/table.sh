#!/usr/bin/env bash
# The checked-in hashes are what the program writes, to the byte, and the page shows its one-line answer;
# tools/update_selfcheck.sh writes both anew. usage: table.sh PROGRAM FILE PAGE
set -euo pipefail
diff <("$1" --table) "$2"
line=$("$1" --line)
grep -qxF "$line" "$3" || { echo "$3 does not show: $line"; exit 1; }
echo "$(grep -c '^    {' "$2") hashes as stored"
