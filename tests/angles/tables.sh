#!/usr/bin/env bash
# The checked-in constants are those that the program writes, byte for byte: tables.sh PROGRAM FILE
set -euo pipefail
diff <("$1") "$2"
echo "$(wc -l <"$2") lines as written"
