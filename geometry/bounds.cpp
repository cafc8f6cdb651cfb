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

residual_bounds::residual_bounds(const cloud& points, const vector3d& c) : count_(static_cast<double>(points.size())) {
  const double reference[3] = {static_cast<double>(c.x), static_cast<double>(c.y), static_cast<double>(c.z)};
  moment_sums sums;
  geometry().moments(points.arrays(), reference, &sums);
  const double trace = sums.second[0] + sums.second[1] + sums.second[2];
  usable_ = trace > least && trace < greatest && sums.square > least && sums.square < greatest;
  for (int k = 0; k < 3; ++k) mean_[k] = sums.first[k] / count_;
  for (int k = 0; k < 6; ++k) second_[k] = sums.second[k];
  form_margin_ = 128 * u * trace;
  const double mean_error = 1.1 * (count_ + 5) * u * std::sqrt(sums.square / count_);
  mean_margin_ = count_ * mean_error * mean_error;
  residual_margin_ = 3.5 * u * std::sqrt(sums.square) + 1.1 * u * std::sqrt(mean_margin_);
  factor_ = 1.1 * (count_ + 2) * u;
}

interval residual_bounds::operator()(double x, double y, double z) const {
  const double mean = mean_[0] * x + mean_[1] * y + mean_[2] * z;
  const double square = form(second_, x, y, z) - count_ * (mean * mean);
  const double least_square = square > form_margin_ ? square - form_margin_ : 0;
  const double greatest_square = (square > 0 ? square : 0) + form_margin_;
  const double norm = std::sqrt(greatest_square);
  const double margin = residual_margin_ + 1.1 * u * norm;
  const double low = std::sqrt(least_square) - margin;
  const double high = std::sqrt(greatest_square + mean_margin_) + margin;
  return {low > 0 ? low * low * (1 - factor_ - outward) : 0, high * high * (1 + factor_ + outward)};
}

direction_bounds::direction_bounds(const point_arrays& par, const point_arrays& perp) {
  const double origin[3] = {0, 0, 0};
  moment_sums a, b;
  geometry().moments(par, origin, &a);
  geometry().moments(perp, origin, &b);
  constant_ = static_cast<double>(par.n);
  for (int k = 0; k < 6; ++k) second_[k] = b.second[k] - a.second[k];
  const double magnitude = constant_ + a.square + b.square;
  usable_ = magnitude > least && magnitude < greatest;
  // A term is off by at most 8 roundings of its size, their sum by as many as there are terms, the moments by 22, their
  // difference and the form by 12.
  margin_ = 1.1 * (static_cast<double>(par.n) + static_cast<double>(perp.n) + 48) * u * magnitude;
}

interval direction_bounds::operator()(double x, double y, double z) const {
  const double cost = constant_ + form(second_, x, y, z);
  return {cost - margin_, cost + margin_};
}

}  // namespace tessarn::detail
