#include "points.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

TEST(Angle, IsThatOfTheArcTangentInEveryQuadrant) {
  for (int k = -3600; k <= 3600; ++k) {
    const double wanted = k * tessarn::pi / 3600;
    const double found = program::angle_of(1e200 * std::sin(wanted), 1e200 * std::cos(wanted));
    EXPECT_NEAR(found, std::atan2(std::sin(wanted), std::cos(wanted)), 4.5e-16) << k;
  }
}

TEST(Angle, KeepsSmallAnglesAndTheAxes) {
  EXPECT_EQ(program::angle_of(0, 0), 0);
  EXPECT_EQ(program::angle_of(0, 2), 0);
  EXPECT_EQ(program::angle_of(0, -2), tessarn::pi);
  EXPECT_EQ(program::angle_of(-3, 0), -tessarn::pi / 2);
  EXPECT_DOUBLE_EQ(program::angle_of(1e-300, 1), 1e-300);
}

TEST(RootOfSquares, NeitherOverflowsNorGetsLost) {
  for (const double unit : {1.0, 1e300, 1e-300, 0.0}) {
    const std::vector<double> sides = {3 * unit, -4 * unit, 12 * unit};
    EXPECT_DOUBLE_EQ(program::root_of_squares(sides), 13 * unit);
  }
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(program::root_of_squares(std::vector<double>{1, -infinity}), infinity);
  EXPECT_EQ(program::root_of_squares(std::vector<double>{}), 0);
}

}  // namespace
