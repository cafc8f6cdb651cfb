#!/bin/sh
# Runs the demonstrations: demo.sh EXAMPLES TESSARN SOURCES OUTPUT, the folder of the examples, the program tessarn, the
# source tree and the folder for what comes out. Prints every report, and leaves reports and
# pictures in OUTPUT. Fails when a program fails.
set -eu

examples=$1
tessarn=$2
sources=$3
output=$4
data=$sources/examples/data

rm -rf "$output"
mkdir -p "$output"

# show NAME PROGRAM ARGUMENTS...: the report goes to NAME.txt and to the terminal.
show() {
  name=$1
  program=$2
  shift 2
  echo
  echo "\$ $(basename "$program") $(echo "$@" | sed "s|$data/||g; s|$output/||g")"
  "$program" "$@" > "$output/$name.txt" || { cat "$output/$name.txt"; exit 1; }
  cat "$output/$name.txt"
}

"$examples/simulate" "$output"

show first "$examples/first"
show norris "$tessarn" curve "$data/norris.csv" -m 2 --certified "$data/norris_certified.csv" \
  --certified-square-sum 26.6173985294224 --at 0,500,1000 --plot "$output/norris.png"
show pontius "$tessarn" curve "$data/pontius.csv" -m 3 --certified "$data/pontius_certified.csv" \
  --certified-square-sum 0.155761768796992e-5 --plot "$output/pontius.png"
show wampler1 "$tessarn" curve "$data/wampler1.csv" -m 6 --certified "$data/wampler1_certified.csv" \
  --plot "$output/wampler1.png"
show wampler2 "$tessarn" curve "$data/wampler2.csv" -m 6 --certified "$data/wampler2_certified.csv" \
  --plot "$output/wampler2.png"
show water "$tessarn" curve "$data/water.csv" -m 5 --at 0,3.98,10,20,30 --accepted-extreme 3.98 \
  --plot "$output/water.svg"
show profile "$tessarn" curve "$output/simulated_profile.csv" -m 5 --equal --plot "$output/profile.png"
show sensor "$tessarn" curve "$output/simulated_sensor.csv" -m 8 --odd --plot "$output/sensor.png"
show align "$tessarn" align "$output/simulated_coil_a.csv" "$output/simulated_coil_b.csv" --plot "$output/align.png"
show flatness "$tessarn" flatness "$output/simulated_plate.csv" --plot "$output/flatness.png"
show outliers "$tessarn" outliers "$output/simulated_scan.csv" --deviation 2 --plot "$output/outliers.png"

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
