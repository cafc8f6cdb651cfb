#!/usr/bin/env bash
# Fails if a fused multiply-add instruction is in the library.
set -euo pipefail
listing=$(objdump -d --no-show-raw-insn "$1")
[ "$(grep -c mulsd <<<"$listing")" -gt 0 ] || { echo "no multiplication found: not a disassembly"; exit 1; }
if grep -nE '\bv?fn?m(add|sub)[0-9]*[sp][sd]\b|vfm(addsub|subadd)' <<<"$listing" -m 10; then
  grep -qE '\bv?fn?m(add|sub)[0-9]*[sp][sd]\b|vfm(addsub|subadd)' <<<"$listing" && exit 1
fi
echo "$(wc -l <<<"$listing") lines of code, no fused multiply-add"
