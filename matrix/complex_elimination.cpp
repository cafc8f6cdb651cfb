// Determinant, cofactor, solver, triangular form of the complex square matrix.
#include <algorithm>

#include "core/storage.h"
#include "core/workspace.h"
#include "matrix/elimination.h"
#include "matrix/kernels/kernels.h"
#include "matrix/minor.h"
#include "matrix/names.h"

using tessarn::real;
using tessarn::detail::column_view;
using tessarn::detail::complex_mat;
using tessarn::detail::complex_sqmat;
using tessarn::detail::copy_minor;
using tessarn::detail::sign_of;

namespace {

constexpr std::size_t padding = 8;  // behind each row, for the whole vectors of the kernels

struct complex_value {
  real re, im;
};

constexpr std::size_t stack_size = 16;  // rows; larger matrices allocate their copy
constexpr std::size_t stack_room = 2 * stack_size * (stack_size + 1 + padding);

// A copy of a square matrix, real and imaginary parts in two arrays, with a right-hand side as one more column and
// zeros behind it.
struct work_matrix {
  std::size_t n;
  std::size_t stride;
  tessarn::detail::workspace<real, stack_room> room;
  real* re;
  real* im;

  work_matrix(const cplx* a, std::size_t size)
      : n(size), stride(size + 1 + padding), room(2 * size * stride), re(room.data()), im(re + size * stride) {
    for (std::size_t r = 0; r < n; ++r) {
      for (std::size_t c = 0; c < n; ++c) put(r, c, a[r * n + c]);
      std::fill_n(re + r * stride + n, 1 + padding, static_cast<real>(0));
      std::fill_n(im + r * stride + n, 1 + padding, static_cast<real>(0));
    }
  }
  work_matrix(const work_matrix&) = delete;
  void put(std::size_t r, std::size_t c, const cplx& v) {
    re[r * stride + c] = v.re;
    im[r * stride + c] = v.im;
  }
  complex_value at(std::size_t r, std::size_t c) const { return {re[r * stride + c], im[r * stride + c]}; }

  // Forward elimination without pivoting, from the pivots' columns to the given number of columns.
  void eliminate(std::size_t columns) {
    using tessarn::detail::as_doubles;
    tessarn::detail::matrix_kernels_in_use().complex_eliminate(as_doubles(re), as_doubles(im), n, columns, stride);
  }
};

// -1 over a pivot: the factor that eliminates an entry below it is entry / -pivot, by one reciprocal; 0 where |pivot|^2
// is exactly 0.
struct negated_pivot {
  complex_value q;
  real square, reciprocal;

  explicit negated_pivot(complex_value pivot)
      : q{-pivot.re, -pivot.im}, square(q.im * q.im + q.re * q.re), reciprocal(1 / square) {}
  complex_value factor_of(complex_value e) const {
    if (square == 0) return {0, 0};
    return {(e.im * q.im + e.re * q.re) * reciprocal, (e.im * q.re - e.re * q.im) * reciprocal};
  }
};

// t / d with two true divisions; 0 when |d|^2 is exactly 0.
complex_value quotient_or_zero(complex_value t, complex_value d) {
  const real square = d.re * d.re + d.im * d.im;
  if (square == 0) return {0, 0};
  return {(d.im * t.im + d.re * t.re) / square, (d.re * t.im - d.im * t.re) / square};
}

// u - x w.
complex_value without_product(complex_value u, complex_value x, complex_value w) {
  return {u.re - (x.re * w.re - x.im * w.im), u.im - (x.re * w.im + x.im * w.re)};
}

// The solver for a right-hand side with fewer rows than the matrix. Its rows wrap: one that stands for several
// equations is updated for each of them, one after the other, so every step works on the right-hand side itself.
void solve_wrapped(const cplx* a, std::size_t n, column_view<cplx> rhs) {
  work_matrix w(a, n);
  for (std::size_t p = 0; p + 1 < n; ++p) {
    const negated_pivot pivot(w.at(p, p));
    for (std::size_t r = p + 1; r < n; ++r) {
      const complex_value f = pivot.factor_of(w.at(r, p));
      const cplx factor(f.re, f.im);
      for (std::size_t c = p; c < n; ++c) {
        const complex_value u = w.at(p, c);
        const complex_value v = w.at(r, c);
        w.put(r, c, factor * cplx(u.re, u.im) + cplx(v.re, v.im));
      }
      rhs[r] = factor * rhs[p] + rhs[r];
    }
  }
  for (std::size_t i = n; i-- > 0;) {
    const complex_value x = quotient_or_zero({rhs[i].re, rhs[i].im}, w.at(i, i));
    rhs[i] = cplx(x.re, x.im);
    for (std::size_t j = i; j-- > 0;) {
      const complex_value reduced = without_product({rhs[j].re, rhs[j].im}, x, w.at(j, i));
      rhs[j] = cplx(reduced.re, reduced.im);
    }
  }
}

// The solver for N equations, whose sizes are compile-time constants, so that the values stay in registers. The kernel
// takes 1.5 times as long for 3 equations, 1.2 times for 4.
template <std::size_t N>
void solve_small(const cplx* a, column_view<cplx> rhs) {
  complex_value w[N][N + 1];
  for (std::size_t r = 0; r < N; ++r) {
    for (std::size_t c = 0; c < N; ++c) w[r][c] = {a[N * r + c].re, a[N * r + c].im};
    w[r][N] = {rhs[r].re, rhs[r].im};
  }
  for (std::size_t p = 0; p + 1 < N; ++p) {
    const negated_pivot pivot(w[p][p]);
    for (std::size_t r = p + 1; r < N; ++r) {
      const complex_value f = pivot.factor_of(w[r][p]);
      for (std::size_t c = p + 1; c <= N; ++c) {
        const complex_value u = w[p][c];
        w[r][c] = {(f.re * u.re - f.im * u.im) + w[r][c].re, (f.re * u.im + f.im * u.re) + w[r][c].im};
      }
    }
  }
  for (std::size_t i = N; i-- > 0;) {
    const complex_value x = quotient_or_zero(w[i][N], w[i][i]);
    rhs[i].re = x.re;
    rhs[i].im = x.im;
    for (std::size_t j = i; j-- > 0;) w[j][N] = without_product(w[j][N], x, w[j][i]);
  }
}

}  // namespace

