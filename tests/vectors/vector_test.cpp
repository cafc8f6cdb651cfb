#include <gtest/gtest.h>
#include <tessarn/vectors.h>

#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

#include "support/pairs.h"

namespace {

using test::draw_vec2;
using test::lib;
using test::same;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(Vector, ConstructionAndAssignment) {
  EXPECT_TRUE(same(vector(), {0, 0}));
  vector a(1, 2);
  vector b(a);
  EXPECT_TRUE(same(b, {1, 2}));
  vector c;
  static_assert(std::is_same_v<decltype(c = a), vector>, "assignment returns a copy");
  EXPECT_TRUE(same(c = a, {1, 2}));
  EXPECT_TRUE(same(c, {1, 2}));
}

TEST(Vector, Arithmetic) {
  vector a(1, 2), b(3, -5);
  EXPECT_TRUE(same(a + b, {4, -3}));
  EXPECT_TRUE(same(a - b, {-2, 7}));
  EXPECT_TRUE(same(a * 2.0, {2, 4}));
  EXPECT_TRUE(same(a / 4.0, {0.25, 0.5}));
  EXPECT_TRUE(same(vector(49, 98) / 49.0, {0.99999999999999989, 1.9999999999999998}));
  EXPECT_TRUE(same(a / 0.0, {inf, inf}));
  EXPECT_TRUE(same(vector(inf, nan) * 0.0, {nan, nan}));
  a += b;
  EXPECT_TRUE(same(a, {4, -3}));
  a -= b;
  EXPECT_TRUE(same(a, {1, 2}));
  a *= 3.0;
  EXPECT_TRUE(same(a, {3, 6}));
  a /= 3.0;
  EXPECT_TRUE(same(a, {3 * (1.0 / 3.0), 6 * (1.0 / 3.0)}));
  vector& self = a;
  a -= self;
  EXPECT_TRUE(same(a, {0, 0}));
  static_assert(std::is_void_v<decltype(a += b)> && std::is_void_v<decltype(a -= b)> &&
                std::is_void_v<decltype(a *= 1.0)> && std::is_void_v<decltype(a /= 1.0)>);
}

TEST(Vector, Resize) {
  vector a(3, 4);
  // The stated grouping lands one unit in the last place beside 1.2.
  EXPECT_TRUE(same(a.resize(2), {(3.0 * 2.0) * (1.0 / 5.0), (4.0 * 2.0) * (1.0 / 5.0)}));
  EXPECT_BITS(a.resize(2).x, 1.2000000000000002);
  EXPECT_BITS(a.resize(2).y, 1.6);
  EXPECT_TRUE(same(a, {3, 4}));
  EXPECT_TRUE(same(vector(0, 0).resize(2), {nan, nan}));
}

TEST(Vector, Equality) {
  vector a(1, 2), b(1, 2), c(1, 3), d(nan, 2), z(0.0, 0.0), w(-0.0, 0.0);
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a == c);
  EXPECT_TRUE(a == d);
  EXPECT_TRUE(d == d);
  EXPECT_FALSE(c == d);
  EXPECT_TRUE(z == w);
}

TEST(Vector, DirectionAngle) {
  EXPECT_BITS(vector(-1, 0).dirarc(), plain::pi);
  EXPECT_BITS(vector(0, -2).dirarc(), -plain::half_pi);
  EXPECT_BITS(vector(0, 2).dirarc(), plain::half_pi);
  EXPECT_NEAR(vector(-1, -1).dirarc(), -0.75 * plain::pi, 1e-15);
  EXPECT_BITS(vector(0, 0).dirarc(), 0.0);
  EXPECT_BITS(vector(1, 0).dirarc(), 0.0);
  EXPECT_BITS(vector(1, -0.0).dirarc(), 0.0);
  EXPECT_BITS(vector(-1, -0.0).dirarc(), plain::pi);
  EXPECT_BITS(vector(-0.0, 0.0).dirarc(), 0.0);
  EXPECT_BITS(vector(nan, 0.0).dirarc(), plain::pi);
  EXPECT_BITS(vector(1.0, nan).dirarc(), nan);
}

TEST(Vector, DirectionAngleIsTheArcTangent) {
  test::random_source r(21);
  for (int i = 0; i < 20000; ++i) {
    vector v(r.uniform(-3, 3), r.uniform(-3, 3));
    // Near the y axis the arc sine loses half its digits; the bound is wide there.
    ASSERT_NEAR(v.dirarc(), std::atan2(v.y, v.x), 3e-8);
  }
}

