// The analysis of a polynomial as a curve: derivatives, curvature, searches, ratio and inverse.
#include <gtest/gtest.h>
#include <tessarn/poly.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "plain/curve.h"
#include "support/pairs.h"
#include "support/time_limit.h"

namespace {

using test::fill;
using test::same;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

binom of(const std::vector<double>& c) {
  binom p;
  fill(p, {c});
  return p;
}

// ---------------------------------------------------------------------------- values

TEST(Derivatives, OfPowers) {
  binom cube = of({0, 0, 0, 1});
  EXPECT_BITS(cube.func_1(2), 12.0);
  EXPECT_BITS(cube.func_2(2), 12.0);
  EXPECT_BITS(cube.func_3(2), 6.0);
  EXPECT_BITS(cube.func_4(2), 0.0);
  binom fourth = of({0, 0, 0, 0, 1});
  for (const double x : {-3.0, 0.0, 0.5, 1e10, inf, nan}) EXPECT_BITS(fourth.func_4(x), 24.0);
}

TEST(Derivatives, OfAConstant) {
  for (const std::vector<double>& c : {std::vector<double>{}, std::vector<double>{5}}) {
    binom p = of(c);
    EXPECT_BITS(p.func_1(2), 0.0);
    EXPECT_BITS(p.func_2(2), 0.0);
    EXPECT_BITS(p.func_3(2), 0.0);
    EXPECT_BITS(p.func_4(2), 0.0);
    EXPECT_BITS(p.arc(2), 0.0);
    EXPECT_BITS(p.arc_1(2), 0.0);
    const vector n = p.normale(2);
    EXPECT_FALSE(std::isfinite(n.x));
    EXPECT_FALSE(std::isfinite(n.y));
  }
}

// The fifth powers of odd numbers of 11 bits lie between two numbers, exactly or nearly.
TEST(Derivatives, OfPowersBetweenTwoNumbers) {
  const std::vector<double> c = {0, 1, 0, 0, 0, 0, 1, 1};
  std::vector<tessarn::real> x, y(500);
  for (int i = 0; i < 500; ++i) x.push_back((1553 + 2 * i) * (i % 2 ? 1 : -0.125));
  of(c).func_1(x.data(), y.data(), 500);
  for (std::size_t i = 0; i < x.size(); ++i) {
    ASSERT_BITS(y[i], plain::func_1({c}, x[i]));
    ASSERT_BITS(of(c).func_1(x[i]), y[i]);
    ASSERT_BITS(of({0, 0, 0, 0, 0, 0, 1}).func_1(x[i]), plain::func_1({{0, 0, 0, 0, 0, 0, 1}}, x[i]));
  }
}

// Subnormal powers, and those whose rests are: a large coefficient shows their last bits.
TEST(Derivatives, OfPowersOutsideTheNormalRange) {
  test::random_source r(98);
  for (int e = 2; e <= 9; ++e) {
    plain::poly pp;
    pp.cof.assign(static_cast<std::size_t>(e) + 2, 0);
    pp.cof.back() = 0x1p1000;
    const binom p = of(pp.cof);
    std::vector<tessarn::real> x(400), y(400);
    for (tessarn::real& v : x) v = std::ldexp(r.uniform(1, 2), -(960 + static_cast<int>(r.below(120))) / e);
    p.func_1(x.data(), y.data(), 400);
    for (std::size_t i = 0; i < x.size(); ++i) {
      ASSERT_BITS(p.func_1(x[i]), plain::func_1(pp, x[i])) << e << ' ' << test::hex(x[i]);
      ASSERT_BITS(y[i], plain::func_1(pp, x[i])) << e << ' ' << test::hex(x[i]);
    }
  }
}

// Twice and four times a coefficient may be infinite where the derivative is not, or subnormal as the coefficient is.
TEST(Derivatives, OfExtremeCoefficientsOverArrays) {
  test::random_source r(97);
  const double inf = std::numeric_limits<double>::infinity();
  const double extremes[] = {1.7e308, -1e308, 8e307, 5e-324, -3e-310, 0.0, -0.0, inf, std::nan(""), 1};
  for (int round = 0; round < 400; ++round) {
    std::vector<double> c(1 + r.below(20));
    std::vector<tessarn::real> x(70 + r.below(100)), y(x.size());
    for (double& v : c) v = r.below(3) ? r.uniform() : extremes[r.below(round % 2 ? 10 : 7)];
    for (tessarn::real& v : x) v = std::ldexp(r.uniform(), static_cast<int>(r.below(80)) - 60);
    of(c).func_1(x.data(), y.data(), static_cast<tessarn::ulong>(x.size()));
    for (std::size_t i = 0; i < x.size(); ++i) ASSERT_BITS(y[i], plain::func_1({c}, x[i])) << test::hex(x[i]);
  }
}

// Counts on either side of those at which the powers are made in another way.
TEST(Derivatives, OfManyCoefficients) {
  test::random_source r(94);
  for (std::size_t n = 1; n <= 40; ++n) {
    plain::poly pp;
    for (std::size_t k = 0; k < n; ++k) pp.cof.push_back(r.uniform());
    const binom p = of(pp.cof);
    for (int i = 0; i < 40; ++i) {
      const double x = i % 4 == 0 ? test::draw_finite(r) : r.uniform(-1.5, 1.5);
      SCOPED_TRACE(std::to_string(n) + " coefficients, x = " + test::hex(x));
      ASSERT_BITS(p.func_1(x), plain::func_1(pp, x));
      ASSERT_BITS(p.func_2(x), plain::func_2(pp, x));
      ASSERT_BITS(p.func_3(x), plain::func_3(pp, x));
      ASSERT_BITS(p.func_4(x), plain::func_4(pp, x));
      ASSERT_BITS(p.arc(x), plain::arc(pp, x));
    }
  }
}

TEST(Derivatives, TheFactorWrapsAt32Bits) {
  binom p;
  p.create(70001);
  p.set(70000, 1);
  EXPECT_BITS(p.func_1(1), 70000.0);
  EXPECT_BITS(p.func_2(1), 70000.0 * 69999.0 - 4294967296.0);
  plain::poly q = plain::created(70001);
  q.set(70000, 1);
  EXPECT_BITS(p.func_3(1), plain::func_3(q, 1));
  EXPECT_BITS(p.func_4(1), plain::func_4(q, 1));
}

TEST(Curvature, OfTheParabola) {
  binom p = of({0, 0, 1});
  EXPECT_BITS(p.arc(0), 2.0);
  EXPECT_EQ(p.arc_1(0), 0.0);
  const vector n = p.normale(0);
  EXPECT_EQ(n.x, 0.0);
  EXPECT_BITS(n.y, 0.5);
  EXPECT_NEAR(p.arc(1), 2 / std::pow(5.0, 1.5), 1e-15);
  p.mirror_v();
  EXPECT_BITS(p.arc(0), -2.0);
}

TEST(Curvature, DerivativeIsThatOfTheCurvature) {
  test::random_source r(91);
  for (int i = 0; i < 2000; ++i) {
    binom p = of({r.uniform(), r.uniform(), r.uniform(), r.uniform(), r.uniform()});
    const double x = r.uniform();
    const double h = 1e-5;
    ASSERT_NEAR(p.arc_1(x), (p.arc(x + h) - p.arc(x - h)) / (2 * h), 1e-6);
  }
}

TEST(Curvature, NormaleReachesTheCentre) {
  test::random_source r(92);
  for (int i = 0; i < 2000; ++i) {
    binom p = of({r.uniform(), r.uniform(), r.uniform(), r.uniform()});
    const double x = r.uniform();
    const double k = p.arc(x);
    if (std::fabs(k) < 1e-3) continue;
    ASSERT_NEAR(p.normale(x).lenld() * std::fabs(k), 1.0, 1e-12);
    ASSERT_EQ(p.normale(x).y > 0, k > 0);
  }
}

std::vector<double> draw_coefficients(test::random_source& r) {
  std::vector<double> c(r.below(9));
  const bool hostile = r.below(4) == 0;
  for (double& v : c) v = hostile ? test::draw(r) : test::draw_finite(r);
  return c;
}

TEST(Curvature, AgreesWithThePlainForm) {
  test::random_source r(93);
  for (int i = 0; i < 20000; ++i) {
    const plain::poly pp{draw_coefficients(r)};
    binom p;
    fill(p, pp);
    const double x = test::draw(r);
    SCOPED_TRACE("round " + std::to_string(i) + ", x = " + test::hex(x));
    ASSERT_BITS(p.func_1(x), plain::func_1(pp, x));
    ASSERT_BITS(p.func_2(x), plain::func_2(pp, x));
    ASSERT_BITS(p.func_3(x), plain::func_3(pp, x));
    ASSERT_BITS(p.func_4(x), plain::func_4(pp, x));
    ASSERT_BITS(p.arc(x), plain::arc(pp, x));
    ASSERT_BITS(p.arc_1(x), plain::arc_1(pp, x));
    ASSERT_TRUE(same(p.normale(x), plain::normale(pp, x)));
  }
}

TEST(Curvature, ArraysOfAbscissasGiveTheSameBits) {
  test::random_source r(94);
  for (int round = 0; round < 200; ++round) {
    const binom p = of(draw_coefficients(r));
    const tessarn::ulong n = r.below(40);
    std::vector<tessarn::real> x(n), y(n);
    for (tessarn::real& v : x) v = test::draw(r);
    auto compare = [&](auto many, auto one) {
      many(x.data(), y.data());
      for (std::size_t i = 0; i < n; ++i) ASSERT_BITS(y[i], one(x[i])) << test::hex(x[i]);
      std::vector<tessarn::real> in_place = x;
      many(in_place.data(), in_place.data());
      for (std::size_t i = 0; i < n; ++i) ASSERT_BITS(in_place[i], y[i]);
    };
    compare([&](const tessarn::real* a, tessarn::real* b) { p.func_1(a, b, n); },
            [&](double v) { return p.func_1(v); });
    compare([&](const tessarn::real* a, tessarn::real* b) { p.func_2(a, b, n); },
            [&](double v) { return p.func_2(v); });
    compare([&](const tessarn::real* a, tessarn::real* b) { p.func_3(a, b, n); },
            [&](double v) { return p.func_3(v); });
    compare([&](const tessarn::real* a, tessarn::real* b) { p.func_4(a, b, n); },
            [&](double v) { return p.func_4(v); });
    compare([&](const tessarn::real* a, tessarn::real* b) { p.arc(a, b, n); }, [&](double v) { return p.arc(v); });
    compare([&](const tessarn::real* a, tessarn::real* b) { p.arc_1(a, b, n); }, [&](double v) { return p.arc_1(v); });
  }
}

// ---------------------------------------------------------------------------- find_zero

TEST(FindZero, OnTheGrid) { EXPECT_BITS(of({-1, 1}).find_zero(0, 3, 0.5, 1e-6), 1.0); }

TEST(FindZero, Bracketed) {
  const double x = of({-1.3, 1}).find_zero(0, 3, 0.5, 1e-6);
  EXPECT_NEAR(x, 1.3, 0.000025);
  EXPECT_BITS(x, plain::find_zero({{-1.3, 1}}, 0, 3, 0.5, 1e-6));
}

TEST(FindZero, Bounds) {
  binom p = of({-1, 1});
  EXPECT_BITS(p.find_zero(3, 0, 0.5, 1e-6), -1.0);
  EXPECT_BITS(p.find_zero(3, 0, -0.5, 1e-6), -1.0);
  EXPECT_BITS(p.find_zero(2, 3, 0.5, 1e-6), -1.0);
  // The end itself is tested, and a bracket may reach beyond it.
  EXPECT_BITS(p.find_zero(0, 1, 0.5, 1e-6), 1.0);
  EXPECT_BITS(p.find_zero(1, 1, 0.5, 1e-6), 1.0);
  EXPECT_NEAR(of({-1.3, 1}).find_zero(0, 1, 0.5, 1e-6), 1.3, 0.000025);
  // The step's sign plays no part.
  EXPECT_BITS(p.find_zero(0, 3, -0.5, 1e-6), 1.0);
  // A step below eps gives the midpoint at once.
  EXPECT_BITS(p.find_zero(5, 8, 1e-7, 1e-6), 6.5);
  EXPECT_BITS(p.find_zero(8, 5, 1e-7, 1e-6), 6.5);
}

TEST(FindZero, AgreesWithThePlainForm) {
  test::random_source r(95);
  int found = 0;
  for (int i = 0; i < 4000; ++i) {
    plain::poly pp{draw_coefficients(r)};
    binom p;
    fill(p, pp);
    const double a = test::draw_finite(r);
    const double b = a + r.uniform(-1, 20);
    double step = r.below(3) == 0 ? 0.25 : r.uniform(0.01, 2);
    if (r.below(4) == 0) step = -step;
    const double eps = r.below(20) == 0 ? 0.0 : std::ldexp(1.0, -static_cast<int>(r.below(45)));
    const double x = p.find_zero(a, b, step, eps);
    ASSERT_BITS(x, plain::find_zero(pp, a, b, step, eps)) << "round " << i;
    if (x != -1.0) ++found;
  }
  EXPECT_GT(found, 500);
}

// Scans go in long strides where nothing happens: the sign may change, or the end come, anywhere in one.
TEST(FindZero, LongScansAgreeWithThePlainForm) {
  test::random_source r(117);
  int found = 0;
  for (int i = 0; i < 300; ++i) {
    const double step = r.below(2) ? std::ldexp(1.0, -12) : r.uniform(1e-4, 1e-3);
    const double a = r.uniform(-4, 4), zero = a + r.uniform(0, 4);
    std::vector<double> c = {-zero, 1};
    if (r.below(3) == 0) c = {zero * zero, -2 * zero, 1};             // touches, within rounding
    if (r.below(3) == 0) c = {-zero * 0.5, 0.5 - zero * 0.25, 0.25};  // another zero at -2
    if (r.below(20) == 0) c[0] = r.hostile();
    const double b = a + (r.below(3) == 0 ? r.uniform(0, 4) : 5);
    const double x = of(c).find_zero(a, b, step, step * 1e-3);
    ASSERT_BITS(x, plain::find_zero({c}, a, b, step, step * 1e-3)) << "round " << i;
    found += x != -1;
  }
  EXPECT_GT(found, 100);
}

// ---------------------------------------------------------------------------- curvature extremes

TEST(FindExtrpointArc, OfTheParabola) {
  binom p = of({0, 0, 1});
  EXPECT_EQ(p.find_extrpoint_arc(-1, 1, 0.25, 1e-6), 0.0);
  EXPECT_NEAR(p.find_extrpoint_arc(-1, 1, 0.3, 1e-6), 0.0, 1e-4);
  EXPECT_BITS(p.find_extrpoint_arc(0.5, 1, 0.3, 1e-6), -1.0);
}

TEST(FindExtrpointArc, Bounds) {
  binom p = of({0, 0, 1});
  EXPECT_BITS(p.find_extrpoint_arc(1, 1, 0.25, 1e-6), -1.0);
  EXPECT_BITS(p.find_extrpoint_arc(2, 1, 0.25, 1e-6), -1.0);
  // The end is not tested.
  EXPECT_BITS(p.find_extrpoint_arc(-1, 0, 0.25, 1e-6), -1.0);
  EXPECT_EQ(p.find_extrpoint_arc(-1, 0.125, 0.25, 1e-6), 0.0);
  // A negative step is below eps.
  EXPECT_BITS(p.find_extrpoint_arc(3, 6, -0.5, 1e-6), 4.5);
}

TEST(FindExtrpointArc, AgreesWithThePlainForm) {
  test::random_source r(96);
  int found = 0;
  for (int i = 0; i < 1500; ++i) {
    plain::poly pp{draw_coefficients(r)};
    binom p;
    fill(p, pp);
    const double a = test::draw_finite(r);
    const double b = a + r.uniform(-0.5, 6);
    const double step = r.below(3) == 0 ? 0.25 : r.uniform(0.02, 1);
    const double eps = r.below(20) == 0 ? 0.0 : std::ldexp(1.0, -static_cast<int>(r.below(45)));
    const double x = p.find_extrpoint_arc(a, b, step, eps);
    ASSERT_BITS(x, plain::find_extrpoint_arc(pp, a, b, step, eps)) << "round " << i;
    if (x != -1.0) ++found;
  }
  EXPECT_GT(found, 200);
}

TEST(FindHighHpointArc, AgreesWithThePlainForm) {
  test::random_source r(97);
  int later = 0;
  for (int i = 0; i < 600; ++i) {
    plain::poly pp{draw_coefficients(r)};
    binom p;
    fill(p, pp);
    const double a = r.uniform(-3, 1);
    const double b = a + r.uniform(-0.2, 4);
    const double step = r.below(3) == 0 ? 0.125 : r.uniform(0.02, 0.4);
    const double eps = std::ldexp(1.0, -static_cast<int>(10 + r.below(25)));
    const double x = p.find_high_hpoint_arc(a, b, step, eps);
    ASSERT_BITS(x, plain::find_high_hpoint_arc(pp, a, b, step, eps)) << "round " << i;
    if (x != p.find_extrpoint_arc(a, b, step, eps)) ++later;
  }
  EXPECT_GT(later, 10);
}

// The recursion as it is described, for chains on which it ends.
double recursive_high(binom& p, double a, double b, double step, double eps, int depth) {
  const double x0 = p.find_extrpoint_arc(a, b, step, eps);
  if (x0 == -1.0 || depth > 40) return x0;
  double best = x0;
  double k = p.arc(x0);
  double x = x0;
  do {
    const double next = recursive_high(p, x, b, step, eps, depth + 1);
    if (next == -1.0 || !(next > x)) break;
    x = next;
    if (std::fabs(p.arc(x)) > std::fabs(k)) {
      best = x;
      k = p.arc(x);
    }
  } while (x < b);
  return best;
}

TEST(FindHighHpointArc, AgreesWithTheRecursionWhereThatEnds) {
  // A curve with humps of growing and falling curvature.
  binom p = of({0, 1, 0, -3.5, 0, 2.2, 0, -0.45});
  for (const double a : {-1.9, -1.3, -0.7, 0.1, 0.9}) {
    for (const double step : {0.11, 0.07}) {
      const double x = WITHIN(20, p.find_high_hpoint_arc(a, 1.9, step, 1e-3));
      EXPECT_BITS(x, WITHIN(60, recursive_high(p, a, 1.9, step, 1e-3, 0)));
    }
  }
}

TEST(FindHighHpointArc, NothingFound) {
  EXPECT_BITS(of({1, 2}).find_high_hpoint_arc(1, 0, 0.1, 1e-6), -1.0);
  EXPECT_BITS(of({0, 0, 1}).find_high_hpoint_arc(0.5, 2, 0.1, 1e-6), -1.0);
}

// An extremum exactly on the grid would be found again for ever.
TEST(FindHighHpointArc, EndsOnAGridHit) {
  binom p = of({0, 0, 1});
  EXPECT_EQ(WITHIN(20, p.find_high_hpoint_arc(-1, 1, 0.25, 1e-6)), 0.0);
  // On a straight line every point has a curvature derivative of 0.
  binom line = of({1, 2});
  EXPECT_BITS(WITHIN(20, line.find_high_hpoint_arc(0, 1, 0.25, 1e-6)), 0.0);
  EXPECT_BITS(WITHIN(20, line.find_high_hpoint_arc(0, 1e9, 1e-3, 1e-6)), 0.0);
  // Here the derivative of the curvature vanishes everywhere, by underflow.
  EXPECT_BITS(WITHIN(20, of({0, 0, 1e-200}).find_high_hpoint_arc(0, inf, 0.25, 1e-6)), 0.0);
  // A step below eps gives midpoints that approach b.
  binom q = of({0, 0, 1});
  WITHIN(20, (q.find_high_hpoint_arc(0, 1, 1e-9, 1e-6), true));
  WITHIN(20, (q.find_high_hpoint_arc(0, 1, -1, 1e-6), true));
}

// ---------------------------------------------------------------------------- termination

TEST(Searches, EndWhenTheStepDoesNotAdvance) {
  binom p = of({1, 1});
  EXPECT_BITS(WITHIN(20, p.find_zero(1e17, 1e18, 1, 1e-6)), -1.0);
  EXPECT_BITS(WITHIN(20, p.find_zero(1, 2, 0, 0)), -1.0);
  EXPECT_BITS(WITHIN(20, p.find_zero(1, 2, 1e-300, 0)), -1.0);
  EXPECT_NEAR(WITHIN(20, of({-1.3, 1}).find_zero(0, 3, 0.5, 0)), 1.3, 1e-14);
  EXPECT_NEAR(WITHIN(20, of({-1.3, 1}).find_zero(0, 3, 0.5, -1)), 1.3, 1e-14);
  binom q = of({0, 0, 1});
  EXPECT_BITS(WITHIN(20, q.find_extrpoint_arc(1e17, 1e18, 1, 1e-6)), -1.0);
  EXPECT_BITS(WITHIN(20, q.find_extrpoint_arc(1, 2, 0, 0)), -1.0);
  EXPECT_BITS(WITHIN(20, q.find_high_hpoint_arc(1e17, 1e18, 1, 1e-6)), -1.0);
}

// An upper bound that is infinite or NaN does not hide what lies before it.
TEST(Searches, FindWithoutAnUpperBound) {
  for (const double b : {inf, nan}) {
    EXPECT_BITS(WITHIN(20, of({-1, 1}).find_zero(0, b, 0.5, 1e-6)), 1.0);
    EXPECT_BITS(WITHIN(20, of({-1.3, 1}).find_zero(0, b, 0.5, 1e-6)), plain::find_zero({{-1.3, 1}}, 0, b, 0.5, 1e-6));
    EXPECT_BITS(WITHIN(20, of({1, 0, 1}).find_zero(0, b, 0.5, 1e-6)), -1.0);
    EXPECT_BITS(WITHIN(20, of({0, 0, 1}).find_extrpoint_arc(-1, b, 0.3, 1e-6)),
                plain::find_extrpoint_arc({{0, 0, 1}}, -1, b, 0.3, 1e-6));
    EXPECT_BITS(WITHIN(20, of({0, 0, 1}).find_extrpoint_arc(1, b, 0.3, 1e-6)), -1.0);
  }
  EXPECT_BITS(WITHIN(20, of({-1, 1}).find_zero(-inf, 3, 0.5, 1e-6)), -1.0);
  EXPECT_BITS(WITHIN(20, of({-1, 1}).find_zero(nan, 3, 0.5, 1e-6)), -1.0);
}

TEST(Searches, InfiniteStepFindsNothing) {
  EXPECT_BITS(WITHIN(20, of({-1.3, 1}).find_zero(0, 3, inf, 1e-6)), -1.0);
  EXPECT_BITS(WITHIN(20, of({0, 1}).find_zero(0, 3, inf, 1e-6)), 0.0);
  EXPECT_BITS(WITHIN(20, of({0, 0, 1}).find_extrpoint_arc(-1, 3, inf, 1e-6)), -1.0);
}

// The two schemes test the refined step the other way round, which a NaN shows.
TEST(Searches, NanEps) {
  EXPECT_NEAR(WITHIN(20, of({-1.3, 1}).find_zero(0, 3, 0.5, nan)), 1.3, 1e-14);
  EXPECT_BITS(WITHIN(20, of({0, 0, 1}).find_extrpoint_arc(-1, 1, 0.3, nan)),
              ((-1 + 0.3 + 0.3 + 0.3) + (-1 + 0.3 + 0.3 + 0.3 + 0.3)) * 0.5);
}

TEST(Searches, EndForNanAndInfiniteArguments) {
  const double values[] = {0.0, 1.0, -1.0, 1e300, -1e300, 1e-310, inf, -inf, nan};
  const std::vector<std::vector<double>> curves{{-1.3, 1}, {2}, {0, 0, 1}, {nan, 1}, {0}};
  for (const std::vector<double>& c : curves) {
    binom p = of(c);
    for (const double a : values) {
      for (const double b : values) {
        // A long scan of finite bounds is what the caller asked for.
        if (std::isfinite(a) && std::isfinite(b) && b - a > 1e6) continue;
        SCOPED_TRACE(test::hex(a) + " to " + test::hex(b));
        const auto search_with_every_step = [&] {
          for (const double step : {0.5, 0.0, inf, -inf, nan}) {
            for (const double eps : {1e-3, 0.0, -1.0, inf, nan}) {
              p.find_zero(a, b, step, eps);
              p.find_extrpoint_arc(a, b, step, eps);
              p.find_high_hpoint_arc(a, b, step, eps);
            }
          }
        };
        WITHIN(20, (search_with_every_step(), true));
      }
    }
  }
}

// ---------------------------------------------------------------------------- ratio and inverse

TEST(Scalar, WorkedExamples) {
  binom two = of({2, 2}), one = of({1, 1});
  EXPECT_BITS(two.scalar(one, 0, 1, 0.25), 2.0);
  binom x = of({0, 1}), twice = of({0, 2});
  EXPECT_BITS(twice.scalar(x, 0, 1, 0.25), 2.0);
  // 2/x + 2 at 0.25, 0.5, 0.75 and 1; the sample at 0 is left out.
  EXPECT_NEAR(two.scalar(x, 0, 1, 0.25), 37.0 / 6, 1e-14);
}

TEST(Scalar, LeftOutSamples) {
  binom one = of({1}), zero = of({0}), x = of({0, 1}), bad = of({nan});
  EXPECT_BITS(one.scalar(zero, 0, 1, 0.25), 0.0);
  EXPECT_BITS(one.scalar(bad, 0, 1, 0.25), 0.0);
  // At 4 the terms of the divisor overflow with both signs: only the sample at 0 is left.
  EXPECT_BITS(of({5}).scalar(of({1, 1e308, -5e307}), 0, 4, 4), 5.0);
  // The sample at exactly -1 takes no part in the mean: 1/x over -3, -2, -1.
  EXPECT_BITS(one.scalar(x, -3, -1, 1), (-1.0 / 3 + -1.0 / 2) / 2);
  // Only that one: nothing is left to fit.
  EXPECT_BITS(one.scalar(x, -1, -1, 1), 0.0);
}

TEST(Scalar, SampleCounts) {
  binom one = of({1}), x = of({0, 1});
  EXPECT_BITS(one.scalar(x, 2, 2, 1), 0.5);
  // A quotient between -1 and 1 gives no sample.
  EXPECT_BITS(one.scalar(x, 2, 1.5, 1), 0.0);
  EXPECT_BITS(one.scalar(x, 2, 0.5, 1), 0.0);
  // Of a larger one the low 32 bits count: three samples.
  EXPECT_BITS(one.scalar(x, 1, 4294967299.0, 1), plain::scalar({{1}}, {{0, 1}}, 1, 3, 1));
}

TEST(Scalar, AgreesWithThePlainForm) {
  test::random_source r(98);
  for (int i = 0; i < 4000; ++i) {
    const plain::poly pp{draw_coefficients(r)};
    const plain::poly pq{draw_coefficients(r)};
    binom p, q;
    fill(p, pp);
    fill(q, pq);
    const double a = test::draw_finite(r);
    const double h = r.below(2) ? 0.25 : r.uniform(0.05, 1);
    const double b = a + h * (static_cast<double>(r.below(20)) - 0.5);
    ASSERT_BITS(p.scalar(q, a, b, h), plain::scalar(pp, pq, a, b, h)) << "round " << i;
    ASSERT_BITS(p.scalar(p, a, b, h), plain::scalar(pp, pp, a, b, h)) << "round " << i;
  }
}

TEST(Antifunction, OfALine) {
  binom p = of({0, 2});
  binom g = p.antifunction(0, 2, 0.5);
  ASSERT_EQ(g.getcofcnt(), 2u);
  EXPECT_NEAR(g.get(0), 0.0, 1e-14);
  EXPECT_NEAR(g.get(1), 0.5, 1e-14);
  EXPECT_TRUE(same(p, {{0, 2}}));
}

TEST(Antifunction, AgreesWithThePlainForm) {
  test::random_source r(99);
  for (int i = 0; i < 1500; ++i) {
    const plain::poly pp{draw_coefficients(r)};
    binom p;
    fill(p, pp);
    const double a = test::draw_finite(r);
    const double h = r.below(2) ? 0.25 : r.uniform(0.05, 1);
    const double b = a + h * (static_cast<double>(r.below(20)) - 0.5);
    binom g = p.antifunction(a, b, h);
    ASSERT_TRUE(same(g, plain::antifunction(pp, a, b, h))) << "round " << i;
  }
}

}  // namespace
