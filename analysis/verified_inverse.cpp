#include "analysis/verified_inverse.h"

#include <limits>

namespace tessarn::analysis {

namespace {

// Sums of non-negative doubles are rounded at each step; this factor is above what that loses in 2^40 steps.
constexpr double upwards = 1.001;

}  // namespace

// Column by column: the pivot is searched, its row is exchanged, and multiples of it are subtracted from the rows
// below.
factorisation::factorisation(const doubled_matrix& a)
    : size_(a.rows()), lu_(a.rows(), a.rows()), permutation_(a.rows()) {
  const std::size_t n = size_;
  for (std::size_t r = 0; r < n; ++r) {
    permutation_[r] = r;
    for (std::size_t c = 0; c < n; ++c) lu_.set(r, c, a.get(r, c));
  }
  for (std::size_t k = 0; k < n; ++k) {
    std::size_t p = k;
    for (std::size_t r = k + 1; r < n; ++r)
      if (magnitude(lu_.get(r, k)) > magnitude(lu_.get(p, k))) p = r;
    if (!(magnitude(lu_.get(p, k)) > 0)) {
      regular_ = false;
      return;
    }
    if (p != k) {
      odd_ = !odd_;
      std::swap(permutation_[p], permutation_[k]);
      lu_.exchange_rows(p, k);
    }
    for (std::size_t r = k + 1; r < n; ++r) {
      const doubled multiplier = lu_.get(r, k) / lu_.get(k, k);
      lu_.add_row(r, -multiplier, lu_, k, k + 1);
      lu_.set(r, k, multiplier);
    }
  }
}

// Row operations on all columns of the identity at once: first those of L downwards, then those of U upwards.
doubled_matrix factorisation::inverse() const {
  const std::size_t n = size_;
  doubled_matrix x(n, n);
  for (std::size_t r = 0; r < n; ++r) x.set(r, permutation_[r], 1.0);
  for (std::size_t k = 0; k < n; ++k)
    for (std::size_t r = k + 1; r < n; ++r) x.add_row(r, -lu_.get(r, k), x, k);
  for (std::size_t k = n; k-- > 0;) {
    const doubled pivot = lu_.get(k, k);
    for (std::size_t c = 0; c < n; ++c) x.set(k, c, x.get(k, c) / pivot);
    for (std::size_t r = 0; r < k; ++r) x.add_row(r, -lu_.get(r, k), x, k);
  }
  return x;
}

// The sums of the rows of |U| from the diagonal on, and then with them those of |L| |U|. Where elimination stopped
// early, entries that stand where multipliers would be count themselves.
numbers<double> factorisation::growth() const {
  const std::size_t n = size_;
  numbers<double> upper(n), sums(n);
  for (std::size_t k = 0; k < n; ++k)
    for (std::size_t c = k; c < n; ++c) upper[k] += magnitude(lu_.get(k, c));
  for (std::size_t r = 0; r < n; ++r) {
    double sum = upper[r];
    for (std::size_t k = 0; k < r; ++k)
      sum += magnitude(lu_.get(r, k)) * (regular_ ? upper[k] : std::max(upper[k], 1.0));
    sums[permutation_[r]] = sum * upwards;
  }
  return sums;
}

double row_sum(const doubled_matrix& a, std::size_t row) noexcept {
  double sum = 0;
  for (std::size_t c = 0; c < a.columns(); ++c) sum += std::fabs(a.high(row)[c]);
  return sum * upwards;
}

numbers<double> magnified(const doubled_matrix& r, const numbers<double>& errors) {
  numbers<double> z(r.rows());
  for (std::size_t i = 0; i < r.rows(); ++i) {
    double sum = 0;
    for (std::size_t k = 0; k < r.columns(); ++k) sum += std::fabs(r.high(i)[k]) * errors[k];
    z[i] = sum * upwards;
  }
  return z;
}

// R A is formed in doubled precision. An entry of it, a sum of n products, has an error of at most 2 (n + 1) units of
// the sum of the magnitudes, and loses `underflow` at each step; the sums of a row of these are bounded by |R| (|A| e),
// with the column e of ones, in O(n^2).
verified_inverse verify(const doubled_matrix& a, const factorisation& f, const numbers<double>& errors) {
  const std::size_t n = a.rows();
  verified_inverse v{f.inverse(), numbers<double>(n), 0, 0};
  const double unit = 2 * (static_cast<double>(n) + 1) * doubled_unit;
  const double lost =
      unit + static_cast<double>(n) * (static_cast<double>(n) + 1) * 4 * underflow;  // of the 1 in I, and small
  numbers<double> row_errors(n);
  double norm = 0, inverse_norm = 0;
  for (std::size_t r = 0; r < n; ++r) {
    const double sum = row_sum(a, r);
    norm = std::max(norm, sum);
    row_errors[r] = unit * sum + errors[r];
  }
  const numbers<double> product_errors = magnified(v.inverse, row_errors);
  doubled_matrix row(1, n);
  for (std::size_t r = 0; r < n; ++r) {
    for (std::size_t c = 0; c < n; ++c) row.set(0, c, 0.0);
    row.set(0, r, -1.0);
    for (std::size_t k = 0; k < n; ++k) row.add_row(0, v.inverse.get(r, k), a, k);
    v.departures[r] = (row_sum(row, 0) + product_errors[r] + lost) * upwards;
    inverse_norm = std::max(inverse_norm, row_sum(v.inverse, r));
    if (!(v.departures[r] <= v.departure)) v.departure = v.departures[r];  // a NaN stays until the end
    if (!(v.departure < 0.5)) v.departure = std::numeric_limits<double>::infinity();
  }
  const double condition = norm * inverse_norm;
  v.reciprocal_condition = is_finite(condition) && condition >= 1 ? 1 / condition
                           : n == 0 || is_finite(condition)       ? 1.0
                                                                  : 0.0;
  return v;
}

}  // namespace tessarn::analysis
