#include "analysis/fit_data.h"

namespace tessarn::analysis {

using detail::fit_partial_sums;

namespace {

std::size_t padded(std::size_t n) {
  return detail::checked_sum(n, fit_partial_sums - 1) / fit_partial_sums * fit_partial_sums;
}

status check_options(const plane_points& points, const fit_options& options) {
  if (points.y.size() != points.size()) return status::sizes_differ;
  if (!options.weights.empty() && options.weights.size() != points.size()) return status::sizes_differ;
  return points.size() == 0 ? status::no_points : status::ok;
}

}  // namespace

fit_data::fit_data(plane_points points, const fit_options& options, std::size_t unknowns, bool zero_counts, bool mirrored)
    : state_(check_options(points, options)),
      given_(state_ == status::ok ? points.size() : 0),
      padded_(padded(given_)),
      arrays_(detail::checked_product(6, padded_)),
      numbers_(options.leave_out_not_finite || !options.weights.empty() ? given_ : 0) {
  if (state_ != status::ok) return;
  read(points, options);
  if (state_ != status::ok) return;
  if (used_ == 0)
    state_ = options.weights.empty() || largest_weight_ > 0 ? status::no_points : status::bad_weight;
  else if (used_ < unknowns)
    state_ = status::too_few_points;
  else if (!has_distinct(unknowns, zero_counts, mirrored))
    state_ = status::too_few_distinct;
  else if (smallest_weight_ < largest_weight_ * 0x1p-200)
    state_ = status::out_of_range;
}

// Keeps the points that are finite and have a weight, and finds the ranges of their numbers.
void fit_data::read(plane_points points, const fit_options& options) {
  double *x = array(0), *y = array(2), *w = array(3);
  for (std::size_t i = 0; i < given_; ++i) {
    const double xi = points.x[i], yi = points.y[i], wi = options.weights.empty() ? 1.0 : options.weights[i];
    if (!is_finite(xi + yi + wi) && !(is_finite(xi) && is_finite(yi) && is_finite(wi))) {
      if (options.leave_out_not_finite) continue;
      state_ = status::not_finite;
      return;
    }
    if (wi < 0) {
      state_ = status::bad_weight;
      return;
    }
    if (wi == 0) continue;
    if (used_ == 0) {
      lowest_ = highest_ = xi;
      smallest_weight_ = wi;
    }
    lowest_ = xi < lowest_ ? xi : lowest_;
    highest_ = xi > highest_ ? xi : highest_;
    largest_y_ = std::fabs(yi) > largest_y_ ? std::fabs(yi) : largest_y_;
    largest_weight_ = wi > largest_weight_ ? wi : largest_weight_;
    smallest_weight_ = wi < smallest_weight_ ? wi : smallest_weight_;
    if (numbers_.size() != 0) numbers_[used_] = i;
    x[used_] = xi;
    y[used_] = yi;
    w[used_] = wi;
    ++used_;
  }
}

// Most data show enough different abscissas among their first points; only those seen so far are compared.
bool fit_data::has_distinct(std::size_t wanted, bool zero_counts, bool mirrored) const {
  numbers<double> seen(wanted);
  std::size_t count = 0;
  const double* x = array(0);
  for (std::size_t i = 0; i < used_ && count < wanted; ++i) {
    const double v = mirrored ? std::fabs(x[i]) : x[i];
    if (v == 0 && !zero_counts) continue;
    std::size_t k = 0;
    while (k < count && seen[k] != v) ++k;
    if (k == count) seen[count++] = v;
  }
  return count >= wanted;
}

// The scale is the power of two above half of the range, so that |t| <= 1 up to the rounding of the centre.
void fit_data::prepare(bool centred) {
  centre_ = centred ? lowest_ / 2 + highest_ / 2 : 0;
  const double reach = std::max(std::fabs(lowest_ / 2 - centre_ / 2), std::fabs(highest_ / 2 - centre_ / 2));
  x_exponent_ = reach > 0 ? exponent_of(reach) + 2 : 0;
  y_exponent_ = largest_y_ > 0 ? exponent_of(largest_y_) : 0;
  weight_exponent_ = exponent_of(largest_weight_);
  if (x_exponent_ < -960 || x_exponent_ > 1022) {
    state_ = status::out_of_range;
    return;
  }
  double *high = array(0), *low = array(1), *y = array(2), *w = array(3), *w_low = array(4);
  const double to_t = power_of_two(-x_exponent_), scaled_centre = centre_ * to_t;
  const double half_y = power_of_two(-y_exponent_ / 2), rest_y = power_of_two(-y_exponent_ - -y_exponent_ / 2);
  const double half_w = power_of_two(-weight_exponent_ / 2), rest_w = power_of_two(-weight_exponent_ - -weight_exponent_ / 2);
  for (std::size_t i = 0; i < used_; ++i) {
    const doubled t = exact_sum(high[i] * to_t, -scaled_centre);
    high[i] = t.high;
    low[i] = t.low;
    y[i] = y[i] * half_y * rest_y;
    const double weight = w[i] * half_w * rest_w;
    const doubled square = exact_product(weight, weight);
    w[i] = square.high;
    w_low[i] = square.low;
  }
}

detail::fit_columns fit_data::columns() const noexcept {
  return {array(0), array(1), array(2), array(3), array(4), (used_ + fit_partial_sums - 1) / fit_partial_sums * fit_partial_sums};
}

doubled total(const double* partial_sums) noexcept {
  doubled s[fit_partial_sums];
  for (std::size_t i = 0; i < fit_partial_sums; ++i) s[i] = exact_sum(partial_sums[i], partial_sums[fit_partial_sums + i]);
  for (std::size_t step = 1; step < fit_partial_sums; step *= 2)
    for (std::size_t i = 0; i < fit_partial_sums; i += 2 * step) s[i] += s[i + step];
  return s[0];
}

}  // namespace tessarn::analysis
