#!/bin/sh
# Writes measurements of many points: many_points.sh PREFIX. Noise fills the whole panel of a picture.
set -eu

awk -v prefix="$1" 'BEGIN {
  srand(1)
  for (i = 0; i < 200000; ++i)
    printf "%.6f,%.6f\n", i / 1000, 50 * rand() > prefix "_curve.csv"
  for (i = 0; i < 200000; ++i)
    printf "%.4f,%.4f,%.6f\n", i % 500, int(i / 500), 0.01 * (i % 500) + 0.001 * rand() > prefix "_surface.csv"
  for (i = 0; i < 200000; ++i)
    printf "%.4f,%.4f,%.4f\n", 100 * rand(), 100 * rand(), 100 * rand() > prefix "_space.csv"
}'
