#include <gtest/gtest.h>
#include <tessarn/vectors.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "support/lists.h"
#include "support/time_limit.h"

namespace {

using plain::vec2;
using test::fill;
using test::list_of;
using test::same;
using test::same_points;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();

TEST(Vectormat, StartsEmpty) {
  vectormat l;
  EXPECT_EQ(l.points, nullptr);
  EXPECT_EQ(l.count, 0u);
  EXPECT_EQ(l.capacity, 0u);
  l.empty();
  EXPECT_EQ(l.points, nullptr);
}

TEST(Vectormat, GrowsBy1024) {
  vectormat l;
  for (int i = 0; i < 1024; ++i) {
    vector v(i, 1 - i);
    l.add(v);
    ASSERT_EQ(l.capacity, 1024u);
  }
  vector v(1024, -1023);
  l += v;
  EXPECT_EQ(l.capacity, 2048u);
  EXPECT_EQ(l.count, 1025u);
  for (int i = 0; i <= 1024; ++i) ASSERT_TRUE(same(l.points[i], {double(i), double(1 - i)}));
  for (int i = 1025; i < 2048; ++i) ASSERT_TRUE(same(l.points[i], {0, 0}));
  l.empty();
  EXPECT_EQ(l.points, nullptr);
  EXPECT_EQ(l.count, 0u);
  EXPECT_EQ(l.capacity, 0u);
  l += v;
  EXPECT_EQ(l.capacity, 1024u);
  EXPECT_TRUE(same_points(l, {{1024, -1023}}));
}

TEST(Vectormat, AddsAPointOfItselfAlsoWhenItGrows) {
  vectormat l;
  fill(l, std::vector<vec2>(1024, {3, 4}));
  l.points[0].x = 7;
  l.add(l.points[0]);
  EXPECT_TRUE(same(l.points[1024], {7, 4}));
  l += l.points[1024];
  EXPECT_TRUE(same(l.points[1025], {7, 4}));
}

TEST(Vectormat, Del) {
  vectormat l;
  fill(l, {{1, 1}, {2, 2}, {3, 3}});
  l.del(0);
  EXPECT_TRUE(same_points(l, {{2, 2}, {3, 3}}));
  EXPECT_TRUE(same(l.points[2], {0, 0}));
  vectormat m;
  fill(m, {{1, 1}, {2, 2}, {3, 3}});
  m.del(7);
  EXPECT_TRUE(same_points(m, {{1, 1}, {2, 2}}));
  EXPECT_TRUE(same(m.points[2], {0, 0}));
  m -= 1;
  EXPECT_TRUE(same_points(m, {{1, 1}}));
  m -= 4294967295u;
  EXPECT_EQ(m.count, 0u);
  m.del(0);
  EXPECT_EQ(m.count, 0u);
  EXPECT_EQ(m.capacity, 1024u);
  vectormat none;
  none.del(3);
  EXPECT_EQ(none.count, 0u);
  EXPECT_EQ(none.points, nullptr);
}

TEST(Vectormat, ScalesVertically) {
  vectormat l;
  fill(l, {{1, 1}, {2, -2}});
  l *= 3;
  EXPECT_TRUE(same_points(l, {{1, 3}, {2, -6}}));
}

TEST(Vectormat, Flip) {
  vectormat l;
  fill(l, {{1, 5}, {2, -2}});
  l.flip();
  EXPECT_TRUE(same_points(l, {{5, 1}, {-2, 2}}));
}

TEST(Vectormat, CopiesAreDeep) {
  vectormat a;
  fill(a, {{1, 2}, {3, 4}});
  vectormat b(a);
  EXPECT_TRUE(same_points(b, {{1, 2}, {3, 4}}));
  EXPECT_NE(a.points, b.points);
  b.points[0].x = 9;
  EXPECT_TRUE(same_points(a, {{1, 2}, {3, 4}}));
  vectormat c;
  fill(c, {{7, 7}});
  c = a;
  EXPECT_TRUE(same_points(c, {{1, 2}, {3, 4}}));
  vectormat& self = c;
  c = self;
  EXPECT_TRUE(same_points(c, {{1, 2}, {3, 4}}));
  vectormat none;
  c = none;
  EXPECT_EQ(c.count, 0u);
  EXPECT_EQ(c.capacity, 0u);
  vectormat d(none);
  EXPECT_EQ(d.points, nullptr);
}

TEST(Vectormat, MovesEmptyTheSource) {
  vectormat a;
  fill(a, {{1, 2}, {3, 4}});
  const vector* storage = a.points;
  vectormat b(std::move(a));
  EXPECT_EQ(b.points, storage);
  EXPECT_TRUE(same_points(b, {{1, 2}, {3, 4}}));
  EXPECT_EQ(a.points, nullptr);
  EXPECT_EQ(a.count, 0u);
  EXPECT_EQ(a.capacity, 0u);
  fill(a, {{5, 5}});
  a = std::move(b);
  EXPECT_EQ(a.points, storage);
  EXPECT_EQ(b.points, nullptr);
  EXPECT_EQ(b.capacity, 0u);
}

TEST(Vectormat, LivesInAStdVector) {
  std::vector<vectormat> lists;
  for (int i = 0; i < 20; ++i) {
    vectormat l;
    fill(l, std::vector<vec2>(static_cast<std::size_t>(i), {double(i), 1}));
    lists.push_back(l);
  }
  lists.erase(lists.begin() + 3);
  std::swap(lists[0], lists[10]);
  EXPECT_EQ(lists[0].count, 11u);
  EXPECT_EQ(lists[10].count, 0u);
  EXPECT_EQ(lists[18].count, 19u);
}

// ---------------------------------------------------------------------------- sorting

TEST(VectormatSort, ByXThenY) {
  vectormat l;
  fill(l, {{2, 1}, {1, 5}, {1, 3}});
  l.sort();
  EXPECT_TRUE(same_points(l, {{1, 3}, {1, 5}, {2, 1}}));
  vectormat none;
  none.sort();
  EXPECT_EQ(none.count, 0u);
  vectormat one;
  fill(one, {{nan, 1}});
  one.sort();
  EXPECT_TRUE(same_points(one, {{nan, 1}}));
}

TEST(VectormatSort, ZerosOfBothSignsAreTiesThatKeepTheirOrder) {
  vectormat l;
  fill(l, {{0.0, -0.0}, {-0.0, 0.0}, {0.0, 0.0}, {-0.0, -1.0}});
  l.sort();
  EXPECT_TRUE(same_points(l, {{-0.0, -1.0}, {0.0, -0.0}, {-0.0, 0.0}, {0.0, 0.0}}));
}

// With NaN the comparisons are no order and the result depends on the passes.
TEST(VectormatSort, KeepsTheBubbleSortsResultForEveryInput) {
  test::random_source r(51);
  for (int round = 0; round < 3000; ++round) {
    const std::size_t n = r.below(round % 50 == 0 ? 200 : 14);
    std::vector<vec2> points;
    const unsigned kind = r.below(4);
    for (std::size_t i = 0; i < n; ++i) {
      auto value = [&]() {
        if (kind == 0) return test::draw(r);
        if (kind == 1 && r.below(6) == 0) return nan;
        if (kind == 2 && r.below(40) == 0) return nan;
        const double v = static_cast<double>(r.below(4));
        return v == 0 && r.below(2) ? -0.0 : v;
      };
      const double x = value();
      points.push_back({x, value()});
    }
    vectormat l;
    fill(l, points);
    plain::point_list p = list_of(points);
    l.sort();
    plain::bubble_sort(p);
    ASSERT_TRUE(same(l, p)) << "round " << round;
  }
}

// Long lists are sorted digit by digit of x.
TEST(VectormatSort, LongListsKeepTheOrderOfEquals) {
  test::random_source r(53);
  for (int round = 0; round < 60; ++round) {
    const std::size_t n = 390 + r.below(1200);
    std::vector<vec2> points;
    const unsigned kind = r.below(5);
    for (std::size_t i = 0; i < n; ++i) {
      auto value = [&](unsigned k) {
        if (k == 0) return test::draw(r);
        if (k == 1) return r.uniform(-1, 1);
        if (k == 2) return r.below(2) ? -0.0 : 0.0;
        if (k == 3) return 1000 + static_cast<double>(r.below(100));  // most digits are shared
        return static_cast<double>(r.below(9)) - 4;
      };
      double x = value(kind), y = value(r.below(4));
      if (x != x || y != y) x = y = std::numeric_limits<double>::infinity();
      points.push_back({x, y});
    }
    vectormat l;
    fill(l, points);
    l.sort();
    std::stable_sort(points.begin(), points.end(),
                     [](const vec2& a, const vec2& b) { return a.x < b.x || (a.x == b.x && a.y < b.y); });
    ASSERT_TRUE(same_points(l, points)) << "round " << round;
  }
}

// A NaN x stays where it is and divides the list; a NaN y divides the points of its x.
TEST(VectormatSort, LongListsWithNanKeepTheBubbleSortsResult) {
  test::random_source r(55);
  for (int round = 0; round < 60; ++round) {
    std::vector<vec2> points(300 + r.below(1500));
    const std::uint32_t rarity_x = 1 + r.below(2000), rarity_y = 1 + r.below(40), values = 1 + r.below(60);
    for (vec2& p : points) {
      p = {static_cast<double>(r.below(values)) - 3, static_cast<double>(r.below(5)) - 2};
      if (r.below(rarity_x) == 0) p.x = nan;
      if (r.below(rarity_y) == 0) p.y = nan;
    }
    vectormat l;
    fill(l, points);
    plain::point_list p = list_of(points);
    l.sort();
    plain::bubble_sort(p);
    ASSERT_TRUE(same(l, p)) << "round " << round;
  }
}

TEST(VectormatSort, LongListsDoNotTakeQuadraticTime) {
  test::random_source r(52);
  vectormat l;
  for (int i = 0; i < 300000; ++i) {
    vector v(r.uniform(), r.uniform());
    l.add(v);
  }
  WITHIN(20, (l.sort(), true));
  for (tessarn::ulong i = 1; i < l.count; ++i) ASSERT_LE(l.points[i - 1].x, l.points[i].x);
  l.flip();
  l.points[1000].x = nan;
  l.points[3].y = nan;
  WITHIN(20, (l.sort(), true));
  EXPECT_TRUE(l.points[1000].x != l.points[1000].x);
  for (tessarn::ulong i = 1002; i < l.count; ++i) ASSERT_LE(l.points[i - 1].x, l.points[i].x);
}

// ---------------------------------------------------------------------------- means

TEST(Vectormat, Average) {
  vectormat l;
  fill(l, {{0, 0}, {2, 0}, {2, 2}});
  EXPECT_TRUE(same(l.average(), {4 * (1.0 / 3), 2 * (1.0 / 3)}));
  vectormat none;
  EXPECT_TRUE(same(none.average(), {nan, nan}));
}

TEST(Vectormat, AverageSumsEvenAndOddPointsApart) {
  vectormat l;
  fill(l, {{1e16, 1}, {1, 1e16}, {-1e16, 2}, {1, -1e16}, {3, 4}});
  EXPECT_TRUE(same(l.average(), {5 * 0.2, 7 * 0.2}));
}

// Long lists are read half a page of memory at a time.
TEST(Vectormat, AverageOfLongLists) {
  test::random_source r(77);
  vectormat l;
  plain::point_list p;
  for (int i = 0; i < 2100; ++i) {
    const vec2 drawn = {test::draw_finite(r) * 1e-3, r.uniform(-1, 1)};
    vector v(drawn.x, drawn.y);
    l.add(v);
    plain::add(p, drawn);
    ASSERT_TRUE(same(l.average(), plain::average(p))) << i + 1 << " points";
  }
}

TEST(Vectormat, CentroidAssignment) {
  vectormat l;
  fill(l, {{0, 0}, {2, 0}, {2, 2}});
  vector v(9, 9);
  EXPECT_TRUE(same(v = l, {4.0 / 3, 2.0 / 3}));
  EXPECT_TRUE(same(v, {4.0 / 3, 2.0 / 3}));
  const vectormat& constant = l;
  vector w;
  w = constant;
  EXPECT_TRUE(same(w, {4.0 / 3, 2.0 / 3}));
  vectormat none;
  v = none;
  EXPECT_TRUE(same(v, {nan, nan}));
}

TEST(Vectormat, CentroidIntoAPointOfTheListCountsItsRunningSum) {
  vectormat l;
  fill(l, {{1, 10}, {2, 20}, {4, 40}});
  l.points[1] = l;  // (1 + 1 + 4) / 3
  EXPECT_TRUE(same(l.points[1], {2, 20}));
  EXPECT_TRUE(same(l.points[2], {4, 40}));
  l.points[0] = l;  // (0 + 2 + 4) / 3
  EXPECT_TRUE(same(l.points[0], {2, 20}));
}

TEST(Vectormat, CopiesAllPointsWhateverTheCapacityFieldSays) {
  vectormat l;
  fill(l, {{1, 10}, {2, 20}, {4, 40}});
  l.capacity = 1;
  vectormat copied(l);
  EXPECT_TRUE(same_points(copied, {{1, 10}, {2, 20}, {4, 40}}));
  EXPECT_EQ(copied.capacity, 3u);
  l.add(vector(8, 80));
  EXPECT_EQ(l.capacity, 1027u);
}

TEST(Vectormat, CentroidIsATrueQuotientOfASequentialSum) {
  vectormat l;
  fill(l, std::vector<vec2>(49, {1, 2}));
  vector v;
  v = l;
  EXPECT_TRUE(same(v, {1, 2}));
  EXPECT_TRUE(same(l.average(), {0.99999999999999989, 1.9999999999999998}));
  vectormat m;
  fill(m, {{1e16, 0}, {1, 0}, {-1e16, 0}, {1, 0}});
  v = m;
  EXPECT_BITS(v.x, 0.25);
}

TEST(Vectormat, MeanDirection) {
  vectormat l;
  for (int i = 0; i < 5; ++i) {
    vector v(i, 2 * i + 1);
    l.add(v);
  }
  const vector d = l.avdir();
  EXPECT_BITS(d.x, 1.0);
  EXPECT_NEAR(d.y, 2.0, 1e-14);
  // A marked point and a NaN abscissa take no part.
  vector marked(-1, 1000), bad(nan, 5);
  l.add(marked);
  l.add(bad);
  EXPECT_TRUE(same(l.avdir(), {d.x, d.y}));
}

TEST(Vectormat, MeanDirectionOfAVerticalListIsWhatTheSolverLeaves) {
  const std::vector<vec2> points{{2, 0}, {2, 1}, {2, 5}};
  vectormat l;
  fill(l, points);
  EXPECT_TRUE(same(l.avdir(), plain::mean_direction(list_of(points))));
  vectormat none;
  EXPECT_TRUE(same(none.avdir(), plain::mean_direction({})));
}

// ---------------------------------------------------------------------------- outliers

TEST(VectormatDeleteErrors, ZeroLimitRemovesOnlyMarkedPoints) {
  vectormat l;
  fill(l, {{1, 2}, {-1, 4}, {3, 1e9}, {nan, 5}, {-1, 0}});
  l.DeleteErrors(0);
  EXPECT_TRUE(same_points(l, {{1, 2}, {3, 1e9}, {nan, 5}}));
  EXPECT_EQ(l.capacity, 3u);
  vectormat m;
  fill(m, {{1, 2}, {-1, 4}});
  m.DeleteErrors(-0.0);
  EXPECT_TRUE(same_points(m, {{1, 2}}));
}

std::vector<vec2> spike() {
  std::vector<vec2> points;
  for (int i = 0; i < 12; ++i) points.push_back({double(i), i == 6 ? 5.0 : 0.0});
  return points;
}

TEST(VectormatDeleteErrors, RemovesTheSpike) {
  vectormat l;
  fill(l, spike());
  l.DeleteErrors(4);
  std::vector<vec2> expected = spike();
  expected.erase(expected.begin() + 6);
  EXPECT_TRUE(same_points(l, expected));
  EXPECT_EQ(l.capacity, 11u);
}

TEST(VectormatDeleteErrors, SmallerLimitTakesPointsBesideTheSpike) {
  vectormat l;
  fill(l, spike());
  l.DeleteErrors(0.5);
  std::vector<vec2> expected;
  for (const vec2& p : spike()) {
    if (p.x != 1 && p.x != 6 && p.x != 10 && p.x != 11) expected.push_back(p);
  }
  EXPECT_TRUE(same_points(l, expected));
}

TEST(VectormatDeleteErrors, NegativeLimitRemovesAll) {
  vectormat l;
  fill(l, spike());
  l.DeleteErrors(-1);
  EXPECT_EQ(l.count, 0u);
  EXPECT_EQ(l.capacity, 0u);
  // An emptied list takes points again.
  vector v(1, 2);
  l.add(v);
  EXPECT_TRUE(same_points(l, {{1, 2}}));
  EXPECT_EQ(l.capacity, 1024u);
  vectormat none;
  none.DeleteErrors(1);
  EXPECT_EQ(none.count, 0u);
}

TEST(VectormatDeleteErrors, NanLimitMarksNothing) {
  vectormat l;
  fill(l, spike());
  l.DeleteErrors(nan);
  EXPECT_EQ(l.count, 12u);
}

// A sum that slides along the list would carry the lost digits of the large value with it.
TEST(VectormatDeleteErrors, MeansAreFormedAfresh) {
  std::vector<vec2> points;
  for (int i = 0; i < 40; ++i) points.push_back({double(i), i == 3 ? 1e17 : 0.25 * (i % 3)});
  vectormat l;
  fill(l, points);
  plain::point_list p = list_of(points);
  l.DeleteErrors(0.1);
  plain::delete_errors(p, 0.1);
  EXPECT_TRUE(same(l, p));
  EXPECT_GT(l.count, 10u);
}

TEST(VectormatDeleteErrors, AgreesWithThePlainForm) {
  test::random_source r(53);
  for (int round = 0; round < 2000; ++round) {
    std::vector<vec2> points;
    const std::size_t n = r.below(60);
    const bool hostile = r.below(3) == 0;
    for (std::size_t i = 0; i < n; ++i) {
      const double x = r.below(10) == 0 ? -1.0 : (hostile ? test::draw(r) : double(i));
      points.push_back({x, hostile ? test::draw(r) : test::draw_finite(r)});
    }
    const double limit = hostile ? test::draw(r) : r.uniform(-0.1, 100);
    vectormat l;
    fill(l, points);
    plain::point_list p = list_of(points);
    l.DeleteErrors(limit);
    plain::delete_errors(p, limit);
    ASSERT_TRUE(same(l, p)) << "round " << round;
  }
}

// Long enough for several blocks, with marks that are rare, so that whole runs are copied, and some in the way.
TEST(VectormatDeleteErrors, LongListsAgreeWithThePlainForm) {
  test::random_source r(54);
  for (int round = 0; round < 60; ++round) {
    const std::uint64_t rarity = 1 + r.below(200);
    std::vector<vec2> points(200 + r.below(1500));
    for (vec2& p : points) {
      p = {r.below(rarity) == 0 ? -1.0 : r.uniform(), r.below(rarity) == 0 ? test::draw(r) : r.uniform()};
    }
    for (double limit : {0.0, 0.5, 1e300, inf, nan, -1.0}) {
      vectormat l;
      fill(l, points);
      plain::point_list p = list_of(points);
      l.DeleteErrors(limit);
      plain::delete_errors(p, limit);
      ASSERT_TRUE(same(l, p)) << "round " << round << ", limit " << limit;
    }
  }
}

// ---------------------------------------------------------------------------- chains

TEST(VectormatFindline, FollowsTheDirection) {
  vectormat l;
  fill(l, {{0, 0}, {9, 9}, {1, 0}, {2, 0.1}, {3, 3}});
  const std::unique_ptr<vectormat> found(l.findline(vector(1, 0)));
  ASSERT_NE(found, nullptr);
  EXPECT_TRUE(same_points(*found, {{0, 0}, {1, 0}, {2, 0.1}}));
  EXPECT_TRUE(same_points(l, {{9, 9}, {3, 3}}));
  EXPECT_EQ(l.capacity, 2u);
}

TEST(VectormatFindline, NullBelowTwoPoints) {
  vectormat l;
  EXPECT_EQ(l.findline(vector(1, 0)), nullptr);
  fill(l, {{1, 1}});
  EXPECT_EQ(l.findline(vector(1, 0)), nullptr);
  EXPECT_TRUE(same_points(l, {{1, 1}}));
}

TEST(VectormatFindline, TwoPointsGiveTheFirst) {
  vectormat l;
  fill(l, {{1, 1}, {2, 1}});
  const std::unique_ptr<vectormat> found(l.findline(vector(1, 0)));
  ASSERT_NE(found, nullptr);
  EXPECT_TRUE(same_points(*found, {{1, 1}}));
  EXPECT_TRUE(same_points(l, {{2, 1}}));
}

TEST(VectormatFindline, NarrowsFromTenPointsOn) {
  // 0.15 radians off is within the first tolerance, not within the one after ten points.
  std::vector<vec2> points{{0, 0}, {100, 100}};
  for (int i = 1; i <= 9; ++i) points.push_back({double(i), 0});
  points.push_back({10, 0.15});
  points.push_back({10, 0.01});
  vectormat l;
  fill(l, points);
  const std::unique_ptr<vectormat> found(l.findline(vector(1, 0)));
  EXPECT_EQ(found->count, 11u);
  EXPECT_TRUE(same_points(l, {{100, 100}, {10, 0.15}}));
}

TEST(VectormatFindline, AgreesWithThePlainForm) {
  test::random_source r(54);
  for (int round = 0; round < 1500; ++round) {
    std::vector<vec2> points;
    const std::size_t n = r.below(60);
    const unsigned kind = r.below(3);
    for (std::size_t i = 0; i < n; ++i) {
      if (kind == 0) {
        points.push_back(test::draw_vec2(r));
      } else if (r.below(4) == 0) {
        points.push_back({r.uniform(-2, 40), r.uniform(-20, 20)});
      } else {
        points.push_back({double(i), double(i) * 0.3 + r.uniform(-0.05, 0.05)});
      }
    }
    const vec2 dir = kind == 0 ? test::draw_vec2(r) : vec2{1, 0.3};
    vectormat l;
    fill(l, points);
    plain::point_list p = list_of(points);
    plain::point_list expected;
    const bool any = plain::find_line(p, dir, expected);
    const std::unique_ptr<vectormat> found(l.findline(vector(dir.x, dir.y)));
    ASSERT_EQ(found != nullptr, any);
    ASSERT_TRUE(same_points(l, p.points)) << "round " << round;
    if (any) {
      ASSERT_TRUE(same(*found, expected)) << "round " << round;
    }
  }
}

}  // namespace
