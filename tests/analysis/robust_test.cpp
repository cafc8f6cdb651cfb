// Fits with outliers present.
#include <tessarn/fit.h>

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "../support/random.h"

namespace {

using tessarn::fit_robust;
using tessarn::robust_fit;
using tessarn::robust_options;
using tessarn::robust_weights;
using tessarn::status;
using test::random_source;

double line(double x) { return 2 + 3 * x; }

// Points near a line, every fifth of them far above it.
std::vector<vector> with_outliers(random_source& random, double noise) {
  std::vector<vector> p;
  for (int i = 0; i < 100; ++i) {
    const double x = random.uniform();
    p.emplace_back(x, line(x) + noise * random.normal() + (i % 5 == 0 ? 20 + random.uniform() : 0));
  }
  return p;
}

TEST(Robust, OutliersGetNoWeight) {
  random_source random(1630);
  const std::vector<vector> p = with_outliers(random, 0.1);
  const robust_fit f = fit_robust(p, 2);
  ASSERT_EQ(f.state, status::ok);
  ASSERT_EQ(f.weights.getHeight(), p.size());
  std::vector<vector> good;
  for (std::size_t i = 0; i < p.size(); ++i) {
    EXPECT_EQ(f.weights.getData()[i] == 0, i % 5 == 0) << i;
    EXPECT_LE(f.weights.getData()[i], 1);
    if (i % 5 != 0) good.push_back(p[i]);
  }
  const tessarn::polynomial_fit best = tessarn::fit_polynomial(good, 2), all = tessarn::fit_polynomial(p, 2);
  for (int k = 0; k < 2; ++k) {
    EXPECT_NEAR(f.fit.of_powers.getData()[k], best.of_powers.getData()[k], 3 * best.of_powers_errors.getData()[k]);
  }
  EXPECT_GT(std::fabs(all.of_powers.getData()[0] - 2), 3);  // the plain fit is pulled away
  EXPECT_GT(f.scale, 0.1);  // a fifth of outliers on one side widens the scale of the fit by Huber's weights
  EXPECT_LT(f.scale, 0.25);
  EXPECT_GT(f.rounds, 2u);
}

TEST(Robust, HuberKeepsEveryPointALittle) {
  random_source random(1631);
  const std::vector<vector> p = with_outliers(random, 0.1);
  robust_options o;
  o.weigh_by = robust_weights::huber;
  const robust_fit f = fit_robust(p, 2, o);
  ASSERT_EQ(f.state, status::ok);
  for (std::size_t i = 0; i < p.size(); ++i) {
    const double u = std::fabs(p[i].y - f.fit.value(p[i].x)) / f.scale;
    EXPECT_NEAR(f.weights.getData()[i], u <= 1.345 ? 1 : 1.345 / u, 1e-6);
    EXPECT_GT(f.weights.getData()[i], 0);
  }
  EXPECT_NEAR(f.fit.of_powers.getData()[0], 2, 0.1);
}

// Most points lie on the line: the robust scale is that of rounding.
TEST(Robust, ExactPoints) {
  random_source random(1632);
  const std::vector<vector> p = with_outliers(random, 0);
  const robust_fit f = fit_robust(p, 2);
  EXPECT_NEAR(f.fit.of_powers.getData()[0], 2, 1e-12);
  EXPECT_NEAR(f.fit.of_powers.getData()[1], 3, 1e-12);
  for (std::size_t i = 0; i < p.size(); i += 5) EXPECT_LT(f.weights.getData()[i], 1e-9);
}

TEST(Robust, SurfacesWithOutliers) {
  random_source random(1634);
  std::vector<vector3d> p, good;
  for (int i = 0; i < 200; ++i) {
    const double x = random.uniform(), y = random.uniform();
    p.emplace_back(x, y, 1 + 2 * x - 3 * y + 4 * x * y + 0.01 * random.normal() + (i % 5 == 0 ? 10 : 0));
    if (i % 5 != 0) good.push_back(p.back());
  }
  const tessarn::robust_surface_fit f = fit_robust(p, 2);
  ASSERT_EQ(f.state, status::ok);
  for (std::size_t i = 0; i < p.size(); ++i) EXPECT_EQ(f.weights.getData()[i] == 0, i % 5 == 0) << i;
  const tessarn::surface_fit best = tessarn::fit_surface(good, 2);
  for (int k = 0; k < 4; ++k)
    EXPECT_NEAR(f.fit.of_powers.getData()[k], best.of_powers.getData()[k], 3 * best.of_powers_errors.getData()[k]);
  tessarn::robust_surface_options o;
  o.weigh_by = robust_weights::huber;
  const tessarn::robust_surface_fit h = fit_robust(p, 2, o);
  ASSERT_EQ(h.state, status::ok);
  for (std::size_t i = 0; i < p.size(); ++i) EXPECT_GT(h.weights.getData()[i], 0);
  p.push_back({0, 0, std::nan("")});
  EXPECT_EQ(fit_robust(p, 2).state, status::not_finite);
  o.fit.leave_out_not_finite = true;
  EXPECT_EQ(fit_robust(p, 2, o).state, status::ok);
  EXPECT_EQ(fit_robust(p, 0).state, status::no_unknowns);
  o.most_rounds = 0;
  EXPECT_EQ(fit_robust(p, 2, o).state, status::not_converged);
}

TEST(Robust, StatusesOneByOne) {
  random_source random(1633);
  const std::vector<vector> p = with_outliers(random, 0.1);
  EXPECT_EQ(fit_robust(std::vector<vector>{}, 2).state, status::no_points);
  EXPECT_EQ(fit_robust(p, 0).state, status::no_unknowns);
  robust_options o;
  o.most_rounds = 1;
  const robust_fit f = fit_robust(p, 2, o);
  EXPECT_EQ(f.state, status::not_converged);
  EXPECT_EQ(f.fit.state, status::ok);
  o.weigh_by = static_cast<robust_weights>(7);
  EXPECT_EQ(fit_robust(p, 2, o).state, status::bad_option);
  const std::vector<vector> zero{{0, 0}, {1, 0}, {2, 0}};
  EXPECT_EQ(fit_robust(zero, 2).state, status::ok);
  EXPECT_EQ(fit_robust(zero, 2).weights.getData()[1], 1);
}

// Points with a weight of 0, and those that are not finite, do not take part and have no weight.
TEST(Robust, LeftOutPointsHaveNoWeight) {
  random_source random(1634);
  std::vector<vector> p = with_outliers(random, 0.1);
  p[7].y = std::nan("");
  std::vector<tessarn::real> w(p.size(), 1);
  w[9] = 0;
  p[9].y = 1e6;
  robust_options o;
  o.fit.weights = w;
  EXPECT_EQ(fit_robust(p, 2, o).state, status::not_finite);
  o.fit.leave_out_not_finite = true;
  const robust_fit f = fit_robust(p, 2, o);
  ASSERT_EQ(f.state, status::ok);
  EXPECT_EQ(f.weights.getData()[7], 0);
  EXPECT_EQ(f.weights.getData()[9], 0);
  EXPECT_NEAR(f.fit.of_powers.getData()[1], 3, 0.1);
}

}  // namespace
