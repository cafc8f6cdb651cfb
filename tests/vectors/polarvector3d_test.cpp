#include <gtest/gtest.h>
#include <tessarn/vectors.h>

#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

#include "support/pairs.h"

namespace {

using test::draw_polar;
using test::draw_vec3;
using test::lib;
using test::same;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(Polarvector3d, ConstructionAndAssignment) {
  EXPECT_TRUE(same(polarvector3d(), {0, 0, 0}));
  polarvector3d a(1, 2, 3);
  polarvector3d b(a);
  EXPECT_TRUE(same(b, {1, 2, 3}));
  polarvector3d c;
  static_assert(std::is_same_v<decltype(c = a), polarvector3d>, "assignment returns a copy");
  EXPECT_TRUE(same(c = a, {1, 2, 3}));
  EXPECT_TRUE(same(c, {1, 2, 3}));
}

TEST(Polarvector3d, CarefulConversion) {
  vector3d west(-1, 0, 0), south(0, -1, 0), up(0, 0, 2), zero, down(0, 0, -2), east(1, 0, 0);
  EXPECT_TRUE(same(polarvector3d(west), {plain::pi, 0, 1}));
  EXPECT_TRUE(same(polarvector3d(east), {0, 0, 1}));
  const polarvector3d s(south);
  EXPECT_BITS(s.alpha, 2 * plain::pi - plain::half_pi);
  EXPECT_NEAR(s.alpha, 1.5 * plain::pi, 1e-15);
  EXPECT_EQ(s.beta, 0.0);
  EXPECT_BITS(s.len, 1.0);
  EXPECT_TRUE(same(polarvector3d(up), {0, plain::half_pi, 2}));
  EXPECT_TRUE(same(polarvector3d(down), {0, -plain::half_pi, 2}));
  EXPECT_TRUE(same(polarvector3d(zero), {0, 0, 0}));
  // So steep that the elevation rounds to a right angle, with y not 0.
  vector3d steep(0, 1e-20, 1);
  EXPECT_TRUE(same(polarvector3d(steep), {0, plain::half_pi, 1}));
}

TEST(Polarvector3d, PlainConversion) {
  vector3d up(0, 0, 2), zero, west(-1, 0, 0), south(0, -1, 0);
  EXPECT_TRUE(same(polarvector3d(&up), {0, plain::half_pi, 2}));
  EXPECT_TRUE(same(polarvector3d(&zero), {0, 0, 0}));
  EXPECT_TRUE(same(polarvector3d(&west), {plain::pi, 0, 1}));
  EXPECT_NEAR(polarvector3d(&south).alpha, 1.5 * plain::pi, 1e-15);
}

// Without the clamp a cosine just past 1 gives a NaN, which the careful variant never does.
TEST(Polarvector3d, OnlyThePlainConversionLeavesTheRangeOfTheCosine) {
  test::random_source r(41);
  int lost = 0;
  for (int i = 0; i < 20000; ++i) {
    vector3d v(r.uniform(), 0, r.uniform());
    const polarvector3d careful(v);
    ASSERT_EQ(careful.alpha, careful.alpha);
    const polarvector3d plain_form(&v);
    if (plain_form.alpha != plain_form.alpha) ++lost;
  }
  EXPECT_GT(lost, 0);
}

TEST(Polarvector3d, CartesianForm) {
  polarvector3d p(plain::half_pi, 0, 2);
  vector3d v(p);
  EXPECT_NEAR(v.x, 0.0, 1e-15);
  EXPECT_BITS(v.y, 2.0);
  EXPECT_EQ(v.z, 0.0);
  vector3d w(&p);
  EXPECT_TRUE(same(w, plain::cartesian({plain::half_pi, 0, 2})));
  const vector3d u = p.operator vector3d();
  EXPECT_TRUE(same(u, plain::cartesian({plain::half_pi, 0, 2})));
}

TEST(Polarvector3d, OperationsWithoutEffect) {
  polarvector3d p(1, 2, 3), q(4, 5, 6);
  p += q;
  EXPECT_TRUE(same(p, {1, 2, 3}));
  p -= q;
  EXPECT_TRUE(same(p, {1, 2, 3}));
  p *= q;
  EXPECT_TRUE(same(p, {1, 2, 3}));
  vector3d v(7, 8, 9);
  EXPECT_TRUE(same(p = v, {1, 2, 3}));
  EXPECT_TRUE(same(p, {1, 2, 3}));
  EXPECT_TRUE(same(p = &v, {1, 2, 3}));
  EXPECT_TRUE(same(p, {1, 2, 3}));
}

TEST(Polarvector3d, FieldOperations) {
  polarvector3d p(1, 2, 3);
  EXPECT_BITS(p.lenld(), 3.0);
  EXPECT_EQ(p.lenul(), 3u);
  EXPECT_EQ(polarvector3d(0, 0, -2.5).lenul(), 3u);
  polarvector3d q(-0.2, 0.5, -2.7);
  EXPECT_EQ(q.ralpha(), -1);
  EXPECT_EQ(q.rbeta(), 1);
  EXPECT_EQ(q.rlen(), -3);
  EXPECT_TRUE(same(p.resize(7), {1, 2, 7}));
  EXPECT_TRUE(same(polarvector3d(1, 0, 1).rotate(2 * plain::pi, 0), {1 + 2 * plain::pi, 0, 1}));
  EXPECT_TRUE(same(p * 2.0, {1, 2, 6}));
  EXPECT_TRUE(same(polarvector3d(1, 2, 7) / 49.0, {1, 2, 7.0 / 49.0}));
  EXPECT_TRUE(same(p, {1, 2, 3}));
  p *= 2.0;
  EXPECT_TRUE(same(p, {1, 2, 6}));
  p /= 49.0;
  EXPECT_TRUE(same(p, {1, 2, 6.0 / 49.0}));
}

TEST(Polarvector3d, Angle) {
  polarvector3d a(0, 0, 1), b(plain::half_pi, 0, 5);
  EXPECT_NEAR(a.arc(b), plain::half_pi, 1e-15);
  EXPECT_BITS(a.arc(a), 0.0);
  polarvector3d n(nan, 0, 1);
  EXPECT_BITS(a.arc(n), 0.0);
}

TEST(Polarvector3d, Equality) {
  polarvector3d a(1, 2, 3), b(1, 2, 3), c(1, 2, 4), d(1 + 2 * plain::pi, 2, 3);
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a == c);
  EXPECT_FALSE(a == d);
}

