// The points of a fit of a shape: checked, moved to their centroid and scaled by a power of two.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>

#include "analysis/doubled_matrix.h"
#include "analysis/point_arrays.h"
#include "tessarn/shapes.h"

namespace tessarn::analysis {

// The columns of the caller; points of the plane have two coordinates.
struct shape_input {
  column_view coordinates[3];
  std::size_t dimension;
  const shape_options& options;
};

// A point as a search takes it, relative to the centroid, and the square of its weight.
template <class T>
struct shape_point {
  T p[3];
  T weight;
};

class shape_data {
 public:
  // Looks at the points; state() tells what is wrong with them. So many points with a weight, and so many distinct
  // places among them, are needed.
  shape_data(const shape_input& input, std::size_t points_needed, std::size_t distinct_needed);

  status state() const noexcept { return state_; }
  std::size_t dimension() const noexcept { return in_.dimension; }
  std::size_t size() const noexcept { return in_.coordinates[0].size(); }
  std::size_t used() const noexcept { return used_; }
  std::size_t left_out() const noexcept { return size() - used_; }
  // The index, in the points of the caller, of point i of those used.
  std::size_t number(std::size_t i) const noexcept { return all_ ? i : numbers_[i]; }
  // Whether these are all points.
  bool all() const noexcept { return all_; }
  // Copies the points for searches, which the next three need.
  void copy();
  const detail::centred_columns& centred() const noexcept { return centred_; }
  // Point i of those used, in units of 2^exponent: as doubled numbers, or as doubles.
  void get(std::size_t i, shape_point<doubled>& v) const noexcept;
  void get(std::size_t i, shape_point<double>& v) const noexcept;
  // The sum of the squared weights; the weights are scaled by 2^-weight_exponent.
  doubled total_weight() const noexcept { return total_weight_; }
  int exponent() const noexcept { return exponent_; }
  int weight_exponent() const noexcept { return weight_exponent_; }
  // Distances up to this may be rounding errors of the coordinates, in units of 2^exponent: 2^-50 of the largest
  // magnitude.
  double hidden() const noexcept { return hidden_; }
  // A coordinate of the caller, from the same relative to the centroid.
  double original(std::size_t k, doubled v) const noexcept;
  // The sums of the products of coordinates with the squared weight.
  void covariance(doubled (&sums)[3][3]);
  // Runs over the points as f(columns, weights, i, count), with what the centroid is beside the origin of the columns.
  template <class F>
  void for_each(F&& f) {
    for_each_part(
        points_, [&](std::size_t i, std::size_t count) { f(columns_, weights() ? weights() + i : nullptr, i, count); });
  }
  const doubled (&rest() const noexcept)[3] { return rest_; }
  // The scaled weights; null: all are 1.
  const double* weights() const noexcept { return in_.options.weights.empty() ? nullptr : weights_.data(); }

 private:
  double coordinate(std::size_t k, std::size_t i) const noexcept { return in_.coordinates[k][i]; }
  double weight(std::size_t i) const noexcept {
    return in_.options.weights.empty() ? 1.0 : static_cast<double>(in_.options.weights[i]);
  }
  bool finite(std::size_t i) const noexcept;
  status check_sizes() const noexcept;
  void look();
  bool has_distinct(std::size_t wanted) const;
  void choose_unit() noexcept;
  void take();
  void find_mean();
  detail::local_columns columns_about(const doubled (&centre)[3], doubled (&rest)[3]) const noexcept;

  shape_input in_;
  status state_ = status::ok;
  std::size_t used_ = 0;
  double lowest_[3] = {}, highest_[3] = {}, middle_[3] = {};
  double largest_weight_ = 0, smallest_weight_ = 0, hidden_ = 0;
  int exponent_ = 0, weight_exponent_ = 0;
  bool all_ = false;
  numbers<std::size_t> numbers_{0};
  point_arrays points_;
  scratch weights_, copies_;
  detail::local_columns columns_{};  // about a double near the mean
  detail::centred_columns centred_{};
  doubled mean_[3], rest_[3], total_weight_ = 0.0;
};

// v in the caller's unit of length.
inline double length(const shape_data& data, doubled v) noexcept { return scaled(v.high, data.exponent()); }

// Stores what every fit tells of its residuals. `residuals(to, squares)` stores those of the points used, adds their
// squares and gives their range in units of 2^exponent; each point adds so many `values` to the degrees of freedom.
// Gives the residual standard deviation in units of 2^(exponent + weight_exponent), infinite where no degree of freedom
// is left.
template <class Residuals>
doubled judge(const shape_data& data, std::size_t values, shape_fit& f, Residuals&& residuals) {
  constexpr double infinite = std::numeric_limits<double>::infinity();
  f.residuals = mat<long double>(std::size_t{1}, data.size());
  double* const all = detail::as_doubles(f.residuals.getData());
  numbers<double> some(data.all() ? 0 : data.used());
  double* const to = data.all() ? all : some.data();
  kernel_sums<1> sums;
  const detail::residual_range range = residuals(to, sums.partial);
  f.largest_residual = to[range.largest_at];
  f.largest_at = static_cast<ulong>(data.number(range.largest_at));
  if (!data.all()) {
    std::fill_n(all, data.size(), std::numeric_limits<double>::quiet_NaN());
    for (std::size_t i = 0; i < data.used(); ++i) all[data.number(i)] = some[i];
  }
  const doubled squares = sums.sum(0);
  const double freedom =
      static_cast<double>(values) * static_cast<double>(data.used()) - static_cast<double>(f.unknowns);
  const doubled deviation = freedom > 0 ? square_root(squares / doubled(freedom)) : doubled(infinite);
  f.residual_deviation = scaled(deviation.high, data.exponent() + data.weight_exponent());
  f.root_mean_square = length(data, square_root(squares / data.total_weight()));
  f.peak_to_valley = length(data, range.highest - range.lowest);
  return deviation;
}

// The standard error of a length, or of a number without a unit, whose variance is the form times the residual
// variance.
inline double length_error(const shape_data& data, doubled deviation, doubled form) noexcept {
  if (form.high == 0) return 0;
  return is_finite(deviation.high) ? length(data, deviation * square_root(form)) : deviation.high;
}
inline double plain_error(doubled deviation, doubled form) noexcept {
  if (form.high == 0) return 0;
  return is_finite(deviation.high) ? (deviation * square_root(form)).high : deviation.high;
}

}  // namespace tessarn::analysis
