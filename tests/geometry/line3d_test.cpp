#include <gtest/gtest.h>
#include <tessarn/geometry.h>

#include <limits>
#include <string>

#include "support/pairs.h"

namespace {

using test::lib;
using test::same;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

plane ground() {
  plane p;
  p.normal = vector3d(0, 0, 1);
  return p;
}

line3d segment(const plain::vec3& a, const plain::vec3& b) { return lib(plain::line{a, b}); }

TEST(Line3d, ConstructionAndAssignment) {
  EXPECT_TRUE(same(line3d(), plain::line{}));
  vector3d a(1, 2, 3), b(4, 5, 6);
  line3d l(a, b);
  EXPECT_TRUE(same(l, plain::line{{1, 2, 3}, {4, 5, 6}}));
  line3d copy(l);
  EXPECT_TRUE(same(copy, plain::line{{1, 2, 3}, {4, 5, 6}}));
  line3d other;
  line3d* address = &(other = l);
  EXPECT_EQ(address, &other);
  EXPECT_TRUE(same(other, plain::line{{1, 2, 3}, {4, 5, 6}}));
  EXPECT_EQ(sizeof(line3d), 72u);
}

TEST(Line3d, CrossingSegment) {
  plane p = ground();
  line3d l = segment({0, 0, -1}, {0, 0, 3});
  vector3d x(9, 9, 9);
  EXPECT_TRUE(l.cut(p, x));
  EXPECT_TRUE(same(x, plain::vec3{0, 0, 0}));
  EXPECT_TRUE(same(l, plain::line{{0, 0, -1}, {0, 0, 3}}));
  EXPECT_TRUE(l.cut_off(p));
  EXPECT_TRUE(same(l, plain::line{{0, 0, 0}, {0, 0, 3}}));
  line3d down = segment({0, 0, 3}, {0, 0, -1});
  EXPECT_TRUE(down.cut_off(p));
  EXPECT_TRUE(same(down, plain::line{{0, 0, 3}, {0, 0, 0}}));
}

TEST(Line3d, SegmentOnTheKeptSide) {
  plane p = ground();
  line3d l = segment({1, 1, 2}, {1, 1, 5});
  vector3d x(9, 9, 9);
  EXPECT_FALSE(l.cut(p, x));
  EXPECT_TRUE(same(x, plain::vec3{9, 9, 9}));
  EXPECT_TRUE(l.cut_off(p));
  EXPECT_TRUE(same(l, plain::line{{1, 1, 2}, {1, 1, 5}}));
}

TEST(Line3d, SegmentOnTheOtherSide) {
  plane p = ground();
  line3d l = segment({1, 1, -2}, {1, 1, -5});
  vector3d x(9, 9, 9);
  EXPECT_FALSE(l.cut(p, x));
  EXPECT_TRUE(same(x, plain::vec3{9, 9, 9}));
  EXPECT_FALSE(l.cut_off(p));
  EXPECT_TRUE(same(l, plain::line{{1, 1, -2}, {1, 1, -5}}));
}

TEST(Line3d, TouchingSegment) {
  plane p = ground();
  vector3d x(9, 9, 9);
  EXPECT_FALSE(segment({0, 0, 0}, {0, 0, 1}).cut(p, x));
  EXPECT_TRUE(same(x, plain::vec3{9, 9, 9}));
  EXPECT_TRUE(segment({0, 0, 0}, {0, 0, -1}).cut(p, x));
  EXPECT_TRUE(same(x, plain::vec3{0, 0, 0}));
  x = vector3d(9, 9, 9);
  EXPECT_TRUE(segment({2, 3, -4}, {1, 1, 0}).cut(p, x));
  EXPECT_TRUE(same(x, plain::vec3{1, 1, 0}));
  line3d l = segment({0, 0, 0}, {0, 0, -1});
  EXPECT_TRUE(l.cut_off(p));
  EXPECT_TRUE(same(l, plain::line{{0, 0, 0}, {0, 0, 0}}));
}

TEST(Line3d, ZeroNormalCutsNothing) {
  plane p;
  line3d l = segment({0, 0, -1}, {0, 0, 3});
  vector3d x;
  EXPECT_FALSE(l.cut(p, x));
  EXPECT_TRUE(l.cut_off(p));
  EXPECT_TRUE(same(l, plain::line{{0, 0, -1}, {0, 0, 3}}));
}

TEST(Line3d, TheResultMayBeAnEndOfTheSegment) {
  plane p = ground();
  line3d l = segment({0, 1, -1}, {2, 1, 3});
  EXPECT_TRUE(l.cut(p, l.start));
  EXPECT_TRUE(same(l.start, plain::vec3{0.5, 1, 0}));
}

TEST(Line3d, AgreesWithThePlainForm) {
  test::random_source r(111);
  int cuts = 0;
  for (int i = 0; i < 100000; ++i) {
    const bool hostile = r.below(3) == 0;
    auto point = [&]() { return hostile ? test::draw_vec3(r) : test::draw_finite_vec3(r); };
    plain::plane pp;
    pp.origin = point();
    pp.normal = point();
    plain::line pl{point(), {}};
    pl.end = point();
    plane p = lib(pp);
    line3d l = lib(pl);
    SCOPED_TRACE("round " + std::to_string(i));
    plain::vec3 px{7, 7, 7};
    vector3d x(7, 7, 7);
    const bool cut = plain::cut(pl, pp, px);
    ASSERT_EQ(l.cut(p, x), cut);
    ASSERT_TRUE(same(x, px));
    ASSERT_TRUE(same(l, pl));
    const bool kept = plain::cut_off(pl, pp);
    ASSERT_EQ(l.cut_off(p), kept);
    ASSERT_TRUE(same(l, pl));
    ASSERT_TRUE(same(p, pp));
    if (cut) ++cuts;
  }
  EXPECT_GT(cuts, 10000);
}

TEST(Line3d, NanLevels) {
  plane p = ground();
  vector3d x;
  line3d l = segment({0, 0, nan}, {0, 0, 3});
  plain::line pl{{0, 0, nan}, {0, 0, 3}};
  plain::plane pp;
  pp.normal = {0, 0, 1};
  plain::vec3 px;
  EXPECT_EQ(l.cut(p, x), plain::cut(pl, pp, px));
  EXPECT_TRUE(same(x, px));
}

}  // namespace
