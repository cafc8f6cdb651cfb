#!/bin/sh
# Prints the objects of a program in gdb and compares: run.sh PRINTERS SOURCES PROGRAM.
set -eu
output=$(mktemp)
trap 'rm -f "$output"' EXIT
gdb -q -nx -batch -ex "source $1" -x "$2/commands.gdb" "$3" 2>&1 | sed -n '/^\$1 = /,$p' > "$output"
diff -u "$2/expected.txt" "$output"
