#!/bin/sh
# Runs a program and checks how it ends: run.sh EXIT PATTERN PICTURE COMMAND...
# PATTERN must match a line of the report, or for another exit code than 0 of the error stream. Beside a
# report only notes stand there: those that NOTE in the environment matches, and without NOTE none. After
# success PICTURE (or - for none) is a complete picture, after a failure there is no such file. In the
# environment INPUT is the file for standard input, MOST the largest size of the picture in bytes.
set -u

expected=$1
pattern=$2
picture=$3
shift 3

fail() {
  echo "FAILED: $1"
  echo "--- report"; cat "$scratch/out"
  echo "--- errors"; cat "$scratch/err"
  exit 1
}

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
[ "$picture" = - ] || rm -f "$picture" "$picture.part"

"$@" < "${INPUT:-/dev/null}" > "$scratch/out" 2> "$scratch/err"
code=$?
[ "$code" -eq "$expected" ] || fail "exit code $code, expected $expected"

if [ "$expected" -eq 0 ]; then
  grep -Eq -e "$pattern" "$scratch/out" || fail "nothing in the report matches: $pattern"
  if [ -n "${NOTE-}" ]; then
    grep -Eq -e "$NOTE" "$scratch/err" || fail "no note matches: $NOTE"
    grep -Ev -e "^tessarn( [a-z]+)?: note: " "$scratch/err" && fail "more than notes on the error stream"
  else
    [ -s "$scratch/err" ] && fail "something on the error stream"
  fi
  grep -Ew -e "-?(nan|inf)" "$scratch/out" && fail "the report shows a number that is not finite"
  if [ -n "${MOST-}" ]; then
    size=$(wc -c < "$picture")
    [ "$size" -le "$MOST" ] || fail "the picture has $size bytes, at most $MOST are allowed"
  fi
  case $picture in
    -) ;;
    *.png) [ "$(head -c 4 "$picture" | tail -c 3)" = PNG ] || fail "no PNG picture" ;;
    *.pdf) tail -c 16 "$picture" | grep -q '%%EOF' || fail "no complete PDF picture" ;;
    *.svg) tail -n 3 "$picture" | grep -q '</svg>' || fail "no complete SVG picture" ;;
  esac
else
  grep -Eq -e "$pattern" "$scratch/err" || fail "nothing on the error stream matches: $pattern"
  [ "$picture" = - ] || [ ! -e "$picture" ] || fail "a picture was left"
fi
if [ "$expected" -eq 2 ]; then
  [ "$(wc -l < "$scratch/err")" -eq 1 ] || fail "more than one line on the error stream"
  [ -s "$scratch/out" ] && fail "something was printed"
fi
[ "$picture" = - ] || [ ! -e "$picture.part" ] || fail "an unfinished picture was left"
exit 0
