#include <gtest/gtest.h>
#include <tessarn/cplx.h>

#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

#include "support/pairs.h"

namespace {

using test::draw_cplx;
using test::lib;
using test::same;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(Cplx, Construction) {
  EXPECT_TRUE(same(cplx(), {0.0, 0.0}));
  EXPECT_TRUE(same(cplx(-0.0, 2.0), {-0.0, 2.0}));
  cplx a(1, 2);
  cplx b(a);
  EXPECT_TRUE(same(b, {1, 2}));
  cplx c;
  cplx* address = &(c = a);
  EXPECT_EQ(address, &c);
  EXPECT_TRUE(same(c, {1, 2}));
}

TEST(Cplx, OneRealArgumentIsAnAngle) {
  EXPECT_TRUE(same(cplx(0.0), {1.0, 0.0}));
  EXPECT_TRUE(same(cplx(2.0), {tessarn::angles::cos(2.0), tessarn::angles::sin(2.0)}));
  const cplx c(3.14159265358979);
  EXPECT_NEAR(c.re, -1.0, 1e-14);
  EXPECT_NEAR(c.im, 0.0, 1e-14);
  EXPECT_TRUE(same(cplx(inf), {nan, nan}));
}

TEST(Cplx, Arithmetic) {
  cplx a(1, 2), b(3, -5);
  EXPECT_TRUE(same(a + b, {4, -3}));
  EXPECT_TRUE(same(a - b, {-2, 7}));
  EXPECT_TRUE(same(a * b, {13, 1}));
  EXPECT_TRUE(same(a * 2.0, {2, 4}));
  EXPECT_TRUE(same(a / 4.0, {0.25, 0.5}));
  EXPECT_TRUE(same(a / 0.0, {inf, inf}));
  EXPECT_TRUE(same(cplx(0, 1) / 0.0, {nan, inf}));
  // Division multiplies by the reciprocal.
  EXPECT_TRUE(same(cplx(49, 98) / 49.0, {0.99999999999999989, 1.9999999999999998}));
  cplx q(1, 2), d(3, 4);
  EXPECT_TRUE(same(q / d, {11 * (1.0 / 25.0), 2 * (1.0 / 25.0)}));
  EXPECT_TRUE(same(q, {1, 2}));
}

TEST(Cplx, CompoundAssignment) {
  cplx b(3, -5);
  cplx a(1, 2);
  a += b;
  EXPECT_TRUE(same(a, {4, -3}));
  a -= b;
  EXPECT_TRUE(same(a, {1, 2}));
  a *= b;
  EXPECT_TRUE(same(a, {13, 1}));
  a *= 0.5;
  EXPECT_TRUE(same(a, {6.5, 0.5}));
  a /= 0.5;
  EXPECT_TRUE(same(a, {13, 1}));
  cplx d(2, 0);
  a /= d;
  EXPECT_TRUE(same(a, {6.5, 0.5}));
  static_assert(std::is_void_v<decltype(a += b)> && std::is_void_v<decltype(a -= b)> &&
                std::is_void_v<decltype(a *= b)> && std::is_void_v<decltype(a *= 1.0)> &&
                std::is_void_v<decltype(a /= b)> && std::is_void_v<decltype(a /= 1.0)>);
}

TEST(Cplx, ZeroDivisorOverwritesTheLeftOperand) {
  cplx zero(0, 0);
  cplx a(3, 4);
  EXPECT_TRUE(same(a / zero, {0, 0}));
  EXPECT_TRUE(same(a, {0, 0}));
  cplx b(3, 4);
  b /= zero;
  EXPECT_TRUE(same(b, {0, 0}));
  // The squared modulus decides: it underflows here, and it is not a number below.
  cplx tiny(1e-170, 1e-170);
  cplx c(3, 4);
  EXPECT_TRUE(same(c / tiny, {0, 0}));
  EXPECT_TRUE(same(c, {0, 0}));
  cplx bad(nan, 1);
  cplx d(3, 4);
  EXPECT_TRUE(same(d / bad, {0, 0}));
  EXPECT_TRUE(same(d, {0, 0}));
  cplx e(3, 4);
  e /= bad;
  EXPECT_TRUE(same(e, {0, 0}));
}

TEST(Cplx, InPlaceWithItself) {
  cplx a(1, 2);
  cplx& self = a;
  a *= self;
  EXPECT_TRUE(same(a, {-3, 4}));
  a += self;
  EXPECT_TRUE(same(a, {-6, 8}));
  a /= self;
  EXPECT_TRUE(same(a, plain::quotient(plain::cplx{-6, 8}, plain::cplx{-6, 8})));
  a -= self;
  EXPECT_TRUE(same(a, {0, 0}));
  cplx z(0, 0);
  cplx& also_z = z;
  z /= also_z;
  EXPECT_TRUE(same(z, {0, 0}));
}

TEST(Cplx, NotEqualIsNotTheNegationOfEqual) {
  cplx a(1, 2), b(1, 3), c(2, 3), d(1, 2);
  EXPECT_FALSE(a != b);
  EXPECT_FALSE(a == b);
  EXPECT_TRUE(a != c);
  EXPECT_TRUE(a == d);
  EXPECT_FALSE(a != d);
  cplx zero(0.0, 0.0), negative_zero(-0.0, -0.0);
  EXPECT_TRUE(zero == negative_zero);
}

TEST(Cplx, NanPartsCountAsEqual) {
  cplx a(nan, 2), b(1, 2), c(1, 3);
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a != b);
  EXPECT_FALSE(a == c);
  EXPECT_FALSE(a != c);
  cplx n(nan, nan);
  EXPECT_TRUE(n == c);
  EXPECT_FALSE(n != c);
  EXPECT_FALSE(n < c);
  EXPECT_FALSE(n > c);
  EXPECT_FALSE(c < n);
  EXPECT_FALSE(c > n);
}

