// Exact rational arithmetic, as judge of what the second layer claims.
#pragma once

#if defined(TESTS_HAVE_GMP)

#include <gmpxx.h>

#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace test {

using rational = mpq_class;
using rational_column = std::vector<rational>;
using rational_matrix = std::vector<rational_column>;  // rows of entries

// Gaussian elimination on [A | B]; false when A is singular. B becomes the solution, and det the determinant of A.
inline bool eliminate(rational_matrix a, rational_matrix& b, rational& det) {
  const std::size_t n = a.size();
  det = 1;
  for (std::size_t k = 0; k < n; ++k) {
    std::size_t p = k;
    while (p < n && a[p][k] == 0) ++p;
    if (p == n) {
      det = 0;
      return false;
    }
    if (p != k) {
      std::swap(a[p], a[k]);
      std::swap(b[p], b[k]);
      det = -det;
    }
    det *= a[k][k];
    for (std::size_t r = 0; r < n; ++r) {
      if (r == k || a[r][k] == 0) continue;
      const rational f = a[r][k] / a[k][k];
      for (std::size_t c = k; c < n; ++c) a[r][c] -= f * a[k][c];
      for (std::size_t c = 0; c < b[r].size(); ++c) b[r][c] -= f * b[k][c];
    }
  }
  for (std::size_t r = 0; r < n; ++r)
    for (rational& v : b[r]) v /= a[r][r];
  return true;
}

// Whether |exact - value| <= error holds, exactly; an infinite error holds for everything.
inline bool within(const rational& exact, double value, double error) {
  if (std::isinf(error) && error > 0) return true;
  if (!std::isfinite(value) || !std::isfinite(error)) return false;
  return abs(exact - rational(value)) <= rational(error);
}

// The correct digits of a value, -log10 of the relative error, at most 17; of 0 the absolute error counts.
inline double digits(const rational& exact, double value) {
  rational off = abs(rational(value) - exact);
  if (off == 0) return 17;
  if (exact != 0) off /= abs(exact);
  return std::fmin(17, -std::log10(off.get_d()));
}

}  // namespace test

#endif
