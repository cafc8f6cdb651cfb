#!/usr/bin/env bash
# Looks at the code of the library for another processor:
#   check_code.sh no_fused OBJDUMP PROCESSOR LIBRARY   products, but no fused multiply-add
#   check_code.sh two_lanes OBJDUMP LIBRARY            AArch64: the matrix product multiplies and adds two lanes at once
#   check_code.sh x87_refused COMPILER SOURCES         32-bit x86: the headers do not compile for the x87 unit, and say why
set -euo pipefail
fail() { echo "$*"; exit 1; }
what=$1 tool=$2
shift 2

case $what in
  no_fused)
    case $1 in
      aarch64) product='\bfmul\b' fused='\bfn?m(add|sub)\b|\bfml[as]\b' ;;
      arm) product='\bvmul\.f64' fused='\bvfn?m[as]\b' ;;
      riscv64) product='\bfmul\.d' fused='\bfn?m(add|sub)\.[ds]' ;;
      ppc64le) product='\b(x[sv]muldp|fmul)\b' fused='\bx[sv]n?m(add|sub)[am][ds]p|\bfn?m(add|sub)s?\b' ;;
      s390x) product='\bmdbr?\b' fused='\bm[as][de]br?\b|\b[vw]fn?m[as]' ;;
      i386) product='\bmul[sp]d\b' fused='\bv?fn?m(add|sub)[0-9]*[sp][sd]\b' ;;
      *) fail "no patterns for $1" ;;
    esac
    listing=$("$tool" -d --no-show-raw-insn "$2")
    count=$(grep -cE "$product" <<<"$listing" || true)
    [ "$count" -gt 100 ] || fail "only $count products: not the library"
    found=$(grep -E "$fused" <<<"$listing" || true)
    [ -z "$found" ] || fail "fused:"$'\n'"$(head -5 <<<"$found")"
    echo "$count products, none fused into a sum" ;;
  two_lanes)
    # tile_columns is the loop of the product over full tiles; an instance multiplies with numbers of one lane or none of them.
    "$tool" -d --no-show-raw-insn -C "$1" | awk '
      /^[0-9a-f]+ <.*>:$/ { inside = /tile_columns/ && /add_products|tile_mode\)0/; instances += inside }
      inside && /fmul\tv[0-9]+\.2d/ { products++ }
      inside && /fadd\tv[0-9]+\.2d/ { sums++ }
      inside && /f(mul|add)\td[0-9]/ { single++ }
      END {
        printf "%d instances of the product: %d products and %d sums of two lanes, %d of one\n", instances, products, sums, single
        exit !(instances > 0 && products >= 16 && sums >= 16 && single == 0)
      }' ;;
  x87_refused)
    compile() { echo '#include <tessarn/tessarn.h>' | "$tool" -x c++ -std=c++17 -fsyntax-only "-I$1/include" "${@:2}" - 2>&1; }
    compile "$1" -msse2 -mfpmath=sse || fail "not compiled for SSE2"
    refusal=$(compile "$1" -mno-sse -mfpmath=387) && fail "compiled for the x87 unit"
    grep -F 'compile with -msse2 -mfpmath=sse' <<<"$refusal" || fail "no reason given: $refusal" ;;
  *) fail "unknown check: $what" ;;
esac
