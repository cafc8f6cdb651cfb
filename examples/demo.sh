#!/bin/sh
# Runs the demonstrations: demo.sh PROGRAMS SOURCES OUTPUT. Prints every report, and leaves reports and
# pictures in OUTPUT. Fails when a program fails.
set -eu

programs=$1
sources=$2
output=$3
data=$sources/examples/data

rm -rf "$output"
mkdir -p "$output"

# show NAME PROGRAM ARGUMENTS...: the report goes to NAME.txt and to the terminal.
show() {
  name=$1
  program=$2
  shift 2
  echo
  echo "\$ $program $(echo "$@" | sed "s|$data/||g; s|$output/||g")"
  "$programs/$program" "$@" > "$output/$name.txt" || { cat "$output/$name.txt"; exit 1; }
  cat "$output/$name.txt"
}

"$programs/simulate" "$output"

show first first
show norris curve_report "$data/norris.csv" -m 2 --certified "$data/norris_certified.csv" \
  --certified-square-sum 26.6173985294224 --at 0,500,1000 --plot "$output/norris.png"
show pontius curve_report "$data/pontius.csv" -m 3 --certified "$data/pontius_certified.csv" \
  --certified-square-sum 0.155761768796992e-5 --plot "$output/pontius.png"
show wampler1 curve_report "$data/wampler1.csv" -m 6 --certified "$data/wampler1_certified.csv" \
  --plot "$output/wampler1.png"
show wampler2 curve_report "$data/wampler2.csv" -m 6 --certified "$data/wampler2_certified.csv" \
  --plot "$output/wampler2.png"
show water curve_report "$data/water.csv" -m 5 --at 0,3.98,10,20,30 --accepted-extreme 3.98 \
  --plot "$output/water.svg"
show profile curve_report "$output/simulated_profile.csv" -m 5 --equal --plot "$output/profile.png"
show sensor curve_report "$output/simulated_sensor.csv" -m 8 --odd --plot "$output/sensor.png"
show align align "$output/simulated_coil_a.csv" "$output/simulated_coil_b.csv" --plot "$output/align.png"
show flatness flatness "$output/simulated_plate.csv" --plot "$output/flatness.png"
show outliers outliers "$output/simulated_scan.csv" --deviation 2 --plot "$output/outliers.png"

# The table of the README.
{
  echo "Correct digits of the fitted coefficients, as the reports above print them"
  for name in norris pontius wampler1 wampler2; do
    echo
    sed -n '1p' "$output/$name.txt"
    sed -n '/^certified  /,/^$/p' "$output/$name.txt" | sed '/^$/d'
  done
} > "$output/digits.txt"
echo
cat "$output/digits.txt"
echo
echo "Reports and pictures are in $output"
