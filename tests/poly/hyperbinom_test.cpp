#include <gtest/gtest.h>
#include <tessarn/poly.h>

#include <limits>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "plain/surface.h"
#include "support/pairs.h"

namespace {

using plain::surface;
using plain::vec3;
using test::fill;
using test::same;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

struct open_hyperbinom : hyperbinom {
  using hyperbinom::cof;
  using hyperbinom::getvec;
  using hyperbinom::grade;
};

hyperbinom of(const surface& s) {
  hyperbinom p;
  fill(p, s);
  return p;
}

surface draw_surface(test::random_source& r) {
  surface s = plain::created_surface(static_cast<long>(r.below(5)));
  const bool hostile = r.below(3) == 0;
  for (double& c : s.cof) c = hostile ? test::draw(r) : test::draw_finite(r);
  return s;
}

TEST(Hyperbinom, LayoutAndObjectModel) {
  EXPECT_EQ(sizeof(hyperbinom), 3 * sizeof(void*));
  static_assert(std::has_virtual_destructor_v<hyperbinom>);
  open_hyperbinom p;
  EXPECT_EQ(p.grade, 0);
  EXPECT_EQ(p.cof, nullptr);
  EXPECT_EQ(reinterpret_cast<char*>(&p.grade) - reinterpret_cast<char*>(&p), std::ptrdiff_t{sizeof(void*)});
  EXPECT_EQ(reinterpret_cast<char*>(&p.cof) - reinterpret_cast<char*>(&p), std::ptrdiff_t{2 * sizeof(void*)});
  p.create(2);
  p.set(1, 0, 7);
  p.set(0, 1, 8);
  EXPECT_BITS(p.cof[1], 7.0);
  EXPECT_BITS(p.cof[2], 8.0);
  hyperbinom& base = p;
  base.empty();
  EXPECT_EQ(p.grade, 0);
  EXPECT_EQ(p.cof, nullptr);
}

TEST(Hyperbinom, WorkedExample) {
  hyperbinom p;
  p.create(2);
  p.set(1, 0, 2);
  p.set(0, 1, 3);
  EXPECT_BITS(p.func(1, 1), 5.0);
  EXPECT_BITS(p.get(1, 0), 2.0);
  EXPECT_BITS(p.get(2, 0), 0.0);
  EXPECT_EQ(p.getgrade(), 2u);
}

TEST(Hyperbinom, OutsideIndices) {
  hyperbinom p = of({2, {1, 2, 3, 4}});
  for (const auto& [i, j] : {std::pair{-1, 0}, {0, -1}, {2, 0}, {0, 2}, {5, 5}, {-1, -1}}) {
    EXPECT_BITS(p.get(i, j), 0.0);
    p.set(i, j, 9);
  }
  EXPECT_TRUE(same(p, {2, {1, 2, 3, 4}}));
}

TEST(Hyperbinom, CreateGivesZeros) {
  hyperbinom p = of({2, {1, 2, 3, 4}});
  p.create(2);
  EXPECT_TRUE(same(p, {2, {0, 0, 0, 0}}));
  p.create(0);
  EXPECT_EQ(p.getgrade(), 0u);
  EXPECT_BITS(p.func(1, 1), 0.0);
  p.create(0);
  EXPECT_EQ(p.getgrade(), 0u);
}

TEST(Hyperbinom, NegativeGradesAreKeptAndReachNothing) {
  open_hyperbinom p;
  p.create(-3);
  EXPECT_EQ(p.grade, -3);
  EXPECT_NE(p.cof, nullptr);
  p.set(0, 0, 5);
  EXPECT_BITS(p.get(0, 0), 0.0);
  EXPECT_BITS(p.func(2, 2), 0.0);
  p *= 2.0;
  hyperbinom q;
  q.copy(p);
  EXPECT_EQ(static_cast<tessarn::slong>(q.getgrade()), -3);
  q.resize(2);
  EXPECT_TRUE(same(q, {2, {0, 0, 0, 0}}));
  q.resize(-2);
  EXPECT_EQ(static_cast<tessarn::slong>(q.getgrade()), -2);
}

// Also where the 32-bit product would wrap to a small number.
TEST(Hyperbinom, TablesBeyond32BitsCannotBeAllocated) {
  for (const tessarn::slong g :
       std::initializer_list<tessarn::slong>{46341, 65536, 65537, 92682, 131072, 2147483647, -46341, -65536,
                                             std::numeric_limits<tessarn::slong>::min()}) {
    hyperbinom p;
    EXPECT_THROW(p.create(g), std::bad_alloc) << g;
    EXPECT_THROW(p.resize(g), std::bad_alloc) << g;
    p.create(1);
    EXPECT_EQ(p.getgrade(), 1u);
  }
}

TEST(Hyperbinom, ResizeKeepsOnlyThePurePowersOfX) {
  hyperbinom p = of({2, {1, 2, 3, 4}});
  p.resize(2);
  EXPECT_TRUE(same(p, {2, {1, 2, 3, 4}}));
  p.resize(3);
  EXPECT_TRUE(same(p, {3, {1, 2, 0, 0, 0, 0, 0, 0, 0}}));
  // To a smaller grade the first elements land flat, as far as the table reaches.
  hyperbinom q = of({3, {1, 2, 3, 4, 5, 6, 7, 8, 9}});
  q.resize(2);
  EXPECT_TRUE(same(q, {2, {1, 2, 3, 0}}));
  hyperbinom s = of({3, {1, 2, 3, 4, 5, 6, 7, 8, 9}});
  s.resize(1);
  EXPECT_TRUE(same(s, {1, {1}}));
  s.resize(0);
  EXPECT_EQ(s.getgrade(), 0u);
}

TEST(Hyperbinom, SumLosesTermsInYWhenItGrows) {
  hyperbinom p;
  p.create(2);
  p.set(0, 1, 5);
  p.set(1, 0, 7);
  hyperbinom zero;
  zero.create(3);
  p += zero;
  EXPECT_EQ(p.getgrade(), 3u);
  EXPECT_BITS(p.get(1, 0), 7.0);
  EXPECT_BITS(p.get(0, 1), 0.0);
  // A smaller right operand loses nothing.
  hyperbinom q = of({2, {1, 2, 3, 4}}), r = of({1, {10}});
  q -= r;
  EXPECT_TRUE(same(q, {2, {-9, 2, 3, 4}}));
  q += q;
  EXPECT_TRUE(same(q, {2, {-18, 4, 6, 8}}));
}

TEST(Hyperbinom, Product) {
  hyperbinom p = of({2, {1, 1, 0, 0}}), q = of({2, {1, 0, 1, 0}});
  p *= q;
  EXPECT_TRUE(same(p, {3, {1, 1, 0, 1, 1, 0, 0, 0, 0}}));
  hyperbinom a = of({3, std::vector<double>(9, 1.0)});
  a *= a;
  EXPECT_EQ(a.getgrade(), 5u);
  EXPECT_BITS(a.get(2, 2), 9.0);
  hyperbinom none, b = of({3, std::vector<double>(9, 1.0)});
  b *= none;
  EXPECT_TRUE(same(b, {2, {0, 0, 0, 0}}));
  hyperbinom one = of({1, {5}});
  one *= none;
  EXPECT_EQ(one.getgrade(), 0u);
  none *= none;
  EXPECT_EQ(static_cast<tessarn::slong>(none.getgrade()), -1);
}

TEST(Hyperbinom, CopyConstructionShares) {
  open_hyperbinom a;
  a.create(2);
  open_hyperbinom b(a);
  EXPECT_EQ(a.cof, b.cof);
  b.set(1, 1, 7);
  EXPECT_BITS(a.get(1, 1), 7.0);
}

TEST(Hyperbinom, AssignmentBetweenSharingObjectsEndsTheSharing) {
  hyperbinom a = of({2, {1, 2, 3, 4}});
  hyperbinom copied(a), assigned(a), moved(a);
  copied.copy(a);
  assigned = a;
  copied.set(0, 0, 7);
  assigned.set(0, 0, 8);
  EXPECT_TRUE(same(a, {2, {1, 2, 3, 4}}));
  EXPECT_TRUE(same(copied, {2, {7, 2, 3, 4}}));
  EXPECT_TRUE(same(assigned, {2, {8, 2, 3, 4}}));
  moved = std::move(a);
  EXPECT_TRUE(same(moved, {2, {1, 2, 3, 4}}));
  EXPECT_EQ(a.getgrade(), 0u);
}

TEST(Hyperbinom, CopyAndAssignmentAreDeep) {
  hyperbinom a = of({2, {1, 2, 3, 4}});
  hyperbinom b;
  b.copy(a);
  b.set(0, 0, 9);
  EXPECT_TRUE(same(a, {2, {1, 2, 3, 4}}));
  hyperbinom c = of({1, {5}});
  const hyperbinom* address = &(c = a);
  EXPECT_EQ(address, &c);
  EXPECT_TRUE(same(c, {2, {1, 2, 3, 4}}));
  a.copy(a);
  hyperbinom& self = a;
  a = self;
  EXPECT_TRUE(same(a, {2, {1, 2, 3, 4}}));
  hyperbinom none;
  c = none;
  EXPECT_EQ(c.getgrade(), 0u);
  c.empty();
}

TEST(Hyperbinom, MovesEmptyTheSource) {
  hyperbinom a = of({2, {1, 2, 3, 4}});
  hyperbinom b(std::move(a));
  EXPECT_EQ(a.getgrade(), 0u);
  a = std::move(b);
  EXPECT_EQ(b.getgrade(), 0u);
  EXPECT_TRUE(same(a, {2, {1, 2, 3, 4}}));
}

TEST(Hyperbinom, BasisValues) {
  open_hyperbinom p;
  p.create(3);
  EXPECT_BITS(p.getvec(0, 2, 5), 1.0);
  EXPECT_BITS(p.getvec(1, 2, 5), 2.0);
  EXPECT_BITS(p.getvec(5, 2, 5), 20.0);
  EXPECT_BITS(p.getvec(8, 2, 5), 100.0);
  EXPECT_BITS(p.getvec(-1, 2, 5), 0.5);
  EXPECT_BITS(p.getvec(-6, 2, 4), 1.0 / 16);
  test::random_source r(101);
  for (int i = 0; i < 5000; ++i) {
    const double x = test::draw(r), y = test::draw(r);
    const int k = static_cast<int>(r.below(9));
    ASSERT_BITS(p.getvec(k, x, y), plain::basis(3, k, x, y));
  }
}

TEST(Hyperbinom, AgreesWithThePlainForm) {
  test::random_source r(102);
  for (int i = 0; i < 20000; ++i) {
    const surface pa = draw_surface(r);
    const surface pb = draw_surface(r);
    const double x = test::draw(r), y = test::draw(r);
    hyperbinom a = of(pa), b = of(pb);
    SCOPED_TRACE("round " + std::to_string(i));
    ASSERT_BITS(a.func(x, y), plain::func(pa, x, y));
    hyperbinom c;
    surface pc = pa;
    c = a;
    c += b, plain::add(pc, pb);
    ASSERT_TRUE(same(c, pc));
    c = a, pc = pa;
    c -= b, plain::sub(pc, pb);
    ASSERT_TRUE(same(c, pc));
    c = a, pc = pa;
    c *= b, plain::mul(pc, pb);
    ASSERT_TRUE(same(c, pc));
    c = a, pc = pa;
    c *= c, plain::mul(pc, pa);
    ASSERT_TRUE(same(c, pc));
    c = a, pc = pa;
    c *= x, plain::mul(pc, x);
    ASSERT_TRUE(same(c, pc));
    const int g = static_cast<int>(r.below(6));
    c.resize(g), plain::resize(pc, g);
    ASSERT_TRUE(same(c, pc));
    ASSERT_TRUE(same(a, pa));
    ASSERT_TRUE(same(b, pb));
  }
}

TEST(Hyperbinom, ArraysOfPointsGiveTheSameBits) {
  test::random_source r(103);
  for (int round = 0; round < 300; ++round) {
    const hyperbinom p = of(draw_surface(r));
    const tessarn::ulong n = r.below(40);
    std::vector<tessarn::real> x(n), y(n), z(n);
    for (tessarn::real& v : x) v = test::draw(r);
    for (tessarn::real& v : y) v = test::draw(r);
    p.func(x.data(), y.data(), z.data(), n);
    for (std::size_t i = 0; i < n; ++i) ASSERT_BITS(z[i], p.func(x[i], y[i]));
    std::vector<tessarn::real> in_place = x;
    p.func(in_place.data(), y.data(), in_place.data(), n);
    for (std::size_t i = 0; i < n; ++i) ASSERT_BITS(in_place[i], z[i]);
    in_place = y;
    p.func(x.data(), in_place.data(), in_place.data(), n);
    for (std::size_t i = 0; i < n; ++i) ASSERT_BITS(in_place[i], z[i]);
  }
}

// ---------------------------------------------------------------------------- fits

std::vector<vector3d> lib_points(const std::vector<vec3>& points) {
  std::vector<vector3d> v;
  for (const vec3& p : points) v.push_back(test::lib(p));
  return v;
}

hyperbinom fitted(const std::vector<vec3>& points, tessarn::ulong g) {
  std::vector<vector3d> v = lib_points(points);
  hyperbinom p;
  p.create(v.data(), static_cast<tessarn::ulong>(v.size()), g);
  return p;
}

hyperbinom fitted(const std::vector<vec3>& points, std::vector<double> w, tessarn::ulong g) {
  std::vector<vector3d> v = lib_points(points);
  std::vector<tessarn::real> weights(w.begin(), w.end());
  hyperbinom p;
  p.create(v.data(), weights.data(), static_cast<tessarn::ulong>(v.size()), g);
  return p;
}

std::vector<vec3> saddle_points() {
  std::vector<vec3> points;
  for (const auto& [x, y] : {std::pair{0.0, 0.0}, {1.0, 0.5}, {-1.0, 2.0}, {0.5, -1.5}, {2.0, 1.0}, {-0.5, -2.0}}) {
    points.push_back({x, y, 1 + 2 * x + 3 * y + 4 * x * y});
  }
  return points;
}

TEST(SurfaceFit, GivesBackTheSurface) {
  const std::vector<vec3> points = saddle_points();
  hyperbinom p = fitted(points, 2);
  hyperbinom w = fitted(points, std::vector<double>(points.size(), 1.0), 2);
  for (hyperbinom* q : {&p, &w}) {
    ASSERT_EQ(q->getgrade(), 2u);
    EXPECT_NEAR(q->get(0, 0), 1, 1e-12);
    EXPECT_NEAR(q->get(1, 0), 2, 1e-12);
    EXPECT_NEAR(q->get(0, 1), 3, 1e-12);
    EXPECT_NEAR(q->get(1, 1), 4, 1e-12);
  }
}

TEST(SurfaceFit, WeightsActOnResiduals) {
  // Two heights at one place: the weighted mean has the squares of the weights.
  hyperbinom p = fitted({{5, 5, 0}, {5, 5, 10}}, {1, 3}, 1);
  EXPECT_NEAR(p.get(0, 0), 9.0, 1e-14);
}

TEST(SurfaceFit, HasNoSkipMarker) {
  hyperbinom p = fitted({{-1, -1, 2}, {0, 0, 4}}, 1);
  EXPECT_BITS(p.get(0, 0), 3.0);
}

TEST(SurfaceFit, SingularSystemsLeaveTheRightHandSide) {
  hyperbinom p = fitted({{2, 3, 5}}, 2);
  EXPECT_TRUE(same(p, {2, {5, 10, 15, 30}}));
  hyperbinom none = fitted({}, 2);
  EXPECT_TRUE(same(none, {2, {0, 0, 0, 0}}));
  hyperbinom zero = fitted({{2, 3, 5}}, 0);
  EXPECT_EQ(zero.getgrade(), 0u);
}

TEST(SurfaceFit, AgreesWithThePlainForm) {
  test::random_source r(104);
  for (int round = 0; round < 400; ++round) {
    std::vector<vec3> points;
    std::vector<double> w;
    const std::size_t n = r.below(25);
    const bool hostile = r.below(4) == 0;
    for (std::size_t i = 0; i < n; ++i) {
      points.push_back(hostile ? test::draw_vec3(r) : test::draw_finite_vec3(r));
      w.push_back(hostile ? test::draw(r) : r.uniform(0, 2));
    }
    const unsigned g = r.below(4);
    hyperbinom p = fitted(points, g);
    ASSERT_TRUE(same(p, plain::fit_surface(points, {}, g))) << "round " << round;
    if (n == 0) continue;
    hyperbinom q = fitted(points, w, g);
    ASSERT_TRUE(same(q, plain::fit_surface(points, w, g))) << "round " << round;
  }
}

// Several blocks of points and the rest of one, with coordinates that are 0, of few bits, or too large for quick
// chains.
TEST(SurfaceFit, ManyPointsAgreeWithThePlainForm) {
  test::random_source r(105);
  const auto coordinate = [&r](bool wide) {
    if (r.below(20) == 0) return r.below(2) ? 0.0 : -0.0;
    if (r.below(4) == 0) return (static_cast<double>(r.below(65)) - 32) / 8;
    return wide && r.below(50) == 0 ? r.uniform() * 0x1p200 : r.uniform(-3, 3);
  };
  for (int round = 0; round < 40; ++round) {
    const unsigned g = 1 + r.below(6);
    const bool wide = r.below(4) == 0;
    const std::size_t n = g < 3 ? r.below(1300) : g < 5 ? r.below(300) : r.below(140);
    std::vector<vec3> points;
    std::vector<double> w;
    for (std::size_t i = 0; i < n; ++i) {
      points.push_back({coordinate(wide), coordinate(wide), r.uniform()});
      w.push_back(r.below(10) == 0 ? 0.0 : r.uniform(-2, 2));
    }
    if (n == 0) continue;
    if (r.below(5) == 0) points[r.below(static_cast<unsigned>(n))] = test::draw_vec3(r);
    hyperbinom p = fitted(points, g);
    ASSERT_TRUE(same(p, plain::fit_surface(points, {}, g))) << n << " points, grade " << g;
    hyperbinom q = fitted(points, w, g);
    ASSERT_TRUE(same(q, plain::fit_surface(points, w, g))) << n << " points with weights, grade " << g;
  }
}

TEST(SurfaceFit, NanAndInfinitySums) {
  const std::vector<vec3> points{{nan, 1, 2}, {1, inf, 3}, {2, 2, -inf}, {3, 1, 1}};
  hyperbinom p = fitted(points, 2);
  EXPECT_TRUE(same(p, plain::fit_surface(points, {}, 2)));
}

}  // namespace
