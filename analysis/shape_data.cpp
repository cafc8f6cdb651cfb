#include "analysis/shape_data.h"

namespace tessarn::analysis {

shape_data::shape_data(const shape_input& input, std::size_t points_needed, std::size_t distinct_needed) : in_(input) {
  state_ = check_sizes();
  if (state_ == status::ok) take();
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
  find_mean();
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

// Without weights, and with all points finite, there is nothing to look for.
void shape_data::take() {
  const int dimension = static_cast<int>(in_.dimension);
  if (in_.options.weights.empty()) {
    points_.take(in_.coordinates, dimension, size());
    all_ = points_.finite();
    used_ = all_ ? size() : 0;
    largest_weight_ = smallest_weight_ = 1;
  }
  if (!all_) look();
  if (state_ != status::ok || used_ == 0) return;
  if (!all_) {
    numbers_ = numbers<std::size_t>(used_);
    std::size_t to = 0;
    for (std::size_t i = 0; i < size(); ++i)
      if (finite(i) && weight(i) != 0) numbers_[to++] = i;
    points_.take(in_.coordinates, dimension, used_, numbers_.data());
  }
  for (int k = 0; k < dimension; ++k) {
    lowest_[k] = points_.least(k);
    highest_[k] = points_.greatest(k);
  }
}

// Counts the points that are finite and have a weight, and finds the range of the weights.
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
    middle_[k] = lowest_[k] == highest_[k] ? lowest_[k] : lowest_[k] / 2 + highest_[k] / 2;
    half = std::max({half, highest_[k] - middle_[k], middle_[k] - lowest_[k]});
    largest = std::max({largest, std::fabs(lowest_[k]), std::fabs(highest_[k])});
  }
  exponent_ = exponent_of(half) + 1;
  weight_exponent_ = exponent_of(largest_weight_);
  hidden_ = scaled(largest, -exponent_ - 50);
}

// Local coordinates are differences from the middle in units of 2^exponent, which are exact. The kernels take them
// about a double near `centre`; `rest` is what is left of the centre.
detail::local_columns shape_data::columns_about(const doubled (&centre)[3], doubled (&rest)[3]) const noexcept {
  const detail::result_scale unit = scale_of(-exponent_);
  detail::local_columns c{};
  for (double const*& column : c.c) column = points_.column(0);  // a coordinate that points of the plane lack is 0
  for (std::size_t k = 0; k < in_.dimension; ++k) {
    c.c[k] = points_.column(static_cast<int>(k));
    for (int i = 0; i < 2; ++i) c.factors[k][i] = lowest_[k] == highest_[k] ? 0 : unit.factors[i];
    const double middle = middle_[k] * c.factors[k][0] * c.factors[k][1];
    c.origin[k] = (doubled(middle) + centre[k]).high;
    rest[k] = centre[k] - exact_sum(c.origin[k], -middle);
  }
  return c;
}

void shape_data::find_mean() {
  if (!in_.options.weights.empty()) {
    double* const w = weights_.take(whole_vectors(used_));
    for (std::size_t i = 0; i < whole_vectors(used_); ++i)
      w[i] = i < used_ ? scaled(weight(number(i)), -weight_exponent_) : 0;
  }
  for (std::size_t k = 0; k < 3; ++k) mean_[k] = rest_[k] = 0.0;
  columns_ = columns_about(mean_, rest_);
  kernel_sums<4> sums;
  for_each([&](const detail::local_columns& c, const double* w, std::size_t, std::size_t count) {
    detail::shape_kernels_in_use().add_means(c, in_.dimension, w, count, sums.partial);
  });
  total_weight_ = weights() ? sums.sum(in_.dimension) : doubled(static_cast<double>(used_));
  for (std::size_t k = 0; k < in_.dimension; ++k) mean_[k] = sums.sum(k) / total_weight_;
  columns_ = columns_about(mean_, rest_);
}

void shape_data::covariance(doubled (&result)[3][3]) {
  kernel_sums<6> sums;
  for_each([&](const detail::local_columns& c, const double* w, std::size_t, std::size_t count) {
    detail::shape_kernels_in_use().add_products(c, in_.dimension, w, count, sums.partial);
  });
  std::size_t next = 0;
  for (std::size_t r = 0; r < 3; ++r)
    for (std::size_t c = r; c < 3; ++c)
      result[r][c] = c < in_.dimension ? sums.sum(next++) - total_weight_ * rest_[r] * rest_[c] : doubled(0.0);
}

void shape_data::copy() {
  const std::size_t room = whole_vectors(used_), arrays = 2 * in_.dimension + (weights() ? 2 : 0);
  double* to = copies_.take(detail::checked_product(arrays, room));
  double *high[3] = {}, *low[3] = {};
  for (std::size_t k = 0; k < in_.dimension; ++k) {
    centred_.high[k] = high[k] = to;
    centred_.low[k] = low[k] = to += room;
    to += room;
    for (std::size_t i = used_; i < room; ++i) high[k][i] = low[k][i] = 0;
  }
  detail::number_pair centroid[3];
  for (std::size_t k = 0; k < 3; ++k) centroid[k] = pair_of(rest_[k]);
  for_each([&](const detail::local_columns& c, const double*, std::size_t i, std::size_t count) {
    double* const some_high[] = {high[0] + i, high[1] + i, high[2] ? high[2] + i : nullptr};
    double* const some_low[] = {low[0] + i, low[1] + i, low[2] ? low[2] + i : nullptr};
    detail::shape_kernels_in_use().centre(c, in_.dimension, centroid, count, some_high, some_low);
  });
  centred_.size = used_;
  if (!weights()) return;
  double *const weight = to, *const weight_low = to + room;
  for (std::size_t i = 0; i < room; ++i) {
    const doubled square = exact_product(weights()[i], weights()[i]);
    weight[i] = square.high;
    weight_low[i] = square.low;
  }
  centred_.weight = weight;
  centred_.weight_low = weight_low;
}

void shape_data::get(std::size_t i, shape_point<doubled>& v) const noexcept {
  v.p[2] = 0.0;
  for (std::size_t k = 0; k < in_.dimension; ++k) v.p[k] = {centred_.high[k][i], centred_.low[k][i]};
  v.weight = centred_.weight ? doubled(centred_.weight[i], centred_.weight_low[i]) : doubled(1.0);
}

void shape_data::get(std::size_t i, shape_point<double>& v) const noexcept {
  v.p[2] = 0;
  for (std::size_t k = 0; k < in_.dimension; ++k) v.p[k] = centred_.high[k][i];
  v.weight = centred_.weight ? centred_.weight[i] : 1;
}

double shape_data::original(std::size_t k, doubled v) const noexcept {
  return (doubled(middle_[k]) + scaled(mean_[k] + v, exponent_)).high;
}

}  // namespace tessarn::analysis
