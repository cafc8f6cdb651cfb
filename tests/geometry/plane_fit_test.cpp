// The fit of a plane to a cloud of points.
#include <gtest/gtest.h>
#include <tessarn/geometry.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "plain/plane_fit.h"
#include "support/pairs.h"
#include "support/time_limit.h"

namespace {

using plain::vec3;
using test::same;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

std::vector<vector3d> lib_points(const std::vector<vec3>& points) {
  std::vector<vector3d> v;
  for (const vec3& p : points) v.push_back(test::lib(p));
  return v;
}

plane fitted(const std::vector<vec3>& points) {
  std::vector<vector3d> v = lib_points(points);
  return WITHIN(60, plane(v.data(), static_cast<tessarn::ulong>(v.size())));
}

TEST(PlaneFit, FourPointsOfALevelPlane) {
  plane p = fitted({{0, 0, 1}, {1, 0, 1}, {0, 1, 1}, {1, 1, 1}});
  EXPECT_EQ(p.normal.x, 0.0);
  EXPECT_EQ(p.normal.y, 0.0);
  EXPECT_BITS(p.normal.z, 1.0);
  EXPECT_EQ(p.origin.x, 0.0);
  EXPECT_EQ(p.origin.y, 0.0);
  EXPECT_BITS(p.origin.z, 1.0);
  EXPECT_TRUE(same(p.axis1, vec3{1, 0, 0}));
  EXPECT_TRUE(same(p.axis2, vec3{0, 1, 0}));
}

TEST(PlaneFit, DuplicatesCountOnce) {
  plane p = fitted({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 1, 0}});
  EXPECT_EQ(p.normal.x, 0.0);
  EXPECT_EQ(p.normal.y, 0.0);
  EXPECT_BITS(p.normal.z, 1.0);
  EXPECT_TRUE(same(p.origin, vec3{0, 0, 0}));
}

TEST(PlaneFit, ThreePointsAreNotCorrectedInSign) {
  plane p = fitted({{0, 0, 0}, {0, 1, 0}, {1, 0, 0}});
  EXPECT_EQ(p.normal.x, 0.0);
  EXPECT_EQ(p.normal.y, 0.0);
  EXPECT_BITS(p.normal.z, -1.0);
  EXPECT_BITS(p.axis1.x, nan);
  EXPECT_BITS(p.axis1.y, nan);
  EXPECT_TRUE(same(p.axis2, vec3{nan, nan, nan}));
}

TEST(PlaneFit, TooLittleDataLeavesZeros) {
  EXPECT_TRUE(same(fitted({}), plain::plane{}));
  EXPECT_TRUE(same(fitted({{1, 2, 3}, {4, 5, 6}}), plain::plane{}));
  EXPECT_TRUE(same(fitted(std::vector<vec3>(5, {1, 2, 3})), plain::plane{}));
  EXPECT_TRUE(same(fitted({{1, 2, 3}, {4, 5, 6}, {1, 2, 3}, {4, 5, 6}}), plain::plane{}));
  EXPECT_TRUE(same(plane(static_cast<vector3d*>(nullptr), 7), plain::plane{}));
  // Zeros of both signs are the same point.
  EXPECT_TRUE(same(fitted({{0.0, 0, 1}, {-0.0, 0, 1}, {0, -0.0, 1}, {5, 5, 5}}), plain::plane{}));
}

