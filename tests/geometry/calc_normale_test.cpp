// The estimation of a normal from directions along it and across it.
#include <gtest/gtest.h>
#include <tessarn/geometry.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "plain/plane_fit.h"
#include "support/pairs.h"
#include "support/time_limit.h"

namespace {

using plain::vec3;
using test::same;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

std::vector<vector3d> lib_points(const std::vector<vec3>& points) {
  std::vector<vector3d> v;
  for (const vec3& p : points) v.push_back(test::lib(p));
  return v;
}

vector3d estimated(const std::vector<vec3>& par, const std::vector<vec3>& perp) {
  std::vector<vector3d> a = lib_points(par), b = lib_points(perp);
  vector3d n(7, 7, 7);
  vector3d* pa = a.empty() ? nullptr : a.data();
  // One empty array must not be null, or there is nothing to estimate from.
  vector3d unused;
  vector3d* pb = b.empty() ? (pa ? nullptr : &unused) : b.data();
  EXPECT_TRUE(WITHIN(
      60, plane::CalcNormale(n, pa, static_cast<tessarn::ulong>(a.size()), pb, static_cast<tessarn::ulong>(b.size()))));
  return n;
}

TEST(CalcNormale, AlongOneDirection) { EXPECT_TRUE(same(estimated({{0, 0, 1}}, {}), vec3{0, 0, 1})); }

TEST(CalcNormale, TwoNullArrays) {
  vector3d n(7, 8, 9);
  EXPECT_FALSE(plane::CalcNormale(n, nullptr, 0, nullptr, 0));
  EXPECT_FALSE(plane::CalcNormale(n, nullptr, 3, nullptr, 4));
  EXPECT_TRUE(same(n, vec3{7, 8, 9}));
}

TEST(CalcNormale, ANullArrayOrAZeroCountAddsNothing) {
  vector3d n, m, up(0, 0, 1), side(1, 0, 0);
  EXPECT_TRUE(plane::CalcNormale(n, &up, 1, nullptr, 5));
  EXPECT_TRUE(same(n, vec3{0, 0, 1}));
  EXPECT_TRUE(plane::CalcNormale(n, nullptr, 5, &side, 1));
  EXPECT_TRUE(plane::CalcNormale(m, &up, 0, &side, 1));
  EXPECT_TRUE(same(m, plain::calc_normale({}, {{1, 0, 0}})));
  EXPECT_TRUE(n == m);
  EXPECT_TRUE(plane::CalcNormale(n, &up, 0, &side, 0));
  EXPECT_TRUE(same(n, plain::calc_normale({}, {})));
}

TEST(CalcNormale, HorizontalNormalsComeFromTheSecondSearch) {
  const vec3 cases[] = {{1, 0, 0}, {0, 1, 0}, {0.8, 0.6, 0}, {0.6, 0.8, 0}, {0.9, 0.1, 0.1}};
  for (const vec3& c : cases) {
    const vec3 d = plain::unit(c);
    vector3d n = estimated({d}, {});
    EXPECT_TRUE(same(n, plain::calc_normale({d}, {})));
    EXPECT_NEAR(n * test::lib(d), 1, 1e-9);
    EXPECT_NEAR(n.lenld(), 1, 1e-12);
  }
}

TEST(CalcNormale, AcrossTwoDirections) {
  test::random_source r(141);
  for (int i = 0; i < 100; ++i) {
    const vec3 a = plain::unit({r.uniform(), r.uniform(), r.uniform()});
    const vec3 b = plain::unit({r.uniform(), r.uniform(), r.uniform()});
    vector3d c = test::lib(a).cross(test::lib(b));
    if (c.lenld() < 0.3) continue;
    vector3d n = estimated({}, {a, b});
    ASSERT_NEAR(std::fabs(n * c) / c.lenld(), 1, 1e-6);
  }
}

TEST(CalcNormale, AgreesWithThePlainForm) {
  test::random_source r(142);
  for (int round = 0; round < 1200; ++round) {
    const unsigned kind = r.below(3);
    auto draw = [&](std::size_t n) {
      std::vector<vec3> v;
      for (std::size_t i = 0; i < n; ++i) {
        if (kind == 0) {
          v.push_back(test::draw_vec3(r));
        } else if (kind == 1) {
          v.push_back(plain::unit({r.uniform(), r.uniform(), r.uniform()}));
        } else {
          v.push_back({r.below(3) - 1.0, r.below(3) - 1.0, r.below(3) - 1.0});
        }
      }
      return v;
    };
    const std::vector<vec3> par = draw(r.below(6));
    const std::vector<vec3> perp = draw(r.below(6));
    vector3d n = estimated(par, perp);
    ASSERT_TRUE(same(n, plain::calc_normale(par, perp))) << "round " << round;
  }
}

TEST(CalcNormale, LargeSetsAgreeWithThePlainForm) {
  test::random_source r(143);
  for (int round = 0; round < 60; ++round) {
    const vec3 along = plain::unit({r.uniform(), r.uniform(), r.uniform()});
    const unsigned kind = round % 4;
    auto draw = [&](std::size_t n) {
      std::vector<vec3> v;
      for (std::size_t i = 0; i < n; ++i) {
        const vec3 d{r.uniform(), r.uniform(), r.uniform()};
        if (kind == 0)  // close to one direction
          v.push_back(plain::unit({along.x + 1e-3 * d.x, along.y + 1e-3 * d.y, along.z + 1e-3 * d.z}));
        else if (kind == 1)  // every cost the same, or nearly so
          v.push_back({r.below(3) - 1.0, r.below(3) - 1.0, r.below(3) - 1.0});
        else if (kind == 2)
          v.push_back(i == n / 2 ? test::draw_vec3(r) : d);
        else
          v.push_back({1e3 * d.x, 1e-3 * d.y, d.z});
      }
      return v;
    };
    const std::vector<vec3> par = draw(r.below(200));
    const std::vector<vec3> perp = draw(64 + r.below(200));
    ASSERT_TRUE(same(estimated(par, perp), plain::calc_normale(par, perp))) << "round " << round;
  }
}

TEST(CalcNormale, EndsForNanAndInfinity) {
  for (const double bad : {nan, inf, -inf, 1e200}) {
    EXPECT_TRUE(same(estimated({{bad, 0, 0}}, {}), plain::calc_normale({{bad, 0, 0}}, {})));
    EXPECT_TRUE(same(estimated({{bad, bad, bad}}, {}), plain::calc_normale({{bad, bad, bad}}, {})));
    EXPECT_TRUE(same(estimated({}, {{0, bad, 1}}), plain::calc_normale({}, {{0, bad, 1}})));
  }
}

}  // namespace
