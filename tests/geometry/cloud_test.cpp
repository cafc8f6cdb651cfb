// The distinct points of a cloud, and the points of it that are farthest away.
#include "geometry/cloud.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <set>
#include <vector>

#include "simd/isa.h"
#include "support/bits.h"
#include "support/instruction_set.h"
#include "support/random.h"

namespace {

using tessarn::detail::cloud;

std::vector<vector3d> distinct(const std::vector<vector3d>& points) {
  std::vector<vector3d> kept;
  for (std::size_t i = 0; i < points.size(); ++i) {
    bool later = false;
    for (std::size_t j = i + 1; j < points.size() && !later; ++j)
      later = points[j].x == points[i].x && points[j].y == points[i].y && points[j].z == points[i].z;
    if (!later) kept.push_back(points[i]);
  }
  return kept;
}

double drawn(test::random_source& r, unsigned kind) {
  if (kind == 0) return r.hostile();
  if (kind == 1) return r.uniform();
  if (kind == 2) return r.below(2) ? -0.0 : static_cast<double>(r.below(5));
  return 0.25 * r.below(12);
}

std::vector<vector3d> drawn_points(test::random_source& r) {
  std::vector<vector3d> points;
  const unsigned kind = r.below(4), n = 3 + r.below(r.below(2) ? 40 : 700);
  for (unsigned i = 0; i < n; ++i) {
    if (i > 0 && r.below(8) == 0) {
      points.push_back(points[r.below(i)]);
    } else {
      const double x = drawn(r, kind), y = drawn(r, kind);
      points.emplace_back(x, y, drawn(r, kind));
    }
  }
  return points;
}

void expect_point(const vector3d& a, const vector3d& b) {
  EXPECT_BITS(a.x, b.x);
  EXPECT_BITS(a.y, b.y);
  EXPECT_BITS(a.z, b.z);
}

TEST(Cloud, KeepsTheLastOfEqualPoints) {
  test::random_source r(91);
  for (int round = 0; round < 400; ++round) {
    std::vector<vector3d> points = drawn_points(r);
    const cloud c(points.data(), static_cast<tessarn::ulong>(points.size()));
    const std::vector<vector3d> kept = distinct(points);
    ASSERT_EQ(c.size(), kept.size());
    for (std::size_t i = 0; i < kept.size(); ++i) expect_point(c.point(i), kept[i]);
    ASSERT_FALSE(HasFailure()) << "round " << round;
  }
}

// The first of the farthest ones, strictly farther than the start; distances that differ in the squares only are equal.
TEST(Cloud, CentroidOfTheDistinctPointsInTheirOrder) {
  test::random_source r(92);
  for (int round = 0; round < 400; ++round) {
    const std::vector<vector3d> points = drawn_points(r);
    vector3d sum;
    const std::vector<vector3d> kept = distinct(points);
    for (const vector3d& p : kept) sum += p;
    expect_point(cloud(points.data(), static_cast<tessarn::ulong>(points.size())).centroid(),
                 sum / static_cast<double>(kept.size()));
  }
}

TEST(Cloud, FarthestPoints) {
  test::random_source r(92);
  for (int round = 0; round < 600; ++round) {
    std::vector<vector3d> points = drawn_points(r);
    if (r.below(3) == 0)  // nearly the same distance from the origin
      for (vector3d& p : points)
        p = vector3d(1 + std::ldexp(1.0 * r.below(1000), -52), r.below(2) ? 1 : -1, 1e-9 * r.below(3));
    const cloud c(points.data(), static_cast<tessarn::ulong>(points.size()));
    const vector3d a = r.below(2) ? vector3d() : points[r.below(static_cast<unsigned>(points.size()))];
    const vector3d b = points[r.below(static_cast<unsigned>(points.size()))];
    vector3d one = a, two = a;
    double far_one = 0, far_two = (a - a).lenld() + (a - b).lenld();
    for (std::size_t i = 0; i < c.size(); ++i) {
      const vector3d p = c.point(i);
      if ((p - a).lenld() > far_one) one = p, far_one = (p - a).lenld();
      const double sum = (p - a).lenld() + (p - b).lenld();
      if (sum > far_two) two = p, far_two = sum;
    }
    expect_point(c.farthest_from(a), one);
    expect_point(c.farthest_from(a, b), two);
    ASSERT_FALSE(HasFailure()) << "round " << round;
  }
}

// So many points that whole blocks of them are left out of the searches.
std::vector<vector3d> many_points(test::random_source& r, unsigned kind) {
  const unsigned n = 4096 + r.below(9000);
  std::vector<vector3d> points;
  for (unsigned i = 0; i < n; ++i) {
    const double angle = 6.2831853 * r.uniform(), along = 1.0 * i / n, x = r.uniform(), y = r.uniform();
    switch (kind) {
      case 0: points.emplace_back(x, y, 0.1 * x); break;                                              // a square
      case 1: points.emplace_back(std::cos(angle), std::sin(angle), 0.01 * x); break;                 // a ring
      case 2: points.emplace_back(100 * along, x, 1e6); break;                                        // row by row
      case 3: points.emplace_back(r.below(3), r.below(3), std::ldexp(1.0 * r.below(3), -50)); break;  // ties
      case 4: points.emplace_back(x * x * x * 1e-3, y, r.below(900) ? 0.0 : 50 * x); break;           // a few outside
      case 5: points.emplace_back(std::ldexp(x, -400), std::ldexp(y, -500), 0); break;                // squares vanish
      case 6: points.emplace_back(std::ldexp(x, 600), std::ldexp(y, 500), 1); break;                  // and overflow
      default: points.emplace_back(r.below(2000) ? x : r.hostile(), y, r.below(2000) ? y : r.hostile());
    }
  }
  return points;
}

TEST(Cloud, FarthestOfManyPoints) {
  test::random_source r(94);
  for (unsigned round = 0; round < 72; ++round) {
    test::use_set_of_round(static_cast<int>(round / 8));
    const std::vector<vector3d> points = many_points(r, round % 8);
    const cloud c(points.data(), static_cast<tessarn::ulong>(points.size()));
    const auto any = [&] { return points[r.below(static_cast<unsigned>(points.size()))]; };
    for (const vector3d& a : {c.centroid(), any(), any() * 1.5, vector3d(1e9, 0, 0), c.farthest_from(c.centroid())}) {
      const vector3d b = r.below(2) ? c.farthest_from(a) : any();
      vector3d one = a, two = a;
      double far_one = 0, far_two = (a - a).lenld() + (a - b).lenld();
      for (std::size_t i = 0; i < c.size(); ++i) {
        const vector3d p = c.point(i);
        const double from_a = (p - a).lenld(), sum = from_a + (p - b).lenld();
        if (from_a > far_one) one = p, far_one = from_a;
        if (sum > far_two) two = p, far_two = sum;
      }
      expect_point(c.farthest_from(a), one);
      expect_point(c.farthest_from(a, b), two);
    }
    ASSERT_FALSE(HasFailure()) << "round " << round;
  }
  test::use_set_of_run();
}

TEST(Cloud, KeepsTheLastOfEqualPointsAmongMany) {
  test::random_source r(95);
  for (unsigned round = 0; round < 24; ++round) {
    test::use_set_of_round(static_cast<int>(round));
    std::vector<vector3d> points = many_points(r, round % 2 ? 0 : 7);
    std::vector<bool> repeated(points.size());
    for (unsigned k = r.below(round % 4 == 0 ? 2 : 600); k > 0; --k) {
      const unsigned first = r.below(static_cast<unsigned>(points.size() / 2));
      points[points.size() / 2 + r.below(static_cast<unsigned>(points.size() / 2))] = points[first];
    }
    std::set<std::array<double, 3>> later;
    for (std::size_t i = points.size(); i-- > 0;) {
      const vector3d& p = points[i];
      const bool number = p.x == p.x && p.y == p.y && p.z == p.z;
      repeated[i] = number && !later.insert({p.x + 0.0, p.y + 0.0, p.z + 0.0}).second;  // -0.0 becomes 0.0
    }
    const cloud c(points.data(), static_cast<tessarn::ulong>(points.size()));
    std::size_t kept = 0;
    for (std::size_t i = 0; i < points.size(); ++i)
      if (!repeated[i] && kept < c.size()) expect_point(c.point(kept++), points[i]);
    ASSERT_EQ(kept, c.size());
    ASSERT_EQ(static_cast<std::ptrdiff_t>(kept), std::count(repeated.begin(), repeated.end(), false));
    ASSERT_FALSE(HasFailure()) << "round " << round;
  }
  test::use_set_of_run();
}

TEST(Cloud, FindsEachPairOfEqualPointsAmongFew) {
  test::random_source r(96);
  for (unsigned n = 2; n < 40; ++n) {
    test::use_set_of_round(static_cast<int>(n));
    std::vector<vector3d> points;
    for (unsigned k = 0; k < n; ++k) points.emplace_back(k + r.uniform(), r.uniform(), r.uniform());
    EXPECT_EQ(cloud(points.data(), n).size(), n);
    for (unsigned i = 0; i < n; ++i)
      for (unsigned j = 0; j < i; ++j) {
        const vector3d own = points[i];
        points[i] = points[j];
        EXPECT_EQ(cloud(points.data(), n).size(), n - 1) << n << ": " << i << ", " << j;
        points[i] = own;
      }
  }
  test::use_set_of_run();
}

}  // namespace
