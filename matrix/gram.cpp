// Gram-Schmidt on the columns, and the triangular form of the real matrix.
#include <algorithm>

#include "core/nan_rule.h"
#include "core/workspace.h"
#include "matrix/kernels/kernels.h"
#include "matrix/names.h"

using tessarn::real;
using tessarn::detail::as_doubles;
using tessarn::detail::complex_sqmat;
using tessarn::detail::nan_to_zero;
using tessarn::detail::real_sqmat;

// All projections of a column are those of its value before the step; each denominator is the square of a finished
// column and computed once.
void real_sqmat::orthogonalize() {
  if (size < 2) return;
  const tessarn::detail::matrix_kernels& kernels = tessarn::detail::matrix_kernels_in_use();
  tessarn::detail::workspace<real, 512> room(kernels.orthogonalize_workspace(size));
  kernels.orthogonalize(as_doubles(data), size, as_doubles(room.data()));
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

// The kernel leaves the quiet-NaN rule out. An entry that became a NaN is one at the end; then the work is done again
// under the rule.
static void triangularise(real* data, std::size_t n) {
  const tessarn::detail::matrix_kernels& kernels = tessarn::detail::matrix_kernels_in_use();
  tessarn::detail::workspace<real, 1024> copy(n * n);
  std::copy_n(data, n * n, copy.data());
  kernels.triangularise(as_doubles(copy.data()), n, false);
  if (std::all_of(copy.data(), copy.data() + n * n, [](real v) { return v == v; }))
    std::copy_n(copy.data(), n * n, data);
  else
    kernels.triangularise(as_doubles(data), n, true);
}

// Forward elimination without pivoting, in place.
void real_sqmat::optimize() {
  const std::size_t n = size;
  if (n > 8) return triangularise(data, n);  // smaller ones are done before a kernel is called
  for (std::size_t p = 0; p + 1 < n; ++p) {
    const real* pivot_row = data + p * n;
    for (std::size_t r = p + 1; r < n; ++r) {
      real* row = data + r * n;
      const real f = row[p] / pivot_row[p];
      for (std::size_t c = p; c < n; ++c) row[c] = nan_to_zero(row[c] - f * pivot_row[c]);
    }
  }
}
