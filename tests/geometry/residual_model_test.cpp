// The cell that the model finds must be that of the least sum, strictly and in every build.
#include "geometry/residual_model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "geometry/bounds.h"
#include "simd/isa.h"
#include "support/instruction_set.h"
#include "support/random.h"

namespace {

using tessarn::detail::candidate_lanes;
using tessarn::detail::cloud;
using tessarn::detail::isa;
using tessarn::detail::residual_bounds;
using tessarn::detail::residual_model;

double power(test::random_source& random, unsigned exponents, int least) {
  return std::ldexp(random.uniform(0.5, 1), static_cast<int>(random.below(exponents)) + least);
}

struct random_plane {
  std::vector<vector3d> points;
  double x, y;  // of its normal
};

// Its tilt, the extent and the noise vary, and its distance from the origin.
random_plane draw_plane(test::random_source& random) {
  const double extent_x = power(random, 12, -6), extent_y = random.below(3) ? extent_x : power(random, 12, -6);
  const double noise = extent_x * power(random, 30, -29);
  const double away = random.below(2) ? 0 : power(random, 14, -2);
  const double slope_x = 4 * power(random, 9, -8) * random.uniform();
  const double slope_y = 4 * power(random, 9, -8) * random.uniform();
  const std::size_t n = 4 + random.below(random.below(8) ? 40 : 600);
  random_plane p;
  for (std::size_t i = 0; i < n; ++i) {
    const double x = extent_x * random.uniform(), y = extent_y * random.uniform();
    p.points.emplace_back(x + away, y - away, slope_x * x + slope_y * y + away + noise * random.normal());
  }
  const double length = std::sqrt(slope_x * slope_x + slope_y * slope_y + 1);
  p.x = -slope_x / length;
  p.y = -slope_y / length;
  return p;
}

double sum_of_squares(const cloud& points, double cell_x, double cell_y) {
  const double x[candidate_lanes] = {cell_x}, y[candidate_lanes] = {cell_y};
  const double z[candidate_lanes] = {std::sqrt(1 - cell_x * cell_x - cell_y * cell_y)};
  double mean[candidate_lanes], cost[candidate_lanes];
  tessarn::detail::geometry_kernels_in_use().residuals(points.arrays(), x, y, z, mean, cost);
  return cost[0];
}

void expect_least(const cloud& points, int best, double x, double y, double step) {
  double cost[9];
  for (int k = 0; k < 9; ++k) cost[k] = sum_of_squares(points, x + (k % 3 - 1) * step, y + (k / 3 - 1) * step);
  EXPECT_GT(cost[best], 0);
  for (int k = 0; k < 9; ++k) {
    if (k == best) continue;
    EXPECT_GT(cost[k], cost[best]) << "cell " << k << " of step " << step;
  }
}

TEST(ResidualModel, FindsTheCellOfTheLeastSum) {
  test::random_source random(75);
  int decided = 0, all = 0;
  for (int round = 0; round < 1200; ++round) {
    test::use_set_of_round(static_cast<int>(round));
    const random_plane p = draw_plane(random);
    const cloud points(p.points.data(), static_cast<tessarn::ulong>(p.points.size()));
    const residual_bounds bounds(points);
    residual_model model(bounds.form(), bounds.usable());
    for (double step = 0.01; step > 1e-8; step *= 0.25) {
      // Near the edges between the cells it may not decide too early, near the base and away from it.
      const double x = p.x + step * random.uniform(-2, 2), y = p.y + step * random.uniform(-2, 2);
      const int best = model.best(x, y, step);
      ++all;
      if (best == residual_model::undecided) continue;
      ++decided;
      expect_least(points, best, x, y, step);
    }
    ASSERT_FALSE(HasFailure()) << "round " << round;
  }
  test::use_set_of_run();
  EXPECT_GT(decided, all / 3);
}

// Costs of two cells that are equal in exact arithmetic leave it to the sums.
TEST(ResidualModel, LeavesTiesUndecided) {
  test::random_source random(76);
  for (int round = 0; round < 100; ++round) {
    std::vector<vector3d> points;
    for (int i = 0; i < 6; ++i) {
      const double x = random.uniform(), y = random.uniform(), z = 0.1 * random.uniform();
      for (const double sign : {1.0, -1.0}) {
        points.emplace_back(sign * x, y, z);  // a mirror image of itself in x
        points.emplace_back(sign * x, -y, z);
      }
    }
    const cloud distinct(points.data(), static_cast<tessarn::ulong>(points.size()));
    const residual_bounds bounds(distinct);
    residual_model model(bounds.form(), bounds.usable());
    for (double step = 0.01; step > 1e-6; step *= 0.5) {
      EXPECT_EQ(model.best(0.5 * step, 0, step), residual_model::undecided);  // between two columns
      EXPECT_EQ(model.best(0, -0.5 * step, step), residual_model::undecided);
      EXPECT_EQ(model.best(0, 0, step), 4);
      EXPECT_EQ(model.best(step, -step, step), 4 + 3 - 1);
      EXPECT_EQ(model.best(-step, step, step), 4 - 3 + 1);
    }
  }
}

TEST(ResidualModel, SaysNothingAboutPerfectSteepOrUndefinedPlanes) {
  for (const double noise : {0.0, 1e-9, std::nan(""), 1e-3}) {
    const std::vector<vector3d> points{{0, 0, 1 + noise}, {1, 0, 1}, {0, 1, 1}, {1, 1, 1}, {2, 1, 1 - noise}};
    const cloud distinct(points.data(), 5);
    const residual_bounds bounds(distinct);
    residual_model model(bounds.form(), bounds.usable());
    EXPECT_EQ(model.best(0, 0, 0.01) == residual_model::undecided, noise != 1e-3) << noise;
    EXPECT_EQ(model.best(0.8, 0.59, 1e-4), residual_model::undecided);
    EXPECT_EQ(model.best(std::nan(""), 0, 1e-4), residual_model::undecided);
    EXPECT_EQ(model.best(1, 1, 1e-4), residual_model::undecided);
  }
}

}  // namespace
