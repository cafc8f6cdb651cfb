// Exact arithmetic, exact signs, and hulls: judged by exact rationals.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "../support/random.h"
#include "analysis/expansion.h"
#include "analysis/hull.h"
#include "analysis/polytope.h"
#include "rational.h"

namespace {

using namespace tessarn::analysis;
using test::random_source;

// A coordinate of a kind: on a grid, ordinary, near 1, of the smallest and of very different sizes.
double draw(random_source& random, int kind) {
  switch (kind) {
    case 0: return static_cast<double>(random.below(4));
    case 1: return random.uniform();
    case 2: return 1 + static_cast<double>(random.below(4)) * 0x1p-52;
    case 3: return static_cast<double>(random.below(3)) * 0x1p-270;
    default: return std::ldexp(random.uniform(0.5, 1), -static_cast<int>(random.below(269)));
  }
}

lattice_point draw_point(random_source& random, int kind) {
  lattice_point p;
  for (double& c : p.c) c = draw(random, kind);
  return p;
}

#if defined(TESTS_HAVE_GMP)

using test::rational;

int rounds() {
  const char* told = std::getenv("TESSARN_ANALYSIS_ROUNDS");
  return told ? std::atoi(told) : 5000;
}

struct exact_vector {
  rational c[3];

  exact_vector(const lattice_point& to, const lattice_point& from) {
    for (int k = 0; k < 3; ++k) c[k] = rational(to.c[k]) - rational(from.c[k]);
  }
};

rational exact_minor(const exact_vector& u, const exact_vector& v, int k) {
  const int i = (k + 1) % 3, j = (k + 2) % 3;
  return u.c[i] * v.c[j] - u.c[j] * v.c[i];
}

rational exact_determinant(const exact_vector& u, const exact_vector& v, const exact_vector& w) {
  rational sum;
  for (int k = 0; k < 3; ++k) sum += exact_minor(u, v, k) * w.c[k];
  return sum;
}

bool within_part(const rational& exact, doubled found, double part) {
  return abs(exact - (rational(found.high) + rational(found.low))) <= abs(exact) * rational(part);
}

TEST(Orientation, ManySignsAreExact) {
  random_source random(1750);
  int zeros = 0;
  const int count = rounds();
  for (int i = 0; i < count && !HasFailure(); ++i) {
    const int kind = i % 5;
    lattice_point p[6];
    for (lattice_point& q : p) q = draw_point(random, kind);
    if (i % 3 == 1)  // in one plane but for rounding
      for (int k = 0; k < 3; ++k) p[5].c[k] = p[4].c[k] + (p[1].c[k] - p[0].c[k]) / 2 + (p[3].c[k] - p[2].c[k]) / 4;
    if (i % 3 == 2)  // on one line but for rounding
      for (int k = 0; k < 3; ++k) p[3].c[k] = p[2].c[k] + (p[1].c[k] - p[0].c[k]) / 2;
    if (i % 7 == 0) {  // two parallel differences that doubles do not hold
      const double parts[] = {0x1p-10, 1, -0x1p-12, 0.5};
      for (int k = 0; k < 3; ++k) {
        const double d = random.uniform();
        for (int j = 0; j < 4; ++j) p[j].c[k] = d * parts[j];
      }
    }
    for (lattice_point& q : p)
      for (double& c : q.c) c = std::fabs(c) < 0x1p-270 ? 0 : c;
    const difference u(p[1], p[0]), v(p[3], p[2]), w(p[5], p[4]);
    const exact_vector a(p[1], p[0]), b(p[3], p[2]), c(p[5], p[4]);
    const rational det = exact_determinant(a, b, c);
    zeros += det == 0;
    EXPECT_EQ(sign_of_determinant(u, v, w), sgn(det)) << kind;
    const estimate e = estimated_determinant(u, v, w);
    EXPECT_TRUE(abs(det - rational(e.value)) <= rational(e.error)) << kind;
    EXPECT_TRUE(within_part(det, rounded_determinant(u, v, w), 0x1p-100)) << kind;
    EXPECT_TRUE(within_part(det, determinant_for_comparison(u, v, w), 0x1p-56)) << kind;
    const direction n = rounded_cross_product(u, v);
    bool zero = true;
    for (int k = 0; k < 3; ++k) {
      const rational m = exact_minor(a, b, k);
      zero = zero && m == 0;
      EXPECT_TRUE(within_part(m, n.c[k], 0x1p-100)) << kind;
    }
    EXPECT_EQ(independent(u, v), !zero) << kind;
  }
  EXPECT_GT(zeros, count / 50);
}

// Every point lies on the inner side of every facet, or on it; every facet meets its neighbours at its edges.
void check_hull(const std::vector<lattice_point>& points, const convex_hull& hull) {
  for (std::size_t i = 0; i < hull.facets.size(); ++i) {
    const hull_facet& f = hull.facets[i];
    const auto at = [&](int k) -> const lattice_point& { return points[static_cast<std::size_t>(f.v[k])]; };
    const exact_vector u(at(1), at(0)), v(at(2), at(0));
    ASSERT_TRUE(exact_minor(u, v, 0) != 0 || exact_minor(u, v, 1) != 0 || exact_minor(u, v, 2) != 0);
    for (const lattice_point& p : points) ASSERT_TRUE(exact_determinant(u, v, exact_vector(p, at(0))) <= 0);
    for (int k = 0; k < 3; ++k) {
      const hull_facet& g = hull.facets[static_cast<std::size_t>(f.next[k])];
      int shared = 0;
      for (int j = 0; j < 3; ++j) shared += g.v[j] == f.v[(k + 1) % 3] && g.v[(j + 1) % 3] == f.v[k];
      ASSERT_EQ(shared, 1);
    }
  }
}

TEST(Hull, ManyHullsAreConvexAndClosed) {
  random_source random(1751);
  const int count = rounds() / 10;
  for (int i = 0; i < count && !HasFailure(); ++i) {
    std::vector<lattice_point> points;
    const std::size_t n = 4 + random.below(30);
    for (std::size_t k = 0; k < n; ++k) points.push_back(draw_point(random, i % 5));
    const auto less = [](const lattice_point& a, const lattice_point& b) {
      return std::lexicographical_compare(a.c, a.c + 3, b.c, b.c + 3);
    };
    const auto same = [](const lattice_point& a, const lattice_point& b) { return std::equal(a.c, a.c + 3, b.c); };
    std::sort(points.begin(), points.end(), less);
    points.erase(std::unique(points.begin(), points.end(), same), points.end());
    const convex_hull hull = hull_of(points);
    if (hull.kind != hull_kind::body) continue;
    check_hull(points, hull);
    const polytope body = polytope_of(points, hull.facets);
    EXPECT_EQ(body.corners.size() + body.faces.size(), body.edges.size() / 2 + 2);  // L. Euler
  }
}

#endif

TEST(Hull, Kinds) {
  EXPECT_EQ(hull_of({{{1, 2, 3}}}).kind, hull_kind::point);
  EXPECT_EQ(hull_of({{{0, 0, 0}}, {{1, 2, 3}}}).kind, hull_kind::line);
  EXPECT_EQ(hull_of({{{0, 0, 0}}, {{0.5, 1, 1.5}}, {{1, 2, 3}}}).kind, hull_kind::line);
  EXPECT_EQ(hull_of({{{0, 0, 0}}, {{0, 1, 0}}, {{1, 0, 0}}, {{1, 1, 0}}}).kind, hull_kind::plane);
  EXPECT_EQ(hull_of({{{0, 0, 0}}, {{0, 1, 0}}, {{1, 0, 0}}, {{1, 1, 0x1p-200}}}).kind, hull_kind::body);
  // Squares of areas that are below all doubles.
  const double d = 0x1p-270;
  EXPECT_EQ(hull_of({{{0, 0, 0}}, {{d, 0, 0}}, {{2 * d, d, 0}}, {{3 * d, 0, 0}}}).kind, hull_kind::plane);
}

// A cube of 5^3 points: its hull has 8 corners, 12 edges and 6 faces, and the points between are left out.
TEST(Hull, PointsInsideFacesAndEdgesAreLeftOut) {
  std::vector<lattice_point> cube;
  for (int i = 0; i < 125; ++i)
    cube.push_back({{static_cast<double>(i / 25), static_cast<double>(i / 5 % 5), static_cast<double>(i % 5)}});
  const polytope body = polytope_of(cube, hull_of(cube).facets);
  EXPECT_EQ(body.corners.size(), 8u);
  EXPECT_EQ(body.edges.size(), 24u);
  EXPECT_EQ(body.faces.size(), 6u);
}

// A tetrahedron with two points inside of one of its edges, which are corners of facets.
TEST(Hull, AnEdgeMayHoldCornersOfFacets) {
  const std::vector<lattice_point> points = {{{0, 0, 0}}, {{1, 0, 0}}, {{2, 0, 0}},
                                             {{3, 0, 0}}, {{0, 3, 0}}, {{0, 0, 3}}};
  std::vector<hull_facet> facets;
  for (int i = 0; i < 3; ++i) {
    facets.push_back({{i + 1, i, 4}, {0, 0, 0}});
    facets.push_back({{i, i + 1, 5}, {0, 0, 0}});
  }
  facets.push_back({{0, 5, 4}, {0, 0, 0}});
  facets.push_back({{3, 4, 5}, {0, 0, 0}});
  for (hull_facet& f : facets)
    for (int k = 0; k < 3; ++k)
      for (std::size_t g = 0; g < facets.size(); ++g)
        for (int j = 0; j < 3; ++j)
          if (facets[g].v[j] == f.v[(k + 1) % 3] && facets[g].v[(j + 1) % 3] == f.v[k]) f.next[k] = static_cast<int>(g);
  const polytope body = polytope_of(points, facets);
  ASSERT_EQ(body.corners, (std::vector<int>{0, 3, 4, 5}));
  EXPECT_EQ(body.faces.size(), 4u);
  ASSERT_EQ(body.edges.size(), 12u);
  for (int c = 0; c < 4; ++c) {
    int sum = 0;
    for (std::size_t k = 3 * static_cast<std::size_t>(c); k < 3 * static_cast<std::size_t>(c) + 3; ++k)
      sum += body.edges[k].to;
    EXPECT_EQ(sum, 6 - c);  // an edge to every other corner
  }
}

// Sums and products with terms that cancel.
TEST(Expansion, TermsCancel) {
  const expansion<2> one = exact(doubled(1, 0x1p-60)), other = exact(doubled(-1, 0x1p-61));
  const expansion<4> sum = one + other;
  EXPECT_EQ(sum.rounded().high, 0x1.8p-60);
  EXPECT_EQ((sum + -sum).sign(), 0);
  EXPECT_EQ((one * other).sign(), -1);
  EXPECT_EQ((one * exact(doubled(0.0))).sign(), 0);
}

}  // namespace
