#include <gtest/gtest.h>
#include <tessarn/poly.h>

#include <cmath>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/pairs.h"

namespace {

using test::fill;
using test::same;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

binom of(const std::vector<double>& c) {
  binom p;
  fill(p, {c});
  return p;
}

// The fields, brought into reach.
struct open_binom : binom {
  using binom::cof;
  using binom::cofcnt;
};

TEST(Binom, LayoutAndObjectModel) {
  EXPECT_EQ(sizeof(binom), 3 * sizeof(void*));
  static_assert(std::has_virtual_destructor_v<binom>);
  open_binom p;
  EXPECT_EQ(p.cofcnt, 0);
  EXPECT_EQ(p.cof, nullptr);
  EXPECT_EQ(reinterpret_cast<char*>(&p.cofcnt) - reinterpret_cast<char*>(&p), std::ptrdiff_t{sizeof(void*)});
  EXPECT_EQ(reinterpret_cast<char*>(&p.cof) - reinterpret_cast<char*>(&p), std::ptrdiff_t{2 * sizeof(void*)});
  p.create(2);
  EXPECT_NE(p.cof, nullptr);
  binom& base = p;
  base.empty();
  EXPECT_EQ(p.cof, nullptr);
  EXPECT_EQ(p.cofcnt, 0);
}

TEST(Binom, CreateGivesZeros) {
  binom p = of({1, 2, 3});
  p.create(2);
  EXPECT_TRUE(same(p, {{0, 0}}));
  p.set(0, 5);
  p.create(2);
  EXPECT_TRUE(same(p, {{0, 0}}));
  p.create(0);
  EXPECT_EQ(p.getcofcnt(), 0u);
  p.create(0);
  EXPECT_EQ(p.getcofcnt(), 0u);
}

TEST(Binom, NegativeCountsCannotBeAllocated) {
  binom p;
  EXPECT_THROW(p.create(-1), std::bad_alloc);
  EXPECT_THROW(p.resize(-3), std::bad_alloc);
  EXPECT_THROW(p.create(std::numeric_limits<tessarn::slong>::min()), std::bad_alloc);
  binom d;
  EXPECT_THROW(p.func_1(d), std::bad_alloc);
  binom q;
  EXPECT_THROW(p *= q, std::bad_alloc);
  // Still usable.
  p.create(1);
  EXPECT_TRUE(same(p, {{0}}));
}

TEST(Binom, ResizeKeepsTheLowCoefficients) {
  binom p = of({1, 2, 3});
  p.resize(5);
  EXPECT_TRUE(same(p, {{1, 2, 3, 0, 0}}));
  p.resize(5);
  EXPECT_TRUE(same(p, {{1, 2, 3, 0, 0}}));
  p.resize(2);
  EXPECT_TRUE(same(p, {{1, 2}}));
  p.resize(0);
  EXPECT_TRUE(same(p, {{}}));
  p.resize(1);
  EXPECT_TRUE(same(p, {{0}}));
}

TEST(Binom, OutsideIndices) {
  binom p = of({1, 2, 3});
  EXPECT_BITS(p.get(-1), 0.0);
  EXPECT_BITS(p.get(3), 0.0);
  EXPECT_BITS(p.get(2), 3.0);
  p.set(3, 5);
  p.set(-1, 5);
  EXPECT_TRUE(same(p, {{1, 2, 3}}));
  EXPECT_EQ(p.getcofcnt(), 3u);
}

TEST(Binom, WorkedExample) {
  binom p;
  p.create(3);
  p.set(0, 1);
  p.set(1, 2);
  p.set(2, 3);
  EXPECT_BITS(p.func(2), 17.0);
  binom d;
  p.func_1(d);
  EXPECT_TRUE(same(d, {{2, 6}}));
  EXPECT_TRUE(same(p, {{1, 2, 3}}));
  p.func_1(p);
  EXPECT_TRUE(same(p, {{2, 6}}));
  binom h = of({1, 2, 3});
  h.mirror_h();
  EXPECT_TRUE(same(h, {{1, -2, 3}}));
  binom v = of({1, 2, 3});
  v.mirror_v();
  EXPECT_TRUE(same(v, {{-1, -2, -3}}));
}

TEST(Binom, MirrorsFlipTheSignBit) {
  binom p = of({0.0, 0.0, 0.0});
  p.mirror_h();
  EXPECT_TRUE(same(p, {{0.0, -0.0, 0.0}}));
  p.mirror_v();
  EXPECT_TRUE(same(p, {{-0.0, 0.0, -0.0}}));
  binom none;
  none.mirror_h();
  none.mirror_v();
  EXPECT_EQ(none.getcofcnt(), 0u);
}

TEST(Binom, Shifts) {
  binom p = of({0, 0, 1});
  p.shift_h(2);
  EXPECT_TRUE(same(p, {{4, -4, 1}}));
  binom e;
  e.shift_v(1);
  EXPECT_TRUE(same(e, {{1}}));
  e.shift_v(-3);
  EXPECT_TRUE(same(e, {{-2}}));
  binom none;
  none.shift_h(2);
  EXPECT_EQ(none.getcofcnt(), 0u);
}

TEST(Binom, Products) {
  binom p = of({1, 1}), q = of({1, -1});
  p *= q;
  EXPECT_TRUE(same(p, {{1, 0, -1}}));
  binom c = of({7}), none;
  c *= none;
  EXPECT_EQ(c.getcofcnt(), 0u);
  binom three = of({1, 2, 3});
  three *= none;
  EXPECT_TRUE(same(three, {{0, 0}}));
  none *= q;
  EXPECT_TRUE(same(none, {{0}}));
  binom s = of({1, 2});
  s *= s;
  EXPECT_TRUE(same(s, {{1, 4, 4}}));
  s *= 0.5;
  EXPECT_TRUE(same(s, {{0.5, 2, 2}}));
}

TEST(Binom, LongProductsAgreeWithThePlainForm) {
  test::random_source r(75);
  for (int round = 0; round < 400; ++round) {
    plain::poly pa, pb;
    for (plain::poly* p : {&pa, &pb}) {
      const bool hostile = r.below(4) == 0;
      p->cof.resize(14 + r.below(60));
      for (double& v : p->cof) v = hostile ? test::draw(r) : r.uniform(-1, 1);
    }
    binom a, b;
    fill(a, pa);
    fill(b, pb);
    a *= b, plain::mul(pa, pb);
    ASSERT_TRUE(same(a, pa)) << "round " << round;
    b *= b, plain::mul(pb, pb);
    ASSERT_TRUE(same(b, pb)) << "round " << round;
  }
}

TEST(Binom, SumsTakeTheLargerCount) {
  binom p = of({1, 2}), q = of({10, 20, 30, 40});
  p += q;
  EXPECT_TRUE(same(p, {{11, 22, 30, 40}}));
  binom m = of({1, 2});
  m -= q;
  EXPECT_TRUE(same(m, {{-9, -18, -30, -40}}));
  q += m;
  EXPECT_TRUE(same(q, {{1, 2, 0, 0}}));
  binom longer = of({1, 2, 3, -0.0}), shorter = of({1});
  longer += shorter;
  EXPECT_TRUE(same(longer, {{2, 2, 3, 0.0}}));
  longer += longer;
  EXPECT_TRUE(same(longer, {{4, 4, 6, 0.0}}));
  binom& self = longer;
  longer -= self;
  EXPECT_TRUE(same(longer, {{0, 0, 0, 0}}));
}

TEST(Binom, DerivativeOfAConstantIsEmpty) {
  binom p = of({5});
  binom d = of({1, 2, 3});
  p.func_1(d);
  EXPECT_EQ(d.getcofcnt(), 0u);
  d.empty();
}

TEST(Binom, CopyConstructionShares) {
  open_binom a;
  a.create(2);
  {
    open_binom b(a);
    EXPECT_EQ(b.cof, a.cof);
    b.set(1, 7);
    EXPECT_BITS(a.get(1), 7.0);
  }
  EXPECT_BITS(a.get(1), 7.0);
}

TEST(Binom, AssignmentBetweenSharingObjectsEndsTheSharing) {
  binom a = of({1, 2, 3});
  binom copied(a), assigned(a), moved(a);
  copied.copy(a);
  assigned = a;
  copied.set(0, 7);
  assigned.set(0, 8);
  EXPECT_TRUE(same(a, {{1, 2, 3}}));
  EXPECT_TRUE(same(copied, {{7, 2, 3}}));
  EXPECT_TRUE(same(assigned, {{8, 2, 3}}));
  moved = std::move(a);
  EXPECT_TRUE(same(moved, {{1, 2, 3}}));
  EXPECT_EQ(a.getcofcnt(), 0u);
}

TEST(Binom, CopyAndAssignmentAreDeep) {
  binom a = of({1, 2});
  binom b;
  b.copy(a);
  b.set(0, 9);
  EXPECT_TRUE(same(a, {{1, 2}}));
  binom c = of({5, 5, 5});
  const binom* address = &(c = a);
  EXPECT_EQ(address, &c);
  c.set(0, 9);
  EXPECT_TRUE(same(a, {{1, 2}}));
  EXPECT_TRUE(same(c, {{9, 2}}));
  binom none;
  c = none;
  EXPECT_EQ(c.getcofcnt(), 0u);
  c.empty();
  a.copy(a);
  EXPECT_TRUE(same(a, {{1, 2}}));
  binom& self = a;
  a = self;
  EXPECT_TRUE(same(a, {{1, 2}}));
}

TEST(Binom, MovesEmptyTheSource) {
  binom a = of({1, 2});
  binom b(std::move(a));
  EXPECT_EQ(a.getcofcnt(), 0u);
  EXPECT_TRUE(same(b, {{1, 2}}));
  a = std::move(b);
  EXPECT_EQ(b.getcofcnt(), 0u);
  EXPECT_TRUE(same(a, {{1, 2}}));
}

TEST(Binom, EvaluationIsNotHorner) {
  EXPECT_BITS(binom().func(3), 0.0);
  EXPECT_BITS(of({-0.0}).func(3), -0.0);
  // Horner's scheme gives 0 times infinity here only once.
  EXPECT_BITS(of({1, 0, 0}).func(std::numeric_limits<double>::infinity()), nan);
  test::random_source r(71);
  int different = 0;
  for (int i = 0; i < 2000; ++i) {
    const std::vector<double> c{r.uniform(), r.uniform(), r.uniform(), r.uniform()};
    const double x = r.uniform(-3, 3);
    const double horner = ((c[3] * x + c[2]) * x + c[1]) * x + c[0];
    const double y = of(c).func(x);
    ASSERT_NEAR(y, horner, 1e-13);
    if (!test::same_bits(y, horner)) ++different;
  }
  EXPECT_GT(different, 100);
}

std::vector<double> draw_coefficients(test::random_source& r) {
  std::vector<double> c(r.below(9));
  const bool hostile = r.below(3) == 0;
  for (double& v : c) v = hostile ? test::draw(r) : test::draw_finite(r);
  return c;
}

TEST(Binom, AgreesWithThePlainForm) {
  test::random_source r(72);
  for (int i = 0; i < 30000; ++i) {
    const plain::poly pa{draw_coefficients(r)};
    const plain::poly pb{draw_coefficients(r)};
    const double k = test::draw(r);
    binom a, b;
    fill(a, pa);
    fill(b, pb);
    SCOPED_TRACE("round " + std::to_string(i));
    ASSERT_TRUE(same(a, pa));
    ASSERT_BITS(a.func(k), plain::func(pa, k));
    binom c;
    plain::poly pc;
    if (pa.count() > 0) {
      c.copy(b);
      a.func_1(c);
      ASSERT_TRUE(same(c, plain::derivative(pa)));
    }
    c = a, pc = pa;
    c += b, plain::add(pc, pb);
    ASSERT_TRUE(same(c, pc));
    c = a, pc = pa;
    c -= b, plain::sub(pc, pb);
    ASSERT_TRUE(same(c, pc));
    if (pa.count() + pb.count() > 0) {
      c = a, pc = pa;
      c *= b, plain::mul(pc, pb);
      ASSERT_TRUE(same(c, pc));
    }
    if (pa.count() > 0) {
      c = a, pc = pa;
      c *= c, plain::mul(pc, pa);
      ASSERT_TRUE(same(c, pc));
    }
    c = a, pc = pa;
    c *= k, plain::mul(pc, k);
    ASSERT_TRUE(same(c, pc));
    c = a, pc = pa;
    c.shift_h(k), plain::shift_h(pc, k);
    ASSERT_TRUE(same(c, pc));
    c = a, pc = pa;
    c.shift_v(k), plain::shift_v(pc, k);
    ASSERT_TRUE(same(c, pc));
    c = a, pc = pa;
    c.mirror_h(), plain::mirror_h(pc);
    ASSERT_TRUE(same(c, pc));
    c.mirror_v(), plain::mirror_v(pc);
    ASSERT_TRUE(same(c, pc));
    const long n = static_cast<long>(r.below(12));
    c.resize(static_cast<tessarn::slong>(n)), plain::resize(pc, n);
    ASSERT_TRUE(same(c, pc));
    ASSERT_TRUE(same(a, pa));
    ASSERT_TRUE(same(b, pb));
  }
}

TEST(Binom, ArraysOfAbscissasGiveTheSameBits) {
  test::random_source r(73);
  for (int round = 0; round < 300; ++round) {
    const binom p = of(draw_coefficients(r));
    const std::size_t n = r.below(40);
    std::vector<tessarn::real> x(n), y(n);
    for (tessarn::real& v : x) v = test::draw(r);
    p.func(x.data(), y.data(), static_cast<tessarn::ulong>(n));
    for (std::size_t i = 0; i < n; ++i) ASSERT_BITS(y[i], p.func(x[i]));
    std::vector<tessarn::real> in_place = x;
    p.func(in_place.data(), in_place.data(), static_cast<tessarn::ulong>(n));
    for (std::size_t i = 0; i < n; ++i) ASSERT_BITS(in_place[i], y[i]);
  }
}

}  // namespace
