// The determinant with a proved bound of its error.
#include <limits>

#include "analysis/scaled_system.h"
#include "analysis/verified_inverse.h"

namespace tessarn {

using namespace analysis;

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();

// A product that keeps its exponent apart, so that it leaves the range of doubles nowhere on the way.
struct wide_product {
  doubled fraction = 1.0;
  long long exponent = 0;

  void times(doubled v) noexcept {
    fraction *= v;
    if (fraction.high == 0 || !is_finite(fraction.high)) return;
    const int e = exponent_of(fraction.high);
    fraction = scaled(fraction, -e);
    exponent += e;
  }
  // v times the power of two that was kept apart: 0 or infinite outside the range.
  double with_exponent(double v) const noexcept {
    return scaled(v, static_cast<int>(exponent > 5000 ? 5000 : exponent < -5000 ? -5000 : exponent));
  }
};

// A bound of 1 / (1 - q) - 1 for a bound q of a sum of small departures.
double excess(double q) noexcept { return q < 0.5 ? q / (1 - q) * 1.001 : infinite; }

// The product of the pivots is the determinant of a matrix whose row r differs by at most off[r], in the sum of its
// magnitudes, from the scaled one. The determinant is linear in each row and at most the product of the lengths of the
// rows (J. Hadamard, 1893), so with lengths s_r it is off by at most prod (s_r + off_r) - prod s_r.
double absolute_bound(const scaled_matrix& a, const numbers<double>& off, long long shift) {
  wide_product lengths;
  double ratio = 0;
  for (std::size_t r = 0; r < off.size(); ++r) {
    double squares = 0;
    for (std::size_t c = 0; c < off.size(); ++c) squares += a.entries.high(r)[c] * a.entries.high(r)[c];
    if (squares == 0) return 0;  // a row of zeros, which is one of the given matrix
    const double length = std::sqrt(squares) * 1.0001;
    lengths.times(length);
    ratio += off[r] / length;
  }
  lengths.exponent += shift;
  return std::max(lengths.with_exponent(lengths.fraction.high * excess(ratio * 1.001)), 0x1p-1073);
}

// With the factors L U = A - D of the scaled matrix, det(L U) = det(A) det(I - D / A), and the second determinant is
// within (1 - e)^n and (1 + e)^n for a bound e of the largest sum of a row of |D / A|.
double relative_bound(const scaled_matrix& a, const factorisation& factors, const numbers<double>& off,
                      double& condition) {
  const verified_inverse v = verify(a.entries, factors, a.errors);
  condition = v.reciprocal_condition;
  if (!v.proved()) return infinite;
  const numbers<double> sums = magnified(v.inverse, off);
  double largest = 0;
  for (std::size_t i = 0; i < sums.size(); ++i) largest = std::max(largest, sums[i]);
  return excess(static_cast<double>(off.size()) * largest / (1 - v.departure) * 1.001);
}

}  // namespace

// The product of the pivots with its sign and scaling, then the smaller of the two bounds. The backward error of
// elimination is at most 2 (n + 2) units of |L| |U| (N. Higham, Accuracy and Stability of Numerical Algorithms, 2002,
// theorem 9.3).
determinant_value determinant(matrix_view view) {
  determinant_value d;
  const std::size_t n = view.rows();
  if (view.columns() != n) {
    d.state = status::sizes_differ;
    return d;
  }
  d.state = status::ok;
  for (std::size_t r = 0; r < n; ++r)
    for (std::size_t c = 0; c < n; ++c)
      if (!is_finite(view(r, c))) d.state = status::not_finite;
  if (d.state != status::ok) return d;
  const scaled_matrix a = scale(n, view);
  const factorisation factors(a.entries);
  wide_product product;
  for (std::size_t i = 0; i < n; ++i) product.times(factors.regular() ? factors.pivot(i) : 0.0);
  if (factors.odd_permutation()) product.fraction = -product.fraction;
  long long shift = 0;
  for (std::size_t i = 0; i < n; ++i) shift += a.rows[i] + a.columns[i];
  product.exponent += shift;
  numbers<double> off = factors.growth();
  const double unit = 2 * (static_cast<double>(n) + 2) * doubled_unit;
  for (std::size_t r = 0; r < n; ++r) off[r] = off[r] * unit + a.errors[r];
  double condition = n == 0 ? 1 : 0;
  const double relative = factors.regular() ? relative_bound(a, factors, off, condition) : infinite;
  d.reciprocal_condition = condition;
  d.value = product.with_exponent(product.fraction.high);
  d.fraction = product.fraction.high;
  d.exponent = product.fraction.high == 0 ? 0 : static_cast<slong>(product.exponent);
  const double rounding = std::fabs(product.fraction.low) + std::fabs(product.fraction.high) * unit;
  double bound = n == 0 ? 0 : absolute_bound(a, off, shift);
  if (relative < infinite) bound = std::min(bound, product.with_exponent(std::fabs(product.fraction.high) * relative));
  d.error = bound + product.with_exponent(rounding * 1.0001);
  if (d.error > 0 || d.fraction != 0) d.error = d.error * 1.0001 + (is_finite(d.value) && n > 0 ? 0x1p-1073 : 0);
  if (!is_finite(d.value)) {
    d.state = status::out_of_range;
    d.error = infinite;
  }
  return d;
}

}  // namespace tessarn
