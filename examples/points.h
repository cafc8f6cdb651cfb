// Space points from a table: how far they reach, and angles between them.
#pragma once

#include <tessarn/tessarn.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>
#include <string>
#include <vector>

#include "support/csv.h"
#include "support/report.h"

namespace example {

inline std::vector<vector3d> space_points(const table& t) {
  std::vector<vector3d> points;
  for (std::size_t i = 0; i < t.rows(); ++i) points.emplace_back(t.at(i, 0), t.at(i, 1), t.at(i, 2));
  return points;
}

inline vector3d centroid(const std::vector<vector3d>& points) {
  vector3d sum;
  for (const vector3d& p : points) sum += p;
  return sum / static_cast<double>(points.size());
}

// The power of two at or below the largest of the sizes: dividing by it changes no digit and keeps
// squares from overflowing and vanishing. 1 for sizes of 0.
inline double binary_scale(double largest) {
  return largest > 0 && std::isfinite(largest) ? std::ldexp(1.0, std::ilogb(largest)) : 1.0;
}

inline double largest_coordinate(std::span<const vector3d> points) {
  double largest = 0;
  for (const vector3d& p : points) largest = std::max({largest, std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
  return largest;
}

// The length also where the squares overflow or vanish.
inline double length(const vector3d& v) {
  const double scale = binary_scale(largest_coordinate(std::span(&v, 1)));
  return scale * vector3d(v.x / scale, v.y / scale, v.z / scale).lenld();
}

inline double root_mean_square(const std::vector<double>& values) {
  double largest = 0, sum = 0;
  for (const double v : values) largest = std::max(largest, std::fabs(v));
  const double scale = binary_scale(largest);
  for (const double v : values) sum += (v / scale) * (v / scale);
  return scale * std::sqrt(sum / static_cast<double>(values.size()));
}

// How far points reach around their centroid: the singular values of the centred points, one a row,
// divided by a power of two.
struct spread {
  vector3d centre;
  std::vector<vector3d> centred;  // divided by the scale
  double scale = 1;
  std::array<double, 3> values{};  // descending, divided by the scale
  double rounding = 0;             // what the rounding of the coordinates alone may give
  vector3d normal;                 // the direction of the smallest value

  bool is_point() const { return values[0] <= rounding; }
  // True when the second value is at most `share` of the first, or not above the rounding.
  bool is_line(double share) const { return values[1] <= std::max(share * values[0], rounding); }
};

// Throws no_result when the points are too far apart for double precision.
inline spread spread_of(const std::vector<vector3d>& points, const std::string& name) {
  spread s;
  s.centre = centroid(points);
  for (const vector3d& p : points) s.centred.push_back(p - s.centre);
  for (const vector3d& p : s.centred)
    if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z))
      throw no_result("the points of " + name + " are too far apart for double precision");
  s.scale = binary_scale(largest_coordinate(s.centred));
  mat<long double> rows, u, values, v;
  rows.create(3, static_cast<tessarn::ulong>(points.size()));
  for (tessarn::ulong y = 0; y < rows.getHeight(); ++y) {
    vector3d& p = s.centred[y];
    p = vector3d(p.x / s.scale, p.y / s.scale, p.z / s.scale);
    rows.set(0, y, p.x);
    rows.set(1, y, p.y);
    rows.set(2, y, p.z);
  }
  rows.decompose(u, values, v);
  for (tessarn::ulong i = 0; i < 3; ++i) s.values[i] = finite(values.get(i, i), "the extent of " + name);
  s.normal = {v.get(2, 0), v.get(2, 1), v.get(2, 2)};
  s.rounding = 4 * std::numeric_limits<double>::epsilon() * largest_coordinate(points) / s.scale *
               std::sqrt(static_cast<double>(points.size()));
  return s;
}

// The angle between two directions, exact also for very small ones, where the arc cosine is not.
inline double small_angle(const vector3d& a, const vector3d& b) { return std::atan2(a.cross(b).lenld(), a * b); }

}  // namespace example
