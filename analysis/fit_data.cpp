#include "analysis/fit_data.h"

namespace tessarn::analysis {

using detail::fit_partial_sums;

fit_data::fit_data(const plane_points& points, const fit_options& options, std::size_t unknowns, bool zero_counts, bool mirrored)
    : points_(points), weights_(options.weights), weighted_(!options.weights.empty()) {
  const std::size_t n = points.size();
  if (points.y.size() != n || (weighted_ && weights_.size() != n))
    state_ = status::sizes_differ;
  else if (n == 0)
    state_ = status::no_points;
  if (state_ != status::ok) return;
  look(options.leave_out_not_finite);
  if (state_ != status::ok) return;
  if (used_ == 0)
    state_ = weighted_ && !options.leave_out_not_finite ? status::bad_weight : status::no_points;
  else if (used_ < unknowns)
    state_ = status::too_few_points;
  else if (!has_distinct(unknowns, zero_counts, mirrored))
    state_ = status::too_few_distinct;
  else if (smallest_weight_ < largest_weight_ * 0x1p-200)
    state_ = status::out_of_range;
}

// Counts the points that are finite and have a weight, and finds the ranges of their numbers.
void fit_data::look(bool leave_out) {
  double lowest = 0, highest = 0, largest_y = 0;
  for (std::size_t i = 0; i < points_.size(); ++i) {
    const double x = points_.x[i], y = points_.y[i], w = weight(i);
    if (!(is_finite(x) && is_finite(y) && is_finite(w))) {
      if (leave_out) continue;
      state_ = status::not_finite;
      return;
    }
    if (w < 0) {
      state_ = status::bad_weight;
      return;
    }
    if (w == 0) continue;
    if (used_++ == 0) {
      lowest = highest = x;
      smallest_weight_ = w;
    }
    lowest = x < lowest ? x : lowest;
    highest = x > highest ? x : highest;
    largest_y = std::fabs(y) > largest_y ? std::fabs(y) : largest_y;
    if (weighted_) {
      largest_weight_ = w > largest_weight_ ? w : largest_weight_;
      smallest_weight_ = w < smallest_weight_ ? w : smallest_weight_;
    }
  }
  x_ = {lowest, highest};
  largest_y_ = largest_y;
  if (!weighted_) largest_weight_ = 1;
}

// Most data show enough different abscissas among their first points; only those seen so far are compared.
bool fit_data::has_distinct(std::size_t wanted, bool zero_counts, bool mirrored) const {
  numbers<double> seen(wanted);
  std::size_t count = 0;
  for (std::size_t i = 0; i < points_.size() && count < wanted; ++i) {
    const double x = points_.x[i], v = mirrored ? std::fabs(x) : x;
    if (!counts(x, points_.y[i], weight(i)) || (v == 0 && !zero_counts)) continue;
    std::size_t k = 0;
    while (k < count && seen[k] != v) ++k;
    if (k == count) seen[count++] = v;
  }
  return count >= wanted;
}

// The scale is a power of two above the largest distance from the centre, so that |t| < 1.
void fit_data::prepare(bool centred) {
  centre_ = centred ? x_.lowest / 2 + x_.highest / 2 : 0;
  const double half = std::max(std::fabs(x_.lowest / 2 - centre_ / 2), std::fabs(x_.highest / 2 - centre_ / 2));
  x_exponent_ = half > 0 ? exponent_of(half) + 2 : 0;
  y_exponent_ = largest_y_ > 0 ? exponent_of(largest_y_) : 0;
  weight_exponent_ = exponent_of(largest_weight_);
  if (x_exponent_ < -960 || x_exponent_ > 1022) state_ = status::out_of_range;
}

// The points are gathered first; then loops without branches, which the compiler vectorises, scale them.
bool fit_data::next(std::size_t& i, fit_block& block) const noexcept {
  std::size_t used = 0;
  if (used_ == points_.size()) {
    const std::size_t count = std::min(fit_block::capacity, used_ - i);
    for (; used < count; ++used) {
      block.high[used] = points_.x[i + used];
      block.y[used] = points_.y[i + used];
      block.numbers[used] = i + used;
    }
    for (std::size_t k = 0; k < count; ++k) block.weight_high[k] = weight(i + k);
    i += count;
  } else {
    for (; i < points_.size() && used < fit_block::capacity; ++i) {
      const double x = points_.x[i], y = points_.y[i], w = weight(i);
      if (!counts(x, y, w)) continue;
      block.high[used] = x;
      block.y[used] = y;
      block.weight_high[used] = w;
      block.numbers[used++] = i;
    }
  }
  block.used = used;
  const std::size_t size = block.columns().size;
  for (; used < size; ++used) {
    block.high[used] = centre_;
    block.y[used] = block.weight_high[used] = 0;
  }
  const double to_t = power_of_two(-x_exponent_), scaled_centre = centre_ * to_t;
  const double half_y = power_of_two(-y_exponent_ / 2), rest_y = power_of_two(-y_exponent_ - -y_exponent_ / 2);
  for (std::size_t k = 0; k < size; ++k) {
    const doubled t = exact_sum(block.high[k] * to_t, -scaled_centre);
    block.high[k] = t.high;
    block.low[k] = t.low;
    block.y[k] = block.y[k] * half_y * rest_y;
  }
  const double half_w = power_of_two(-weight_exponent_ / 2), rest_w = power_of_two(-weight_exponent_ - -weight_exponent_ / 2);
  if (!weighted_) {
    for (std::size_t k = 0; k < size; ++k) block.weight_low[k] = 0;
    return block.used > 0;
  }
  for (std::size_t k = 0; k < size; ++k) {
    const double w = block.weight_high[k] * half_w * rest_w;
    const doubled square = exact_product(w, w);
    block.weight_high[k] = square.high;
    block.weight_low[k] = square.low;
  }
  return block.used > 0;
}

doubled total(const double* partial_sums) noexcept {
  doubled s[fit_partial_sums];
  for (std::size_t i = 0; i < fit_partial_sums; ++i) s[i] = exact_sum(partial_sums[i], partial_sums[fit_partial_sums + i]);
  for (std::size_t step = 1; step < fit_partial_sums; step *= 2)
    for (std::size_t i = 0; i < fit_partial_sums; i += 2 * step) s[i] += s[i + step];
  return s[0];
}

}  // namespace tessarn::analysis
