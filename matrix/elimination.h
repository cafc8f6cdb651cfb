// Determinants and square systems on arrays, row-major.
#pragma once

#include <cstddef>

#include "tessarn/cplx.h"

namespace tessarn::detail {

// The determinant of the n x n matrix a: Sarrus for n = 3, else elimination without pivoting on a copy.
real determinant(const real* a, std::size_t n);

// A column inside a matrix: entry r stands at first[(r mod height) * stride].
template <class T>
struct column_view {
  T* first;
  std::size_t height;
  std::size_t stride;
  T& operator[](std::size_t r) const { return first[(r < height ? r : r % height) * stride]; }
};

// Solves a u = b by LU factorisation with partial pivoting, u replacing b. False, leaving b as it is,
// when a column of candidate pivots is exactly 0.
bool solve_lu(const real* a, std::size_t n, column_view<real> b);

// Entries of a complex matrix, the parts apart.
struct complex_entries {
  real* re;
  real* im;
};

// The factor that eliminates the entry e under the pivot p: e / -p by the reciprocal of |p|^2, 0 when that is
// exactly 0.
struct complex_value {
  real re, im;
};
inline complex_value elimination_factor(complex_value e, complex_value p) noexcept {
  const complex_value q{-p.re, -p.im};
  const real square = q.im * q.im + q.re * q.re;
  if (square == 0) return {0, 0};
  const real r = 1 / square;
  return {(e.im * q.im + e.re * q.re) * r, (e.im * q.re - e.re * q.im) * r};
}

// row = factor * pivot_row + row for n entries; a zero factor computes it like any other.
inline void add_multiple(complex_value f, complex_entries pivot_row, complex_entries row, std::size_t n) noexcept {
  for (std::size_t c = 0; c < n; ++c) {
    const real re = f.re * pivot_row.re[c] - f.im * pivot_row.im[c];
    const real im = f.re * pivot_row.im[c] + f.im * pivot_row.re[c];
    row.re[c] = re + row.re[c];
    row.im[c] = im + row.im[c];
  }
}

}  // namespace tessarn::detail
