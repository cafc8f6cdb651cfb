// Gram-Schmidt on the columns, and the triangular form of the real matrix.
#include <algorithm>

#include "core/nan_rule.h"
#include "core/storage.h"
#include "matrix/names.h"

using tessarn::real;
using tessarn::detail::complex_sqmat;
using tessarn::detail::nan_to_zero;
using tessarn::detail::real_array;
using tessarn::detail::real_sqmat;

// Gram-Schmidt on contiguous copies of the columns. All projections of a column are those of its value before the step;
// each denominator is the square of a finished column and computed once.
void real_sqmat::orthogonalize() {
  const std::size_t n = size;
  if (n < 2) return;
  real_array columns = tessarn::detail::allocate(n * n);
  real_array projected = tessarn::detail::allocate(n);
  real_array squares = tessarn::detail::allocate(n);
  const auto dot = [n](const real* a, const real* b) {
    real s = 0;
    for (std::size_t k = 0; k < n; ++k) s += a[k] * b[k];
    return s;
  };
  for (std::size_t j = 0; j < n; ++j) {
    real* column = columns.get() + j * n;
    for (std::size_t k = 0; k < n; ++k) column[k] = data[k * n + j];
    if (j > 0) {
      std::copy_n(column, n, projected.get());
      for (std::size_t i = 0; i < j; ++i) {
        const real* earlier = columns.get() + i * n;
        const real c = dot(earlier, column) / squares[i];
        for (std::size_t k = 0; k < n; ++k) projected[k] -= c * earlier[k];
      }
      for (std::size_t k = 0; k < n; ++k) data[k * n + j] = column[k] = nan_to_zero(projected[k]);
    }
    squares[j] = dot(column, column);
  }
}

// Gram-Schmidt with the product that does not conjugate. A column whose square is 0 has the coefficient 0, which takes
// part in the arithmetic like any other: it keeps values but can turn a -0.0 into +0.0.
void complex_sqmat::orthogonalize() {
  const std::size_t n = size;
  if (n < 2) return;
  std::unique_ptr<cplx[]> columns(new cplx[n * n]);
  std::unique_ptr<cplx[]> projected(new cplx[n]);
  std::unique_ptr<cplx[]> squares(new cplx[n]);
  const auto dot = [n](const cplx* a, const cplx* b) {
    cplx s;
    for (std::size_t k = 0; k < n; ++k) s += a[k] * b[k];
    return s;
  };
  for (std::size_t j = 0; j < n; ++j) {
    cplx* column = columns.get() + j * n;
    for (std::size_t k = 0; k < n; ++k) column[k] = data[k * n + j];
    std::copy_n(column, n, projected.get());
    for (std::size_t i = 0; i < j; ++i) {
      const cplx* earlier = columns.get() + i * n;
      const cplx den = squares[i];
      const real square = den.re * den.re + den.im * den.im;
      cplx c;
      if (square != 0) {
        const cplx num = dot(earlier, column);
        const real r = 1 / square;
        c = cplx((num.re * den.re + num.im * den.im) * r, (num.im * den.re - num.re * den.im) * r);
      }
      for (std::size_t k = 0; k < n; ++k) projected[k] -= c * earlier[k];
    }
    for (std::size_t k = 0; k < n; ++k) data[k * n + j] = column[k] = projected[k];
    squares[j] = dot(column, column);
  }
}

// Forward elimination without pivoting under the quiet-NaN rule, in place.
void real_sqmat::optimize() {
  const std::size_t n = size;
  for (std::size_t p = 0; p + 1 < n; ++p) {
    const real* pivot_row = data + p * n;
    for (std::size_t r = p + 1; r < n; ++r) {
      real* row = data + r * n;
      const real f = row[p] / pivot_row[p];
      for (std::size_t c = p; c < n; ++c) row[c] = nan_to_zero(row[c] - f * pivot_row[c]);
    }
  }
}
