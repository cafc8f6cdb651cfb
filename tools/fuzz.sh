#!/usr/bin/env bash
# Builds the fuzz targets and runs each for its share of FUZZ_SECONDS (60). The first input that crashes, leaks or takes
# longer than 20 seconds ends the run with an error; it is kept under build/fuzz/findings/. What was learned stays
# under build/fuzz/corpus/ for the next run.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target fuzz_targets
targets=(list search fit solve plane files)
share=$((${FUZZ_SECONDS:-60} / ${#targets[@]}))
mkdir -p build/fuzz/findings
for target in "${targets[@]}"; do
  mkdir -p "build/fuzz/corpus/$target"
  echo "== fuzz_$target, $share seconds"
  "build/fuzz/fuzz/fuzz_$target" -max_total_time="$share" -timeout=20 -max_len=1024 -rss_limit_mb=4096 -verbosity=0 \
    -print_funcs=0 -print_final_stats=1 -artifact_prefix="build/fuzz/findings/$target-" "build/fuzz/corpus/$target" 2>&1 |
    grep -vE 'stat::(new_units|slowest|average)|^INFO|^Done|^"|^###' || { [ "${PIPESTATUS[0]}" -eq 0 ]; }
done
echo "no findings"
