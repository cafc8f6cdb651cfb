#include <gtest/gtest.h>
#include <tessarn/geometry.h>

#include <cmath>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

#include "support/pairs.h"

namespace {

using plain::vec2;
using plain::vec3;
using test::lib;
using test::same;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

plane through(const vec3& p, const vec3& n) {
  vector3d a = lib(p), b = lib(n);
  return plane(a, b);
}

TEST(Plane, StartsAsZeros) {
  EXPECT_TRUE(same(plane(), plain::plane{}));
  EXPECT_EQ(sizeof(plane), 136u);
}

TEST(Plane, FromTwoAxes) {
  vector3d p(1, 2, 3), u(1, 0, 0), v(0, 1, 0);
  plane pl(p, u, v);
  EXPECT_TRUE(same(pl, plain::plane_from_axes({1, 2, 3}, {1, 0, 0}, {0, 1, 0})));
  EXPECT_EQ(pl.normal.x, 0.0);
  EXPECT_EQ(pl.normal.y, 0.0);
  EXPECT_BITS(pl.normal.z, -1.0);
  // The normal is not normalised.
  vector3d w(0, 3, 0);
  EXPECT_BITS(plane(p, u, w).normal.z, -3.0);
}

TEST(Plane, FromANormal) {
  plane up = through({1, 2, 3}, {0, 0, 5});
  EXPECT_TRUE(same(up, plain::plane{{1, 2, 3}, {0, 0, 1}, {1, 0, 0}, {0, 1, 0}}));
  plane side = through({0, 0, 0}, {1, 0, 0});
  EXPECT_EQ(side.axis1.x, 0.0);
  EXPECT_BITS(side.axis1.y, -1.0);
  EXPECT_EQ(side.axis1.z, 0.0);
  EXPECT_EQ(side.axis2.x, 0.0);
  EXPECT_EQ(side.axis2.y, 0.0);
  EXPECT_BITS(side.axis2.z, 1.0);
}

TEST(Plane, DownwardAndZeroNormalsGiveNan) {
  plane down = through({0, 0, 0}, {0, 0, -1});
  EXPECT_TRUE(same(down.normal, vec3{0, 0, -1}));
  EXPECT_BITS(down.axis1.x, nan);
  EXPECT_BITS(down.axis1.y, nan);
  EXPECT_TRUE(same(down.axis2, vec3{nan, nan, nan}));
  plane none = through({1, 2, 3}, {0, 0, 0});
  EXPECT_TRUE(same(none.origin, vec3{1, 2, 3}));
  EXPECT_TRUE(same(none.normal, vec3{nan, nan, nan}));
  EXPECT_BITS(none.axis2.x, nan);
}

TEST(Plane, AxesStandAtRightAngles) {
  test::random_source r(121);
  for (int i = 0; i < 5000; ++i) {
    plane p = through({}, {r.uniform(), r.uniform(), r.uniform()});
    ASSERT_NEAR(p.normal.lenld(), 1, 1e-15);
    ASSERT_NEAR(p.axis1.lenld(), 1, 1e-15);
    ASSERT_NEAR(p.axis2.lenld(), 1, 1e-15);
    ASSERT_NEAR(p.axis1 * p.axis2, 0, 1e-15);
    ASSERT_NEAR(p.axis1 * p.normal, 0, 1e-15);
    ASSERT_NEAR(p.axis2 * p.normal, 0, 1e-14);
    // axis2 points along axis1 x normal.
    ASSERT_NEAR(p.axis1.cross(p.normal) * p.axis2, 1, 1e-14);
  }
}

TEST(Plane, CopiesAndAssignment) {
  plane a = through({1, 2, 3}, {1, 1, 1});
  plane b(a);
  plane c;
  plane d = (c = a);
  for (const plane* p : {&b, &c, &d}) {
    EXPECT_TRUE(same(*p, plain::plane_from_normal({1, 2, 3}, {1, 1, 1})));
  }
  static_assert(std::is_same_v<decltype(c = a), plane>, "assignment returns a copy");
}

TEST(Plane, Equality) {
  plane a, b;
  a.normal = vector3d(0, 0, 1);
  b.normal = vector3d(0, 0, 2);
  EXPECT_FALSE(a == b);
  b.normal = vector3d(0, 0, 1);
  EXPECT_TRUE(a == b);
  // Another origin of the same plane, and other axes.
  b.origin = vector3d(5, 6, 0);
  b.axis1 = vector3d(1, 2, 3);
  EXPECT_TRUE(a == b);
  b.origin = vector3d(5, 6, 1e-300);
  EXPECT_FALSE(a == b);
  // A NaN pair of normal components counts as equal; the test of the origin is ordinary.
  b.origin = vector3d(0, 0, 0);
  b.normal = vector3d(nan, 0, 1);
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(b == a);
}

TEST(Plane, CrossWithALineThroughTheOriginByTheNormal) {
  plane p = through({0, 0, 2}, {0, 0, 1});
  vector3d d(1, 1, 1), flat(1, 0, 0);
  EXPECT_TRUE(same(p.cross(d), vec3{2, 2, 2}));
  EXPECT_TRUE(same(p.cross(flat), vec3{1, 0, 0}));
  plane q = through({0, 0, 0}, {0, 0, 1});
  vector3d e(nan, 1, 1);
  EXPECT_TRUE(same(q.cross(d), vec3{0, 0, 0}));
  EXPECT_TRUE(same(q.cross(e), plain::cross(plain::plane_from_normal({}, {0, 0, 1}), {nan, 1, 1})));
}

TEST(Plane, CrossWithALineThroughTheOriginByTheAxes) {
  plane p = through({0, 0, 2}, {0, 0, 1});
  vector3d d(1, 3, 1), flat(1, 0, 0);
  vector st(9, 9);
  EXPECT_TRUE(same(p.cross(d, st), vec3{2, 6, 2}));
  EXPECT_TRUE(same(st, vec2{2, 6}));
  EXPECT_TRUE(same(p.cross(flat, st), vec3{0, 0, 0}));
  EXPECT_TRUE(same(st, vec2{0, 0}));
  plane q = through({0, 0, 0}, {0, 0, 1});
  EXPECT_TRUE(same(q.cross(d, st), vec3{0, 0, 0}));
}

TEST(Plane, CrossOfPlanes) {
  plane a = through({0, 0, 0}, {0, 0, 1}), b = through({0, 0, 5}, {0, 0, 1});
  vector p(7, 7), q(8, 8);
  EXPECT_FALSE(a.cross(b, p, q));
  EXPECT_TRUE(same(p, vec2{7, 7}));
  EXPECT_TRUE(same(q, vec2{8, 8}));
  EXPECT_FALSE(a.cross(a, p, q));
  // x = 3 in the ground plane.
  plane c;
  c.origin = vector3d(3, 0, 0);
  c.axis1 = vector3d(0, 2, 0);
  c.axis2 = vector3d(0, 0, 2);
  EXPECT_TRUE(a.cross(c, p, q));
  EXPECT_TRUE(same(p, vec2{3, 0}));
  EXPECT_TRUE(same(q, vec2{0, 1}));
  // y = 4.
  c.origin = vector3d(0, 4, 0);
  c.axis1 = vector3d(2, 0, 0);
  EXPECT_TRUE(a.cross(c, p, q));
  EXPECT_EQ(p.x, 0.0);
  EXPECT_BITS(p.y, 4.0);
  EXPECT_TRUE(same(q, vec2{1, 0}));
}

// Where one axis runs along the other plane the point is a true quotient, not a product.
TEST(Plane, CrossOfPlanesAlongAnAxis) {
  test::random_source r(124);
  for (int i = 0; i < 300; ++i) {
    plain::plane pa, pb;
    pa.origin = {r.uniform(), r.uniform(), r.uniform()};
    pb.origin = {r.uniform(), r.uniform(), r.uniform()};
    pa.axis1 = {r.uniform(), 0, 0};
    pa.axis2 = {0, r.uniform(), r.uniform()};
    if (i % 2) std::swap(pa.axis1, pa.axis2);
    pb.axis1 = {r.uniform(), 0, 0};
    pb.axis2 = {0, r.uniform(), r.uniform()};
    plane a = lib(pa), b = lib(pb);
    vector p, q;
    vec2 pp, pq;
    ASSERT_TRUE(plain::cross(pa, pb, pp, pq));
    ASSERT_TRUE(a.cross(b, p, q));
    ASSERT_TRUE(same(p, pp));
    ASSERT_TRUE(same(q, pq));
    ASSERT_EQ(i % 2 ? p.y : p.x, 0.0);
  }
}

TEST(Plane, CrossOfPlanesLiesOnBoth) {
  test::random_source r(122);
  for (int i = 0; i < 5000; ++i) {
    plane a = through({r.uniform(), r.uniform(), r.uniform()}, {r.uniform(), r.uniform(), r.uniform()});
    plane b = through({r.uniform(), r.uniform(), r.uniform()}, {r.uniform(), r.uniform(), r.uniform()});
    vector p, q;
    ASSERT_TRUE(a.cross(b, p, q));
    if (std::fabs(a.normal * b.normal) > 0.99) continue;
    ASSERT_NEAR(q.lenld(), 1, 1e-14);
    const double scale = 1 + p.lenld();
    if (scale > 1e3) continue;
    for (const double t : {0.0, 2.0}) {
      vector st = p + q * t;
      vector3d x = a.origin + a.axis1 * st.x + a.axis2 * st.y;
      ASSERT_NEAR((x - b.origin) * b.normal, 0, 1e-12 * scale);
    }
  }
}

TEST(Plane, RotationKeepsAFrame) {
  plane p = through({1, 2, 3}, {0, 0, 1});
  p.rotate(0.3, -0.7, 1.9);
  EXPECT_TRUE(same(p.origin, vec3{1, 2, 3}));
  EXPECT_NEAR(p.axis1 * p.axis2, 0, 1e-15);
  EXPECT_NEAR(p.axis1 * p.normal, 0, 1e-15);
  EXPECT_NEAR(p.normal.lenld(), 1, 1e-15);
  plane q = through({}, {0, 0, 1});
  q.rotate(0, 0, plain::half_pi);
  EXPECT_NEAR(q.axis1.y, -1, 1e-15);
  EXPECT_NEAR(q.axis2.x, 1, 1e-15);
}

TEST(Plane, AgreesWithThePlainForm) {
  test::random_source r(123);
  for (int i = 0; i < 40000; ++i) {
    const unsigned kind = r.below(3);
    auto point = [&]() {
      if (kind == 0) return test::draw_vec3(r);
      if (kind == 1) return test::draw_finite_vec3(r);
      // Small integers: parallel axes and exact zeros are common.
      return vec3{r.below(3) - 1.0, r.below(3) - 1.0, r.below(3) - 1.0};
    };
    const vec3 a = point(), b = point(), c = point(), d = point();
    SCOPED_TRACE("round " + std::to_string(i));
    vector3d la = lib(a), lb = lib(b), lc = lib(c), ld = lib(d);
    plane p1(la, lb);
    plain::plane q1 = plain::plane_from_normal(a, b);
    ASSERT_TRUE(same(p1, q1));
    plane p2(la, lb, lc);
    plain::plane q2 = plain::plane_from_axes(a, b, c);
    ASSERT_TRUE(same(p2, q2));
    ASSERT_TRUE(same(p1.cross(ld), plain::cross(q1, d)));
    ASSERT_TRUE(same(p2.cross(ld), plain::cross(q2, d)));
    vector st(1, 2);
    vec2 pst{1, 2};
    const vec3 x = plain::cross(q2, d, pst);
    ASSERT_TRUE(same(p2.cross(ld, st), x));
    ASSERT_TRUE(same(st, pst));
    vector p(1, 2), q(3, 4);
    vec2 pp{1, 2}, pq{3, 4};
    for (const bool swap : {false, true}) {
      const bool expected = swap ? plain::cross(q2, q1, pp, pq) : plain::cross(q1, q2, pp, pq);
      ASSERT_EQ(swap ? p2.cross(p1, p, q) : p1.cross(p2, p, q), expected);
      ASSERT_TRUE(same(p, pp));
      ASSERT_TRUE(same(q, pq));
    }
    const double k = test::draw(r), m = test::draw(r), n = test::draw(r);
    plane p3(p2);
    plain::plane q3 = q2;
    p3.origin = ld;
    q3.origin = d;
    ASSERT_EQ(p2 == p3, plain::equal(q2, q3));
    ASSERT_EQ(p1 == p2, plain::equal(q1, q2));
    p3.rotate(k, m, n);
    plain::rotate(q3, k, m, n);
    ASSERT_TRUE(same(p3, q3));
  }
}

}  // namespace
