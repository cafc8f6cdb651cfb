// The bounds by which the searches for a normal decide must hold the sums that they stand for, in every build.
#include "geometry/bounds.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "simd/isa.h"
#include "support/bits.h"
#include "support/instruction_set.h"
#include "support/random.h"

namespace {

using tessarn::detail::candidate_lanes;
using tessarn::detail::cloud;
using tessarn::detail::geometry_kernels_in_use;
using tessarn::detail::interval;
using tessarn::detail::isa;

// A random unit vector with z >= 0.
void random_normal(test::random_source& random, double* n) {
  for (;;) {
    n[0] = random.uniform();
    n[1] = random.uniform();
    const double square = n[0] * n[0] + n[1] * n[1];
    if (square > 1) continue;
    n[2] = std::sqrt(1 - n[0] * n[0] - n[1] * n[1]);
    if (n[2] == n[2]) return;
  }
}

// A cloud near a plane: its extent, the noise across it and its distance from the origin vary over many magnitudes.
std::vector<vector3d> random_cloud(test::random_source& random, std::size_t n) {
  const double extent = std::ldexp(1.0, static_cast<int>(random.below(40)) - 20);
  const double noise = extent * std::ldexp(1.0, -static_cast<int>(random.below(60)));
  const double away = std::ldexp(random.uniform(), static_cast<int>(random.below(50)) - 20);
  const double slope_x = random.uniform(), slope_y = random.uniform();
  std::vector<vector3d> points;
  for (std::size_t i = 0; i < n; ++i) {
    const double x = extent * random.uniform(), y = extent * random.uniform();
    points.emplace_back(x + away, y - away, slope_x * x + slope_y * y + away + noise * random.normal());
  }
  return points;
}

struct neighbours {
  double x[candidate_lanes], y[candidate_lanes], z[candidate_lanes], low[candidate_lanes], high[candidate_lanes];
};

TEST(residual_bounds, are_those_of_the_neighbours_row_by_row) {
  test::random_source random(72);
  const double inf = std::numeric_limits<double>::infinity();
  for (int round = 0; round < 300; ++round) {
    test::use_set_of_round(static_cast<int>(round));
    const auto points = random_cloud(random, 4 + random.below(30));
    const cloud distinct(points.data(), static_cast<tessarn::ulong>(points.size()));
    const tessarn::detail::residual_bounds bounds(distinct);
    const double x = random.uniform(), y = random.uniform(), step = 0.01 * random.uniform();
    neighbours all;
    bounds(x, y, step, all.x, all.y, all.z, all.low, all.high);
    for (int k = 0; k < 9; ++k) {
      if (k == 4) continue;
      const int lane = k < 4 ? k : k - 1;
      const double expected_x = x + (k % 3 - 1) * step, expected_y = y + (k / 3 - 1) * step;
      ASSERT_BITS(all.x[lane], expected_x);
      ASSERT_BITS(all.y[lane], expected_y);
      neighbours one;
      bounds(expected_x, expected_y, 0, one.x, one.y, one.z, one.low, one.high);
      ASSERT_BITS(all.low[lane], one.low[lane]);
      ASSERT_BITS(all.high[lane], one.high[lane]);
      const bool outside = expected_x * expected_x + expected_y * expected_y > 1;
      ASSERT_EQ(all.low[lane] == inf, outside);
      ASSERT_EQ(all.high[lane] == inf, outside);
    }
  }
  test::use_set_of_run();
}

TEST(residual_bounds, hold_the_sum_of_squares) {
  test::random_source random(71);
  int narrow = 0, all = 0;
  for (int round = 0; round < 1500; ++round) {
    test::use_set_of_round(static_cast<int>(round));
    const auto points = random_cloud(random, 4 + random.below(300));
    const cloud distinct(points.data(), static_cast<tessarn::ulong>(points.size()));
    const tessarn::detail::residual_bounds bounds(distinct);
    ASSERT_TRUE(bounds.usable());
    double x[candidate_lanes], y[candidate_lanes], z[candidate_lanes], mean[candidate_lanes], cost[candidate_lanes];
    for (std::size_t k = 0; k < candidate_lanes; ++k) {
      double n[3];
      random_normal(random, n);
      x[k] = n[0];
      y[k] = n[1];
      z[k] = n[2];
    }
    geometry_kernels_in_use().residuals(distinct.arrays(), x, y, z, mean, cost);
    for (std::size_t k = 0; k < candidate_lanes; ++k) {
      neighbours same;  // in a grid of step 0
      bounds(x[k], y[k], 0, same.x, same.y, same.z, same.low, same.high);
      ASSERT_BITS(same.z[k], z[k]);
      const interval i = {same.low[k], same.high[k]};
      ASSERT_LE(i.low, cost[k]);
      ASSERT_GE(i.high, cost[k]);
      ++all;
      if (i.high - i.low < 1e-9 * cost[k]) ++narrow;
    }
  }
  test::use_set_of_run();
  EXPECT_GT(narrow, all / 2);  // bounds that hold everything would decide nothing
}

// They bound the partial sums of the squares, and closely: a block has at most 128 points.
TEST(residual_bounds, weighted_products_hold_the_partial_sums) {
  test::random_source random(73);
  for (int round = 0; round < 300; ++round) {
    test::use_set_of_round(static_cast<int>(round));
    auto points = random_cloud(random, 4 + random.below(3000));
    if (round % 2) points.push_back(points[points.size() / 2]);  // the sums are formed anew without the first of them
    const cloud distinct(points.data(), static_cast<tessarn::ulong>(points.size()));
    const tessarn::detail::residual_bounds bounds(distinct);
    const double* w = bounds.form().weighted;
    const double* mean = bounds.form().mean;
    double v[3];
    random_normal(random, v);
    double partial = 0, all = 0, magnitude = 0;
    for (std::size_t i = distinct.size(); i-- > 0;) {
      const vector3d p = distinct.point(i) - distinct.reference();
      const double d[3] = {p.x - mean[0], p.y - mean[1], p.z - mean[2]};
      const double a = d[0] * v[0] + d[1] * v[1] + d[2] * v[2];
      const double weight = static_cast<double>(distinct.size() - i);
      partial += weight * a * a;
      all += a * a;
      magnitude += weight * (d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
    }
    const double form = (w[0] * v[0] * v[0] + w[1] * v[1] * v[1] + w[2] * v[2] * v[2]) +
                        2 * (w[3] * v[0] * v[1] + w[4] * v[0] * v[2] + w[5] * v[1] * v[2]);
    ASSERT_GE(form, partial - 1e-12 * magnitude);
    ASSERT_LE(form, partial + 256 * all + 1e-12 * magnitude);
  }
  test::use_set_of_run();
}

TEST(residual_bounds, say_nothing_about_extreme_or_undefined_clouds) {
  const double inf = std::numeric_limits<double>::infinity();
  for (const double scale : {1e-120, 1e120, inf, std::nan("")}) {
    std::vector<vector3d> points;
    for (int i = 0; i < 5; ++i) points.emplace_back(scale * i, scale * (i % 2), scale * (i % 3));
    const cloud distinct(points.data(), 5);
    EXPECT_FALSE(tessarn::detail::residual_bounds(distinct).usable()) << scale;
  }
}

TEST(direction_bounds, hold_the_sums_of_squares) {
  test::random_source random(72);
  for (int round = 0; round < 1500; ++round) {
    test::use_set_of_round(static_cast<int>(round));
    std::vector<double> c[6];
    const std::size_t n = random.below(200), m = 1 + random.below(200);
    const double size = std::ldexp(1.0, static_cast<int>(random.below(30)) - 15);
    for (int k = 0; k < 6; ++k)
      for (std::size_t i = 0; i < (k < 3 ? n : m) + candidate_lanes; ++i) c[k].push_back(size * random.uniform());
    const tessarn::detail::point_arrays par{c[0].data(), c[1].data(), c[2].data(), n};
    const tessarn::detail::point_arrays perp{c[3].data(), c[4].data(), c[5].data(), m};
    const tessarn::detail::direction_bounds bounds(par, perp);
    ASSERT_TRUE(bounds.usable());
    double v[3];
    random_normal(random, v);
    double x[candidate_lanes] = {v[0]}, y[candidate_lanes] = {v[1]}, z[candidate_lanes] = {v[2]};
    double cost[candidate_lanes] = {};
    geometry_kernels_in_use().add_sines(par, x, y, z, cost);
    geometry_kernels_in_use().add_cosines(perp, x, y, z, cost);
    const interval i = bounds(v[0], v[1], v[2]);
    ASSERT_LE(i.low, cost[0]);
    ASSERT_GE(i.high, cost[0]);
  }
  test::use_set_of_run();
}

}  // namespace
