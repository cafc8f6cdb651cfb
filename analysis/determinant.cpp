// The determinant with a proved bound of its error.
#include <limits>

#include "analysis/dense_inverse.h"
#include "analysis/double_system.h"
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

// The determinant of the scaled matrix and a bound of its relative error besides that of the product itself.
struct plain_determinant {
  wide_product product;
  double relative = infinite;
  double condition = 0;
  long long shift = 0;  // of the scaling
};

// D = P A - L U in doubled precision, with the factors in arrays of their own: those of the system that dense_inverse
// does not need any more.
class factor_residual {
 public:
  explicit factor_residual(const double_system& s)
      : size_(s.size()), stride_(s.stride()), lower_(s.lower()), upper_(s.upper()), rest_(s.room(3)) {
    std::fill_n(lower_, size_ * stride_, 0.0);
    std::fill_n(upper_, size_ * stride_, 0.0);
    for (std::size_t r = 0; r < size_; ++r) {
      const double *row = s.factors() + r * stride_, *given = s.scaled_entries() + s.order(r) * stride_;
      std::copy(row, row + r, lower_ + r * stride_);
      lower_[r * stride_ + r] = 1;
      std::copy(row + r, row + size_, upper_ + r * stride_ + r);
      std::copy(given, given + stride_, rest_ + r * stride_);
    }
    const detail::system_kernels& kernels = detail::system_kernels_in_use();
    double *high = s.room(1), *low = s.room(2);
    kernels.split_all(lower_, size_ * stride_, high, low);
    kernels.subtract_accurately({lower_, high, low, stride_, 1, upper_, rest_, size_, stride_, true});
  }
  const double* row(std::size_t r) const noexcept { return rest_ + r * stride_; }

  // sums = |D| e, with what D itself is off: what its sums lose of |L| |U| + |P A|, and its last rounding.
  void bound_rows(const double_system& s, numbers<double>& sums, numbers<double>& off) const {
    const detail::system_kernels& kernels = detail::system_kernels_in_use();
    const auto whole = [&](const double* entries, const double* v, numbers<double>& to) {
      numbers<double> left(size_);
      kernels.row_sums({entries, size_, stride_}, true, true, v, to.data());
      kernels.row_sums({entries, size_, stride_}, false, true, v, left.data());
      for (std::size_t r = 0; r < size_; ++r) to[r] += left[r];
    };
    numbers<double> ones(size_), upper(size_), given(size_);
    std::fill_n(ones.data(), size_, 1.0);
    whole(upper_, ones.data(), upper);
    whole(lower_, upper.data(), off);
    whole(s.scaled_entries(), ones.data(), given);
    whole(rest_, ones.data(), sums);
    const double unit = chain_loss(size_ + 1) * 0x1p-106;
    for (std::size_t r = 0; r < size_; ++r) {
      off[r] = (unit * (off[r] + given[s.order(r)]) + 0x1p-53 * sums[r] + tiny(size_)) * 1.01;
      sums[r] = (sums[r] + off[r]) * 1.01;
    }
  }

 private:
  std::size_t size_, stride_;
  double *lower_, *upper_, *rest_;
};

