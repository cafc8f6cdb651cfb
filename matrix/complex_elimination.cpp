// Determinant, cofactor, solver, triangular form of the complex square matrix.
#include <algorithm>

#include "core/access.h"
#include "core/storage.h"
#include "matrix/elimination.h"

using tessarn::real;
using tessarn::detail::add_multiple;
using tessarn::detail::complex_entries;
using tessarn::detail::complex_mat;
using tessarn::detail::complex_sqmat;
using tessarn::detail::complex_value;
using tessarn::detail::elimination_factor;
using tessarn::detail::real_array;

namespace {

// A private copy of a square matrix with the parts apart.
struct work_matrix {
  std::size_t n;
  real_array re, im;
  work_matrix(const cplx* a, std::size_t size)
      : n(size), re(tessarn::detail::allocate(size * size)), im(tessarn::detail::allocate(size * size)) {
    for (std::size_t i = 0; i < n * n; ++i) {
      re[i] = a[i].re;
      im[i] = a[i].im;
    }
  }
  complex_value at(std::size_t r, std::size_t c) const { return {re[r * n + c], im[r * n + c]}; }
  complex_entries row(std::size_t r, std::size_t c) const { return {re.get() + r * n + c, im.get() + r * n + c}; }
};

// Forward elimination without pivoting from the pivot column on.
void eliminate(work_matrix& w) {
  for (std::size_t p = 0; p + 1 < w.n; ++p)
    for (std::size_t r = p + 1; r < w.n; ++r)
      add_multiple(elimination_factor(w.at(r, p), w.at(p, p)), w.row(p, p), w.row(r, p), w.n - p);
}

// t / d with two true divisions; 0 when |d|^2 is exactly 0.
cplx quotient_or_zero(const cplx& t, complex_value d) {
  const real square = d.re * d.re + d.im * d.im;
  if (square == 0) return {0, 0};
  return {(d.im * t.im + d.re * t.re) / square, (d.re * t.im - d.im * t.re) / square};
}

}  // namespace

cplx complex_sqmat::det() {
  work_matrix w(data, size);
  eliminate(w);
  cplx result(1, 0);
  for (std::size_t i = 0; i < size; ++i) {
    const complex_value d = w.at(i, i);
    result = cplx(d.re, d.im) * result;
  }
  return result;
}

cplx complex_sqmat::cof(tessarn::ulong x, tessarn::ulong y) {
  if (size < 2) return {1, 0};
  const auto sign = [](tessarn::ulong i, tessarn::ulong j) { return static_cast<real>(((i + j) & 1u) == 0 ? 1 : -1); };
  if (size == 2) return get(x % 2 == 0 ? 1 : 0, y % 2 == 0 ? 1 : 0) * sign(x, y);
  x %= size;
  y %= size;
  sqmat minor;
  minor.create(size - 1);
  cplx* to = minor.data;
  for (std::size_t r = 0; r < size; ++r)
    for (std::size_t c = 0; c < size; ++c)
      if (r != y && c != x) *to++ = data[r * size + c];
  return minor.det() * sign(x, y);
}

// The elimination runs over whole rows and over b as it goes; columns left of the pivot are computed too,
// since 0 * infinity there is NaN and shows in nothing that is read later.
void complex_sqmat::solve(complex_mat& b) {
  const std::size_t n = size;
  if (n == 0) return;
  work_matrix w(data, n);
  const tessarn::detail::column_view<cplx> rhs{b.getData(), b.getHeight(), b.getWidth()};
  for (std::size_t p = 0; p + 1 < n; ++p)
    for (std::size_t r = p + 1; r < n; ++r) {
      const complex_value f = elimination_factor(w.at(r, p), w.at(p, p));
      add_multiple(f, w.row(p, p), w.row(r, p), n - p);
      rhs[r] = cplx(f.re, f.im) * rhs[p] + rhs[r];
    }
  for (std::size_t i = n; i-- > 0;) {
    const cplx x = quotient_or_zero(rhs[i], w.at(i, i));
    rhs[i] = x;
    for (std::size_t j = i; j-- > 0;) {
      const complex_value e = w.at(j, i);
      rhs[j] = rhs[j] - x * cplx(e.re, e.im);
    }
  }
}

void complex_sqmat::optimize() {
  if (size < 2) return;
  work_matrix w(data, size);
  eliminate(w);
  for (std::size_t i = 0; i < w.n * w.n; ++i) {
    data[i].re = w.re[i];
    data[i].im = w.im[i];
  }
}
