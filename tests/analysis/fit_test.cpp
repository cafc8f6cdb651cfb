// Fits of polynomials that tell what they are worth: statuses, options, what the fields mean, exact arithmetic as
// judge.
#include <tessarn/fit.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "../support/random.h"
#include "rational.h"
#include "rounds.h"

namespace {

using tessarn::fit_options;
using tessarn::fit_polynomial;
using tessarn::polynomial_fit;
using tessarn::powers;
using tessarn::status;
using test::random_source;

constexpr double infinite = std::numeric_limits<double>::infinity();
const double nan_value = std::nan("");

using points = std::vector<vector>;
using column = std::vector<tessarn::real>;

const points parabola{{0, 1}, {1, 3}, {2, 7}, {3, 13}, {-1, 1}};  // 1 + x + x^2, x = -1 among them

TEST(Fit, StatusesOneByOne) {
  EXPECT_EQ(fit_polynomial(parabola, 3).state, status::ok);
  EXPECT_EQ(fit_polynomial(parabola, 0).state, status::no_unknowns);
  EXPECT_EQ(fit_polynomial(points{}, 2).state, status::no_points);
  EXPECT_EQ(fit_polynomial(parabola, 6).state, status::too_few_points);
  EXPECT_EQ(fit_polynomial(parabola, 5000).state, status::bad_option);
  EXPECT_EQ(fit_polynomial(points{{1, 1}, {1, 2}, {1, 3}}, 2).state, status::too_few_distinct);
  EXPECT_EQ(fit_polynomial(points{{1, 1}, {1, 2}, {1, 3}}, 1).state, status::ok);
  EXPECT_EQ(fit_polynomial(points{{1, 1}}, 1).state, status::ok);
  const column three{1, 2, 3}, two{1, 2};
  EXPECT_EQ(fit_polynomial(tessarn::plane_points(three, two), 1).state, status::sizes_differ);
  for (const double bad : {nan_value, infinite, -infinite}) {
    EXPECT_EQ(fit_polynomial(points{{0, 0}, {bad, 1}}, 1).state, status::not_finite);
    EXPECT_EQ(fit_polynomial(points{{0, 0}, {1, bad}}, 1).state, status::not_finite);
  }
  fit_options o;
  o.weights = two;
  EXPECT_EQ(fit_polynomial(parabola, 2, o).state, status::sizes_differ);
  const column negative{1, 1, -1, 1, 1}, zeros{0, 0, 0, 0, 0}, few{1, 1, 0, 0, 0}, far{1, 1, 1e-100, 1, 1},
      endless{1, 1, infinite, 1, 1};
  o.weights = negative;
  EXPECT_EQ(fit_polynomial(parabola, 2, o).state, status::bad_weight);
  o.weights = zeros;
  EXPECT_EQ(fit_polynomial(parabola, 2, o).state, status::bad_weight);
  o.weights = few;
  EXPECT_EQ(fit_polynomial(parabola, 3, o).state, status::too_few_points);
  o.weights = far;
  EXPECT_EQ(fit_polynomial(parabola, 3, o).state, status::out_of_range);
  o.weights = endless;
  EXPECT_EQ(fit_polynomial(parabola, 3, o).state, status::not_finite);
  o = {};
  o.fixed = two;
  EXPECT_EQ(fit_polynomial(parabola, 3, o).state, status::sizes_differ);
  EXPECT_EQ(fit_polynomial(parabola, 2, o).state, status::no_unknowns);
  const column wrong{nan_value, infinite};
  o.fixed = wrong;
  EXPECT_EQ(fit_polynomial(parabola, 2, o).state, status::not_finite);
  o = {};
  o.which = static_cast<powers>(9);
  EXPECT_EQ(fit_polynomial(parabola, 2, o).state, status::bad_option);
  o.which = powers::odd;
  EXPECT_EQ(fit_polynomial(parabola, 1, o).state, status::no_unknowns);
  EXPECT_EQ(fit_polynomial(points{{1, 1}, {-1, 2}, {0, 3}}, 4, o).state, status::too_few_distinct);
  o.which = powers::no_constant;
  EXPECT_EQ(fit_polynomial(points{{0, 1}, {0, 2}}, 2, o).state, status::too_few_distinct);
  EXPECT_EQ(fit_polynomial(points{{-1.7e308, 1}, {1.7e308, 2}}, 2).state, status::out_of_range);
  EXPECT_EQ(fit_polynomial(points{{0, 1}, {1e-300, 2}}, 2).state, status::out_of_range);
  // Abscissas so far apart that the powers of the smaller ones vanish beside those of the largest.
  EXPECT_EQ(fit_polynomial(points{{0, 1}, {1e-30, 2}, {2e-30, 2}, {1, 3}}, 4).state, status::nearly_singular);
  EXPECT_EQ(fit_polynomial(points{{0, 1}, {1e-7, 2}, {2e-7, 2}, {1, 3}}, 4).state, status::nearly_singular);
  EXPECT_EQ(fit_polynomial(points{{0, 1}, {1e-4, 2}, {2e-4, 2}, {1, 3}}, 4).state, status::ok);
}

TEST(Fit, NoAbscissaIsAMarker) {
  const polynomial_fit f = fit_polynomial(parabola, 3);
  EXPECT_EQ(f.points_used, 5u);
  for (int k = 0; k < 3; ++k) EXPECT_EQ(f.of_powers.getData()[k], 1);
  EXPECT_EQ(f.value(10), 111);
  EXPECT_LT(f.residual_deviation, 1e-25);
  EXPECT_EQ(f.r_squared, 1);
  EXPECT_EQ(f.expanded().func(2), 7);
}

TEST(Fit, LeavesOutWhatIsNotFinite) {
  points p = parabola;
  p.insert(p.begin(), {vector{nan_value, 1}, vector{0.5, infinite}});
  p[4].y += 1;
  fit_options o;
  o.leave_out_not_finite = true;
  const polynomial_fit f = fit_polynomial(p, 2, o);
  EXPECT_EQ(f.state, status::ok);
  EXPECT_EQ(f.points_used, 5u);
  EXPECT_EQ(f.points_left_out, 2u);
  points rest(p.begin() + 2, p.end());
  const polynomial_fit g = fit_polynomial(rest, 2);
  EXPECT_EQ(f.residual_deviation, g.residual_deviation);
  EXPECT_EQ(f.largest_residual, g.largest_residual);
  EXPECT_EQ(f.largest_at, g.largest_at + 2);  // counted as the caller counts
  EXPECT_EQ(fit_polynomial(points{{nan_value, 1}}, 1, o).state, status::no_points);
}

TEST(Fit, AsManyUnknownsAsPoints) {
  const polynomial_fit f = fit_polynomial(parabola, 5);
  EXPECT_EQ(f.state, status::ok);
  EXPECT_EQ(f.residual_deviation, infinite);
  EXPECT_EQ(f.standard_errors.getData()[0], infinite);
  EXPECT_EQ(f.of_powers_errors.getData()[4], infinite);
}

TEST(Fit, PowersThatAreNotAskedForAreZero) {
  points p;
  for (int i = 1; i < 20; ++i) p.emplace_back(0.1 * i, 3.0 + std::ldexp(i, -3) + i * i);
  fit_options o;
  for (const powers which : {powers::no_constant, powers::odd, powers::constant_and_odd}) {
    o.which = which;
    const polynomial_fit f = fit_polynomial(p, 6, o);
    ASSERT_EQ(f.state, status::ok);
    EXPECT_EQ(f.centre, 0);
    EXPECT_EQ(f.of_powers.getData()[0] == 0, which != powers::constant_and_odd);
    EXPECT_EQ(f.of_powers.getData()[2] == 0, which != powers::no_constant);
    EXPECT_NE(f.of_powers.getData()[3], 0);
    EXPECT_EQ(f.of_powers_errors.getData()[2] == 0, which != powers::no_constant);
  }
}

TEST(Fit, FixedCoefficientsKeepTheirValues) {
  points p;
  for (int i = -3; i <= 10; ++i) p.emplace_back(i, 5 + 2 * i + 3 * i * i);
  const column fixed{5, nan_value, 3};
  fit_options o;
  o.fixed = fixed;
  const polynomial_fit f = fit_polynomial(p, 3, o);
  ASSERT_EQ(f.state, status::ok);
  EXPECT_EQ(f.unknowns, 1u);
  EXPECT_EQ(f.of_powers.getData()[0], 5);
  EXPECT_EQ(f.of_powers.getData()[1], 2);
  EXPECT_EQ(f.of_powers.getData()[2], 3);
  EXPECT_EQ(f.of_powers_errors.getData()[0], 0);
}

// The mean of n numbers: its standard error is s / sqrt(n), and one further observation deviates by s sqrt(1 + 1/n).
TEST(Fit, PredictionOfAMean) {
  const points p{{1, 1}, {2, 3}, {3, 5}, {4, 7}};
  const polynomial_fit f = fit_polynomial(p, 1);
  ASSERT_EQ(f.state, status::ok);
  const double s = std::sqrt(20.0 / 3);
  EXPECT_NEAR(f.residual_deviation, s, 1e-15);
  EXPECT_NEAR(f.standard_errors.getData()[0], s / 2, 1e-15);
  const tessarn::prediction at = f.predict(2, 3);
  EXPECT_EQ(at.value, 4);
  EXPECT_NEAR(at.mean, 3 * s / 2, 1e-14);
  EXPECT_NEAR(at.observation, 3 * s * std::sqrt(1.25), 1e-14);
  EXPECT_NEAR(f.r_squared, 0, 1e-15);
  EXPECT_EQ(std::fabs(f.largest_residual), 3);
}

TEST(Fit, ResultsScaleWithTheData) {
  random_source random(1605);
  points p, large, small;
  for (int i = 0; i < 30; ++i) p.emplace_back(random.uniform(), random.uniform());
  for (const vector& v : p) {
    large.emplace_back(std::ldexp(v.x, 200), std::ldexp(v.y, 400));
    small.emplace_back(std::ldexp(v.x, -200), std::ldexp(v.y, -400));
  }
  const polynomial_fit f = fit_polynomial(p, 4), g = fit_polynomial(large, 4), h = fit_polynomial(small, 4);
  ASSERT_EQ(g.state, status::ok);
  ASSERT_EQ(h.state, status::ok);
  for (int k = 0; k < 4; ++k) {
    EXPECT_EQ(std::ldexp(f.of_powers.getData()[k], 400 - 200 * k), g.of_powers.getData()[k]);
    EXPECT_EQ(std::ldexp(f.of_powers.getData()[k], -400 + 200 * k), h.of_powers.getData()[k]);
    EXPECT_EQ(std::ldexp(f.standard_errors.getData()[k], 400), g.standard_errors.getData()[k]);
  }
  EXPECT_EQ(std::ldexp(f.residual_deviation, -400), h.residual_deviation);
}

// A fit without weights goes its own, shorter way; lists whose length is no multiple of a block end in weights of 0
// and 1.
TEST(Fit, WeightsOfOneChangeNoBit) {
  random_source random(1607);
  for (std::size_t n = 12; n < 700; n += n < 60 ? 1 : 37) {
    points p, spaced;
    column ones;
    for (std::size_t i = 0; i < n; ++i) {
      p.emplace_back(random.uniform(3, 7), random.uniform());
      ones.push_back(1);
      spaced.push_back(p.back());
      if (i % 5 == 0) spaced.emplace_back(p.back().x, nan_value);
    }
    fit_options with_ones, leaving_out;
    with_ones.weights = ones;
    leaving_out.leave_out_not_finite = true;
    const polynomial_fit f = fit_polynomial(p, 11);
    ASSERT_EQ(f.state, status::ok);
    for (const polynomial_fit& g : {fit_polynomial(p, 11, with_ones), fit_polynomial(spaced, 11, leaving_out)}) {
      ASSERT_EQ(g.state, status::ok);
      EXPECT_EQ(g.points_used, f.points_used);
      EXPECT_EQ(g.r_squared, f.r_squared);
      EXPECT_EQ(g.largest_residual, f.largest_residual);
      EXPECT_EQ(p[f.largest_at].x, (g.points_left_out == 0 ? p : spaced)[g.largest_at].x);
      for (tessarn::ulong k = 0; k < 11; ++k) {
        EXPECT_EQ(g.coefficients.getData()[k], f.coefficients.getData()[k]);
        EXPECT_EQ(g.standard_errors.getData()[k], f.standard_errors.getData()[k]);
      }
    }
  }
}

// Columns of neighbouring numbers are read where they stand, points by a kernel of their own, and all others one by
// one. The arrays end with the last number, so that the sanitizer sees a read beyond them.
TEST(Fit, WhereTheNumbersStandChangesNoBit) {
  random_source random(1608);
  for (std::size_t n = 5; n < 600; n += n < 40 ? 1 : 61) {
    points p;
    column x, y, rows(3 * n - 1), upside_down(2 * n);
    std::vector<unsigned char> bytes(8 * n + 1);
    for (std::size_t i = 0; i < n; ++i) {
      p.emplace_back(random.uniform(3, 7), random.uniform());
      x.push_back(p[i].x);
      y.push_back(p[i].y);
      rows[3 * i] = upside_down[2 * i + 1] = p[i].x;
      rows[3 * i + 1] = upside_down[2 * i] = p[i].y;
      std::memcpy(&bytes[8 * i + 1], &p[i].y, 8);
    }
    const auto odd_address = reinterpret_cast<const tessarn::real*>(bytes.data() + 1);
    const tessarn::plane_points others[] = {
        {x, y},
        {{rows.data(), n, 24}, {rows.data() + 1, n, 24}},
        {{upside_down.data() + 1, n, 16}, {upside_down.data(), n, 16}},
        {x, {odd_address, n, 8}},
    };
    const polynomial_fit f = fit_polynomial(p, 4);
    ASSERT_EQ(f.state, status::ok);
    for (const tessarn::plane_points& other : others) {
      const polynomial_fit g = fit_polynomial(other, 4);
      ASSERT_EQ(g.state, status::ok);
      EXPECT_EQ(g.r_squared, f.r_squared);
      EXPECT_EQ(g.largest_residual, f.largest_residual);
      EXPECT_EQ(g.largest_at, f.largest_at);
      for (tessarn::ulong k = 0; k < 4; ++k) {
        EXPECT_EQ(g.coefficients.getData()[k], f.coefficients.getData()[k]);
        EXPECT_EQ(g.of_powers_errors.getData()[k], f.of_powers_errors.getData()[k]);
      }
    }
  }
}

#if defined(TESTS_HAVE_GMP)

using test::rational;
using test::rational_matrix;

// Weighted fits of points far from the origin, against the exact solution of the normal equations.
TEST(Fit, ManyFitsHaveEveryDigit) {
  random_source random(1606);
  for (int round = 0; round < test::rounds(2000) && !HasFailure(); ++round) {
    const std::size_t m = 1 + random.below(6), n = m + 1 + random.below(round % 50 == 0 ? 60 : 12);
    const double centre = std::ldexp(random.uniform(), static_cast<int>(random.below(12)));
    points p;
    column w;
    for (std::size_t i = 0; i < n; ++i) {
      p.emplace_back(centre + random.uniform(), random.uniform(-100, 100));
      w.push_back(round % 2 == 0 ? random.uniform(0.1, 10) : 1);
    }
    fit_options o;
    if (round % 2 == 0) o.weights = w;
    const polynomial_fit f = fit_polynomial(p, static_cast<tessarn::ulong>(m), o);
    ASSERT_EQ(f.state, status::ok);
    rational_matrix normal(m, std::vector<rational>(m)), x(m, std::vector<rational>(1));
    for (std::size_t i = 0; i < n; ++i) {
      std::vector<rational> power(2 * m, 1);
      for (std::size_t k = 1; k < 2 * m; ++k) power[k] = power[k - 1] * rational(p[i].x);
      const rational square = rational(w[i]) * rational(w[i]);
      for (std::size_t r = 0; r < m; ++r) {
        x[r][0] += square * power[r] * rational(p[i].y);
        for (std::size_t c = 0; c < m; ++c) normal[r][c] += square * power[r + c];
      }
    }
    rational det, squares;
    ASSERT_TRUE(test::eliminate(normal, x, det));
    for (std::size_t i = 0; i < n; ++i) {
      rational r = p[i].y, power = 1;
      for (std::size_t k = 0; k < m; ++k, power *= rational(p[i].x)) r -= x[k][0] * power;
      squares += rational(w[i]) * rational(w[i]) * r * r;
    }
    const double deviation = std::sqrt(rational(squares / static_cast<unsigned long>(n - m)).get_d());
    EXPECT_NEAR(f.residual_deviation / deviation, 1, 1e-14);
    for (std::size_t k = 0; k < m; ++k) EXPECT_GT(test::digits(x[k][0], f.of_powers.getData()[k]), 15);
  }
}

// Normal equations at the end of what is accepted: powers that are normalised too rarely lose a digit here.
TEST(Fit, DigitsNearTheLimitOfTheCondition) {
  random_source random(1608);
  points p;
  for (int i = 0; i <= 64; ++i) p.emplace_back(i / 64.0, random.uniform());
  for (const std::size_t m : {24, 26}) {
    const polynomial_fit f = fit_polynomial(p, static_cast<tessarn::ulong>(m));
    ASSERT_EQ(f.state, status::ok) << m;
    rational_matrix normal(m, std::vector<rational>(m)), x(m, std::vector<rational>(1));
    for (const vector& v : p) {
      std::vector<rational> power(2 * m, 1);
      for (std::size_t k = 1; k < 2 * m; ++k)
        power[k] = power[k - 1] * (rational(v.x) - rational(f.centre)) / rational(f.scale);
      for (std::size_t r = 0; r < m; ++r) {
        x[r][0] += power[r] * rational(v.y);
        for (std::size_t c = 0; c < m; ++c) normal[r][c] += power[r + c];
      }
    }
    rational det;
    ASSERT_TRUE(test::eliminate(normal, x, det));
    for (std::size_t k = 0; k < m; ++k)
      EXPECT_GT(test::digits(x[k][0], f.coefficients.getData()[k]), m == 24 ? 15.8 : 13.3);
  }
}

#endif

}  // namespace