TEST(Polarvector3d, AgreesWithThePlainForm) {
  test::random_source r(42);
  for (int i = 0; i < 60000; ++i) {
    const plain::polar pa = draw_polar(r);
    const plain::polar pb = r.below(10) == 0 ? pa : draw_polar(r);
    const plain::vec3 pv = draw_vec3(r);
    const double k = test::draw(r);
    const double t = test::draw(r);
    polarvector3d a = lib(pa);
    polarvector3d b = lib(pb);
    vector3d v = lib(pv);
    SCOPED_TRACE("(" + test::hex(pa.alpha) + " " + test::hex(pa.beta) + " " + test::hex(pa.len) + ") with (" +
                 test::hex(pb.alpha) + " " + test::hex(pb.beta) + " " + test::hex(pb.len) + "), (" + test::hex(pv.x) +
                 " " + test::hex(pv.y) + " " + test::hex(pv.z) + "), " + test::hex(k));
    ASSERT_TRUE(same(polarvector3d(v), plain::polar_careful(pv)));
    ASSERT_TRUE(same(polarvector3d(&v), plain::polar_plain(pv)));
    ASSERT_TRUE(same(vector3d(a), plain::cartesian(pa)));
    ASSERT_TRUE(same(vector3d(&a), plain::cartesian(pa)));
    ASSERT_TRUE(same(a + b, plain::add(pa, pb)));
    ASSERT_TRUE(same(a - b, plain::sub(pa, pb)));
    ASSERT_BITS(a * b, plain::dot(pa, pb));
    ASSERT_TRUE(same(a.cross(b), plain::cross(pa, pb)));
    ASSERT_TRUE(same(a * k, plain::mul(pa, k)));
    ASSERT_TRUE(same(a / k, plain::quotient(pa, k)));
    ASSERT_TRUE(same(a.resize(k), plain::resize(pa, k)));
    ASSERT_TRUE(same(a.rotate(k, t), plain::rotate(pa, k, t)));
    ASSERT_BITS(a.arc(b), plain::arc(pa, pb));
    ASSERT_EQ(a == b, plain::equal(pa, pb));
    ASSERT_EQ(a.ralpha(), plain::rndi(pa.alpha));
    ASSERT_EQ(a.rbeta(), plain::rndi(pa.beta));
    ASSERT_EQ(a.rlen(), plain::rndi(pa.len));
    ASSERT_EQ(a.lenul(), plain::rndu(pa.len));
    ASSERT_TRUE(same(a, pa));
    a *= k;
    ASSERT_TRUE(same(a, plain::mul(pa, k)));
    a = b;
    a /= k;
    ASSERT_TRUE(same(a, plain::quotient(pb, k)));
    ASSERT_TRUE(same(b, pb));
    ASSERT_TRUE(same(v, pv));
  }
}

}  // namespace
