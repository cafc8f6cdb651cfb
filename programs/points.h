// Space points from a table, and angles between directions.
#pragma once

#include <tessarn/tessarn.h>

#include <cmath>
#include <vector>

#include "support/table.h"

namespace program {

inline std::vector<vector3d> space_points(const table& t) {
  std::vector<vector3d> points;
  for (std::size_t i = 0; i < t.rows(); ++i) points.emplace_back(t.at(i, 0), t.at(i, 1), t.at(i, 2));
  return points;
}

// The angle between two directions, exact also for very small ones, where the arc cosine is not.
inline double small_angle(const vector3d& a, const vector3d& b) { return std::atan2(a.cross(b).lenld(), a * b); }

}  // namespace program
