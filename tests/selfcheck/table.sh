#!/usr/bin/env bash
# The checked-in hashes are what the program writes, to the byte; tools/update_selfcheck.sh writes them anew.
# usage: table.sh PROGRAM FILE
set -euo pipefail
diff <("$1" --table) "$2" && echo "$(grep -c '^    {' "$2") hashes as stored"
