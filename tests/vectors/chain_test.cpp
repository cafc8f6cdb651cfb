// The chain that findline extracts, and the line fit that goes on with it.
#include <gtest/gtest.h>
#include <tessarn/poly.h>
#include <tessarn/vectors.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <vector>

#include "poly/line_sums.h"
#include "support/lists.h"

namespace {

using plain::vec2;
using test::fill;
using test::list_of;
using test::same;
using test::same_points;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// A chain's fit goes on from point to point: marked points and NaN in the chain, and values that
// overflow, included.
TEST(VectormatFindline, LongChainsAgreeWithThePlainForm) {
  test::random_source r(56);
  std::size_t longest = 0;
  for (int round = 0; round < 200; ++round) {
    const std::size_t n = 50 + r.below(350);
    const unsigned kind = r.below(4);
    const double start = kind == 3 ? -static_cast<double>(r.below(20)) : 0, scale = kind == 2 ? 1e160 : 1;
    std::vector<vec2> points;
    for (std::size_t i = 0; i < n; ++i) {
      const double x = start + static_cast<double>(i);  // passes through -1 in the last kind
      points.push_back({x * scale, (x * 0.3 + r.uniform(-0.01, 0.01)) * scale});
      if (kind == 1 && r.below(30) == 0) points.back() = {nan, r.uniform()};
      if (kind == 1 && r.below(30) == 0) points.back().y = nan;
      if (r.below(9) == 0) points.back() = {r.uniform(-2, 40), r.uniform(-20, 20)};
    }
    vectormat l;
    fill(l, points);
    plain::point_list p = list_of(points), expected;
    ASSERT_TRUE(plain::find_line(p, {1, 0.3}, expected));
    const std::unique_ptr<vectormat> found(l.findline(vector(1, 0.3)));
    ASSERT_TRUE(same_points(l, p.points)) << "round " << round;
    ASSERT_TRUE(same(*found, expected)) << "round " << round;
    longest = std::max<std::size_t>(longest, found->count);
  }
  EXPECT_GT(longest, 200u);
}

// After each point.
TEST(LineSums, GiveTheSlopeOfTheFit) {
  test::random_source r(57);
  for (int round = 0; round < 300; ++round) {
    const unsigned kind = r.below(3);
    std::vector<vector> points;
    tessarn::detail::line_sums sums;
    binom line;
    for (int i = 0; i < 60; ++i) {
      if (kind == 0)
        points.emplace_back(test::draw(r), test::draw(r));
      else if (r.below(6) == 0)
        points.emplace_back(r.below(2) ? -1.0 : nan, r.uniform());
      else if (kind == 1)
        points.emplace_back(r.uniform(), r.uniform());
      else
        points.emplace_back(2.0, r.uniform());
      sums.add(points.back());
      line.create(points.data(), static_cast<tessarn::ulong>(points.size()), 2);
      ASSERT_BITS(sums.slope(), line.get(1)) << "round " << round << ", " << i + 1 << " points";
    }
  }
}

}  // namespace
