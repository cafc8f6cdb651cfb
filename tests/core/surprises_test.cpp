// What headers and documents say of the traps, run.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tessarn/tessarn.h"

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(Surprises, APlaneWithANaNIsNotEqualToItself) {
  plane p(vector3d(1, 2, 3), vector3d(0, 0, 1));
  EXPECT_TRUE(p == p);
  p.normal.x = nan;
  EXPECT_FALSE(p == p);
  const vector3d v(1, nan, 2);
  EXPECT_TRUE(v == v);
}

TEST(Surprises, AnUpwardNormalIsNotAlwaysRestoredExactly) {
  const plane exact(vector3d(0, 0, 0), vector3d(0, 0, 5));
  EXPECT_TRUE(exact.axis1.x == 1 && exact.axis2.y == 1);
  const plane off(vector3d(0, 0, 0), vector3d(0, 0, 49));
  EXPECT_TRUE(off.normal.z != 1 && std::isnan(static_cast<double>(off.axis1.x)));
  const plane down(vector3d(0, 0, 0), vector3d(0, 0, -1));
  EXPECT_TRUE(std::isnan(static_cast<double>(down.axis1.x)));
}

TEST(Surprises, OnlyTheDependentComponentOfCalcNormaleIsNotNegative) {
  const vector3d along[] = {vector3d(-0.6, -0.2, 0.77)};
  vector3d n;
  ASSERT_TRUE(plane::CalcNormale(n, along, 1, NULL, 0));
  EXPECT_TRUE(n.x < 0 && n.y < 0 && n.z > 0);
}

TEST(Surprises, TheInverseOfQuarterTurnsAndPermutationsIsNaN) {
  mat<long double> inverse;
  mat<long double>{{0, -1}, {1, 0}}.invert(inverse);
  EXPECT_TRUE(std::isnan(static_cast<double>(inverse.get(1, 0))));
  mat<long double>{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}.invert(inverse);
  bool any = false;
  for (int i = 0; i < 9; ++i) any |= std::isnan(static_cast<double>(inverse.getData()[i]));
  EXPECT_TRUE(any);
  mat<long double>{{0, 1, 0, 0}, {1, 0, 0, 0}, {0, 0, 0, 1}, {0, 0, 1, 0}}.invert(inverse);
  EXPECT_TRUE(std::isnan(static_cast<double>(inverse.get(1, 0))));
  // What to write instead: the columns of the identity, one system each.
  const sqmat<long double> turn{{0, -1}, {1, 0}};
  mat<long double> first{{1}, {0}};
  turn.solve(first);
  EXPECT_TRUE(first.get(0, 0) == 0 && first.get(0, 1) == -1);
}

TEST(Surprises, InvertStoresInfinitiesAndNaNAsTheyAre) {
  mat<long double> inverse;
  mat<long double>{{1, 2}, {2, 4}}.invert(inverse);
  bool finite = true;
  for (int i = 0; i < 4; ++i) finite &= std::isfinite(static_cast<double>(inverse.getData()[i]));
  EXPECT_FALSE(finite);
}

TEST(Surprises, ANegativeLimitKeepsPointsNearANaN) {
  vectormat list;
  for (int i = 0; i < 20; ++i) list.add(vector(i, i == 0 ? nan : 1));
  list.DeleteErrors(-1);
  EXPECT_EQ(list.size(), 6u);
}

TEST(Surprises, TheTouchingEndComesBackUpToRounding) {
  int changed = 0;
  for (int i = 1; i <= 1000; ++i) {
    const vector3d touching(i * 0.1, i * 0.37, 0), below(i * 0.7, -i * 0.3, -i * 0.9);
    vector3d x;
    ASSERT_TRUE(line3d(touching, below).cut(plane(vector3d(0, 0, 0), vector3d(0, 0, 1)), x));
    changed += !(x == touching);
    EXPECT_NEAR(static_cast<double>(x.x), static_cast<double>(touching.x), 1e-13);
  }
  EXPECT_TRUE(changed > 0 && changed < 1000);
}

TEST(Surprises, AnglesOfExtremeLengthsAreWrong) {
  EXPECT_NE(vector(1e-170, 1e-170).dirarc(vector(1, 1)), 0);
  EXPECT_EQ(vector3d(1e160, 0, 0).arc(vector3d(1e160, 1e160, 0)), 0);
  EXPECT_EQ(cplx(1e-170, 1e-170).phi(), 0);
}

TEST(Surprises, RightHandSidesOfFailedFitsAreTheirSums) {
  const vector vertical[] = {{3, 1}, {3, 2}, {3, 4}};
  binom p;
  p.create(vertical, 3, 2);
  EXPECT_TRUE(p.get(0) == 7 && p.get(1) == 21);
  const vectormat list{{3, 1}, {3, 2}, {3, 4}};
  EXPECT_EQ(list.avdir().y, 21);
}

TEST(Surprises, ANaNOrdinateTakesPart) {
  const vector points[] = {{0, 1}, {1, nan}, {2, 3}};
  binom p;
  p.create(points, 3, 2);
  EXPECT_TRUE(p.get(0) == 0 && p.get(1) == 0);
}

}  // namespace
