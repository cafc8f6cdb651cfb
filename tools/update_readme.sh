#!/bin/sh
# Puts what the programs print, the first program and the picture into README.md and docs/accuracy.md:
# update_readme.sh [DEMO], where DEMO is what `make demo` left (build/demo). With --check DEMO it changes nothing and
# fails when a page shows something else.
set -eu

top=$(cd "$(dirname "$0")/.." && pwd)
check=no
[ "${1:-}" = --check ] && { check=yes; shift; }
demo=${1:-$top/build/demo}

new=$(mktemp)
trap 'rm -f "$new"' EXIT

# The text of a marked place, without its fence.
content() {
  case $1 in
    program) cat "$top/examples/first.cpp" ;;
    output) cat "$demo/first.txt" ;;
    table) sed '1,2d' "$demo/digits.txt" ;;
    water) sed -n '/^maximum/,/accepted/p' "$demo/water.txt" ;;
    *) echo "unknown place: $1" >&2; exit 1 ;;
  esac
}

# The page with its marked places filled.
filled() {
  skipping=no
  while IFS= read -r line; do
    case $line in
      "<!-- begin "*)
        place=${line#<!-- begin }
        place=${place% -->}
        echo "$line"
        if [ "$place" = program ]; then echo '```cpp'; else echo '```'; fi
        content "$place"
        echo '```'
        skipping=yes ;;
      "<!-- end "*) skipping=no; echo "$line" ;;
      *) [ $skipping = yes ] || printf '%s\n' "$line" ;;
    esac
  done < "$1"
}

for page in README.md docs/accuracy.md; do
  filled "$top/$page" > "$new"
  if [ $check = yes ]; then
    diff -u "$top/$page" "$new" && continue
    echo "$page differs from the output of the programs; run tools/update_readme.sh after make demo"
    exit 1
  fi
  cmp -s "$new" "$top/$page" || cat "$new" > "$top/$page"
done
[ $check = yes ] || cmp -s "$demo/water.svg" "$top/docs/pictures/water.svg" || cp "$demo/water.svg" "$top/docs/pictures/water.svg"
