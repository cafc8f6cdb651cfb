#include "analysis/shape_data.h"

namespace tessarn::analysis {

shape_data::shape_data(const shape_input& input, std::size_t points_needed, std::size_t distinct_needed)
    : in_(input), high_(0), low_(0), numbers_(0) {
  state_ = check_sizes();
  if (state_ == status::ok) look();
  if (state_ != status::ok) return;
  if (used_ == 0)
    state_ = !in_.options.weights.empty() && !in_.options.leave_out_not_finite ? status::bad_weight : status::no_points;
  else if (used_ < points_needed)
    state_ = status::too_few_points;
  else if (!has_distinct(distinct_needed))
    state_ = status::too_few_distinct;
  else if (smallest_weight_ < largest_weight_ * 0x1p-200)
    state_ = status::out_of_range;
  if (state_ != status::ok) return;
  choose_unit();
  copy();
}

status shape_data::check_sizes() const noexcept {
  const std::size_t n = size();
  for (std::size_t k = 1; k < in_.dimension; ++k)
    if (in_.coordinates[k].size() != n) return status::sizes_differ;
  if (!in_.options.weights.empty() && in_.options.weights.size() != n) return status::sizes_differ;
  if (in_.options.most_steps == 0) return status::bad_option;
  return n == 0 ? status::no_points : status::ok;
}

bool shape_data::finite(std::size_t i) const noexcept {
  for (std::size_t k = 0; k < in_.dimension; ++k)
    if (!is_finite(coordinate(k, i))) return false;
  return is_finite(weight(i));
}

// Counts the points that are finite and have a weight, and finds the ranges of their numbers.
void shape_data::look() {
  for (std::size_t i = 0; i < size(); ++i) {
    if (!finite(i)) {
      if (in_.options.leave_out_not_finite) continue;
      state_ = status::not_finite;
      return;
    }
    const double w = weight(i);
    if (w < 0) {
      state_ = status::bad_weight;
      return;
    }
    if (w == 0) continue;
    const bool first = used_++ == 0;
    largest_weight_ = first ? w : std::max(largest_weight_, w);
    smallest_weight_ = first ? w : std::min(smallest_weight_, w);
    for (std::size_t k = 0; k < in_.dimension; ++k) {
      const double v = coordinate(k, i);
      lowest_[k] = first ? v : std::min(lowest_[k], v);
      highest_[k] = first ? v : std::max(highest_[k], v);
    }
  }
}

// Most data show enough different places among their first points; only those seen so far are compared.
bool shape_data::has_distinct(std::size_t wanted) const {
  numbers<std::size_t> seen(wanted);
  std::size_t count = 0;
  for (std::size_t i = 0; i < size() && count < wanted; ++i) {
    if (!finite(i) || weight(i) == 0) continue;
    bool is_new = true;
    for (std::size_t s = 0; s < count && is_new; ++s) {
      bool equal = true;
      for (std::size_t k = 0; k < in_.dimension; ++k) equal = equal && coordinate(k, i) == coordinate(k, seen[s]);
      is_new = !equal;
    }
    if (is_new) seen[count++] = i;
  }
  return count >= wanted;
}

// The unit is a power of two above the largest distance of a coordinate from the middle of its range.
void shape_data::choose_unit() noexcept {
  double half = 0, largest = 0;
  for (std::size_t k = 0; k < in_.dimension; ++k) {
    middle_[k] = lowest_[k] / 2 + highest_[k] / 2;
    half = std::max({half, highest_[k] - middle_[k], middle_[k] - lowest_[k]});
    largest = std::max({largest, std::fabs(lowest_[k]), std::fabs(highest_[k])});
  }
  exponent_ = exponent_of(half) + 1;
  weight_exponent_ = exponent_of(largest_weight_);
  hidden_ = scaled(largest, -exponent_ - 50);
}

// Differences from the middle are exact, and so is their scaling; then the centroid is subtracted. Sums are in the
// order of the points.
void shape_data::copy() {
  const std::size_t stride = in_.dimension + 1;
  high_ = numbers<double>(detail::checked_product(stride, used_));
  low_ = numbers<double>(high_.size());
  numbers_ = numbers<std::size_t>(used_);
  for (std::size_t k = 0; k < in_.dimension; ++k) mean_[k] = 0.0;
  std::size_t to = 0;
  for (std::size_t i = 0; i < size(); ++i) {
    if (!finite(i) || weight(i) == 0) continue;
    const double w = scaled(weight(i), -weight_exponent_);
    const doubled square = exact_product(w, w);
    total_weight_ += square;
    for (std::size_t k = 0; k <= in_.dimension; ++k) {
      const doubled v = k < in_.dimension ? scaled(exact_sum(coordinate(k, i), -middle_[k]), -exponent_) : square;
      if (k < in_.dimension) mean_[k] += square * v;
      high_[to * stride + k] = v.high;
      low_[to * stride + k] = v.low;
    }
    numbers_[to++] = i;
  }
  for (std::size_t k = 0; k < in_.dimension; ++k) {
    mean_[k] = mean_[k] / total_weight_;
    for (std::size_t i = 0; i < used_; ++i) {
      const std::size_t at = i * stride + k;
      const doubled v = doubled(high_[at], low_[at]) - mean_[k];
      high_[at] = v.high;
      low_[at] = v.low;
    }
  }
}

void shape_data::get(std::size_t i, shape_point<doubled>& v) const noexcept {
  const std::size_t first = i * (in_.dimension + 1);
  v.p[2] = 0.0;
  for (std::size_t k = 0; k < in_.dimension; ++k) v.p[k] = {high_[first + k], low_[first + k]};
  v.weight = {high_[first + in_.dimension], low_[first + in_.dimension]};
}

void shape_data::get(std::size_t i, shape_point<double>& v) const noexcept {
  const std::size_t first = i * (in_.dimension + 1);
  v.p[2] = 0;
  for (std::size_t k = 0; k < in_.dimension; ++k) v.p[k] = high_[first + k];
  v.weight = high_[first + in_.dimension];
}

double shape_data::original(std::size_t k, doubled v) const noexcept {
  return (doubled(middle_[k]) + scaled(mean_[k] + v, exponent_)).high;
}

}  // namespace tessarn::analysis
