// The points of a set that can be corners of its convex hull.
#pragma once

#include <vector>

#include "analysis/eigen3.h"
#include "analysis/orientation.h"
#include "analysis/point_arrays.h"

namespace tessarn::analysis {

// Numbers of points, ascending, among which are all points on the boundary of the convex hull: those left out are
// proved to lie strictly inside. `lattice` takes the coordinates to those of lattice points less the origins, which are
// lattice coordinates too. The axes are those of the scatter; they decide only how many points are left out. Cost:
// O(n), as often as there are directions and facets, some 13 and 48, for some operations in double precision each.
std::vector<std::size_t> outermost_points(point_arrays& points, const detail::local_columns& lattice,
                                          const eigen_system<3>& axes);

// Coordinate k of a point, by its number, as the lattice has it.
inline double lattice_coordinate(const detail::local_columns& lattice, int k, double v) noexcept {
  v = v * lattice.factors[k][0] * lattice.factors[k][1];
  return magnitude(v) < 0x1p-270 ? 0 : v;
}

}  // namespace tessarn::analysis
