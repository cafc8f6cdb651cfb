// Space points from a table, and angles between directions.
#pragma once

#include <tessarn/angles.h>
#include <tessarn/tessarn.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <vector>

#include "support/table.h"

namespace program {

inline std::vector<vector3d> space_points(const table& t) {
  std::vector<vector3d> points;
  for (std::size_t i = 0; i < t.rows(); ++i) points.emplace_back(t.at(i, 0), t.at(i, 1), t.at(i, 2));
  return points;
}

// The functions below take the mathematics of the library, which has the same bits on every system, not the C
// library's.

// The direction of (cosine, sine) in [-pi, pi], by the inverse function that is well conditioned there. The two need
// not have the length 1; (0, 0) gives 0.
inline double angle_of(double sine, double cosine) {
  const double largest = std::max(std::fabs(sine), std::fabs(cosine));
  if (!(largest > 0)) return 0;
  const double y = sine / largest, x = cosine / largest, r = std::sqrt(x * x + y * y);
  if (std::fabs(x) < std::fabs(y)) return std::copysign(tessarn::angles::acos(x / r), y);
  const double slope = tessarn::angles::asin(y / r);
  return x > 0 ? slope : std::copysign(tessarn::pi, y) - slope;
}

// The angle between two directions, exact also for very small ones, where the arc cosine is not.
inline double small_angle(const vector3d& a, const vector3d& b) { return angle_of(a.cross(b).lenld(), a * b); }

// The root of the sum of squares, which neither overflow nor get lost, since the largest value is taken out first.
template <class Values>
double root_of_squares(const Values& values) {
  double largest = 0, sum = 0;
  for (const double v : values) largest = std::max(largest, std::fabs(v));
  if (!(largest > 0) || std::isinf(largest)) return largest;
  for (const double v : values) sum += (v / largest) * (v / largest);
  return largest * std::sqrt(sum);
}

}  // namespace program