// Of equal points the last is kept, which decides the order of the three that are left.
TEST(PlaneFit, TheLastOfEqualPointsIsKept) {
  const std::vector<vec3> points{{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {0, 0, 0}, {0, 1, 0}};
  plane p = fitted(points);
  EXPECT_TRUE(same(p, plain::fit_plane(points)));
  // The three left are (1, 0, 0), (0, 0, 0), (0, 1, 0).
  EXPECT_BITS(p.normal.z, -1.0);
}

TEST(PlaneFit, CollinearPointsEnd) {
  for (const std::vector<vec3>& points : {std::vector<vec3>{{0, 0, 0}, {1, 1, 1}, {2, 2, 2}},
                                          std::vector<vec3>{{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {3, 3, 3}, {4, 4, 4}},
                                          std::vector<vec3>{{1, 2, 3}, {1, 2, 4}, {1, 2, 5}, {1, 2, 9}}}) {
    plane p = fitted(points);
    EXPECT_TRUE(same(p, plain::fit_plane(points)));
    EXPECT_BITS(p.normal.x, nan);
  }
}

TEST(PlaneFit, NanAndInfinityEnd) {
  test::random_source r(131);
  for (int round = 0; round < 400; ++round) {
    std::vector<vec3> points;
    const std::size_t n = 3 + r.below(12);
    for (std::size_t i = 0; i < n; ++i) points.push_back(test::draw_vec3(r));
    SCOPED_TRACE("round " + std::to_string(round));
    plane p = fitted(points);
    ASSERT_TRUE(same(p, plain::fit_plane(points)));
  }
  for (const double bad : {nan, inf, -inf, 1e200, 1e308}) {
    for (std::size_t n : {3u, 4u, 9u}) {
      for (std::size_t at = 0; at < n; ++at) {
        std::vector<vec3> points;
        for (std::size_t i = 0; i < n; ++i) points.push_back({r.uniform(), r.uniform(), 0});
        points[at].y = bad;
        plane p = fitted(points);
        ASSERT_TRUE(same(p, plain::fit_plane(points))) << n << " points, " << test::hex(bad);
      }
    }
  }
}

// Far from the origin every cell rounds to a perfect fit: the lowest cell wins and the search is
// over.
TEST(PlaneFit, APerfectFitEndsTheSearch) {
  const double z = 1e17;
  const std::vector<vec3> points{{0, 0, z}, {1, 0, z}, {0, 1, z}, {1, 1, z}};
  plane p = fitted(points);
  EXPECT_TRUE(same(p, plain::fit_plane(points)));
  EXPECT_NEAR(p.normal.x, -0.01, 1e-15);
  EXPECT_NEAR(p.normal.y, -0.01, 1e-15);
}

// The sum of the abscissas overflows and no cell has a finite cost: the guess from the extreme
// points, which starts at the first point, is the result.
TEST(PlaneFit, InfiniteCentroid) {
  const double x = 1.5e308;
  const std::vector<vec3> points{{x, 0, 0}, {x, 1, 0}, {x, 0, 2}, {x, 3, 3}, {x, 1, 2}};
  plane p = fitted(points);
  EXPECT_TRUE(same(p, plain::fit_plane(points)));
  EXPECT_BITS(std::fabs(p.normal.x), 1.0);
  EXPECT_EQ(p.normal.y, 0.0);
  EXPECT_EQ(p.normal.z, 0.0);
  EXPECT_BITS(p.origin.x, x);
}

TEST(PlaneFit, NanPointsAreNeverDuplicates) {
  const std::vector<vec3> points(4, {nan, 0, 0});
  plane p = fitted(points);
  EXPECT_BITS(p.normal.x, nan);
  EXPECT_TRUE(same(p, plain::fit_plane(points)));
}

// Points of the plane through o with the unit normal n, with noise along z.
std::vector<vec3> cloud(test::random_source& r, std::size_t n, const vec3& normal, double offset, double noise) {
  std::vector<vec3> points;
  for (std::size_t i = 0; i < n; ++i) {
    const double x = r.uniform(-2, 2), y = r.uniform(-2, 2);
    const double z = (offset - normal.x * x - normal.y * y) / normal.z;
    points.push_back({x, y, z + noise * r.normal()});
  }
  return points;
}

TEST(PlaneFit, AgreesWithThePlainFormOnNoisyPlanes) {
  test::random_source r(132);
  for (int round = 0; round < 150; ++round) {
    vec3 n = plain::unit({r.uniform(), r.uniform(), r.uniform(0.1, 1)});
    const double noise = round % 3 == 0 ? 0.0 : std::pow(10.0, r.uniform(-8, 0));
    const std::vector<vec3> points = cloud(r, 4 + r.below(40), n, r.uniform(-3, 3), noise);
    plane p = fitted(points);
    ASSERT_TRUE(same(p, plain::fit_plane(points))) << "round " << round;
  }
}

// Several blocks of points, some of them more than once.
TEST(PlaneFit, AgreesWithThePlainFormOnLargerClouds) {
  test::random_source r(137);
  for (int round = 0; round < 25; ++round) {
    const vec3 n = plain::unit({r.uniform(), r.uniform(), r.uniform(0.2, 1)});
    std::vector<vec3> points = cloud(r, 100 + r.below(1200), n, r.uniform(-3, 3), std::pow(10.0, r.uniform(-9, 0)));
    for (unsigned k = r.below(3) * r.below(40); k > 0; --k) {
      const vec3 repeated = points[r.below(static_cast<unsigned>(points.size()))];
      points[r.below(static_cast<unsigned>(points.size()))] = repeated;
    }
    plane p = fitted(points);
    ASSERT_TRUE(same(p, plain::fit_plane(points))) << "round " << round;
  }
}

// Small integers give equal distances and equal costs, which the tie rules decide.
TEST(PlaneFit, AgreesWithThePlainFormOnGrids) {
  test::random_source r(133);
  for (int round = 0; round < 300; ++round) {
    std::vector<vec3> points;
    const std::size_t n = 3 + r.below(14);
    for (std::size_t i = 0; i < n; ++i) {
      points.push_back({r.below(3) - 1.0, r.below(3) - 1.0, r.below(round % 2 ? 2 : 4) - 1.0});
    }
    plane p = fitted(points);
    ASSERT_TRUE(same(p, plain::fit_plane(points))) << "round " << round;
  }
}

TEST(PlaneFit, AgreesWithThePlainFormOnSteepPlanes) {
  test::random_source r(134);
  for (int round = 0; round < 60; ++round) {
    std::vector<vec3> points;
    for (int i = 0; i < 20; ++i) {
      points.push_back({r.uniform(-1e-3, 1e-3) * (round % 5), r.uniform(), r.uniform(-5, 5)});
    }
    plane p = fitted(points);
    ASSERT_TRUE(same(p, plain::fit_plane(points))) << "round " << round;
  }
}

TEST(PlaneFit, FindsTheLeastSquaresPlane) {
  test::random_source r(135);
  for (int round = 0; round < 30; ++round) {
    vec3 n = plain::unit({r.uniform(-0.5, 0.5), r.uniform(-0.5, 0.5), 1});
    const std::vector<vec3> points = cloud(r, 200, n, 1.5, 1e-3);
    plane p = fitted(points);
    EXPECT_NEAR(p.normal * test::lib(n), 1, 1e-5);
    auto cost = [&](double x, double y) { return plain::evaluate_cell(x, y, points).cost; };
    const double best = cost(p.normal.x, p.normal.y);
    for (const double d : {3e-6, -3e-6}) {
      EXPECT_GE(cost(p.normal.x + d, p.normal.y), best);
      EXPECT_GE(cost(p.normal.x, p.normal.y + d), best);
    }
  }
}

TEST(PlaneFit, ManyDuplicatesTakeNoQuadraticTime) {
  test::random_source r(136);
  std::vector<vec3> points;
  for (int i = 0; i < 60000; ++i) {
    points.push_back({double(r.below(100)), double(r.below(100)), 0.5});
  }
  plane p = fitted(points);
  EXPECT_BITS(p.normal.z, 1.0);
  EXPECT_BITS(p.origin.z, 0.5);
}

TEST(PlaneFit, LeavesThePointsAlone) {
  const std::vector<vec3> points{{0, 0, 1}, {1, 0, 1}, {0, 1, 1}, {1, 1, 2}};
  std::vector<vector3d> v = lib_points(points);
  plane p(v.data(), 4);
  for (std::size_t i = 0; i < 4; ++i) EXPECT_TRUE(same(v[i], points[i]));
  const std::vector<vector3d>& constant = v;
  plane q(constant.data(), 4);
  EXPECT_TRUE(p == q);
}

}  // namespace
