#include <gtest/gtest.h>
#include <tessarn/vectors.h>

#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

#include "support/pairs.h"

namespace {

using test::draw_vec3;
using test::lib;
using test::same;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

void expect_near(const vector3d& a, double x, double y, double z) {
  EXPECT_NEAR(a.x, x, 1e-15);
  EXPECT_NEAR(a.y, y, 1e-15);
  EXPECT_NEAR(a.z, z, 1e-15);
}

TEST(Vector3d, ConstructionAndAssignment) {
  EXPECT_TRUE(same(vector3d(), {0, 0, 0}));
  vector3d a(1, 2, 3);
  vector3d b(a);
  EXPECT_TRUE(same(b, {1, 2, 3}));
  vector3d c;
  vector3d* address = &(c = a);
  EXPECT_EQ(address, &c);
  EXPECT_TRUE(same(c, {1, 2, 3}));
}

TEST(Vector3d, Arithmetic) {
  vector3d a(1, 2, 3), b(4, -5, 6);
  EXPECT_TRUE(same(a + b, {5, -3, 9}));
  EXPECT_TRUE(same(a - b, {-3, 7, -3}));
  EXPECT_BITS(a * b, 12.0);
  EXPECT_TRUE(same(a * 2.0, {2, 4, 6}));
  EXPECT_TRUE(same(a / 4.0, {0.25, 0.5, 0.75}));
  EXPECT_TRUE(same(vector3d(49, 98, 0) / 49.0, {0.99999999999999989, 1.9999999999999998, 0}));
  EXPECT_TRUE(same(a / 0.0, {inf, inf, inf}));
  EXPECT_TRUE(same(a / inf, {0, 0, 0}));
  a += b;
  EXPECT_TRUE(same(a, {5, -3, 9}));
  a -= b;
  EXPECT_TRUE(same(a, {1, 2, 3}));
  a *= 2.0;
  EXPECT_TRUE(same(a, {2, 4, 6}));
  a /= 2.0;
  EXPECT_TRUE(same(a, {1, 2, 3}));
  static_assert(std::is_void_v<decltype(a += b)> && std::is_void_v<decltype(a -= b)> &&
                std::is_void_v<decltype(a *= 1.0)> && std::is_void_v<decltype(a /= 1.0)> &&
                std::is_void_v<decltype(a *= b)>);
}

TEST(Vector3d, ProductByZeroIsExactlyZero) {
  EXPECT_TRUE(same(vector3d(1, 2, 3) * 0.0, {0, 0, 0}));
  EXPECT_TRUE(same(vector3d(1, nan, 3) * 0.0, {0, 0, 0}));
  EXPECT_TRUE(same(vector3d(-1, inf, 3) * -0.0, {0, 0, 0}));
  // The compound form has no such test.
  vector3d a(-1, nan, inf);
  a *= 0.0;
  EXPECT_TRUE(same(a, {-0.0, nan, nan}));
}

TEST(Vector3d, CrossProduct) {
  vector3d a(1, 0, 0), b(0, 1, 0);
  EXPECT_TRUE(same(a.cross(b), plain::cross(plain::vec3{1, 0, 0}, plain::vec3{0, 1, 0})));
  EXPECT_EQ(a.cross(b).x, 0.0);
  EXPECT_EQ(a.cross(b).y, 0.0);
  EXPECT_BITS(a.cross(b).z, 1.0);
  a *= b;
  EXPECT_EQ(a.x, 0.0);
  EXPECT_EQ(a.y, 0.0);
  EXPECT_BITS(a.z, 1.0);
  vector3d c(1, 2, 3);
  c *= c;
  EXPECT_TRUE(same(c, {0, 0, 0}));
  vector3d d(1, 2, 3), e(4, 5, 6);
  EXPECT_TRUE(same(d.cross(e), {-3, 6, -3}));
}

// The order of the dot product is seen where the first two terms cancel.
TEST(Vector3d, DotProductAddsTheThirdTermLast) {
  vector3d a(1e17, 1e17, 1), b(1, -1, 1);
  EXPECT_BITS(a * b, 1.0);
  vector3d c(1e17, 1, 1e17), d(1, 1, -1);
  EXPECT_BITS(c * d, 0.0);
}

TEST(Vector3d, Resize) {
  vector3d a(0, 3, 4);
  EXPECT_TRUE(same(a.resize(2), {0, (3.0 * 2) * (1.0 / 5), (4.0 * 2) * (1.0 / 5)}));
  EXPECT_TRUE(same(a, {0, 3, 4}));
  EXPECT_TRUE(same(vector3d().resize(1), {nan, nan, nan}));
}

TEST(Vector3d, Equality) {
  vector3d a(1, 2, 3), b(1, 2, 3), c(1, 2, 4), n(nan, 2, nan);
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a == c);
  EXPECT_TRUE(a == n);
  EXPECT_TRUE(n == c);
  vector3d z(0.0, 0.0, 0.0), w(-0.0, -0.0, -0.0);
  EXPECT_TRUE(z == w);
}

TEST(Vector3d, Projection) {
  vector3d v(1, 1, 0), d(2, 0, 0);
  EXPECT_TRUE(same(d.projection(v), {1, 0, 0}));
  vector3d across(0, 5, 0);
  EXPECT_TRUE(same(d.projection(across), {0, 0, 0}));
  vector3d zero;
  EXPECT_TRUE(same(zero.projection(v), {nan, nan, nan}));
}

