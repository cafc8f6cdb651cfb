#include "geometry/bounds.h"

#include <cmath>

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
  const moment_sums& sums = points.moments();
  const double trace = sums.second[0] + sums.second[1] + sums.second[2];
  usable_ = trace > least && trace < greatest && sums.square > least && sums.square < greatest;
  form_.count = count;
  for (int k = 0; k < 3; ++k) form_.mean[k] = sums.first[k] / count;
  for (int k = 0; k < 6; ++k) form_.second[k] = sums.second[k];
  for (int k = 0; k < 6; ++k) form_.weighted[k] = sums.weighted[k];
  form_.form_margin = 128 * u * trace;
  const double mean_error = 1.1 * (count + 5) * u * std::sqrt(sums.square / count);
  form_.mean_margin = count * mean_error * mean_error;
  form_.mean_margin_root = 1.1 * std::sqrt(form_.mean_margin);
  form_.residual_margin = 3.5 * u * std::sqrt(sums.square) + 1.1 * u * form_.mean_margin_root;
  form_.factor = 1.1 * (count + 2) * u + outward;
  // The weighted products carry a rounding for each block, and |s|^2 <= T.
  double rest = form_.mean_margin + 3 * form_.residual_margin * form_.residual_margin + 10 * u * u * trace;
  for (const double m : form_.mean) rest += count * m * m;
  form_.sum_margin = 200 * u * count * rest + 1.1 * u * count * (count + 100) * u * trace;
  form_.sum_factor = 4 * u + outward;
}

direction_bounds::direction_bounds(const point_arrays& par, const point_arrays& perp) {
  const double origin[3] = {0, 0, 0};
  moment_sums a, b;
  geometry().moments(par, origin, &a, nullptr);
  geometry().moments(perp, origin, &b, nullptr);
  constant_ = static_cast<double>(par.n);
  for (int k = 0; k < 6; ++k) second_[k] = b.second[k] - a.second[k];
  const double magnitude = constant_ + a.square + b.square;
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
