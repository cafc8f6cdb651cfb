#include "analysis/outermost.h"

#include <algorithm>
#include <limits>

#include "analysis/hull.h"

namespace tessarn::analysis {

namespace {

// Directions of the axes, of the edges and of the corners of a cube.
constexpr int directions = 13;
constexpr int cube[directions][3] = {{1, 0, 0}, {0, 1, 0},  {0, 0, 1}, {1, 1, 0},  {1, -1, 0}, {1, 0, 1},  {1, 0, -1},
                                     {0, 1, 1}, {0, 1, -1}, {1, 1, 1}, {1, 1, -1}, {1, -1, 1}, {1, -1, -1}};

// For fewer points the hull of all is found sooner.
constexpr std::size_t few = 64;

std::vector<std::size_t> all_numbers(std::size_t n) {
  std::vector<std::size_t> all(n);
  for (std::size_t i = 0; i < n; ++i) all[i] = i;
  return all;
}

// The cube is that in which the set is as wide in all directions; false where it has no extent in one.
bool choose_directions(const eigen_system<3>& axes, double (&d)[directions][3]) noexcept {
  double factors[3];
  for (int k = 0; k < 3; ++k) {
    if (!(axes.values[k].high > 0)) return false;
    factors[k] = std::sqrt(axes.values[2].high / axes.values[k].high);
  }
  for (int i = 0; i < directions; ++i)
    for (int c = 0; c < 3; ++c) {
      d[i][c] = 0;
      for (int k = 0; k < 3; ++k) d[i][c] += cube[i][k] * factors[k] * axes.vectors[k][c].high;
    }
  return true;
}

// The numbers of the extreme points, each once.
std::vector<std::size_t> extreme_points(point_arrays& points, const detail::local_columns& lattice,
                                        const double (&d)[directions][3]) {
  double values[16 * directions], places[16 * directions] = {};
  for (int i = 0; i < directions; ++i) {
    std::fill_n(values + 16 * i, 8, -std::numeric_limits<double>::infinity());
    std::fill_n(values + 16 * i + 8, 8, std::numeric_limits<double>::infinity());
  }
  std::size_t last_part = 0;
  for_each_part(points, [&](std::size_t i, std::size_t count) {
    last_part = i;
    detail::shape_kernels_in_use().find_extremes(lattice, d, directions, whole_vectors(count), static_cast<double>(i),
                                                 values, places);
  });
  std::vector<std::size_t> found;
  for (int i = 0; i < 2 * directions; ++i) {
    const double* v = values + 8 * i;
    const double* best = i % 2 == 0 ? std::max_element(v, v + 8) : std::min_element(v, v + 8);
    const auto number = static_cast<std::size_t>(places[best - values]);
    found.push_back(number < points.size() ? number : last_part);  // a copy that fills up a vector
  }
  // With a comparison of its own: libc++ keeps its sorting of numbers in a library that the module does without.
  std::sort(found.begin(), found.end(), [](std::size_t a, std::size_t b) { return a < b; });
  found.erase(std::unique(found.begin(), found.end()), found.end());
  return found;
}

struct facet_plane {
  double c[4];
};

// A facet as the kernel takes it: its normal, and the offset of its plane less a bound of all errors.
//
// With P, the sum over the coordinates of (|u_i v_j| + |u_j v_i|) times the largest offset of a point from the origin,
// and e = 2^-53: the normal is off by at most 5 e of its two products in each coordinate, an offset by e of itself, and
// the sums of the products, once here for a corner and once for every point, round by at most 5 e P each, since the
// offset of the plane is at most P as well. All together stay below 40 e P.
facet_plane plane_of(const lattice_point (&corners)[3], const detail::local_columns& lattice,
                     const double (&extents)[3]) noexcept {
  facet_plane f;
  double offset = 0, sum = 0;
  for (int k = 0; k < 3; ++k) {
    const int i = (k + 1) % 3, j = (k + 2) % 3;
    const double ui = corners[1].c[i] - corners[0].c[i], uj = corners[1].c[j] - corners[0].c[j];
    const double vi = corners[2].c[i] - corners[0].c[i], vj = corners[2].c[j] - corners[0].c[j];
    f.c[k] = ui * vj - uj * vi;
    offset += f.c[k] * (corners[0].c[k] - lattice.origin[k]);
    sum += (magnitude(ui * vj) + magnitude(uj * vi)) * extents[k];
  }
  f.c[3] = offset - 0x1p-47 * sum;
  return f;
}

}  // namespace

std::vector<std::size_t> outermost_points(point_arrays& points, const detail::local_columns& lattice,
                                          const eigen_system<3>& axes) {
  double d[directions][3];
  if (points.size() < few || !choose_directions(axes, d)) return all_numbers(points.size());
  std::vector<lattice_point> extreme;
  for (const std::size_t i : extreme_points(points, lattice, d)) {
    points.load(i / point_arrays::part * point_arrays::part);
    lattice_point p;
    for (int k = 0; k < 3; ++k) p.c[k] = lattice_coordinate(lattice, k, points.column(k)[i % point_arrays::part]);
    const auto equal = [&](const lattice_point& q) { return std::equal(p.c, p.c + 3, q.c); };
    if (std::none_of(extreme.begin(), extreme.end(), equal)) extreme.push_back(p);
  }
  const convex_hull hull = hull_of(extreme);
  if (hull.kind != hull_kind::body) return all_numbers(points.size());
  double extents[3];
  for (int k = 0; k < 3; ++k) {
    const double low = lattice_coordinate(lattice, k, points.least(k)) - lattice.origin[k];
    const double high = lattice_coordinate(lattice, k, points.greatest(k)) - lattice.origin[k];
    extents[k] = std::max(magnitude(low), magnitude(high));
  }
  std::vector<facet_plane> facets;
  for (const hull_facet& f : hull.facets) {
    const auto at = [&](int i) { return extreme[static_cast<std::size_t>(f.v[i])]; };
    facets.push_back(plane_of({at(0), at(1), at(2)}, lattice, extents));
  }
  std::vector<std::size_t> kept, some(std::min(points.size(), point_arrays::part));
  for_each_part(points, [&](std::size_t i, std::size_t count) {
    const std::size_t found =
        detail::shape_kernels_in_use().keep_outside(lattice, &facets[0].c, facets.size(), count, some.data());
    for (std::size_t k = 0; k < found; ++k) kept.push_back(i + some[k]);
  });
  return kept;
}

}  // namespace tessarn::analysis
