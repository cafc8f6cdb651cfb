#include "analysis/fit_data.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace tessarn::analysis {

using detail::fit_partial_sums;

bool fit_abscissa::choose(bool centred) noexcept {
  centre = centred ? lowest / 2 + highest / 2 : 0;
  const double half = std::max(std::fabs(lowest / 2 - centre / 2), std::fabs(highest / 2 - centre / 2));
  if (half > 0) {
    const int e = exponent_of(half);
    exponent = scaled(half, -e) > 1 ? e + 2 : e + 1;
  }
  return exponent >= -960 && exponent <= 1022;
}

fit_data::fit_data(const fit_input& input, std::size_t unknowns, bool zero_counts, bool mirrored)
    : in_(input), weighted_(!input.weights.empty()) {
  const std::size_t n = in_.x.size();
  if (in_.y.size() != n || (in_.two && in_.second.size() != n) || (weighted_ && in_.weights.size() != n))
    state_ = status::sizes_differ;
  else if (n == 0)
    state_ = status::no_points;
  if (state_ == status::ok && !look_at_all()) look_at_each();
  if (state_ != status::ok) return;
  if (used_ == 0)
    state_ = weighted_ && !in_.leave_out ? status::bad_weight : status::no_points;
  else if (used_ < unknowns)
    state_ = status::too_few_points;
  else if (!has_distinct(unknowns, zero_counts, mirrored))
    state_ = status::too_few_distinct;
  else if (smallest_weight_ < largest_weight_ * 0x1p-200)
    state_ = status::out_of_range;
}

namespace {

// The least and the greatest of numbers that are all finite.
class range {
 public:
  range() noexcept {
    for (std::size_t k = 0; k < fit_partial_sums; ++k) {
      partial_[k] = std::numeric_limits<double>::infinity();
      partial_[fit_partial_sums + k] = -std::numeric_limits<double>::infinity();
      partial_[2 * fit_partial_sums + k] = 0;
    }
  }
  void include(const double* v, std::size_t n) noexcept { detail::fit_kernels_in_use().include(v, n, partial_); }
  bool finite() const noexcept {
    double sum = 0;
    for (std::size_t k = 0; k < fit_partial_sums; ++k) sum += partial_[2 * fit_partial_sums + k];
    return sum == 0;
  }
  double least() const noexcept { return *std::min_element(partial_, partial_ + fit_partial_sums); }
  double greatest() const noexcept {
    return *std::max_element(partial_ + fit_partial_sums, partial_ + 2 * fit_partial_sums);
  }

 private:
  double partial_[3 * fit_partial_sums];
};

// Fills the last partial sums of a block up.
void pad(fit_block_column& v, const fit_block& block, double with) noexcept {
  std::fill(v.copy + block.used, v.copy + block.padded(), with);
}

// Whether the numbers are doubles in their places, so that kernels may read them there.
bool aligned(const column_view& v) noexcept {
  return reinterpret_cast<std::uintptr_t>(v.address()) % alignof(double) == 0 && v.bytes() % sizeof(double) == 0;
}

const double* number(const column_view& v, std::size_t i) noexcept {
  return reinterpret_cast<const double*>(v.address() + i * v.bytes());
}

// The numbers from number i on.
void take(const column_view& v, std::size_t i, std::size_t count, fit_block_column& column) noexcept {
  if (v.bytes() == sizeof(double) && count % fit_partial_sums == 0 && aligned(v)) {
    column.at = number(v, i);
    return;
  }
  for (std::size_t k = 0; k < count; ++k) column.copy[k] = v[i + k];
  column.at = column.copy;
}

// Whether the columns are the coordinates of an array of points.
bool neighbours(const column_view& x, const column_view& y) noexcept {
  return x.bytes() == sizeof(vector) && y.bytes() == sizeof(vector) && sizeof(vector) == 3 * sizeof(double) &&
         y.address() == x.address() + sizeof(double) && aligned(x);
}

}  // namespace