TEST(Cplx, OrderIsByModulus) {
  cplx a(3, 4), b(5, 0), c(1, 0), d(0, 2);
  EXPECT_FALSE(a < b);
  EXPECT_FALSE(a > b);
  EXPECT_TRUE(c < d);
  EXPECT_FALSE(c > d);
  EXPECT_TRUE(d > c);
}

TEST(Cplx, Argument) {
  EXPECT_BITS(cplx(0, -1).phi(), 2 * plain::pi - tessarn::angles::acos(0.0));
  EXPECT_NEAR(cplx(0, -1).phi(), 1.5 * plain::pi, 1e-15);
  EXPECT_BITS(cplx(-1, 0).phi(), plain::pi);
  EXPECT_BITS(cplx(-1, -0.0).phi(), plain::pi);
  EXPECT_BITS(cplx(1, -0.0).phi(), 0.0);
  EXPECT_BITS(cplx(0, 0).phi(), 0.0);
  EXPECT_BITS(cplx(nan, 1).phi(), 0.0);
  EXPECT_BITS(cplx(1, nan).phi(), 0.0);
  EXPECT_BITS(cplx(0, 1).phi(), plain::half_pi);
  // Just below the positive axis the cosine rounds to 1 and the whole turn is the result.
  EXPECT_BITS(cplx(1, -1e-20).phi(), 2 * plain::pi);
}

TEST(Cplx, SquareRoot) {
  EXPECT_NEAR(cplx(0, 2).sqrt().re, 1.0, 1e-15);
  EXPECT_NEAR(cplx(0, 2).sqrt().im, 1.0, 1e-15);
  EXPECT_BITS(cplx(0, 2).sqrt().re, 1.0000000000000002);
  EXPECT_NEAR(cplx(0, -2).sqrt().re, -1.0, 1e-15);
  EXPECT_NEAR(cplx(0, -2).sqrt().im, 1.0, 1e-15);
  EXPECT_TRUE(same(cplx(4, 0).sqrt(), {2, 0}));
  EXPECT_NEAR(cplx(-4, 0).sqrt().re, 1.2e-16, 1e-17);
  EXPECT_BITS(cplx(-4, 0).sqrt().im, 2.0);
  EXPECT_NEAR(cplx(0, -4).sqrt().re, -std::sqrt(2.0), 1e-15);
  EXPECT_NEAR(cplx(0, -4).sqrt().im, std::sqrt(2.0), 1e-15);
  cplx zero(0, 0);
  EXPECT_EQ(zero.sqrt().re, 0.0);
  EXPECT_EQ(zero.sqrt().im, 0.0);
  EXPECT_TRUE(same(zero.sqrt(), plain::root({0, 0})));
  EXPECT_TRUE(same(zero, {0, 0}));
}

