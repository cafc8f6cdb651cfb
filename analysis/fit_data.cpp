#include "analysis/fit_data.h"

namespace tessarn::analysis {

using detail::fit_partial_sums;

bool fit_abscissa::choose(bool centred) noexcept {
  centre = centred ? lowest / 2 + highest / 2 : 0;
  const double half = std::max(std::fabs(lowest / 2 - centre / 2), std::fabs(highest / 2 - centre / 2));
  exponent = half > 0 ? exponent_of(half) + 2 : 0;
  return exponent >= -960 && exponent <= 1022;
}

void fit_abscissa::transform(double* high, double* low, std::size_t size) const noexcept {
  const double to_t = power_of_two(-exponent), scaled_centre = centre * to_t;
  for (std::size_t k = 0; k < size; ++k) {
    const doubled t = exact_sum(high[k] * to_t, -scaled_centre);
    high[k] = t.high;
    low[k] = t.low;
  }
}

fit_data::fit_data(const fit_input& input, std::size_t unknowns, bool zero_counts, bool mirrored)
    : in_(input), weighted_(!input.weights.empty()) {
  const std::size_t n = in_.x.size();
  if (in_.y.size() != n || (in_.two && in_.second.size() != n) || (weighted_ && in_.weights.size() != n))
    state_ = status::sizes_differ;
  else if (n == 0)
    state_ = status::no_points;
  if (state_ == status::ok) look();
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

// Counts the points that are finite and have a weight, and finds the ranges of their numbers.
void fit_data::look() {
  fit_abscissa x, second;
  double largest_y = 0;
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
    x.include(in_.x[i], first);
    if (in_.two) second.include(in_.second[i], first);
    largest_y = y > largest_y ? y : largest_y;
    if (weighted_) {
      largest_weight_ = w > largest_weight_ ? w : largest_weight_;
      smallest_weight_ = first || w < smallest_weight_ ? w : smallest_weight_;
    }
  }
  x_ = x;
  second_ = second;
  largest_y_ = largest_y;
  if (!weighted_) largest_weight_ = smallest_weight_ = 1;
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
  if (!x_.choose(centred) || !second_.choose(centred)) state_ = status::out_of_range;
}

// Copies points to the block, and fills the last partial sums up with points of weight 0; gives the number of the
// points.
std::size_t fit_data::gather(std::size_t& i, fit_block& block) const noexcept {
  const std::size_t n = in_.x.size();
  std::size_t used = 0;
  for (; i < n && used < fit_block::capacity; ++i) {
    if (used_ != n && (!finite(i) || weight(i) == 0)) continue;
    block.high[used] = in_.x[i];
    block.y[used] = in_.y[i];
    if (in_.two) block.second_high[used] = in_.second[i];
    block.weight_high[used] = weight(i);
    block.numbers[used++] = i;
  }
  block.used = used;
  for (std::size_t k = used; k < block.columns().size; ++k) {
    block.high[k] = x_.centre;
    block.second_high[k] = second_.centre;
    block.y[k] = block.weight_high[k] = 0;
  }
  return used;
}

// The points are gathered first; then loops without branches, which the compiler vectorises, scale them.
bool fit_data::next(std::size_t& i, fit_block& block) const noexcept {
  if (gather(i, block) == 0) return false;
  const std::size_t size = block.columns().size;
  x_.transform(block.high, block.low, size);
  if (in_.two) second_.transform(block.second_high, block.second_low, size);
  const double half_y = power_of_two(-y_exponent_ / 2), rest_y = power_of_two(-y_exponent_ - -y_exponent_ / 2);
  for (std::size_t k = 0; k < size; ++k) block.y[k] = block.y[k] * half_y * rest_y;
  if (!weighted_) {
    for (std::size_t k = 0; k < size; ++k) block.weight_low[k] = 0;
    return true;
  }
  const double half_w = power_of_two(-weight_exponent_ / 2),
               rest_w = power_of_two(-weight_exponent_ - -weight_exponent_ / 2);
  for (std::size_t k = 0; k < size; ++k) {
    const double w = block.weight_high[k] * half_w * rest_w;
    const doubled square = exact_product(w, w);
    block.weight_high[k] = square.high;
    block.weight_low[k] = square.low;
  }
  return true;
}

doubled total(const double* partial_sums) noexcept {
  doubled s[fit_partial_sums];
  for (std::size_t i = 0; i < fit_partial_sums; ++i)
    s[i] = exact_sum(partial_sums[i], partial_sums[fit_partial_sums + i]);
  for (std::size_t step = 1; step < fit_partial_sums; step *= 2)
    for (std::size_t i = 0; i < fit_partial_sums; i += 2 * step) s[i] += s[i + step];
  return s[0];
}

// Row by row of Pascal's triangle: t^k = (x 2^-e - c) t^(k-1).
doubled_matrix expansion(std::size_t m, const fit_abscissa& x) {
  const double centre = scaled(x.centre, -x.exponent);
  doubled_matrix e(m, m);
  for (std::size_t k = 0; k < m; ++k)
    for (std::size_t j = 0; j <= k; ++j) {
      doubled v = j > 0 ? e.get(j - 1, k - 1) : doubled(k == 0 ? 1.0 : 0.0);
      if (j < k) v -= doubled(centre) * e.get(j, k - 1);
      e.set(j, k, v);
    }
  return e;
}

}  // namespace tessarn::analysis
