// The searches where a sample hits an extreme exactly, where refinement ends, and between reversed
// bounds.
#include <gtest/gtest.h>
#include <tessarn/poly.h>

#include <cmath>
#include <limits>
#include <new>
#include <vector>

#include "plain/curve.h"
#include "support/pairs.h"
#include "support/time_limit.h"

namespace {

using test::fill;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

binom of(const std::vector<double>& c) {
  binom p;
  fill(p, {c});
  return p;
}

// The curvature of an even curve has an extreme at 0, which the grid hits exactly; the sharper one
// lies behind it.
TEST(FindHighHpointArc, GoesOnBehindAnExactHit) {
  binom p = of({0, 0, 0.5, 0, -1, 0, 0.5});
  EXPECT_EQ(p.find_extrpoint_arc(-0.25, 2, 0.125, 1e-9), 0.0);
  const double highest = WITHIN(20, p.find_high_hpoint_arc(-0.25, 2, 0.125, 1e-9));
  EXPECT_GT(highest, 0.3);
  const double at_highest = std::fabs(p.arc(highest));
  EXPECT_GT(at_highest, 1.01 * std::fabs(p.arc(0)));
  for (int i = -250; i < 2000; ++i) ASSERT_LE(std::fabs(p.arc(i * 1e-3)), at_highest * (1 + 1e-9)) << i;
  // From the points around the hit, which the grid misses, the same extreme is found.
  EXPECT_NEAR(p.find_high_hpoint_arc(-0.2, 2, 0.125, 1e-9), highest, 1e-6);
  EXPECT_NEAR(WITHIN(20, p.find_high_hpoint_arc(-0.25, inf, 0.125, 1e-9)), highest, 1e-6);
}

TEST(FindHighHpointArc, AgreesWithThePlainFormOnExactHits) {
  test::random_source r(98);
  int hits = 0;
  for (int i = 0; i < 400; ++i) {
    plain::poly pp{{r.uniform(-1, 1), 0, r.uniform(-1, 1), 0, r.uniform(-1, 1), 0, r.uniform(-1, 1)}};
    binom p;
    fill(p, pp);
    const double a = -0.125 * static_cast<double>(r.below(9)), b = 2, step = 0.125, eps = std::ldexp(1.0, -30);
    const double x = p.find_high_hpoint_arc(a, b, step, eps);
    ASSERT_BITS(x, plain::find_high_hpoint_arc(pp, a, b, step, eps)) << "round " << i;
    hits += p.find_extrpoint_arc(a, b, step, eps) == 0 && x != 0;
  }
  EXPECT_GT(hits, 20) << "zeros on the grid with a higher point behind";
}

// ---------------------------------------------------------------------------- the limits of
// refinement

TEST(Searches, AnEpsBelowTheSpacingOfNumbersGivesTheFinestBracket) {
  binom p = of({-1000.3, 1});
  for (double eps : {1e-13, 1e-14, 1e-16, 1e-300, 0.0, -1.0, nan}) {
    const double x = WITHIN(20, p.find_zero(0, 2000, 1, eps));
    EXPECT_NEAR(x, 1000.3, 1e-11) << eps;
    EXPECT_BITS(x, plain::find_zero({{-1000.3, 1}}, 0, 2000, 1, eps));
  }
  // About 0 there are finer numbers.
  EXPECT_LT(std::fabs(WITHIN(20, of({0, 1}).find_zero(-0.31, 1, 0.1, 0))), 1e-300);
  // No bracket is held.
  EXPECT_BITS(p.find_zero(0, 900, 1, 0), -1.0);
  EXPECT_BITS(p.find_zero(1000.5, 2000, 1e-14, 0), -1.0);
  binom q = of({0, 0, 1});
  q.shift_h(1000.3);
  for (double eps : {1e-9, 1e-14, 0.0}) {
    const double x = WITHIN(20, q.find_extrpoint_arc(0, 2000, 1, eps));
    EXPECT_NEAR(x, 1000.3, 1e-6) << eps;
    EXPECT_NEAR(WITHIN(20, q.find_high_hpoint_arc(0, 2000, 1, eps)), 1000.3, 1e-6) << eps;
  }
  // A NaN eps ends this search with the first bracket, as it is compared.
  EXPECT_NEAR(q.find_extrpoint_arc(0, 2000, 1, nan), 1000.3, 0.5);
}

// Bounds in the wrong order ask for thousands of millions of samples.
TEST(Searches, SamplesBetweenReversedBoundsFailAtOnce) {
  binom p = of({1, 2}), q = of({3, 1});
  for (double b : {-2.0, -1e6, -4294967291.0, -4294967296.0 * 3, -9e18}) {
    EXPECT_THROW(p.scalar(q, 0, b, 1), std::bad_alloc) << b;
    EXPECT_THROW(p.antifunction(0, b, 1), std::bad_alloc) << b;
  }
  EXPECT_BITS(p.scalar(q, 0, -1.5, 1), 0.0);
  EXPECT_EQ(p.antifunction(0, -1.5, 1).getcofcnt(), 2u);
}

}  // namespace
