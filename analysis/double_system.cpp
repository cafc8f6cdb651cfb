#include "analysis/double_system.h"

#include <algorithm>
#include <limits>

#include "analysis/rounding_mode.h"
#include "matrix/factors.h"

namespace tessarn::analysis {

namespace {

// The columns of the workspace.
enum : std::size_t {
  ones,
  upper_sums,
  departures,
  right_hand_side,
  x_high,
  x_low,
  r_high,
  r_low,
  r_error,
  correction,
  reached,
  uncertain,
  spare,
  between,
  residual_room,  // two columns, and residual_workspace
  column_count = residual_room + 2
};

constexpr double upwards = 1.01;  // above what the sums of bounds lose, three after each other
constexpr int largest_exponent = 500;

}  // namespace

bool all_finite(const rows_in_memory& m) {
  numbers<double> largest(m.size);
  return detail::system_kernels_in_use().row_largest(m.entries, m.size, m.size, m.stride, largest.data()) == 0;
}

double_system::double_system(std::size_t n, std::size_t more)
    : kernels_(detail::system_kernels_in_use()),
      size_(n),
      stride_(detail::factors_stride(n)),
      work_(detail::checked_sum(
          detail::checked_product(stride_, detail::checked_sum(detail::checked_product(4 + more, n), column_count)),
          detail::residual_workspace)),
      order_(n),
      rows_(n),
      columns_(n),
      gamma_((static_cast<double>(n) + 2) * 0x1p-53 * 1.001) {
  a_ = work_.data();
  factors_ = a_ + n * stride_;
  lower_ = factors_ + n * stride_;
  upper_ = lower_ + n * stride_;
  room_ = upper_ + n * stride_;
  columns_of_work_ = room(more);
}

// Where |U| is large the rest is not worth the work, and where it is not finite the inverses would depend on the number
// of lanes.
bool double_system::factorise(const rows_in_memory& m) {
  if (!rounds_to_nearest() || !scale(m)) return false;
  std::copy(a_, a_ + size_ * stride_, factors_);
  if (!detail::factorise(factors_, size_, order_.data())) return false;
  double* u = column(upper_sums);
  std::fill_n(column(ones), stride_, 1.0);
  kernels_.row_sums(rows_of(factors_), true, true, column(ones), u);
  for (std::size_t r = 0; r < size_; ++r)
    if (!(u[r] < 0x1p70)) return false;
  detail::invert_factors(factors_, size_, lower_, upper_);
  return true;
}

// As scale() of scaled_system.h does, in one multiplication of each entry by a power of two.
bool double_system::scale(const rows_in_memory& m) {
  double *row_factors = column(x_high), *column_factors = column(x_low), *largest = column(spare);
  kernels_.row_largest(m.entries, size_, size_, m.stride, largest);
  for (std::size_t r = 0; r < size_; ++r) {
    if (largest[r] == 0) return false;
    rows_[r] = exponent_of(largest[r]);
    if (rows_[r] > largest_exponent || rows_[r] < -largest_exponent) return false;
    row_factors[r] = power_of_two(-rows_[r]);
  }
  kernels_.column_largest(m.entries, size_, size_, m.stride, row_factors, largest);
  for (std::size_t c = 0; c < size_; ++c) {
    if (largest[c] == 0) return false;
    columns_[c] = exponent_of(largest[c]);
    if (columns_[c] < -largest_exponent) return false;
    column_factors[c] = power_of_two(-columns_[c]);
  }
  kernels_.scale(m.entries, size_, size_, m.stride, row_factors, column_factors, a_, stride_);
  return true;
}

// Row sums of |U|, |L| |U|, |X_L| (2 g |L| |U| + ...) and |X_U| (... + g |U|), one after the other.
bool double_system::prove() {
  double *u = column(upper_sums), *lu = column(x_low), *inner = column(r_high), *bound = column(departures);
  const double lost = tiny(size_);
  kernels_.row_sums(rows_of(factors_), false, true, u, lu);
  for (std::size_t r = 0; r < size_; ++r) lu[r] = 2 * gamma_ * (lu[r] + u[r]) + lost;
  kernels_.column_sums(rows_of(lower_), detail::matrix_shape::upper, true, lu, inner);
  for (std::size_t r = 0; r < size_; ++r) inner[r] += gamma_ * u[r] + lost;
  kernels_.column_sums(rows_of(upper_), detail::matrix_shape::lower, true, inner, bound);
  for (std::size_t r = 0; r < size_; ++r) {
    bound[r] = (bound[r] + lost) * upwards;
    if (!(bound[r] < 0.25)) return false;
    departure_ = std::max(departure_, bound[r]);
  }
  return true;
}

void double_system::replace_inverse(const double* transposed, const double* bounds, double condition) {
  dense_ = transposed;
  dense_condition_ = condition;
  departure_ = 0;
  for (std::size_t i = 0; i < size_; ++i) {
    column(departures)[i] = bounds[i];
    departure_ = std::max(departure_, bounds[i]);
  }
}

// R v, or |X_U| |X_L| P v, which is at least |R| v for v >= 0.
void double_system::multiply(const double* v, bool magnitudes, double* result) {
  if (dense_) return kernels_.column_sums(rows_of(dense_), detail::matrix_shape::full, magnitudes, v, result);
  double *permuted = column(spare), *half = column(between);
  for (std::size_t i = 0; i < size_; ++i) permuted[i] = v[order_[i]];
  kernels_.column_sums(rows_of(lower_), detail::matrix_shape::upper, magnitudes, permuted, half);
  kernels_.column_sums(rows_of(upper_), detail::matrix_shape::lower, magnitudes, half, result);
}

// 1 / (|A| |R|) in the norm of the largest sum of a row. The row of R is searched: from the one with the largest bound
// on, the signs of a row lead to one that is larger (W. Hager, Condition estimates, 1984).
double double_system::reciprocal_condition() {
  double *unit = column(spare), *half = column(between), *row = column(r_high), *signs = column(r_low);
  double largest = 0, norm = 0;
  std::size_t best = 0;
  for (std::size_t i = 0; i < size_; ++i)
    if (column(departures)[i] > column(departures)[best]) best = i;
  for (int round = 0; round < 3; ++round) {
    // Row `best` of X_U, which is column `best` of its transpose, times X_L.
    for (std::size_t k = 0; k < size_; ++k) half[k] = upper_[k * stride_ + best];
    kernels_.row_sums(rows_of(lower_), true, false, half, row);
    double sum = 0;
    for (std::size_t i = 0; i < size_; ++i) {
      sum += std::fabs(row[i]);
      signs[i] = row[i] < 0 ? -1 : 1;
    }
    if (!(sum > largest)) break;
    largest = sum;
    kernels_.column_sums(rows_of(lower_), detail::matrix_shape::upper, false, signs, half);
    kernels_.column_sums(rows_of(upper_), detail::matrix_shape::lower, false, half, unit);
    std::size_t next = best;
    for (std::size_t i = 0; i < size_; ++i)
      if (std::fabs(unit[i]) > std::fabs(unit[next])) next = i;
    if (next == best) break;
    best = next;
  }
  double* sums = column(between);
  kernels_.row_sums(rows_of(a_), true, true, column(ones), sums);
  kernels_.row_sums(rows_of(a_), false, true, column(ones), column(spare));
  for (std::size_t r = 0; r < size_; ++r) norm = std::max(norm, sums[r] + column(spare)[r]);
  const double condition = norm * largest;
  return condition >= 1 ? 1 / condition : 1;
}

// The bounds of the errors of the residual. Each of eight partial sums of m products loses at most (m + 3)^2 u^2 of its
// magnitudes, their sum 40 u^2 more (T. Ogita, S. Rump, S. Oishi, Accurate sum and dot product, 2005). Returns the
// largest unknown.
double double_system::residual_bounds(const double* x) {
  const std::size_t groups = (size_ + 7) / 8;
  const double m = static_cast<double>(groups);
  const double unit = ((m + 3) * (m + 3) + 40) * 0x1p-106 * upwards;
  double largest = 0;
  for (std::size_t i = 0; i < size_; ++i) largest = std::max(largest, std::fabs(x[i]));
  for (std::size_t i = 0; i < size_; ++i)
    column(r_error)[i] = std::fabs(column(r_low)[i]) + unit * column(r_error)[i] + tiny(size_) * (largest + 1);
  return largest;
}

// x = R b, and then x += R (b - A x) until the bounds are small enough or do not halve. With the bounds t = |R| |r| and
// q = |R| e of the residual r, whose error is e, x was off by at most m = max (t + q) / (1 - d), and after the step by
//   |I - R A| m + q + (rounding of R r) <= d m + 2 g t + q.
bool double_system::solve(const numbers<double>& right, bounded_solution& s) {
  double *high = column(x_high), *low = column(x_low), *t = column(reached), *q = column(uncertain);
  double *b = column(right_hand_side), *r = column(r_high);
  std::fill_n(column(right_hand_side), 3 * stride_, 0.0);  // b and x, and their ends
  std::copy(right.data(), right.data() + size_, b);
  s.reciprocal_condition = dense_ ? dense_condition_ : reciprocal_condition();
  apply(b, high);
  double worst_before = std::numeric_limits<double>::infinity();
  for (int round = 0;; ++round) {
    for (std::size_t i = 0; i < size_; ++i)
      if (!(std::fabs(high[i]) < 0x1p300)) return false;
    kernels_.residual(rows_of(a_), b, high, low, {r, column(r_low), column(r_error)}, column(residual_room));
    const double largest = residual_bounds(high);
    apply(r, column(correction));
    apply_magnitudes(column(r_error), q);
    for (std::size_t i = 0; i < size_; ++i) column(r_low)[i] = std::fabs(r[i]);
    apply_magnitudes(column(r_low), t);
    double off = 0, worst = 0;
    for (std::size_t i = 0; i < size_; ++i) off = std::max(off, t[i] + q[i]);
    off = off / (1 - departure_) * upwards;
    bool close = true;
    for (std::size_t i = 0; i < size_; ++i) {
      const doubled x = doubled(high[i], low[i]) + doubled(column(correction)[i]);
      high[i] = x.high;
      low[i] = x.low;
      const double bound = (column(departures)[i] * off + 2.01 * gamma_ * t[i] + q[i]) * upwards +
                           std::fabs(x.high) * doubled_unit + tiny(size_) * (off + 1);
      s.x[i] = x;
      s.error[i] = bound;
      close = close && bound <= std::fabs(x.high) * 0x1p-62;
      if (!(bound <= worst)) worst = bound;
    }
    if (close) return true;
    if (!(worst < worst_before / 2) || round == 8) return worst <= largest * 0x1p-58;
    worst_before = worst;
  }
}

}  // namespace tessarn::analysis
