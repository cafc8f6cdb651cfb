// Points left out before a convex hull is found, and sums over many points.
#include <gtest/gtest.h>
#include <tessarn/flat.h>

#include <algorithm>
#include <vector>

#include "../support/random.h"
#include "analysis/outermost.h"
#include "analysis/width.h"

namespace {

using namespace tessarn::analysis;
using test::random_source;
using cloud = std::vector<vector3d>;

// The points as flatness() gives them to the filter, whose coordinates are below 2 here.
struct filtered {
  std::vector<lattice_point> places;
  std::vector<std::size_t> kept;

  explicit filtered(const cloud& points) {
    const tessarn::space_points view = points;
    const tessarn::column_view columns[] = {view.x, view.y, view.z};
    point_arrays arrays;
    arrays.take(columns, 3, points.size());
    tessarn::detail::local_columns lattice{};
    double scatter[3][3] = {}, mean[3] = {};
    for (int k = 0; k < 3; ++k) {
      lattice.c[k] = arrays.column(k);
      lattice.factors[k][0] = lattice.factors[k][1] = 1;
      lattice.origin[k] = static_cast<double>(columns[k][0]);
    }
    for (const vector3d& p : points) {
      places.push_back({{static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z)}});
      for (int k = 0; k < 3; ++k) mean[k] += places.back().c[k] / static_cast<double>(points.size());
    }
    for (const lattice_point& p : places)
      for (int r = 0; r < 3; ++r)
        for (int c = r; c < 3; ++c) scatter[r][c] += (p.c[r] - mean[r]) * (p.c[c] - mean[c]);
    doubled entries[3][3];
    for (int r = 0; r < 3; ++r)
      for (int c = 0; c < 3; ++c) entries[r][c] = scatter[r][c];
    kept = outermost_points(arrays, lattice, eigen_of_symmetric(entries));
  }
};

// How many of the points that were left out are not strictly inside the hull of the others, exactly.
int wrongly_left_out(const filtered& f) {
  std::vector<lattice_point> others;
  for (const std::size_t i : f.kept) others.push_back(f.places[i]);
  const auto less = [](const lattice_point& a, const lattice_point& b) {
    return std::lexicographical_compare(a.c, a.c + 3, b.c, b.c + 3);
  };
  const auto equal = [](const lattice_point& a, const lattice_point& b) { return std::equal(a.c, a.c + 3, b.c); };
  std::sort(others.begin(), others.end(), less);
  others.erase(std::unique(others.begin(), others.end(), equal), others.end());
  const convex_hull hull = hull_of(others);
  int wrong = 0;
  for (std::size_t i = 0; i < f.places.size(); ++i) {
    if (std::binary_search(f.kept.begin(), f.kept.end(), i)) continue;
    bool inside = hull.kind == hull_kind::body;
    for (const hull_facet& facet : hull.facets) {
      const auto at = [&](int k) -> const lattice_point& { return others[static_cast<std::size_t>(facet.v[k])]; };
      inside = inside && sign_of_determinant({at(1), at(0)}, {at(2), at(0)}, {f.places[i], at(0)}) < 0;
    }
    wrong += inside ? 0 : 1;
  }
  return wrong;
}

TEST(Outermost, PointsLeftOutLieInside) {
  random_source random(2401);
  for (int round = 0; round < 60; ++round) {
    const double thickness = std::ldexp(1.0, -static_cast<int>(random.below(20))), away = round % 3 == 0 ? 0.9 : 0;
    cloud points;
    for (int i = 0; i < 400; ++i) {
      const double x = random.normal() / 10, y = random.normal() / 10, z = random.normal() / 10 * thickness;
      points.emplace_back(away + (x + y) / 2, away + (x - y) / 2 + z, y / 2 + z);
    }
    const filtered f(points);
    EXPECT_EQ(wrongly_left_out(f), 0) << round;
    EXPECT_LT(f.kept.size(), 200u) << round;
  }
}

// Points on the faces of a box that stands askew, rounded: about half of them lie outside by less than the margin.
TEST(Outermost, PointsNearFacesStay) {
  random_source random(2402);
  for (int round = 0; round < 100; ++round) {
    vector3d axes[3];
    for (vector3d& a : axes) a = vector3d(random.uniform() / 4, random.uniform() / 4, random.uniform() / 4);
    cloud points;
    const auto add = [&](double u, double v, double w) {
      points.emplace_back(u * axes[0].x + v * axes[1].x + w * axes[2].x, u * axes[0].y + v * axes[1].y + w * axes[2].y,
                          u * axes[0].z + v * axes[1].z + w * axes[2].z);
    };
    for (int i = 0; i < 8; ++i) add(i & 1 ? 1 : -1, i & 2 ? 1 : -1, i & 4 ? 1 : -1);
    for (int i = 0; i < 300; ++i) {
      const double side = i % 2 == 0 ? 1 : -1, v = random.uniform(), w = random.uniform();
      if (i % 3 == 0) add(side, v, w);
      if (i % 3 == 1) add(v, side, w);
      if (i % 3 == 2) add(v, w, side);
    }
    for (int i = 0; i < 100; ++i) add(random.uniform() / 2, random.uniform() / 2, random.uniform() / 2);
    const filtered f(points);
    EXPECT_EQ(wrongly_left_out(f), 0) << round;
  }
}

// More points than the arrays take at once, and ends at all places of a vector.
TEST(Outermost, TheZoneIsThatOfAllPoints) {
  random_source random(2403);
  for (std::size_t n = 5000; n < 5010; ++n) {
    cloud points;
    for (std::size_t i = 0; i < n; ++i)
      points.emplace_back(random.normal() / 8, random.normal() / 8, random.normal() / 200);
    points[n - 1].z = 0.9;  // the last point is a corner
    std::vector<lattice_point> places;
    for (const vector3d& p : points)
      places.push_back({{static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z)}});
    const width_of_body w = width_of(places, polytope_of(places, hull_of(places).facets));
    const tessarn::flatness_result f = tessarn::flatness(points);
    EXPECT_EQ(f.zone, w.width.high);
    EXPECT_TRUE(std::find(f.touching, f.touching + 4, n - 1) != f.touching + 4);
    EXPECT_EQ(f.points_used, n);
    double highest = 0;
    for (std::size_t i = 0; i < n; ++i)
      highest = std::max(highest, static_cast<double>(f.middle.residuals.getData()[i]));
    EXPECT_EQ(highest, f.zone / 2);
  }
}

// The mean of equal numbers, whose sums all lose the same part at each step: one number for what a million terms lose
// would itself be rounded too often.
TEST(ShapeSums, ManyTermsLoseNothing) {
  constexpr std::size_t n = 1 << 20;
  const std::vector<double> v(n, 0x1.55555555555fbp0);
  tessarn::detail::local_columns c{};
  for (int k = 0; k < 3; ++k) {
    c.c[k] = v.data();
    c.factors[k][0] = c.factors[k][1] = 1;
  }
  kernel_sums<6> sums;
  tessarn::detail::shape_kernels_in_use().add_products(c, 3, nullptr, n, sums.partial);
  const doubled square = exact_product(v[0], v[0]);
  const doubled lost = sums.sum(0) - square * doubled(static_cast<double>(n));
  EXPECT_LE(std::fabs(lost.high), 0x1p-97 * static_cast<double>(n) * square.high);
}

}  // namespace
