// Fits of surfaces that tell what they are worth.
#include <tessarn/fit.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "../support/random.h"
#include "rational.h"

namespace {

using tessarn::fit_surface;
using tessarn::status;
using tessarn::surface_fit;
using tessarn::surface_options;
using test::random_source;

using cloud = std::vector<vector3d>;
using column = std::vector<tessarn::real>;
constexpr double infinite = std::numeric_limits<double>::infinity();

cloud random_cloud(random_source& random, std::size_t n, double centre) {
  cloud c;
  for (std::size_t i = 0; i < n; ++i)
    c.emplace_back(centre + random.uniform(), random.uniform() - centre, random.uniform(-10, 10));
  return c;
}

TEST(Surface, StatusesOneByOne) {
  random_source random(1610);
  cloud c = random_cloud(random, 12, 0);
  EXPECT_EQ(fit_surface(c, 3).state, status::ok);
  EXPECT_EQ(fit_surface(c, 0).state, status::no_unknowns);
  EXPECT_EQ(fit_surface(c, 31).state, status::bad_option);
  EXPECT_EQ(fit_surface(cloud{}, 1).state, status::no_points);
  EXPECT_EQ(fit_surface(c, 4).state, status::too_few_points);
  EXPECT_EQ(fit_surface(cloud(9, vector3d{1, 2, 3}), 2).state, status::too_few_distinct);
  const column three{1, 2, 3}, two{1, 2}, negative(12, -1);
  EXPECT_EQ(fit_surface(tessarn::space_points(three, two, three), 1).state, status::sizes_differ);
  EXPECT_EQ(fit_surface(tessarn::space_points(three, three, two), 1).state, status::sizes_differ);
  surface_options o;
  o.weights = two;
  EXPECT_EQ(fit_surface(c, 2, o).state, status::sizes_differ);
  o.weights = negative;
  EXPECT_EQ(fit_surface(c, 2, o).state, status::bad_weight);
  cloud line;
  for (int i = 0; i < 20; ++i) line.emplace_back(0.1 * i, 0.7 - 0.3 * i, i * i);
  EXPECT_EQ(fit_surface(line, 2).state, status::rank_deficient);
  cloud vast{{-1.7e308, 0, 0}, {1.7e308, 1, 0}, {0, 0, 1}, {1, 1, 1}};
  EXPECT_EQ(fit_surface(vast, 2).state, status::out_of_range);
  for (tessarn::real vector3d::*coordinate : {&vector3d::x, &vector3d::y, &vector3d::z}) {
    cloud bad = c;
    bad[5].*coordinate = infinite;
    EXPECT_EQ(fit_surface(bad, 2).state, status::not_finite);
    o = {};
    o.leave_out_not_finite = true;
    EXPECT_EQ(fit_surface(bad, 2, o).points_left_out, 1u);
    EXPECT_EQ(fit_surface(bad, 2, o).state, status::ok);
  }
}

TEST(Surface, OfExactPoints) {
  const vector3d points[] = {{0, 0, 1},  {1, 0, 3},  {0, 1, 4},
                             {1, 1, 10}, {2, 1, 16}, {-1, 2, -3}};  // 1 + 2x + 3y + 4xy
  const surface_fit f = fit_surface({points, 6}, 2);
  ASSERT_EQ(f.state, status::ok);
  for (int k = 0; k < 4; ++k) EXPECT_EQ(f.of_powers.getData()[k], k + 1);
  EXPECT_EQ(f.value(3, 5), 1 + 6 + 15 + 60);
  EXPECT_EQ(f.expanded().func(3, 5), 82);
  EXPECT_LT(f.residual_deviation, 1e-25);
  EXPECT_EQ(f.predict(3, 5, 2).value, 82);
}

// A plane through points: total degree leaves the term x y out.
TEST(Surface, TotalDegree) {
  random_source random(1611);
  const cloud c = random_cloud(random, 40, 3);
  surface_options o;
  o.total_degree = true;
  const surface_fit f = fit_surface(c, 2, o), full = fit_surface(c, 2);
  ASSERT_EQ(f.state, status::ok);
  EXPECT_EQ(f.unknowns, 3u);
  EXPECT_EQ(full.unknowns, 4u);
  EXPECT_EQ(f.of_powers.getData()[3], 0);
  EXPECT_NE(full.of_powers.getData()[3], 0);
  EXPECT_GT(f.residual_deviation * std::sqrt(37.0), full.residual_deviation * std::sqrt(36.0));
  EXPECT_GT(f.predict(3, -3, 1).observation, f.residual_deviation);
  EXPECT_NEAR(c[f.largest_at].z - f.value(c[f.largest_at].x, c[f.largest_at].y), f.largest_residual, 1e-12);
}

#if defined(TESTS_HAVE_GMP)

using test::rational;
using test::rational_matrix;

// Against the exact solution of the weighted normal equations: coefficients, errors and deviation.
TEST(Surface, ManyFitsHaveEveryDigit) {
  random_source random(1612);
  for (int round = 0; round < 300 && !HasFailure(); ++round) {
    const std::size_t g = 1 + random.below(3), q = g * g, n = q + 2 + random.below(10);
    const cloud c = random_cloud(random, n, round % 3 == 0 ? 0 : 20);
    column w;
    for (std::size_t i = 0; i < n; ++i) w.push_back(random.uniform(0.5, 2));
    surface_options o;
    o.weights = w;
    const surface_fit f = fit_surface(c, static_cast<tessarn::ulong>(g), o);
    ASSERT_EQ(f.state, status::ok);
    rational_matrix normal(q, std::vector<rational>(q)), right(q, std::vector<rational>(q + 1)), rows;
    for (std::size_t i = 0; i < n; ++i) {
      rows.emplace_back();
      rational of_y = w[i];
      for (std::size_t b = 0; b < g; ++b, of_y *= rational(c[i].y)) {
        rational power = of_y;
        for (std::size_t a = 0; a < g; ++a, power *= rational(c[i].x)) rows.back().push_back(power);
      }
      for (std::size_t r = 0; r < q; ++r) {
        right[r][0] += rows[i][r] * rational(w[i]) * rational(c[i].z);
        right[r][r + 1] = 1;
        for (std::size_t k = 0; k < q; ++k) normal[r][k] += rows[i][r] * rows[i][k];
      }
    }
    rational det, squares;
    ASSERT_TRUE(test::eliminate(normal, right, det));
    for (std::size_t i = 0; i < n; ++i) {
      rational r = rational(w[i]) * rational(c[i].z);
      for (std::size_t k = 0; k < q; ++k) r -= rows[i][k] * right[k][0];
      squares += r * r;
    }
    const rational variance = squares / static_cast<unsigned long>(n - q);
    EXPECT_NEAR(f.residual_deviation / std::sqrt(variance.get_d()), 1, 1e-14);
    for (std::size_t k = 0; k < q; ++k) {
      EXPECT_GT(test::digits(right[k][0], f.of_powers.getData()[k]), 15);
      EXPECT_NEAR(f.of_powers_errors.getData()[k] / std::sqrt(rational(variance * right[k][k + 1]).get_d()), 1, 1e-14);
    }
  }
}

#endif

}  // namespace
