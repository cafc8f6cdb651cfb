#!/bin/sh
# Runs a program of the tour: tour.sh PROGRAM STORED PICTURE. Its output must be the stored text, and a program that draws must
# leave series of points as JSON.
set -eu
rm -f "$3"
"$1" "$3" | diff -u "$2" -
if grep -q 'include "picture.h"' "$(dirname "$0")/../../examples/tour/$(basename "$2" .txt).cpp"; then
  python3 -c '
import json, sys
series = json.load(open(sys.argv[1]))
assert series and all(s["xy"] and all(len(p) == 2 for p in s["xy"]) for s in series), "a series without points"
' "$3"
fi