// Finds the ranges of the numbers, block by block and without branches; false when a number is not finite or a weight
// not positive, so that each point must be looked at.
bool fit_data::look_at_all() noexcept {
  range x, second, y, weight;
  fit_block block;
  for (std::size_t i = 0; i < in_.x.size(); i += block.used) {
    copy(i, std::min(in_.x.size() - i, fit_block::capacity), block);
    const auto include = [&](range& r, fit_block_column& v) {
      pad(v, block, *v.at);
      r.include(v.at, block.padded());
    };
    include(x, block.x);
    include(y, block.y);
    if (in_.two) include(second, block.second);
    if (weighted_) include(weight, block.weights);
  }
  if (!x.finite() || !y.finite() || (in_.two && !second.finite())) return false;
  if (weighted_ && !(weight.finite() && weight.least() > 0)) return false;
  used_ = in_.x.size();
  x_.lowest = x.least();
  x_.highest = x.greatest();
  if (in_.two) {
    second_.lowest = second.least();
    second_.highest = second.greatest();
  }
  largest_y_ = std::max(-y.least(), y.greatest());
  largest_weight_ = weighted_ ? weight.greatest() : 1;
  smallest_weight_ = weighted_ ? weight.least() : 1;
  return true;
}

// Counts the points that are finite and have a weight, and finds the ranges of their numbers.
void fit_data::look_at_each() {
  for (std::size_t i = 0; i < in_.x.size(); ++i) {
    if (!finite(i)) {
      if (in_.leave_out) continue;
      state_ = status::not_finite;
      return;
    }
    const double w = weight(i), y = std::fabs(static_cast<double>(in_.y[i]));
    if (w < 0) {
      state_ = status::bad_weight;
      return;
    }
    if (w == 0) continue;
    const bool first = used_++ == 0;
    x_.include(in_.x[i], first);
    if (in_.two) second_.include(in_.second[i], first);
    largest_y_ = y > largest_y_ ? y : largest_y_;
    largest_weight_ = w > largest_weight_ ? w : largest_weight_;
    smallest_weight_ = first || w < smallest_weight_ ? w : smallest_weight_;
  }
}

// Most data show enough different places among their first points; only those seen so far are compared.
bool fit_data::has_distinct(std::size_t wanted, bool zero_counts, bool mirrored) const {
  numbers<double> seen(detail::checked_product(2, wanted));
  std::size_t count = 0;
  for (std::size_t i = 0; i < in_.x.size() && count < wanted; ++i) {
    if (!finite(i) || weight(i) == 0) continue;
    const double x = in_.x[i], v = mirrored ? std::fabs(x) : x, second = second_at(i);
    if (v == 0 && !zero_counts) continue;
    std::size_t k = 0;
    while (k < count && (seen[2 * k] != v || seen[2 * k + 1] != second)) ++k;
    if (k < count) continue;
    seen[2 * count] = v;
    seen[2 * count++ + 1] = second;
  }
  return count >= wanted;
}

void fit_data::prepare(bool centred) {
  y_exponent_ = largest_y_ > 0 ? exponent_of(largest_y_) : 0;
  weight_exponent_ = exponent_of(largest_weight_);
  if (!x_.choose(centred) || !second_.choose(centred)) {
    state_ = status::out_of_range;
    return;
  }
  const auto halves = [](int exponent, double(&factors)[2]) {
    factors[0] = power_of_two(exponent / 2);
    factors[1] = power_of_two(exponent - exponent / 2);
  };
  halves(-y_exponent_, scales_.y_factors);
  halves(-weight_exponent_, scales_.weight_factors);
  scales_.x_factor = power_of_two(-x_.exponent);
  scales_.x_shift = x_.centre * scales_.x_factor;
  scales_.second_factor = power_of_two(-second_.exponent);
  scales_.second_shift = second_.centre * scales_.second_factor;
}