TEST(Cplx, SquareRootNeverPointsDown) {
  test::random_source r(3);
  for (int i = 0; i < 20000; ++i) {
    cplx z(r.uniform(-10, 10), r.uniform(-10, 10));
    const cplx s = z.sqrt();
    ASSERT_GE(s.im, 0.0);
    // Near the real axis the arc cosine loses up to half of the digits; the bounds are wide there.
    ASSERT_NEAR(s.re * s.re - s.im * s.im, z.re, 3e-7);
    ASSERT_NEAR(2 * s.re * s.im, z.im, 3e-7);
  }
}

TEST(Cplx, Lengths) {
  EXPECT_BITS(cplx(3, 4).lenld(), 5.0);
  EXPECT_EQ(cplx(0.3, 0.4).lenul(), 1u);
  EXPECT_EQ(cplx(-3, -4).lenul(), 5u);
}

TEST(Cplx, AgreesWithThePlainForm) {
  test::random_source r(12);
  for (int i = 0; i < 100000; ++i) {
    const plain::cplx pa = draw_cplx(r);
    const plain::cplx pb = r.below(10) == 0 ? pa : draw_cplx(r);
    const double k = test::draw(r);
    cplx a = lib(pa);
    cplx b = lib(pb);
    SCOPED_TRACE(test::hex(pa.re) + " " + test::hex(pa.im) + " with " + test::hex(pb.re) + " " + test::hex(pb.im) +
                 " and " + test::hex(k));
    ASSERT_TRUE(same(cplx(k), plain::unit(k)));
    ASSERT_TRUE(same(a + b, plain::add(pa, pb)));
    ASSERT_TRUE(same(a - b, plain::sub(pa, pb)));
    ASSERT_TRUE(same(a * b, plain::mul(pa, pb)));
    ASSERT_TRUE(same(a * k, plain::mul(pa, k)));
    ASSERT_TRUE(same(a / k, plain::quotient(pa, k)));
    ASSERT_BITS(a.lenld(), plain::modulus(pa));
    ASSERT_EQ(a.lenul(), plain::rndu(plain::modulus(pa)));
    ASSERT_BITS(a.phi(), plain::phi(pa));
    ASSERT_TRUE(same(a.sqrt(), plain::root(pa)));
    ASSERT_EQ(a == b, plain::equal(pa, pb));
    ASSERT_EQ(a != b, plain::differ_in_both(pa, pb));
    ASSERT_EQ(a < b, plain::less(pa, pb));
    ASSERT_EQ(a > b, plain::greater(pa, pb));
    cplx c = a;
    c += b;
    ASSERT_TRUE(same(c, plain::add(pa, pb)));
    c = a;
    c -= b;
    ASSERT_TRUE(same(c, plain::sub(pa, pb)));
    c = a;
    c *= b;
    ASSERT_TRUE(same(c, plain::mul(pa, pb)));
    c = a;
    c *= k;
    ASSERT_TRUE(same(c, plain::mul(pa, k)));
    c = a;
    c /= k;
    ASSERT_TRUE(same(c, plain::quotient(pa, k)));
    c = a;
    c /= b;
    ASSERT_TRUE(same(c, plain::quotient(pa, pb)));
    ASSERT_TRUE(same(a, pa));
    ASSERT_TRUE(same(a / b, plain::quotient(pa, pb)));
    ASSERT_TRUE(same(a, plain::quotient_overwrites(pb) ? plain::cplx{} : pa));
    ASSERT_TRUE(same(b, pb));
  }
}

}  // namespace
