#!/bin/sh
# Prints the objects of a program in a debugger and compares: run.sh gdb|lldb|gdb-finds VIEWS SOURCES PROGRAM.
# VIEWS is the script that the debugger is told to load; for gdb-finds it is the folder in which gdb finds one by itself.
set -eu
views=$2 sources=$3 program=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
case $1 in
  gdb) gdb -q -nx -batch -ex "source $views" -x "$sources/commands.gdb" "$program" ;;
  gdb-finds) gdb -q -nx -batch -iex "add-auto-load-safe-path $views" -x "$sources/commands.gdb" "$program" ;;
  lldb) "$LLDB" -b -x -o "command script import $views" -s "$sources/commands.lldb" "$program" ;;
esac >"$work/output" 2>&1 || echo "the debugger ended with an error"
# The values alone: gdb puts a number before them, LLDB the class and the name. Addresses differ from run to run.
case $1 in
  gdb*) sed -n -e '/^rows:$/,$p' -e 's/^\$[0-9]* = //p' ;;
  lldb) sed -n -e '/^(lldb)/d' -e 's/^([^()]*) [^=]* = \(0x[0-9a-f]* \)\{0,1\}//p' ;;
esac <"$work/output" >"$work/values"
cat "$sources/expected.txt" "$sources/${1%-*}_parts.txt" | diff -u - "$work/values" || {
  cat "$work/output"
  exit 1
}
