// The distinct points of a cloud, and the points of it that are farthest away.
#include "geometry/cloud.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "support/bits.h"
#include "support/random.h"

namespace {

using tessarn::detail::cloud;

std::vector<vector3d> distinct(const std::vector<vector3d>& points) {
  std::vector<vector3d> kept;
  for (std::size_t i = 0; i < points.size(); ++i) {
    bool later = false;
    for (std::size_t j = i + 1; j < points.size() && !later; ++j)
      later = points[j].x == points[i].x && points[j].y == points[i].y && points[j].z == points[i].z;
    if (!later) kept.push_back(points[i]);
  }
  return kept;
}

double drawn(test::random_source& r, unsigned kind) {
  if (kind == 0) return r.hostile();
  if (kind == 1) return r.uniform();
  if (kind == 2) return r.below(2) ? -0.0 : static_cast<double>(r.below(5));
  return 0.25 * r.below(12);
}

std::vector<vector3d> drawn_points(test::random_source& r) {
  std::vector<vector3d> points;
  const unsigned kind = r.below(4), n = 3 + r.below(r.below(2) ? 20 : 700);
  for (unsigned i = 0; i < n; ++i) {
    if (i > 0 && r.below(8) == 0) {
      points.push_back(points[r.below(i)]);
    } else {
      const double x = drawn(r, kind), y = drawn(r, kind);
      points.emplace_back(x, y, drawn(r, kind));
    }
  }
  return points;
}

void expect_point(const vector3d& a, const vector3d& b) {
  EXPECT_BITS(a.x, b.x);
  EXPECT_BITS(a.y, b.y);
  EXPECT_BITS(a.z, b.z);
}

TEST(Cloud, KeepsTheLastOfEqualPoints) {
  test::random_source r(91);
  for (int round = 0; round < 400; ++round) {
    std::vector<vector3d> points = drawn_points(r);
    const cloud c(points.data(), static_cast<tessarn::ulong>(points.size()));
    const std::vector<vector3d> kept = distinct(points);
    ASSERT_EQ(c.size(), kept.size());
    for (std::size_t i = 0; i < kept.size(); ++i) expect_point(c.point(i), kept[i]);
    ASSERT_FALSE(HasFailure()) << "round " << round;
  }
}

// The first of the farthest ones, strictly farther than the start; distances that differ in the squares only are equal.
TEST(Cloud, CentroidOfTheDistinctPointsInTheirOrder) {
  test::random_source r(92);
  for (int round = 0; round < 400; ++round) {
    const std::vector<vector3d> points = drawn_points(r);
    vector3d sum;
    const std::vector<vector3d> kept = distinct(points);
    for (const vector3d& p : kept) sum += p;
    expect_point(cloud(points.data(), static_cast<tessarn::ulong>(points.size())).centroid(),
                 sum / static_cast<double>(kept.size()));
  }
}

TEST(Cloud, FarthestPoints) {
  test::random_source r(92);
  for (int round = 0; round < 600; ++round) {
    std::vector<vector3d> points = drawn_points(r);
    if (r.below(3) == 0)  // nearly the same distance from the origin
      for (vector3d& p : points) p = vector3d(1 + std::ldexp(1.0 * r.below(1000), -52), r.below(2) ? 1 : -1, 1e-9 * r.below(3));
    const cloud c(points.data(), static_cast<tessarn::ulong>(points.size()));
    const vector3d a = r.below(2) ? vector3d() : points[r.below(static_cast<unsigned>(points.size()))];
    const vector3d b = points[r.below(static_cast<unsigned>(points.size()))];
    vector3d one = a, two = a;
    double far_one = 0, far_two = (a - a).lenld() + (a - b).lenld();
    for (std::size_t i = 0; i < c.size(); ++i) {
      const vector3d p = c.point(i);
      if ((p - a).lenld() > far_one) one = p, far_one = (p - a).lenld();
      const double sum = (p - a).lenld() + (p - b).lenld();
      if (sum > far_two) two = p, far_two = sum;
    }
    expect_point(c.farthest_from(a), one);
    expect_point(c.farthest_from_centroid(), c.farthest_from(c.centroid()));
    expect_point(c.farthest_from(a, b), two);
    ASSERT_FALSE(HasFailure()) << "round " << round;
  }
}

}  // namespace
