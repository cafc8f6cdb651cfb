// Plane fits and searches for a normal with nothing in one of their arrays, or with many points of
// which few differ. Written for the memory checkers as much as for its expectations.
#include <gtest/gtest.h>

#include <vector>

#include "plain/plane_fit.h"
#include "support/pairs.h"

namespace {

TEST(EmptyInputs, PlanesOfFewDistinctPoints) {
  for (tessarn::ulong n : {0u, 1u, 2u, 3u, 40u, 160u, 161u, 1100u, 70000u}) {
    for (int distinct : {1, 2}) {
      std::vector<vector3d> points;
      for (tessarn::ulong i = 0; i < n; ++i) points.emplace_back(i % static_cast<tessarn::ulong>(distinct), 2, 3);
      ASSERT_TRUE(test::same(plane(points.data(), n), plain::plane{})) << n;
      ASSERT_TRUE(test::same(plane(static_cast<vector3d*>(nullptr), n), plain::plane{})) << n;
    }
    if (n < 4) continue;
    std::vector<vector3d> points(n, vector3d(0, 0, 1));  // three differ
    points[0] = vector3d(1, 0, 1);
    points[1] = vector3d(0, 1, 1);
    const plane p(points.data(), n);
    EXPECT_EQ(p.normal.z, 1);
    EXPECT_EQ(p.origin.z, 1);
  }
}

TEST(EmptyInputs, NormalsOfOneSet) {
  vector3d* const none = nullptr;
  for (tessarn::ulong n : {1u, 2u, 63u, 64u, 65u, 1100u}) {
    std::vector<vector3d> up(n, vector3d(0, 0, 1)), flat;
    for (tessarn::ulong i = 0; i < n; ++i) flat.emplace_back(i % 2, 1 - i % 2, 0);
    for (tessarn::ulong nothing : {0u, 1100u}) {  // the count of a null array plays no part
      vector3d v;
      ASSERT_TRUE(plane::CalcNormale(v, up.data(), n, none, nothing));
      EXPECT_EQ(v.z, 1);
      ASSERT_TRUE(plane::CalcNormale(v, none, nothing, up.data(), n));
      EXPECT_NEAR(v.z, 0, 1e-5);
      if (n > 1) {
        ASSERT_TRUE(plane::CalcNormale(v, none, nothing, flat.data(), n));
        EXPECT_EQ(v.z, 1);
      }
    }
    vector3d v;
    ASSERT_TRUE(plane::CalcNormale(v, up.data(), n, flat.data(), 0));
    EXPECT_EQ(v.z, 1);
    ASSERT_TRUE(plane::CalcNormale(v, up.data(), 0, flat.data(), 0));
    ASSERT_TRUE(plane::CalcNormale(v, up.data(), 0, none, 0));
    EXPECT_FALSE(plane::CalcNormale(v, none, n, none, n));
  }
}

}  // namespace
