// The functions of a curve over arrays of abscissas, block by block.
#include <algorithm>
#include <cmath>

#include "poly/curve.h"
#include "poly/power_sums.h"
#include "tessarn/poly.h"

namespace tessarn::detail {
namespace {

// factors[i] = F(i), the falling factorial of the k-th derivative.
void falling_factorials(slong n, unsigned k, real* factors) {
  for (slong i = 0; i < n; ++i) factors[i] = static_cast<real>(falling_factorial(i, k));
}

}  // namespace

void block_values::operator()(const double* x, double* y) const {
  if (p_.n < 1)
    std::fill_n(y, point_block, 0.0);
  else
    poly_kernels_in_use().values(as_doubles(p_.cof), static_cast<std::size_t>(p_.n), x, y);
}

block_derivative::block_derivative(coefficients p, unsigned k)
    : p_(p), k_(k), factors_(allocate(static_cast<std::size_t>(std::max<slong>(p.n, 0)))) {
  falling_factorials(p.n, k, factors_.get());
}

// By the kernel where all abscissas are in the safe range, else one by one; both have the same bits.
void block_derivative::operator()(const double* x, double* y) const {
  const auto k = static_cast<slong>(k_);
  if (p_.n > k && chains_are_safe(x, static_cast<unsigned>(p_.n - k))) {
    const auto terms = static_cast<std::size_t>(p_.n - k);
    return poly_kernels_in_use().power_series(as_doubles(p_.cof + k), as_doubles(factors_.get() + k), terms, x, y);
  }
  for (std::size_t i = 0; i < point_block; ++i) y[i] = static_cast<double>(derivative_at(p_, k_, x[i]));
}

block_curvature::block_curvature(coefficients p, bool derivative)
    : p_(p),
      derivative_(derivative),
      factors_(allocate(checked_product(3, static_cast<std::size_t>(std::max<slong>(p.n, 0))))) {
  for (unsigned k = 0; k < 3 && p.n > 0; ++k)
    falling_factorials(p.n, k + 1, factors_.get() + k * static_cast<std::size_t>(p.n));
}

// The three derivatives of all abscissas, by the kernel or one by one, then the formula in lanes.
void block_curvature::operator()(const double* x, double* y) const {
  double d[3 * point_block];
  if (p_.n > 0 && chains_are_safe(x, static_cast<unsigned>(p_.n))) {
    const auto n = static_cast<std::size_t>(p_.n);
    poly_kernels_in_use().derivatives(as_doubles(p_.cof), as_doubles(factors_.get()), n, n, x, d);
  } else {
    for (std::size_t i = 0; i < point_block; ++i) {
      const derivatives at = derivatives_at(p_, x[i]);
      d[i] = static_cast<double>(at.first);
      d[point_block + i] = static_cast<double>(at.second);
      d[2 * point_block + i] = static_cast<double>(at.third);
    }
  }
  (derivative_ ? poly_kernels_in_use().curvature_derivative : poly_kernels_in_use().curvature)(d, y);
}

namespace {

// Applies a block function to n abscissas. The last block is filled up with ones, whose powers are safe; y may be x.
template <class Function>
void over_array(const Function& f, const real* x, real* y, tessarn::ulong n) {
  const double* from = as_doubles(x);
  double* to = as_doubles(y);
  std::size_t i = 0;
  for (; i + point_block <= n; i += point_block) f(from + i, to + i);
  if (i == n) return;
  double rest[point_block];
  std::fill(std::copy(from + i, from + n, rest), rest + point_block, 1.0);
  f(rest, rest);
  std::copy_n(rest, n - i, to + i);
}

}  // namespace
}  // namespace tessarn::detail

using tessarn::real;
using tessarn::detail::block_curvature;
using tessarn::detail::block_derivative;
using tessarn::detail::block_values;
using tessarn::detail::over_array;

void binom::func(const real* x, real* y, tessarn::ulong n) const { over_array(block_values({cof, cofcnt}), x, y, n); }

void binom::func_1(const real* x, real* y, tessarn::ulong n) const {
  over_array(block_derivative({cof, cofcnt}, 1), x, y, n);
}
void binom::func_2(const real* x, real* y, tessarn::ulong n) const {
  over_array(block_derivative({cof, cofcnt}, 2), x, y, n);
}
void binom::func_3(const real* x, real* y, tessarn::ulong n) const {
  over_array(block_derivative({cof, cofcnt}, 3), x, y, n);
}
void binom::func_4(const real* x, real* y, tessarn::ulong n) const {
  over_array(block_derivative({cof, cofcnt}, 4), x, y, n);
}

void binom::arc(const real* x, real* y, tessarn::ulong n) const {
  over_array(block_curvature({cof, cofcnt}, false), x, y, n);
}
void binom::arc_1(const real* x, real* y, tessarn::ulong n) const {
  over_array(block_curvature({cof, cofcnt}, true), x, y, n);
}
