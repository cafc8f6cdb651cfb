// The searches at the edges of their shortcuts: zeros that touch on the grid, steps that are
// rounded now up and now down, zeros far away on an interval without an end.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "plain/curve.h"
#include "support/pairs.h"

namespace {

constexpr double inf = std::numeric_limits<double>::infinity();

binom of(const std::vector<double>& c) {
  binom p;
  test::fill(p, plain::poly{c});
  return p;
}

// (x - z)^2 times a factor, touching zero at a sample of the scan, with nothing but that sample to
// stop at: in the first blocks, at their ends, and in strides of a thousand samples.
TEST(SearchEdges, ATouchingZeroOnTheGrid) {
  constexpr double step = 0x1p-12;
  for (int k = 0; k < 3300; k += k < 140 || (k > 1000 && k < 1100) || (k > 2030 && k < 2060) ? 1 : 17) {
    for (const double sign : {1.0, -1.0}) {
      const double z = 1 + k * step;  // all of this is exact
      binom p = of({sign * z * z, -2 * sign * z, sign});
      ASSERT_EQ(p.find_zero(1, 3, step, 1e-9), z) << k;
      ASSERT_EQ(p.find_zero(1, inf, step, 1e-9), z) << k;
      ASSERT_EQ(p.find_zero(1, z, step, 1e-9), z) << k;
      if (k > 0) {
        ASSERT_EQ(p.find_zero(1, z - step, step, 1e-9), -1) << k;
      }
    }
  }
}

// The derivative of the curvature of x^5 touches zero at 0, and has no other zero within 0.4.
TEST(SearchEdges, ATouchingExtremeOnTheGrid) {
  for (int k = 0; k < 200; ++k) {
    for (const double sign : {1.0, -1.0}) {
      binom p = of({0, 0, 0, 0, 0, sign});
      const double step = 0x1p-10, a = -k * step;
      ASSERT_EQ(p.find_extrpoint_arc(a, 0.25, step, 1e-9), 0) << k;
      if (k > 0) {
        ASSERT_EQ(p.find_extrpoint_arc(a, 0, step, 1e-9), -1) << k;  // the end is not looked at
      }
    }
  }
}

// A step of some units and a half moves odd and even multiples of the unit by different amounts,
// since ties are rounded to even: the samples are not equally far apart.
TEST(SearchEdges, StepsThatEndInHalfAUnit) {
  test::random_source r(141);
  int told_apart = 0;
  for (int round = 0; round < 400; ++round) {
    const double unit = 0x1p-52;
    const double a = 1 + unit * (2.0 * r.below(1000) + 1);  // odd
    const double step = unit * (std::floor(std::ldexp(r.uniform(0.5, 1), round % 2 ? 43 : 39)) + 0.5);
    const double zero = a + step * (1 + r.below(round % 2 ? 60 : 3000));
    const std::vector<double> c = {-zero, 1};
    // The bracket has the samples for its ends, and its middle is the result.
    const double eps = step * 0.5;
    const double x = of(c).find_zero(a, 1.99, step, eps);
    ASSERT_BITS(x, plain::find_zero({c}, a, 1.99, step, eps)) << "round " << round;
    const double moved = (a + step) - a;
    told_apart += (a + step) + step != a + 2 * moved;
    const std::vector<double> parabola = {zero * zero, -2 * zero, 1};
    ASSERT_BITS(of(parabola).find_extrpoint_arc(a, 1.99, step, eps),
                plain::find_extrpoint_arc({parabola}, a, 1.99, step, eps))
        << "round " << round;
  }
  EXPECT_GT(told_apart, 100);
}

// Steps that are a few units, or next to halves of one: every sample is a sum of its own.
TEST(SearchEdges, StepsOfFewUnits) {
  test::random_source r(142);
  for (int round = 0; round < 400; ++round) {
    const double a = r.uniform(1, 2), units = 1 + r.below(40) + 0.125 * r.below(8);
    const double step = units * 0x1p-52, zero = a + step * r.below(5000);
    const double b = a + 6000 * step;
    const std::vector<double> c = {-zero, 1};
    ASSERT_BITS(of(c).find_zero(a, b, step, 0.5 * step), plain::find_zero({c}, a, b, step, 0.5 * step)) << round;
  }
}

// Across powers of two, where the unit doubles, and across 0, where it falls.
TEST(SearchEdges, ScansAcrossPowersOfTwo) {
  test::random_source r(143);
  for (int round = 0; round < 300; ++round) {
    const double border = round % 3 ? std::ldexp(r.below(2) ? 1 : -1, static_cast<int>(r.below(6)) - 3) : 0;
    const double step = std::ldexp(r.uniform(0.5, 1), -9 - static_cast<int>(r.below(4)));
    const double a = border - step * (1 + r.below(1100)), b = border + step * (1 + r.below(1100));
    const double zero = r.below(3) ? r.uniform(a, b) : border;
    const std::vector<double> c = {-zero, 1};
    ASSERT_BITS(of(c).find_zero(a, b, step, 0.5 * step), plain::find_zero({c}, a, b, step, 0.5 * step)) << round;
  }
}

// A search without an end goes on to where no zero can be.
TEST(SearchEdges, FarZerosWithoutAnEnd) {
  test::random_source r(144);
  for (int round = 0; round < 150; ++round) {
    const double zero = round < 20 ? 5 + round : std::exp(r.uniform(std::log(5.0), std::log(3000.0)));
    std::vector<std::vector<double>> curves = {{-zero, 1}, {zero * 2, zero - 2, -1}};  // the other zero is -2
    curves.push_back({-zero * zero * zero, 0, 0, 1});                                  // x^3 = z^3
    curves.push_back({-zero * 1e-5, 1e-5});
    curves.push_back({-zero * zero * zero * zero * 1e5, 0, 0, 0, 1e5});
    for (const std::vector<double>& c : curves) {
      const double x = of(c).find_zero(0, inf, 0.5, 1e-3);
      ASSERT_NEAR(x, zero, 0.01) << c.size();
      ASSERT_BITS(x, plain::find_zero({c}, 0, inf, 0.5, 1e-3));
    }
    // An extreme point of the curvature.
    const std::vector<double> parabola = {zero * zero * 1e-3, -2e-3 * zero, 1e-3};
    const double x = of(parabola).find_extrpoint_arc(0, inf, 0.75, 1e-3);
    ASSERT_NEAR(x, zero, 0.02);
    ASSERT_BITS(x, plain::find_extrpoint_arc({parabola}, 0, inf, 0.75, 1e-3));
  }
}

}  // namespace