// The points from number i on, none left out.
void fit_data::copy(std::size_t i, std::size_t count, fit_block& block) const noexcept {
  if (neighbours(in_.x, in_.y)) {
    detail::fit_kernels_in_use().copy_points(number(in_.x, i), count, block.x.copy, block.y.copy);
  } else {
    take(in_.x, i, count, block.x);
    take(in_.y, i, count, block.y);
  }
  if (in_.two) take(in_.second, i, count, block.second);
  if (weighted_) take(in_.weights, i, count, block.weights);
  block.first = i;
  block.used = count;
  block.weighted = weighted_;
}

// The points from number i on that count.
void fit_data::select(std::size_t& i, fit_block& block) const noexcept {
  std::size_t used = 0;
  for (; i < in_.x.size() && used < fit_block::capacity; ++i) {
    if (!finite(i) || weight(i) == 0) continue;
    block.x.copy[used] = in_.x[i];
    block.y.copy[used] = in_.y[i];
    if (in_.two) block.second.copy[used] = in_.second[i];
    block.weights.copy[used] = weight(i);
    block.numbers[used++] = i;
  }
  block.used = used;
  block.weighted = weighted_;
  block.some_left_out = true;
}

bool fit_data::next(std::size_t& i, fit_block& block) const noexcept {
  if (used_ == in_.x.size()) {
    const std::size_t count = std::min(in_.x.size() - i, fit_block::capacity);
    copy(i, count, block);
    i += count;
  } else {
    select(i, block);
  }
  if (block.used == 0) return false;
  if (block.used == block.padded()) return true;
  if (!weighted_) std::fill_n(block.weights.copy + block.padded() - fit_partial_sums, fit_partial_sums, 1.0);
  pad(block.weights, block, 0);
  pad(block.x, block, x_.centre);
  pad(block.second, block, second_.centre);
  pad(block.y, block, 0);
  return true;
}

std::size_t fit_block::largest_residual(double expected, double limit) const noexcept {
  std::size_t k = 0;
  while (k < used && std::fabs(residuals[k]) != expected) ++k;
  if (k < used) return k;
  for (std::size_t i = 0; i < used; ++i)
    if (std::fabs(residuals[i]) > limit) limit = std::fabs(residuals[k = i]);
  return k;
}

namespace {

// The upper half of the partial sums goes to the lower half, as the kernels add: the errors of the high parts go to the
// low ones.
template <std::size_t Half>
void fold(double* high, double* low) noexcept {
  for (std::size_t i = 0; i < Half; ++i) {
    const doubled s = exact_sum(high[i], high[i + Half]);
    high[i] = s.high;
    low[i] = (low[i] + low[i + Half]) + s.low;
  }
}

}  // namespace

doubled total(const double* partial_sums) noexcept {
  static_assert(fit_partial_sums == 8);
  double high[fit_partial_sums], low[fit_partial_sums];
  std::copy(partial_sums, partial_sums + fit_partial_sums, high);
  std::copy(partial_sums + fit_partial_sums, partial_sums + 2 * fit_partial_sums, low);
  fold<4>(high, low);
  fold<2>(high, low);
  fold<1>(high, low);
  return exact_sum(high[0], low[0]);
}

// Row by row of Pascal's triangle: t^k = (x 2^-e - c) t^(k-1).
doubled_matrix expansion(std::size_t m, const fit_abscissa& x) {
  const double centre = scaled(x.centre, -x.exponent);
  doubled_matrix e(m, m);
  for (std::size_t k = 0; k < m; ++k)
    for (std::size_t j = 0; j <= k; ++j) {
      doubled v = j > 0 ? e.get(k - 1, j - 1) : doubled(k == 0 ? 1.0 : 0.0);
      if (j < k) v = with_product(v, -centre, e.get(k - 1, j));
      e.set(k, j, v);
    }
  return e;
}

}  // namespace tessarn::analysis