cplx complex_sqmat::det() {
  work_matrix w(data, size);
  w.eliminate(size);
  cplx result(1, 0);
  for (std::size_t i = 0; i < size; ++i) {
    const complex_value d = w.at(i, i);
    result = cplx(d.re, d.im) * result;
  }
  return result;
}

cplx complex_sqmat::cof(tessarn::ulong x, tessarn::ulong y) {
  if (size < 2) return {1, 0};
  if (size == 2) return get(x % 2 == 0 ? 1 : 0, y % 2 == 0 ? 1 : 0) * sign_of(x, y);
  x %= size;
  y %= size;
  sqmat minor;
  minor.create(size - 1);
  copy_minor(data, size, y, x, minor.data, [](const cplx& v) { return v; });
  return minor.det() * sign_of(x, y);
}

// The right-hand side is eliminated as one more column. Columns left of a pivot are not computed, since nothing reads
// them later.
void complex_sqmat::solve(complex_mat& b) {
  const std::size_t n = size;
  if (n == 0 || b.getWidth() == 0 || b.getHeight() == 0) return;
  tessarn::detail::require_countable(b.getWidth(), b.getHeight());
  const column_view<cplx> rhs{b.getData(), b.getHeight(), b.getWidth()};
  if (rhs.height < n) return solve_wrapped(data, n, rhs);
  if (n == 3) return solve_small<3>(data, rhs);
  if (n == 4) return solve_small<4>(data, rhs);
  work_matrix w(data, n);
  for (std::size_t r = 0; r < n; ++r) w.put(r, n, rhs[r]);
  w.eliminate(n + 1);
  for (std::size_t i = n; i-- > 0;) {
    const complex_value x = quotient_or_zero(w.at(i, n), w.at(i, i));
    w.put(i, n, cplx(x.re, x.im));
    for (std::size_t j = i; j-- > 0;) {
      const complex_value reduced = without_product(w.at(j, n), x, w.at(j, i));
      w.put(j, n, cplx(reduced.re, reduced.im));
    }
  }
  for (std::size_t r = 0; r < n; ++r) {
    const complex_value x = w.at(r, n);
    rhs[r].re = x.re;
    rhs[r].im = x.im;
  }
}

void complex_sqmat::optimize() {
  if (size < 2) return;
  work_matrix w(data, size);
  w.eliminate(size);
  for (std::size_t r = 0; r < w.n; ++r)
    for (std::size_t c = 0; c < w.n; ++c) {
      data[r * w.n + c].re = w.at(r, c).re;
      data[r * w.n + c].im = w.at(r, c).im;
    }
}
