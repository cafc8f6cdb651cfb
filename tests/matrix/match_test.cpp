// Matching of point sets: the rigid match against Eigen's umeyama, the affine fit, the transform.
#include <tessarn/vectors.h>

#include <Eigen/Geometry>

#include "matrix_support.h"
#include "plain/match.h"

namespace {

using namespace test;
using points = std::vector<plain::point3>;

std::vector<vector3d> to_library(const points& p) {
  std::vector<vector3d> v;
  for (const plain::point3& q : p) v.emplace_back(q.x, q.y, q.z);
  return v;
}

bool calc_match(real_square& m, const points& a, const points& b) {
  std::vector<vector3d> va = to_library(a), vb = to_library(b);
  return m.calc_match(va.data(), vb.data(), ul(va.size()));
}

void calc_transform(real_square& m, const points& a, const points& b) {
  std::vector<vector3d> va = to_library(a), vb = to_library(b);
  m.calc_transform(va.data(), vb.data(), ul(va.size()));
}

points random_points(u32 n, random_source& random, double size = 5.0) {
  points p(n);
  for (auto& q : p) {
    q = {random.uniform(-size, size), random.uniform(-size, size), random.uniform(-size, size)};
  }
  return p;
}

Eigen::Matrix3d random_rotation(random_source& random) {
  const Eigen::Quaterniond q(random.normal(), random.normal(), random.normal(), random.normal());
  return q.normalized().toRotationMatrix();
}

points moved(const points& a, const Eigen::Matrix3d& r, const Eigen::Vector3d& t) {
  points b;
  for (const auto& p : a) {
    const Eigen::Vector3d q = r * Eigen::Vector3d(p.x, p.y, p.z) + t;
    b.push_back({q.x(), q.y(), q.z()});
  }
  return b;
}

Eigen::Matrix3Xd columns_of(const points& p) {
  Eigen::Matrix3Xd m(3, static_cast<Eigen::Index>(p.size()));
  for (std::size_t i = 0; i < p.size(); ++i) {
    m.col(static_cast<Eigen::Index>(i)) << p[i].x, p[i].y, p[i].z;
  }
  return m;
}

Eigen::Matrix3d rotation_of(real_square& m) {
  Eigen::Matrix3d r;
  for (u32 y = 0; y < 3; ++y) {
    for (u32 x = 0; x < 3; ++x) r(y, x) = m.get(x, y);
  }
  return r;
}

Eigen::Vector3d translation_of(real_square& m) { return {m.get(3, 0), m.get(3, 1), m.get(3, 2)}; }

void expect_last_row(real_square& m) {
  ASSERT_EQ(m.getSize(), 4u);
  for (u32 x = 0; x < 3; ++x) EXPECT_BITS(m.get(x, 3), 0.0);
  EXPECT_BITS(m.get(3, 3), 1.0);
}

void expect_rotation(real_square& m, double tolerance = 1e-13) {
  const Eigen::Matrix3d r = rotation_of(m);
  EXPECT_LT((r * r.transpose() - Eigen::Matrix3d::Identity()).norm(), tolerance);
  EXPECT_NEAR(r.determinant(), 1.0, tolerance);
}

void expect_near(real_square& m, std::initializer_list<double> want, double tolerance = 1e-13) {
  ASSERT_EQ(m.getSize(), 4u);
  u32 i = 0;
  for (double v : want) {
    EXPECT_NEAR(m.get(i % 4, i / 4), v, tolerance) << place(i, 4);
    ++i;
  }
}

const points corner = {{0, 0, 0}, {1, 0, 0}, {0, 2, 0}, {0, 0, 3}, {1, 1, 1}};

// ---------------------------------------------------------------- the rigid match

TEST(CalcMatch, RefusesNullArraysAndFewPoints) {
  real_square m = square(2, {1, 2, 3, 4});
  std::vector<vector3d> v = to_library(corner);
  vector3d* none = nullptr;
  EXPECT_FALSE(m.calc_match(v.data(), v.data(), 2));
  EXPECT_FALSE(m.calc_match(v.data(), v.data(), 0));
  EXPECT_FALSE(m.calc_match(none, v.data(), 5));
  EXPECT_FALSE(m.calc_match(v.data(), none, 5));
  EXPECT_FALSE(m.calc_match(nullptr, nullptr, 5));
  plain::square want(2);
  want.data = {1, 2, 3, 4};
  EXPECT_TRUE(same(m, want));
}

TEST(CalcMatch, OntoItselfIsTheIdentity) {
  real_square m = square(2, {1, 2, 3, 4});
  std::vector<vector3d> v = to_library(corner);
  ASSERT_TRUE(m.calc_match(v.data(), v.data(), 5));
  expect_near(m, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
  expect_last_row(m);
  ASSERT_TRUE(m.calc_match(v.data(), v.data(), 3)) << "three points are enough";
  expect_near(m, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
}

TEST(CalcMatch, ShiftIsFoundAndTransformAppliesIt) {
  real_square m;
  ASSERT_TRUE(calc_match(m, corner, moved(corner, Eigen::Matrix3d::Identity(), {1, 2, 3})));
  expect_near(m, {1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1});
  vector3d origin;
  vector3d out(9, 9, 9);
  m.transform(origin, out);
  EXPECT_NEAR(out.x, 1.0, 1e-14);
  EXPECT_NEAR(out.y, 2.0, 1e-14);
  EXPECT_NEAR(out.z, 3.0, 1e-14);
}

// The rotation carries b onto a: a quarter turn from a to b is stored as the opposite one.
TEST(CalcMatch, QuarterTurnIsStoredTransposed) {
  Eigen::Matrix3d quarter;
  quarter << 0, -1, 0, 1, 0, 0, 0, 0, 1;
  real_square m;
  ASSERT_TRUE(calc_match(m, corner, moved(corner, quarter, {0, 0, 0})));
  EXPECT_LT((rotation_of(m) - quarter.transpose()).norm(), 1e-13);
  expect_last_row(m);
}

TEST(CalcMatch, HalfTurnReproducesTheSecondSet) {
  random_source random(141);
  const Eigen::Matrix3d half = Eigen::Vector3d(-1, -1, 1).asDiagonal();
  const points a = random_points(20, random);
  const points b = moved(a, half, {4, -5, 6});
  real_square m;
  ASSERT_TRUE(calc_match(m, a, b));
  for (std::size_t i = 0; i < a.size(); ++i) {
    vector3d in(a[i].x, a[i].y, a[i].z), out;
    m.transform(in, out);
    EXPECT_NEAR(out.x, b[i].x, 1e-12);
    EXPECT_NEAR(out.y, b[i].y, 1e-12);
    EXPECT_NEAR(out.z, b[i].z, 1e-12);
  }
}

TEST(CalcMatch, ExactMotionsAgainstUmeyama) {
  random_source random(142);
  for (u32 k = 0; k < 400; ++k) {
    const points a = random_points(4 + random.below(40), random);
    const Eigen::Matrix3d q = random_rotation(random);
    const Eigen::Vector3d c(random.uniform(-9, 9), random.uniform(-9, 9), random.uniform(-9, 9));
    const points b = moved(a, q, c);
    real_square m;
    ASSERT_TRUE(calc_match(m, a, b));
    expect_rotation(m);
    expect_last_row(m);
    ASSERT_LT((rotation_of(m) - q.transpose()).norm(), 1e-11);
    const Eigen::Matrix4d truth = Eigen::umeyama(columns_of(b), columns_of(a), false);
    ASSERT_LT((rotation_of(m) - truth.topLeftCorner<3, 3>()).norm(), 1e-11);
    const Eigen::Vector3d t = columns_of(b).rowwise().mean() - rotation_of(m) * columns_of(a).rowwise().mean();
    ASSERT_LT((translation_of(m) - t).norm(), 1e-12);
    // The motion from a to b: the transposed rotation, and the translation that goes with it.
    const Eigen::Vector3d forward =
        columns_of(b).rowwise().mean() - rotation_of(m).transpose() * columns_of(a).rowwise().mean();
    ASSERT_LT((forward - c).norm(), 1e-10);
  }
}

TEST(CalcMatch, NoisySetsAgainstUmeyama) {
  random_source random(143);
  for (u32 k = 0; k < 200; ++k) {
    const points a = random_points(5 + random.below(30), random);
    points b = moved(a, random_rotation(random), {1, 2, 3});
    for (auto& p : b) p = {p.x + 0.1 * random.normal(), p.y + 0.1 * random.normal(), p.z};
    real_square m;
    ASSERT_TRUE(calc_match(m, a, b));
    expect_rotation(m);
    const Eigen::Matrix4d truth = Eigen::umeyama(columns_of(b), columns_of(a), false);
    ASSERT_LT((rotation_of(m) - truth.topLeftCorner<3, 3>()).norm(), 1e-10);
  }
}

TEST(CalcMatch, MirrorImagesNeverGiveAReflection) {
  random_source random(144);
  for (u32 k = 0; k < 200; ++k) {
    const points a = random_points(4 + random.below(20), random);
    Eigen::Matrix3d mirror = Eigen::Vector3d(1, 1, -1).asDiagonal();
    if (k % 2) mirror = random_rotation(random) * mirror;
    const points b = moved(a, mirror, {1, 0, 2});
    real_square m;
    if (!calc_match(m, a, b)) {
      EXPECT_EQ(m.getSize(), 0u);
      continue;
    }
    expect_rotation(m);
    const Eigen::Matrix4d truth = Eigen::umeyama(columns_of(b), columns_of(a), false);
    ASSERT_LT((rotation_of(m) - truth.topLeftCorner<3, 3>()).norm(), 1e-9);
  }
}

TEST(CalcMatch, PlanarSets) {
  random_source random(145);
  for (u32 k = 0; k < 200; ++k) {
    points a = random_points(3 + random.below(20), random);
    for (auto& p : a) p.z = 0.5 * p.x - 0.25 * p.y + 1.0;
    const Eigen::Matrix3d q = random_rotation(random);
    real_square m;
    ASSERT_TRUE(calc_match(m, a, moved(a, q, {3, 2, 1})));
    expect_rotation(m);
    ASSERT_LT((rotation_of(m) - q.transpose()).norm(), 1e-9) << k;
  }
}

// On a line the turn about the line is free; what comes out is a rotation that keeps the line.
TEST(CalcMatch, CollinearSets) {
  random_source random(146);
  for (u32 k = 0; k < 100; ++k) {
    const Eigen::Vector3d d = Eigen::Vector3d(random.normal(), random.normal(), random.normal());
    points a;
    for (u32 i = 0; i < 3 + k % 5; ++i) {
      const double t = random.uniform(-4, 4);
      a.push_back({1 + t * d.x(), 2 + t * d.y(), 3 + t * d.z()});
    }
    const Eigen::Matrix3d q = random_rotation(random);
    real_square m;
    if (!calc_match(m, a, moved(a, q, {1, 1, 1}))) continue;
    expect_rotation(m, 1e-12);
    EXPECT_LT((rotation_of(m) * (q * d) - d).norm(), 1e-9 * (1.0 + d.norm()));
  }
}

TEST(CalcMatch, RepeatedPoints) {
  const points a(5, {1, 2, 3});
  const points b(5, {4, 4, 4});
  real_square m;
  ASSERT_TRUE(calc_match(m, a, b));
  expect_near(m, {1, 0, 0, 3, 0, 1, 0, 2, 0, 0, 1, 1, 0, 0, 0, 1});
  points twice = corner;
  twice.insert(twice.end(), corner.begin(), corner.end());
  ASSERT_TRUE(calc_match(m, twice, moved(twice, Eigen::Matrix3d::Identity(), {1, 2, 3})));
  expect_near(m, {1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1});
}

// The mean of n equal points by the reciprocal of n can miss them by an ulp. With points x in a and
// -x in b, what is left is the covariance diag(-tiny, 0, 0), and with it a half turn; a true
// division would leave nothing and give the identity.
TEST(CalcMatch, CentroidIsAProductWithTheReciprocal) {
  random_source random(150);
  u32 shows = 0;
  for (u32 k = 0; k < 1000; ++k) {
    const u32 n = 3 + random.below(10);
    const double x = random.uniform(1.0, 2.0);
    double sum = 0.0;
    for (u32 i = 0; i < n; ++i) sum += x;
    if (sum * (1.0 / n) == x || sum / n != x) continue;
    real_square m;
    ASSERT_TRUE(calc_match(m, points(n, {x, 0, 0}), points(n, {-x, 0, 0})));
    const Eigen::Matrix3d half = Eigen::Vector3d(-1, 1, -1).asDiagonal();
    ASSERT_EQ((rotation_of(m) - half).norm(), 0.0) << n;
    ++shows;
  }
  EXPECT_GT(shows, 0u);
}

// A NaN coordinate counts as 0.0.
TEST(CalcMatch, NanCoordinatesCountAsZero) {
  random_source random(147);
  for (u32 k = 0; k < 50; ++k) {
    points a = random_points(8, random), b = random_points(8, random);
    points zero_a = a, zero_b = b;
    const u32 i = random.below(8), j = random.below(8);
    a[i].y = quiet_nan;
    zero_a[i].y = 0.0;
    b[j].x = -quiet_nan;
    zero_b[j].x = 0.0;
    real_square m, want;
    ASSERT_EQ(calc_match(m, a, b), calc_match(want, zero_a, zero_b));
    ASSERT_EQ(m.getSize(), want.getSize());
    for (u32 e = 0; e < m.getSize() * m.getSize(); ++e) EXPECT_BITS(m.getData()[e], want.getData()[e]);
  }
}

TEST(CalcMatch, InfinitePointsEndInFailureAndLeaveTheMatrix) {
  points a = corner;
  a[2].x = inf;
  real_square m = square(1, {5});
  const bool found = calc_match(m, a, corner);
  plain::square expected(1);
  ASSERT_EQ(found, plain::calc_match(expected, a.data(), corner.data(), 5));
  EXPECT_FALSE(found);
  EXPECT_BITS(m.get(0, 0), 5.0);
}

TEST(CalcMatch, AgreesWithThePlainForm) {
  random_source random(148);
  for (u32 k = 0; k < 300; ++k) {
    const points a = random_points(4 + random.below(30), random);
    const points b = moved(a, random_rotation(random), {1, -1, 2});
    plain::square want;
    real_square m;
    ASSERT_EQ(calc_match(m, a, b), plain::calc_match(want, a.data(), b.data(), static_cast<u32>(a.size())));
    for (u32 e = 0; e < 16; ++e) ASSERT_NEAR(m.getData()[e], want.data[e], 1e-11);
  }
}

TEST(CalcMatch, EveryBuildGivesTheSameBits) {
  random_source random(155);
  for (u32 k = 0; k < 200; ++k) {
    points a = random_points(3 + random.below(30), random);
    if (k % 3 == 0)
      for (auto& p : a) p.z = 2.0;
    points b = moved(a, random_rotation(random), {1, -1, 2});
    if (k % 4 == 0) b[random.below(3)].y = random.hostile();
    real_square want;
    const bool found = [&] {
      const chosen_build build(isa{});
      return calc_match(want, a, b);
    }();
    for (int set = 1; set < tessarn::detail::set_count; ++set) {
      const chosen_build build(static_cast<isa>(set));
      real_square m;
      ASSERT_EQ(calc_match(m, a, b), found);
      for (u32 e = 0; found && e < 16; ++e) ASSERT_BITS(m.getData()[e], want.getData()[e]);
    }
  }
}

TEST(CalcMatch, HostilePointsEnd) {
  random_source random(149);
  for (u32 k = 0; k < 500; ++k) {
    points a(3 + random.below(6)), b(a.size());
    for (auto& p : a) p = {random.hostile(), random.hostile(), random.hostile()};
    for (auto& p : b) p = {random.hostile(), random.hostile(), random.hostile()};
    real_square m = square(1, {5});
    if (calc_match(m, a, b)) {
      expect_last_row(m);
      for (u32 e = 0; e < 16; ++e) EXPECT_FALSE(std::isnan(m.getData()[e]));
    } else {
      ASSERT_EQ(m.getSize(), 1u);
      EXPECT_BITS(m.get(0, 0), 5.0);
    }
  }
}

// ---------------------------------------------------------------- the affine fit

TEST(CalcTransform, ReproducesAffineMaps) {
  random_source random(151);
  for (u32 k = 0; k < 100; ++k) {
    const points a = random_points(4 + random.below(20) + (k > 0), random);
    Eigen::Matrix3d l;
    for (int i = 0; i < 9; ++i) l(i / 3, i % 3) = random.uniform(-2, 2);
    const Eigen::Vector3d t(random.uniform(-9, 9), random.uniform(-9, 9), random.uniform(-9, 9));
    Eigen::Matrix4Xd h(4, static_cast<Eigen::Index>(a.size()));
    h << columns_of(a), Eigen::RowVectorXd::Ones(static_cast<Eigen::Index>(a.size()));
    const Eigen::VectorXd s = h.jacobiSvd().singularValues();
    const double condition = s(0) / s(3);
    if (condition > 1e4) continue;
    real_square m = square(1, {3});
    calc_transform(m, a, moved(a, l, t));
    ASSERT_EQ(m.getSize(), 4u);
    const double tolerance = 1e-14 * condition * condition + 1e-13;
    EXPECT_LT((rotation_of(m) - l).norm(), 100 * tolerance);
    EXPECT_LT((translation_of(m) - t).norm(), 100 * tolerance);
    for (u32 x = 0; x < 4; ++x) EXPECT_NEAR(m.get(x, 3), x == 3 ? 1.0 : 0.0, 100 * tolerance);
  }
}

TEST_EVERY_BUILD(CalcTransform, MatchesThePlainForm) {
  random_source random(152);
  for (u32 n = 0; n <= 40; ++n) {
    for (entries kind : all_entries) {
      points a(n), b(n);
      for (auto& p : a) p = {draw(random, kind), draw(random, kind), draw(random, kind)};
      for (auto& p : b) p = {draw(random, kind), draw(random, kind), draw(random, kind)};
      if (kind == entries::proportional) {
        for (auto& p : a) p.z = 2.0 * p.x;
      }
      real_square m;
      plain::square want;
      calc_transform(m, a, b);
      plain::calc_transform(want, a.data(), b.data(), n);
      ASSERT_TRUE(same(m, want)) << describe(n, kind);
    }
  }
}

TEST(CalcTransform, TooFewPointsLeaveTheRightHandSides) {
  real_square m;
  calc_transform(m, {{1, 2, 3}}, {{4, 5, 6}});
  plain::square want(4);
  want.data = {4, 8, 12, 4, 5, 10, 15, 5, 6, 12, 18, 6, 1, 2, 3, 1};
  EXPECT_TRUE(same(m, want));
  m.calc_transform(static_cast<vector3d*>(nullptr), static_cast<vector3d*>(nullptr), 0);
  EXPECT_TRUE(same(m, plain::square(4)));
}

// ---------------------------------------------------------------- application to a point

TEST(Transform, ActsOnlyForSizeFour) {
  real_square m = square(3, {1, 0, 0, 0, 1, 0, 0, 0, 1});
  vector3d in(1, 2, 3), out(7, 8, 9);
  m.transform(in, out);
  EXPECT_BITS(out.x, 7.0);
  EXPECT_BITS(out.y, 8.0);
  EXPECT_BITS(out.z, 9.0);
  real_square none;
  none.transform(in, out);
  EXPECT_BITS(out.x, 7.0);
  none.transform(&in, &out, 1);
  EXPECT_BITS(out.x, 7.0);
}

TEST(Transform, IgnoresTheLastRow) {
  real_square m = square(4, {1, 0, 0, 10, 0, 2, 0, 20, 0, 0, 3, 30, 7, 7, 7, 7});
  vector3d in(1, 2, 3), out;
  m.transform(in, out);
  EXPECT_BITS(out.x, 11.0);
  EXPECT_BITS(out.y, 24.0);
  EXPECT_BITS(out.z, 39.0);
}

TEST_EVERY_BUILD(Transform, MatchesThePlainForm) {
  random_source random(153);
  for (entries kind : all_entries) {
    for (u32 k = 0; k < 200; ++k) {
      const plain::square p = random_square(4, random, kind);
      const real_square m = test::to_library(p);
      points in(k % 21), want(in.size());
      for (auto& q : in) q = {draw(random, kind), draw(random, kind), draw(random, kind)};
      std::vector<vector3d> v = to_library(in), out(in.size());
      for (std::size_t i = 0; i < in.size(); ++i) {
        plain::transform(p, in[i], want[i]);
        vector3d one;
        m.transform(v[i], one);
        ASSERT_BITS(one.x, want[i].x);
        ASSERT_BITS(one.y, want[i].y);
        ASSERT_BITS(one.z, want[i].z);
        vector3d itself(v[i]);
        m.transform(itself, itself);
        ASSERT_BITS(itself.x, want[i].x);
        ASSERT_BITS(itself.y, want[i].y);
        ASSERT_BITS(itself.z, want[i].z);
      }
      m.transform(v.data(), out.data(), ul(v.size()));
      m.transform(v.data(), v.data(), ul(v.size()));
      for (std::size_t i = 0; i < in.size(); ++i) {
        ASSERT_BITS(out[i].x, want[i].x);
        ASSERT_BITS(out[i].y, want[i].y);
        ASSERT_BITS(out[i].z, want[i].z);
        ASSERT_BITS(v[i].x, want[i].x);
        ASSERT_BITS(v[i].y, want[i].y);
        ASSERT_BITS(v[i].z, want[i].z);
      }
    }
  }
}

}  // namespace
