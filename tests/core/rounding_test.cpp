// The rounding pair of the value classes and the accessors that are built on it.
#include <gtest/gtest.h>
#include <tessarn/cplx.h>
#include <tessarn/vectors.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>

#include "plain/scalar.h"
#include "support/bits.h"
#include "support/random.h"

namespace {

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr int smallest = std::numeric_limits<int>::min();

// The protected pairs, brought into reach.
struct open_cplx : cplx {
  using cplx::rndi;
  using cplx::rndu;
};
struct open_vector3d : vector3d {
  using vector3d::rndi;
  using vector3d::rndu;
};
struct open_polar : polarvector3d {
  using polarvector3d::rndi;
  using polarvector3d::rndu;
};

void expect_rndu(double x, unsigned expected) {
  SCOPED_TRACE(test::hex(x));
  EXPECT_EQ(vector::rndu(x), expected);
  EXPECT_EQ(open_cplx::rndu(x), expected);
  EXPECT_EQ(open_vector3d().rndu(x), expected);
  EXPECT_EQ(open_polar().rndu(x), expected);
}

void expect_rndi(double x, int expected) {
  SCOPED_TRACE(test::hex(x));
  EXPECT_EQ(vector::rndi(x), expected);
  EXPECT_EQ(open_cplx::rndi(x), expected);
  EXPECT_EQ(open_vector3d().rndi(x), expected);
  EXPECT_EQ(open_polar().rndi(x), expected);
}

TEST(Rounding, MagnitudeHalfUp) {
  expect_rndu(0.5, 1);
  expect_rndu(0.49999, 0);
  expect_rndu(-0.5, 1);
  expect_rndu(-1.2, 1);
  expect_rndu(-2.5, 3);
  expect_rndu(0.0, 0);
  expect_rndu(-0.0, 0);
  expect_rndu(1.0, 1);
  expect_rndu(std::nextafter(0.5, 0.0), 0);
  expect_rndu(std::numeric_limits<double>::denorm_min(), 0);
}

TEST(Rounding, SignedRoundsNegativeValuesDown) {
  expect_rndi(0.5, 1);
  expect_rndi(-0.5, -1);
  expect_rndi(-0.0001, -1);
  expect_rndi(-1.0, -1);
  expect_rndi(1.5, 2);
  expect_rndi(2.5, 3);
  expect_rndi(2.49, 2);
  expect_rndi(-0.2, -1);
  expect_rndi(-2.5, -3);
  expect_rndi(-2.7, -3);
  expect_rndi(-3.0, -3);
  expect_rndi(0.0, 0);
  expect_rndi(-0.0, 0);
  expect_rndi(-std::numeric_limits<double>::denorm_min(), -1);
}

TEST(Rounding, OutsideThe32BitRangeIsOneFixedPattern) {
  for (const double x : {3.0e9, nan, inf, 1e300, 2147483648.0, 2147483647.5}) {
    expect_rndi(x, smallest);
    expect_rndu(x, 2147483648u);
  }
  for (const double x : {-3.0e9, -inf, -1e300, -2147483648.0, -2147483648.5}) {
    expect_rndi(x, smallest);
    expect_rndu(x, 2147483648u);
  }
  expect_rndi(2147483647.0, 2147483647);
  expect_rndi(2147483647.25, 2147483647);
  expect_rndi(-2147483647.0, -2147483647);
  expect_rndi(-2147483647.5, smallest);
  expect_rndu(2147483647.25, 2147483647u);
  expect_rndu(4294967295.0, 2147483648u);
  // Integers beyond 2^63 are left alone by floor and ceiling.
  expect_rndi(0x1p63, smallest);
  expect_rndi(-0x1p63, smallest);
}

TEST(Rounding, AgreesWithThePlainForm) {
  test::random_source r(11);
  for (int i = 0; i < 200000; ++i) {
    double x = 0;
    switch (r.below(4)) {
      case 0: x = r.hostile(); break;
      case 1: x = static_cast<double>(r.below(2000)) * 0.25 - 250.0; break;
      case 2: x = r.uniform(-5e9, 5e9); break;
      default: x = test::from_bits(r.next()); break;
    }
    ASSERT_EQ(vector::rndu(x), plain::rndu(x)) << test::hex(x);
    ASSERT_EQ(vector::rndi(x), plain::rndi(x)) << test::hex(x);
    ASSERT_EQ(open_cplx::rndu(x), plain::rndu(x)) << test::hex(x);
    ASSERT_EQ(open_cplx::rndi(x), plain::rndi(x)) << test::hex(x);
    ASSERT_EQ(open_vector3d().rndu(x), plain::rndu(x)) << test::hex(x);
    ASSERT_EQ(open_vector3d().rndi(x), plain::rndi(x)) << test::hex(x);
    ASSERT_EQ(open_polar().rndu(x), plain::rndu(x)) << test::hex(x);
    ASSERT_EQ(open_polar().rndi(x), plain::rndi(x)) << test::hex(x);
  }
}

TEST(Rounding, FloorAndCeiling) {
  using tessarn::detail::ceil_of;
  using tessarn::detail::floor_of;
  EXPECT_BITS(ceil_of(-0.5), 0.0);
  EXPECT_BITS(ceil_of(-0.0), -0.0);
  EXPECT_BITS(floor_of(-0.0), -0.0);
  EXPECT_BITS(floor_of(-0.5), -1.0);
  EXPECT_BITS(ceil_of(0.5), 1.0);
  EXPECT_BITS(floor_of(0.5), 0.0);
  EXPECT_BITS(ceil_of(-1.5), -1.0);
  EXPECT_BITS(floor_of(nan), nan);
  EXPECT_BITS(ceil_of(-inf), -inf);
  EXPECT_BITS(floor_of(-0x1p63), -0x1p63);
  EXPECT_BITS(ceil_of(0x1p63), 0x1p63);
  test::random_source r(13);
  for (int i = 0; i < 100000; ++i) {
    const double x = r.below(2) ? r.uniform(-5, 5) : test::from_bits(r.next());
    ASSERT_BITS(floor_of(x), plain::floor_of(x));
    ASSERT_BITS(ceil_of(x), plain::ceiling_of(x));
    if (std::fabs(x) < 0x1p62) {
      ASSERT_EQ(floor_of(x), std::floor(x));
      ASSERT_EQ(ceil_of(x), std::ceil(x));
    }
  }
}

TEST(Rounding, LengthsAndCoordinates) {
  vector a(3, 4);
  EXPECT_EQ(a.lenul(), 5u);
  vector b(0.3, 0.4);
  EXPECT_EQ(b.lenul(), 1u);
  vector c(-0.4, 0.0);
  EXPECT_EQ(c.rx(), -1);
  vector d(-0.3, 1.5);
  EXPECT_EQ(d.rx(), -1);
  EXPECT_EQ(d.ry(), 2);
  vector3d e(-0.4, 2.5, 3e9);
  EXPECT_EQ(e.rx(), -1);
  EXPECT_EQ(e.ry(), 3);
  EXPECT_EQ(e.rz(), smallest);
  cplx f(-3, -4);
  EXPECT_EQ(f.lenul(), 5u);
}

TEST(Rounding, LengthIsNotScaledAgainstOverflow) {
  EXPECT_BITS(vector(1e200, 1e200).lenld(), inf);
  EXPECT_BITS(vector(3e-200, 4e-200).lenld(), 0.0);
  EXPECT_EQ(vector(1e200, 0).lenul(), 2147483648u);
  EXPECT_BITS(vector3d(1e200, 0, 0).lenld(), inf);
  EXPECT_BITS(cplx(1e200, 0).lenld(), inf);
}

TEST(Rounding, Types) {
  static_assert(std::is_same_v<decltype(vector::rndu(1.0)), unsigned int>);
  static_assert(std::is_same_v<decltype(vector::rndi(1.0)), int>);
  static_assert(std::is_same_v<decltype(std::declval<vector&>().rx()), int>);
  static_assert(sizeof(std::declval<vector&>().lenul()) == 4);
  static_assert(sizeof(tessarn::ulong) == 4 && std::is_unsigned_v<tessarn::ulong>);
  static_assert(sizeof(tessarn::slong) == 4 && std::is_signed_v<tessarn::slong>);
  static_assert(sizeof(tessarn::real) == 8 && std::numeric_limits<tessarn::real>::digits == 53);
}

// ---------------------------------------------------------------------------- object model

template <class T>
constexpr bool value_class = std::is_polymorphic_v<T>&& std::has_virtual_destructor_v<T>&&
    std::is_copy_constructible_v<T>&& std::is_copy_assignable_v<T>;

TEST(ObjectModel, SizesAndVirtualDestructors) {
  static_assert(value_class<cplx> && value_class<vector> && value_class<vector3d> && value_class<polarvector3d> &&
                value_class<vectormat>);
  EXPECT_EQ(sizeof(cplx), 3 * 8u);
  EXPECT_EQ(sizeof(vector), 3 * 8u);
  EXPECT_EQ(sizeof(vector3d), 4 * 8u);
  EXPECT_EQ(sizeof(polarvector3d), 4 * 8u);
  EXPECT_EQ(sizeof(vectormat), 2 * sizeof(void*) + 8u);
}

TEST(ObjectModel, FieldsStandInOrderAfterTheTablePointer) {
  cplx c(1, 2);
  EXPECT_EQ(reinterpret_cast<char*>(&c.re) - reinterpret_cast<char*>(&c), 8);
  EXPECT_EQ(&c.re + 1, &c.im);
  vector v(1, 2);
  EXPECT_EQ(reinterpret_cast<char*>(&v.x) - reinterpret_cast<char*>(&v), 8);
  EXPECT_EQ(&v.x + 1, &v.y);
  vector3d w(1, 2, 3);
  EXPECT_EQ(reinterpret_cast<char*>(&w.x) - reinterpret_cast<char*>(&w), 8);
  EXPECT_EQ(&w.x + 1, &w.y);
  EXPECT_EQ(&w.y + 1, &w.z);
  polarvector3d p(1, 2, 3);
  EXPECT_EQ(reinterpret_cast<char*>(&p.alpha) - reinterpret_cast<char*>(&p), 8);
  EXPECT_EQ(&p.alpha + 1, &p.beta);
  EXPECT_EQ(&p.beta + 1, &p.len);
}

TEST(Allocators, ZeroGivesOneObjectForScalarDelete) {
  vector* v = new_vector(0);
  ASSERT_NE(v, nullptr);
  EXPECT_BITS(v->x, 0.0);
  EXPECT_BITS(v->y, 0.0);
  delete v;
  vector3d* w = new_vector3d(0);
  ASSERT_NE(w, nullptr);
  EXPECT_BITS(w->x, 0.0);
  EXPECT_BITS(w->y, 0.0);
  EXPECT_BITS(w->z, 0.0);
  delete w;
  polarvector3d* p = new_polarvector3d(0);
  ASSERT_NE(p, nullptr);
  EXPECT_BITS(p->alpha, 0.0);
  EXPECT_BITS(p->beta, 0.0);
  EXPECT_BITS(p->len, 0.0);
  delete p;
}

TEST(Allocators, CountGivesAnArrayForArrayDelete) {
  for (const tessarn::ulong n : {1u, 3u, 1000u}) {
    vector* v = new_vector(n);
    vector3d* w = new_vector3d(n);
    polarvector3d* p = new_polarvector3d(n);
    for (tessarn::ulong i = 0; i < n; ++i) {
      EXPECT_BITS(v[i].x, 0.0);
      EXPECT_BITS(v[i].y, 0.0);
      EXPECT_BITS(w[i].x, 0.0);
      EXPECT_BITS(w[i].y, 0.0);
      EXPECT_BITS(w[i].z, 0.0);
      EXPECT_BITS(p[i].alpha, 0.0);
      EXPECT_BITS(p[i].beta, 0.0);
      EXPECT_BITS(p[i].len, 0.0);
    }
    delete[] v;
    delete[] w;
    delete[] p;
  }
}

}  // namespace
