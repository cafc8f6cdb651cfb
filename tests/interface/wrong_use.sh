#!/usr/bin/env bash
# Wrong use is told at compile time: each snippet must fail, or warn, with the given words.
# usage: wrong_use.sh SOURCE_ROOT
set -euo pipefail
root=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# told WORDS CODE [FLAGS...]: the compilers refuse the code, and say the words.
told() {
  local words=$1 code=$2
  shift 2
  printf '#include <tessarn/tessarn.h>\n%s\n' "$code" >"$work/code.cpp"
  for compiler in g++ clang++-22; do
    if "$compiler" -std=c++17 -Werror=unused-result -I"$root/include" "$@" -fsyntax-only "$work/code.cpp" 2>"$work/said"; then
      echo "$compiler took: $code"; exit 1
    fi
    grep -q -- "$words" "$work/said" || { echo "$compiler did not say \"$words\" of: $code"; head -5 "$work/said"; exit 1; }
  done
  echo "told: $words"
}

told "matrices are mat<long double>" 'mat<double> m;'
told "square matrices are sqmat<long double>" 'sqmat<float> m;'
told "compile without -ffast-math" 'int i;' -ffast-math
told "compile without -ffast-math" 'int i;' -ffinite-math-only
told "nodiscard" 'void f(vectormat& l) { l.findline(vector(1, 0)); }'
told "nodiscard" 'void f() { new_vector3d(3); }'
told "nodiscard" 'void f(sqmat<long double>& m, vector3d* a) { m.calc_match(a, a, 3); }'
told "nodiscard" 'void f(binom& p) { p.find_zero(0, 1, 0.1, 1e-9); }'
told "nodiscard" 'void f(const binom& p) { p.find_high_hpoint_arc(0, 1, 0.1, 1e-9); }'
told "nodiscard" 'void f(line3d& l, plane& p, vector3d& x) { l.cut(p, x); }'
told "complex_entry\|no matching\|no known conversion" 'mat<cplx> m{{1.0, 2.0}};'