// det(L U) = det(P A) det(I - H) for H = (P A)^-1 D, and with R near the inverse of P A and E = I - R A,
//   H = R D + (E + E^2 + ...) R D,   det(I - H) = 1 - tr(H) + (tr(H)^2 - tr(H^2)) / 2 - ...
// The trace of R D is formed in doubled precision. With h a bound of the sums of the rows of |H|, all eigenvalues are
// at most h, so that the term k is at most (n h)^k / k!.
double inverse_correction(const double_system& s, const dense_inverse& inverse, doubled& trace) {
  const std::size_t n = s.size(), stride = s.stride();
  const factor_residual d(s);
  numbers<double> sums(n), off(n), by_row(n), largest(n);
  numbers<double> h(stride);  // whole vectors
  d.bound_rows(s, sums, off);
  for (std::size_t i = 0; i < n; ++i) by_row[s.order(i)] = sums[i];
  inverse.magnify(by_row.data(), h.data());
  const detail::system_kernels& kernels = detail::system_kernels_in_use();
  kernels.row_largest(inverse.transposed(), n, n, stride, largest.data());
  trace = 0.0;
  double most = 0, departures = 0, lost = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const double *row = d.row(i), *other = inverse.transposed() + s.order(i) * stride;
    doubled sum;
    kernels.products(&row, 1, (n + 7) / 8 * 8, {other, nullptr, nullptr}, &sum.high, &sum.low, nullptr);
    trace += sum;
    most = std::max(most, h[i]);
    departures += inverse.departures()[i];
    lost += largest[s.order(i)] * off[i];
  }
  const double gap = 1 / (1 - inverse.departure()), count = static_cast<double>(n);
  most *= gap * 1.01;
  const double all = count * most;
  if (!(all < 0.25)) return infinite;
  const double square = trace.high * trace.high;
  return (lost + departures * gap * most + (square + count * most * most) / 2 + all * all * all +
          all * count * 0x1p-80) *
         1.01;
}

// By factors in double precision; false where they do not prove 2^-56, and for few rows: doubled precision takes half
// the time for one row, and as long for four.
bool expand_plainly(const rows_in_memory& m, plain_determinant& d) {
  const std::size_t n = m.size;
  if (n < 5) return false;
  double_system s(n, dense_inverse::matrices);
  if (!s.factorise(m)) return false;
  dense_inverse inverse(s);
  if (!inverse.prove(false)) return false;
  doubled trace;
  const double off = inverse_correction(s, inverse, trace);
  if (!(off < 0x1p-56)) return false;
  bool odd = false;
  for (std::size_t i = 0; i < n; ++i) {
    d.product.times(s.factors()[i * s.stride() + i]);
    d.shift += s.row_exponent(i) + s.column_exponent(i);
  }
  numbers<std::size_t> order(n);
  for (std::size_t i = 0; i < n; ++i) order[i] = s.order(i);
  for (std::size_t i = 0; i < n; ++i)
    for (; order[i] != i; odd = !odd) std::swap(order[i], order[order[i]]);
  if (odd) d.product.fraction = -d.product.fraction;
  d.product.times(doubled(1.0) / (doubled(1.0) - trace));
  d.relative = off / (1 - std::fabs(trace.high) - off) * 1.01;
  d.condition = inverse.reciprocal_condition();
  return true;
}

// Value, fraction, exponent and the bound, from the product of the pivots and the bound of what else it is off.
void finish(determinant_value& d, std::size_t n, const wide_product& product, double bound) {
  const double unit = 2 * (static_cast<double>(n) + 4) * doubled_unit;
  d.value = product.with_exponent(product.fraction.high);
  d.fraction = product.fraction.high;
  d.exponent = product.fraction.high == 0 ? 0 : static_cast<slong>(product.exponent);
  const double rounding = std::fabs(product.fraction.low) + std::fabs(product.fraction.high) * unit;
  d.error = bound + product.with_exponent(rounding * 1.0001);
  if (d.error > 0 || d.fraction != 0) d.error = d.error * 1.0001 + (is_finite(d.value) && n > 0 ? 0x1p-1073 : 0);
  if (is_finite(d.value)) return;
  d.state = status::out_of_range;
  d.error = infinite;
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
  const rows_in_memory rows{detail::as_doubles(view.data()), n, view.stride()};
  d.state = all_finite(rows) ? status::ok : status::not_finite;
  if (d.state != status::ok) return d;
  plain_determinant plain;
  if (expand_plainly(rows, plain)) {
    plain.product.exponent += plain.shift;
    d.reciprocal_condition = plain.condition;
    finish(d, n, plain.product, plain.product.with_exponent(std::fabs(plain.product.fraction.high) * plain.relative));
    return d;
  }
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
  double bound = n == 0 ? 0 : absolute_bound(a, off, shift);
  if (relative < infinite) bound = std::min(bound, product.with_exponent(std::fabs(product.fraction.high) * relative));
  finish(d, n, product, bound);
  return d;
}

}  // namespace tessarn