TEST(Vector3d, Angle) {
  vector3d a(1, 0, 0), zero, b(0, 2, 0), c(-3, 0, 0);
  EXPECT_BITS(a.arc(zero), 0.0);
  EXPECT_BITS(zero.arc(a), 0.0);
  EXPECT_BITS(a.arc(b), plain::half_pi);
  EXPECT_BITS(a.arc(c), plain::pi);
  EXPECT_BITS(a.arc(a), 0.0);
}

TEST(Vector3d, RotationAboutAnAxisIsClockwiseSeenFromItsTip) {
  vector3d a(1, 0, 0), z(0, 0, 1);
  expect_near(a.rotate(z, plain::half_pi), 0, -1, 0);
  vector3d long_axis(0, 0, 7);
  expect_near(a.rotate(long_axis, plain::half_pi), 0, -1, 0);
  EXPECT_TRUE(same(a.rotate(z, 0.0), {1, 0, 0}));
  EXPECT_TRUE(same(z.rotate(z, 1.0), {0, 0, 1}));
  vector3d zero;
  EXPECT_TRUE(same(a.rotate(zero, 1.0), {nan, nan, nan}));
  EXPECT_TRUE(same(a, {1, 0, 0}));
  EXPECT_TRUE(same(a.rotate(a, 1.0), plain::rotate(plain::vec3{1, 0, 0}, plain::vec3{1, 0, 0}, 1.0)));
}

TEST(Vector3d, RotationByTwoAngles) {
  vector3d a(1, 0, 0);
  expect_near(a.rotate(plain::half_pi, 0), 0, -1, 0);
  expect_near(a.rotate(0, plain::half_pi), 0, 0, 1);
  vector3d up(0, 0, 5);
  const vector3d r = up.rotate(0.3, 0.2);
  EXPECT_BITS(r.x, nan);
  EXPECT_BITS(r.y, nan);
  EXPECT_BITS(r.z, 5 * tessarn::angles::cos(0.2) + 0 * tessarn::angles::sin(0.2));
}

TEST(Vector3d, RotationKeepsTheLength) {
  test::random_source r(31);
  for (int i = 0; i < 5000; ++i) {
    vector3d v(r.uniform(), r.uniform(), r.uniform());
    vector3d n(r.uniform(), r.uniform(), r.uniform());
    const double t = r.uniform(-7, 7);
    ASSERT_NEAR(v.rotate(n, t).lenld(), v.lenld(), 1e-12 / n.lenld());
    ASSERT_NEAR(v.rotate(t, 0.25).lenld(), v.lenld(), 1e-13);
  }
}

TEST(Vector3d, AgreesWithThePlainForm) {
  test::random_source r(32);
  for (int i = 0; i < 60000; ++i) {
    const plain::vec3 pa = draw_vec3(r);
    plain::vec3 pb = draw_vec3(r);
    if (r.below(10) == 0) pb = pa;
    if (r.below(10) == 0) pb = {0, 0, test::draw_finite(r)};
    const double k = test::draw(r);
    const double t = test::draw(r);
    vector3d a = lib(pa);
    vector3d b = lib(pb);
    SCOPED_TRACE("(" + test::hex(pa.x) + " " + test::hex(pa.y) + " " + test::hex(pa.z) + ") with (" + test::hex(pb.x) +
                 " " + test::hex(pb.y) + " " + test::hex(pb.z) + "), " + test::hex(k) + ", " + test::hex(t));
    ASSERT_TRUE(same(a + b, plain::add(pa, pb)));
    ASSERT_TRUE(same(a - b, plain::sub(pa, pb)));
    ASSERT_BITS(a * b, plain::dot(pa, pb));
    ASSERT_TRUE(same(a * k, plain::mul(pa, k)));
    ASSERT_TRUE(same(a / k, plain::quotient(pa, k)));
    ASSERT_TRUE(same(a.cross(b), plain::cross(pa, pb)));
    ASSERT_TRUE(same(a.resize(k), plain::resize(pa, k)));
    ASSERT_TRUE(same(a.projection(b), plain::projection(pa, pb)));
    ASSERT_TRUE(same(a.rotate(k, t), plain::rotate(pa, k, t)));
    ASSERT_TRUE(same(a.rotate(b, k), plain::rotate(pa, pb, k)));
    ASSERT_EQ(a == b, plain::equal(pa, pb));
    ASSERT_BITS(a.lenld(), plain::length(pa));
    ASSERT_EQ(a.lenul(), plain::rndu(plain::length(pa)));
    ASSERT_EQ(a.rx(), plain::rndi(pa.x));
    ASSERT_EQ(a.ry(), plain::rndi(pa.y));
    ASSERT_EQ(a.rz(), plain::rndi(pa.z));
    ASSERT_BITS(a.arc(b), plain::arc(pa, pb));
    vector3d c(a);
    c += b;
    ASSERT_TRUE(same(c, plain::add(pa, pb)));
    c = a;
    c -= b;
    ASSERT_TRUE(same(c, plain::sub(pa, pb)));
    c = a;
    c *= k;
    ASSERT_TRUE(same(c, plain::times(pa, k)));
    c = a;
    c /= k;
    ASSERT_TRUE(same(c, plain::quotient(pa, k)));
    c = a;
    c *= b;
    ASSERT_TRUE(same(c, plain::cross(pa, pb)));
    ASSERT_TRUE(same(a, pa));
    ASSERT_TRUE(same(b, pb));
  }
}

}  // namespace
