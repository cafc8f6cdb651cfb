// Bounds of the sums of squared residuals, from the second moments of the points around their centre.
#include "geometry/bounds.h"

#include <algorithm>
#include <cmath>

#include "geometry/coordinates.h"

namespace tessarn::detail {
namespace {

constexpr double u = 0x1p-53;
// Sums outside this range are left to the direct evaluation: nothing in the bounds may overflow or underflow.
constexpr double least = 1e-200;
constexpr double greatest = 1e200;
// For the roundings of the bounds' own arithmetic.
constexpr double outward = 1e-13;

double form(const double* s, double x, double y, double z) {
  return (s[0] * x * x + s[1] * y * y + s[2] * z * z) + 2 * (s[3] * x * y + s[4] * x * z + s[5] * y * z);
}

}  // namespace

residual_bounds::residual_bounds(const cloud& points) {
  const auto count = static_cast<double>(points.size());
  const moment_sums& moments = points.moments();
  const double* sums = moments.sum;
  const double trace = sums[3] + sums[4] + sums[5];
  const std::array<double, 3> reference = coordinates_of(points.reference());
  double square = trace;  // of the points
  for (int k = 0; k < 3; ++k) {
    form_.mean[k] = sums[k] / count;
    square += 2 * reference[k] * sums[k] + count * reference[k] * reference[k];
  }
  square *= 1 + outward;
  usable_ = trace > least && trace < greatest && square > least && square < greatest;
  form_.count = count;
  std::copy_n(sums + 3, 6, form_.second);
  translate_weighted(moments.weighted, count);
  form_.form_margin = 128 * u * trace;
  const double mean_error = 1.1 * (count + 5) * u * std::sqrt(square / count);
  form_.mean_margin = count * mean_error * mean_error;
  form_.mean_margin_root = 1.1 * std::sqrt(form_.mean_margin);
  form_.residual_margin = 3.5 * u * std::sqrt(square) + 1.1 * u * form_.mean_margin_root;
  form_.factor = 1.1 * (count + 2) * u + outward;
  // The weighted products carry a rounding for each block, and |s|^2 <= T.
  const double rest = form_.mean_margin + 3 * form_.residual_margin * form_.residual_margin + 1000 * u * u * trace;
  form_.sum_margin = 200 * u * count * rest + 1.1 * u * count * (count + 200) * u * trace;
  form_.sum_factor = 4 * u + outward;
}

// From those about the reference point to those about the mean; the sum of the weights is taken somewhat too large.
void residual_bounds::translate_weighted(const double* weighted, double count) {
  const double weights = 0.5 * count * (count + 2 * block_limit);
  const double* mean = form_.mean;
  const auto translated = [&](int k, int a, int b) {
    return weighted[3 + k] - (mean[a] * weighted[b] + mean[b] * weighted[a]) + weights * mean[a] * mean[b];
  };
  const int axes[6][2] = {{0, 0}, {1, 1}, {2, 2}, {0, 1}, {0, 2}, {1, 2}};
  for (int k = 0; k < 6; ++k) form_.weighted[k] = translated(k, axes[k][0], axes[k][1]);
}

direction_bounds::direction_bounds(const point_arrays& par, const point_arrays& perp) {
  const double origin[3] = {0, 0, 0};
  moment_sums a, b;
  geometry_kernels_in_use().moments(par, origin, &a);
  geometry_kernels_in_use().moments(perp, origin, &b);
  constant_ = static_cast<double>(par.n);
  for (int k = 0; k < 6; ++k) second_[k] = b.sum[3 + k] - a.sum[3 + k];
  double magnitude = constant_;
  for (int k = 3; k < 6; ++k) magnitude += a.sum[k] + b.sum[k];
  usable_ = magnitude > least && magnitude < greatest;
  // A term is off by at most 8 roundings of its size, their sum by as many as there are terms, the moments by 24, their
  // difference and the form by 12.
  margin_ = 1.1 * (static_cast<double>(par.n) + static_cast<double>(perp.n) + 48) * u * magnitude;
}

interval direction_bounds::operator()(double x, double y, double z) const {
  const double cost = constant_ + form(second_, x, y, z);
  return {cost - margin_, cost + margin_};
}

}  // namespace tessarn::detail
