// The least-squares fits of binom through points.
#include <gtest/gtest.h>
#include <tessarn/poly.h>

#include <limits>
#include <vector>

#include "plain/curve.h"
#include "support/pairs.h"

namespace {

using plain::vec2;
using test::same;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

std::vector<vector> lib_points(const std::vector<vec2>& points) {
  std::vector<vector> v;
  for (const vec2& p : points) v.push_back(test::lib(p));
  return v;
}

binom fitted(const std::vector<vec2>& points, tessarn::ulong m) {
  std::vector<vector> v = lib_points(points);
  binom p;
  p.create(v.data(), static_cast<tessarn::ulong>(v.size()), m);
  return p;
}

binom fitted_odd(const std::vector<vec2>& points, tessarn::ulong m) {
  std::vector<vector> v = lib_points(points);
  binom p;
  p.createtan(v.data(), static_cast<tessarn::ulong>(v.size()), m);
  return p;
}

TEST(Fit, ThreePointsGiveTheParabola) {
  const std::vector<vec2> points{{0, 1}, {1, 3}, {2, 7}};
  binom p = fitted(points, 3);
  ASSERT_EQ(p.getcofcnt(), 3u);
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(p.get(i), 1.0, 1e-12);
  EXPECT_TRUE(same(p, plain::fit(points, 3)));
}

TEST(Fit, MarkedPointsAreLeftOut) {
  const std::vector<vec2> points{{0, 1}, {1, 3}, {2, 7}};
  const std::vector<vec2> marked{{0, 1}, {-1.0, 100}, {1, 3}, {nan, 5}, {2, 7}};
  binom p = fitted(marked, 3);
  EXPECT_TRUE(same(p, plain::fit(points, 3)));
  // The odd fit uses them all.
  const std::vector<vec2> one_marked{{0, 1}, {-1.0, 100}, {1, 3}, {2, 7}};
  binom odd = fitted_odd(one_marked, 4);
  EXPECT_TRUE(same(odd, plain::fit_odd(one_marked, 4)));
  binom without = fitted_odd(points, 4);
  EXPECT_GT(std::fabs(odd.get(0) - without.get(0)), 1.0);
}

TEST(Fit, OneCoefficientIsTheMean) {
  binom p = fitted({{0, 1}, {5, 3}, {-1, 1000}, {2, 8}}, 1);
  ASSERT_EQ(p.getcofcnt(), 1u);
  EXPECT_BITS(p.get(0), 4.0);
}

TEST(Fit, NoCoefficients) {
  binom p = fitted({{0, 1}, {5, 3}}, 0);
  EXPECT_EQ(p.getcofcnt(), 0u);
  binom q = fitted_odd({{0, 1}, {5, 3}}, 0);
  EXPECT_EQ(q.getcofcnt(), 0u);
}

// A singular system leaves the right-hand side, the sums of x^i y, in the coefficients.
TEST(Fit, SingularSystemsLeaveTheRightHandSide) {
  binom p = fitted({{2, 3}}, 2);
  EXPECT_TRUE(same(p, {{3, 6}}));
  binom none = fitted({}, 3);
  EXPECT_TRUE(same(none, {{0, 0, 0}}));
  binom null;
  null.create(static_cast<vector*>(nullptr), 0, 2);
  EXPECT_TRUE(same(null, {{0, 0}}));
  binom vertical = fitted({{2, 1}, {2, 5}}, 2);
  EXPECT_TRUE(same(vertical, {{6, 12}}));
}

TEST(FitOdd, OnlyTheConstantAndOddPowers) {
  std::vector<vec2> points;
  for (int i = -4; i <= 4; ++i) points.push_back({i * 0.5, 2 + i * 0.5 * (i * 0.5) * (i * 0.5)});
  binom p = fitted_odd(points, 4);
  ASSERT_EQ(p.getcofcnt(), 4u);
  EXPECT_NEAR(p.get(0), 2.0, 1e-12);
  EXPECT_NEAR(p.get(1), 0.0, 1e-12);
  EXPECT_BITS(p.get(2), 0.0);
  EXPECT_NEAR(p.get(3), 1.0, 1e-12);
}

TEST(FitOdd, PowersAtOrBeyondTheCountAreDropped) {
  const std::vector<vec2> points{{0, 1}, {1, 2}, {2, 0}, {3, 5}, {4, 4}};
  binom five = fitted_odd(points, 5);
  ASSERT_EQ(five.getcofcnt(), 5u);
  EXPECT_BITS(five.get(2), 0.0);
  EXPECT_BITS(five.get(4), 0.0);
  EXPECT_NE(five.get(3), 0.0);
  binom three = fitted_odd(points, 3);
  ASSERT_EQ(three.getcofcnt(), 3u);
  EXPECT_BITS(three.get(2), 0.0);
  for (unsigned m = 0; m < 8; ++m) {
    binom p = fitted_odd(points, m);
    EXPECT_TRUE(same(p, plain::fit_odd(points, m))) << m;
  }
}

TEST(Fit, OverwritesWhatWasThere) {
  std::vector<vector> v = lib_points({{0, 1}, {1, 3}});
  binom p;
  p.create(7);
  p.create(v.data(), 2, 2);
  EXPECT_TRUE(same(p, plain::fit({{0, 1}, {1, 3}}, 2)));
  p.createtan(v.data(), 2, 2);
  EXPECT_TRUE(same(p, plain::fit_odd({{0, 1}, {1, 3}}, 2)));
}

TEST(Fit, NanSumsCountAsZero) {
  const std::vector<vec2> points{{1, nan}, {2, 3}, {4, 5}};
  binom p = fitted(points, 2);
  EXPECT_TRUE(same(p, plain::fit(points, 2)));
  EXPECT_EQ(p.get(0), p.get(0));
  const std::vector<vec2> infinite{{inf, 1}, {-inf, 2}, {3, 4}};
  binom q = fitted(infinite, 3);
  EXPECT_TRUE(same(q, plain::fit(infinite, 3)));
  const std::vector<vec2> bad{{nan, 1}, {1, 2}, {3, 4}};
  binom o = fitted_odd(bad, 4);
  EXPECT_TRUE(same(o, plain::fit_odd(bad, 4)));
}

TEST(Fit, AgreesWithThePlainForm) {
  test::random_source r(81);
  for (int round = 0; round < 3000; ++round) {
    std::vector<vec2> points;
    const std::size_t n = r.below(20);
    const unsigned kind = r.below(3);
    for (std::size_t i = 0; i < n; ++i) {
      if (kind == 0) {
        points.push_back(test::draw_vec2(r));
      } else {
        points.push_back({kind == 1 ? test::draw_finite(r) : r.uniform(-1, 1), r.uniform(-5, 5)});
      }
    }
    const unsigned m = r.below(8);
    binom p = fitted(points, m);
    ASSERT_TRUE(same(p, plain::fit(points, m))) << "round " << round << ", m = " << m;
    binom q = fitted_odd(points, m);
    ASSERT_TRUE(same(q, plain::fit_odd(points, m))) << "round " << round << ", m = " << m;
  }
}

TEST(Fit, LongListsAgreeWithThePlainForm) {
  test::random_source r(82);
  for (const unsigned m : {1u, 3u, 4u, 5u, 8u, 9u}) {
    std::vector<vec2> points;
    for (int i = 0; i < 3000; ++i) points.push_back({r.uniform(-3, 3), r.uniform(-5, 5)});
    binom p = fitted(points, m);
    ASSERT_TRUE(same(p, plain::fit(points, m)));
    binom q = fitted_odd(points, m);
    ASSERT_TRUE(same(q, plain::fit_odd(points, m)));
  }
}

// Marked points, and abscissas whose powers take the long way, anywhere between the others.
TEST(Fit, ListsWithExceptionsAgreeWithThePlainForm) {
  test::random_source r(86);
  constexpr double exceptions[] = {-1, nan, 0, -0.0, 5e-324, 1e-25, 1e25, 1e200};
  for (int round = 0; round < 400; ++round) {
    const std::size_t n = r.below(200);
    std::vector<vec2> points;
    const double scale = r.below(4) == 0 ? 1e-24 : 1;
    for (std::size_t i = 0; i < n; ++i) points.push_back({r.uniform(-3, 3) * scale, r.uniform(-5, 5)});
    for (unsigned k = r.below(4); n > 0 && k > 0; --k)
      points[r.below(static_cast<unsigned>(n))].x = exceptions[r.below(round % 2 == 0 ? 4 : 8)];
    const unsigned m = 2 + r.below(8);
    binom p = fitted(points, m);
    ASSERT_TRUE(same(p, plain::fit(points, m))) << "round " << round << ", m = " << m;
    binom q = fitted_odd(points, m);
    ASSERT_TRUE(same(q, plain::fit_odd(points, m))) << "round " << round << ", m = " << m;
  }
}

// No neighbour of a least-squares solution is better.
TEST(Fit, IsALeastSquaresSolution) {
  test::random_source r(83);
  for (int round = 0; round < 50; ++round) {
    std::vector<vec2> points;
    for (int i = 0; i < 30; ++i) points.push_back({r.uniform(-1, 1), r.uniform(-1, 1)});
    binom p = fitted(points, 4);
    auto cost = [&](binom& q) {
      double s = 0;
      for (const vec2& v : points) s += (q.func(v.x) - v.y) * (q.func(v.x) - v.y);
      return s;
    };
    const double best = cost(p);
    for (int i = 0; i < 4; ++i) {
      for (const double step : {1e-4, -1e-4}) {
        const double c = p.get(i);
        p.set(i, c + step);
        ASSERT_GT(cost(p), best);
        p.set(i, c);
      }
    }
  }
}

}  // namespace