TEST(Vector, SignedAngle) {
  vector a(-1, 0.001), b(-1, -0.001);
  EXPECT_NEAR(a.dirarc(b), 0.002, 1e-8);
  EXPECT_NEAR(b.dirarc(a), -0.002, 1e-8);
  vector e(1, 0), w(-1, 0), n(0, 1);
  EXPECT_BITS(w.dirarc(e), plain::pi);
  EXPECT_BITS(e.dirarc(w), plain::pi);
  EXPECT_BITS(e.dirarc(n), plain::half_pi);
  EXPECT_BITS(n.dirarc(e), -plain::half_pi);
}

TEST(Vector, UnsignedAngle) {
  vector e(1, 0), zero(0, 0), d(1, 1), u(-1, 1);
  EXPECT_BITS(e.arc(zero), 0.0);
  EXPECT_BITS(zero.arc(e), 0.0);
  EXPECT_BITS(zero.arc(), nan);
  EXPECT_BITS(d.arc(u), plain::half_pi);
  EXPECT_BITS(vector(-2, 0).arc(), plain::pi);
  EXPECT_BITS(vector(0, -2).arc(), plain::half_pi);
}

// The cosine that rounding pushes past -1 gives 0, where pi would be expected.
TEST(Vector, UnsignedAngleBeyondMinusOneIsZero) {
  test::random_source r(22);
  int beyond = 0;
  for (int i = 0; i < 20000; ++i) {
    const plain::vec2 a{r.uniform(), r.uniform()};
    const plain::vec2 b{-3 * a.x, -3 * a.y};
    vector la = lib(a), lb = lib(b);
    const double angle = la.arc(lb);
    ASSERT_BITS(angle, plain::arc(a, b));
    if (angle == 0.0) ++beyond;
  }
  EXPECT_GT(beyond, 0);
}

TEST(Vector, Flip) {
  vector a(1, 2);
  a.flip();
  EXPECT_TRUE(same(a, {2, 1}));
}

TEST(Vector, AgreesWithThePlainForm) {
  test::random_source r(23);
  for (int i = 0; i < 100000; ++i) {
    const plain::vec2 pa = draw_vec2(r);
    const plain::vec2 pb = r.below(10) == 0 ? pa : draw_vec2(r);
    const double k = test::draw(r);
    vector a = lib(pa);
    vector b = lib(pb);
    SCOPED_TRACE(test::hex(pa.x) + " " + test::hex(pa.y) + " with " + test::hex(pb.x) + " " + test::hex(pb.y) +
                 " and " + test::hex(k));
    ASSERT_TRUE(same(a + b, plain::add(pa, pb)));
    ASSERT_TRUE(same(a - b, plain::sub(pa, pb)));
    ASSERT_TRUE(same(a * k, plain::mul(pa, k)));
    ASSERT_TRUE(same(a / k, plain::quotient(pa, k)));
    ASSERT_TRUE(same(a.resize(k), plain::resize(pa, k)));
    ASSERT_EQ(a == b, plain::equal(pa, pb));
    ASSERT_BITS(a.lenld(), plain::length(pa));
    ASSERT_EQ(a.lenul(), plain::rndu(plain::length(pa)));
    ASSERT_EQ(a.rx(), plain::rndi(pa.x));
    ASSERT_EQ(a.ry(), plain::rndi(pa.y));
    ASSERT_BITS(a.arc(), plain::arc(pa));
    ASSERT_BITS(a.arc(b), plain::arc(pa, pb));
    ASSERT_BITS(a.dirarc(), plain::dirarc(pa));
    ASSERT_BITS(a.dirarc(b), plain::dirarc(pa, pb));
    vector c(a);
    c += b;
    ASSERT_TRUE(same(c, plain::add(pa, pb)));
    c = a;
    c -= b;
    ASSERT_TRUE(same(c, plain::sub(pa, pb)));
    c = a;
    c *= k;
    ASSERT_TRUE(same(c, plain::mul(pa, k)));
    c = a;
    c /= k;
    ASSERT_TRUE(same(c, plain::quotient(pa, k)));
    ASSERT_TRUE(same(a, pa));
    a.flip();
    ASSERT_TRUE(same(a, plain::flip(pa)));
    ASSERT_TRUE(same(b, pb));
  }
}

}  // namespace
