// The motion between two sets of points: examples and each status.
#include <gtest/gtest.h>
#include <tessarn/align.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

#include "../support/random.h"

namespace {

using tessarn::align_options;
using tessarn::space_alignment;
using tessarn::status;
using test::random_source;
using cloud = std::vector<vector3d>;

constexpr double infinite = std::numeric_limits<double>::infinity();

double entry(const mat<long double>& m, int row, int column) {
  return static_cast<double>(m.getData()[static_cast<tessarn::ulong>(row) * m.getWidth() + column]);
}

const cloud corner = {{0, 0, 0}, {1, 0, 0}, {0, 2, 0}, {0, 0, 3}};

TEST(Align, CarriesAOntoB) {
  cloud b;
  for (const vector3d& p : corner) b.push_back({-p.y + 10, p.x + 20, p.z + 30});  // a quarter turn about z
  const space_alignment m = tessarn::align(corner, b);
  ASSERT_EQ(m.state, status::ok);
  const double expected[] = {0, -1, 0, 1, 0, 0, 0, 0, 1};
  for (int i = 0; i < 9; ++i) EXPECT_EQ(m.rotation.getData()[i], expected[i]) << i;
  EXPECT_EQ(m.translation, vector3d(10, 20, 30));
  EXPECT_EQ(m.scale, 1);
  EXPECT_EQ(m.root_mean_square, 0);
  EXPECT_EQ(m.points_used, 4u);
  EXPECT_EQ(m.map({1, 1, 1}), vector3d(9, 21, 31));
  EXPECT_FALSE(m.reflected);
}

TEST(Align, FindsTheScaleWhenAsked) {
  cloud b;
  for (const vector3d& p : corner) b.push_back({4 * p.z, 4 * p.x - 1, 4 * p.y});
  align_options o;
  o.scale = true;
  const space_alignment m = tessarn::align(corner, b, o);
  ASSERT_EQ(m.state, status::ok);
  EXPECT_EQ(m.scale, 4);
  EXPECT_EQ(m.translation, vector3d(0, -1, 0));
  EXPECT_EQ(m.root_mean_square, 0);
  EXPECT_EQ(entry(m.rotation, 0, 2), 1);
  EXPECT_GT(tessarn::align(corner, b).root_mean_square, 1);
}

TEST(Align, AMirrorImageOnlyWhenAsked) {
  cloud b;
  for (const vector3d& p : corner) b.push_back({p.x, p.y, -p.z});
  const space_alignment rotated = tessarn::align(corner, b);
  ASSERT_EQ(rotated.state, status::ok);
  EXPECT_FALSE(rotated.reflected);
  EXPECT_GT(rotated.root_mean_square, 0.1);
  align_options o;
  o.reflections = true;
  const space_alignment mirrored = tessarn::align(corner, b, o);
  ASSERT_EQ(mirrored.state, status::ok);
  EXPECT_TRUE(mirrored.reflected);
  EXPECT_EQ(mirrored.root_mean_square, 0);
  EXPECT_EQ(entry(mirrored.rotation, 2, 2), -1);
  EXPECT_FALSE(tessarn::align(corner, corner, o).reflected);
  const cloud flat = {{0, 0, 0}, {1, 0, 0}, {0, 2, 0}, {3, 2, 0}};  // both fit equally well
  EXPECT_FALSE(tessarn::align(flat, flat, o).reflected);
}

TEST(Align, WeightsActOnResiduals) {
  const cloud a = {{-1, 0, 0}, {1, 0, 0}, {0, -1, 0}, {0, 1, 0}, {0, 0, 5}};
  cloud b = a;
  b[4].z = 8;
  const std::vector<tessarn::real> some = {1, 1, 1, 1, 0}, twice = {2, 2, 2, 2, 2}, all = {1, 1, 1, 1, 2};
  align_options o;
  o.weights = some;
  const space_alignment without = tessarn::align(a, b, o);
  ASSERT_EQ(without.state, status::ok);
  EXPECT_EQ(without.points_used, 4u);
  EXPECT_EQ(without.points_left_out, 1u);
  EXPECT_EQ(without.root_mean_square, 0);
  EXPECT_EQ(without.distances.getData()[4], 3);  // a pair without a weight is judged, too
  EXPECT_EQ(without.largest_residual, 0);
  o.weights = twice;
  const space_alignment equal = tessarn::align(a, b, o);
  EXPECT_DOUBLE_EQ(equal.translation.z, 0.6);  // a fifth of 3
  EXPECT_DOUBLE_EQ(equal.largest_residual, 2.4);
  EXPECT_EQ(equal.largest_at, 4u);
  EXPECT_DOUBLE_EQ(equal.differences.getData()[14], 2.4);
  o.weights = all;
  EXPECT_DOUBLE_EQ(tessarn::align(a, b, o).translation.z, 1.5);  // 4 of 8 squared weights
}

TEST(Align, StatusesOneByOne) {
  const cloud none, two(corner.begin(), corner.begin() + 2), same(4, vector3d(1, 2, 3));
  EXPECT_EQ(tessarn::align(none, none).state, status::no_points);
  EXPECT_EQ(tessarn::align(corner, two).state, status::sizes_differ);
  EXPECT_EQ(tessarn::align(two, two).state, status::too_few_points);
  EXPECT_EQ(tessarn::align(corner, same).state, status::too_few_distinct);
  EXPECT_EQ(tessarn::align(same, corner).state, status::too_few_distinct);
  EXPECT_EQ(tessarn::align(same, corner).rotation.getHeight(), 0u);
  EXPECT_EQ(tessarn::align(same, corner).map({1, 2, 3}), vector3d(0, 0, 0));
  align_options o;
  std::vector<tessarn::real> weights = {1, 1, 1};
  o.weights = weights;
  EXPECT_EQ(tessarn::align(corner, corner, o).state, status::sizes_differ);
  weights = {1, 1, 1, -1};
  o.weights = weights;
  EXPECT_EQ(tessarn::align(corner, corner, o).state, status::bad_weight);
  weights = {0, 0, 0, 0};
  o.weights = weights;
  EXPECT_EQ(tessarn::align(corner, corner, o).state, status::bad_weight);
  weights = {1, 0, 0, 1};
  o.weights = weights;
  EXPECT_EQ(tessarn::align(corner, corner, o).state, status::too_few_points);
  for (const double bad : {infinite, -infinite, std::nan("")}) {
    cloud a = corner;
    a.push_back({1, 1, 1});
    cloud b = a;
    b[1].y = bad;
    EXPECT_EQ(tessarn::align(a, b).state, status::not_finite);
    EXPECT_EQ(tessarn::align(b, a).state, status::not_finite);
    weights = {1, bad, 1, 1, 1};
    o.weights = weights;
    EXPECT_EQ(tessarn::align(a, a, o).state, status::not_finite);
    align_options leave;
    leave.leave_out_not_finite = true;
    const space_alignment m = tessarn::align(a, b, leave);
    EXPECT_EQ(m.state, status::ok);
    EXPECT_EQ(m.points_used, 4u);
    EXPECT_TRUE(std::isnan(m.distances.getData()[1]) && std::isnan(m.differences.getData()[4]));
    EXPECT_EQ(m.distances.getData()[2], 0);
    for (vector3d& p : a) p.x = bad;
    EXPECT_EQ(tessarn::align(a, a, leave).state, status::no_points);
  }
}

TEST(Align, PointsOnALineAreTold) {
  random_source random(1710);
  for (int i = 0; i < 300; ++i) {
    const vector3d d(random.uniform(), random.uniform(), random.uniform());
    const double far = i % 3 == 0 ? 0 : random.uniform(-1e6, 1e6);
    cloud line, any;
    const int n = 3 + static_cast<int>(random.below(6));
    for (int k = 0; k < n; ++k) {
      const double t = random.uniform(-5, 5);
      line.push_back({far + t * d.x, far + t * d.y, t * d.z});
      any.push_back({random.uniform(), random.uniform(), random.uniform()});
    }
    EXPECT_EQ(tessarn::align(line, any).state, status::collinear) << i;
    EXPECT_EQ(tessarn::align(any, line).state, status::collinear) << i;
    const space_alignment m = tessarn::align(line, line);
    EXPECT_EQ(m.state, status::collinear) << i;
    EXPECT_EQ(m.rotation.getHeight(), 3u);
    EXPECT_LT(m.root_mean_square, 1e-9);
    EXPECT_EQ(tessarn::align(any, any).state, status::ok) << i;
    line[1].y += 1e-7;  // the digits of the coordinates tell that this is no line
    EXPECT_EQ(tessarn::align(line, line).state, status::ok) << i;
  }
}

// Exactly on a line, with coordinates that leave no room for rounding: the sums alone are rounded. The best rotation by
// the smallest angle is none.
TEST(Align, ExactLinesAreTold) {
  random_source random(1713);
  for (int i = 0; i < 200; ++i) {
    const int n = i < 5 ? 20000 : 40;  // with many points the sums are rounded more than the coordinates are
    const auto whole = [&] { return static_cast<double>(random.below(2001)) - 1000; };
    const double x = whole() + 0.5, y = whole(), z = whole();
    cloud line;
    std::vector<tessarn::real> weights;
    for (int k = 0; k < n; ++k) {
      const double t = whole();
      line.push_back({t * x, t * y, t * z});
      weights.push_back(random.uniform(0.1, 1));
    }
    align_options o;
    o.weights = weights;
    const space_alignment m = tessarn::align(line, line, o);
    EXPECT_EQ(m.state, status::collinear) << i;
    for (int k = 0; k < 9; ++k) EXPECT_NEAR(entry(m.rotation, k / 3, k % 3), k % 4 == 0 ? 1 : 0, 1e-15) << i;
  }
}

// A coordinate in which all points agree adds no rounding, however large it is.
TEST(Align, AConstantCoordinateDoesNotMatter) {
  cloud a, b;
  for (const vector3d& p : {vector3d(0, 0, 0), vector3d(0, 1, 0), vector3d(0, 0, 2), vector3d(0, 3, 5)}) {
    a.push_back({1e15, 1e-6 * p.y, 1e-6 * p.z});
    b.push_back({1e15, -1e-6 * p.z, 1e-6 * p.y});
  }
  const space_alignment m = tessarn::align(a, b);
  EXPECT_EQ(m.state, status::ok);
  EXPECT_EQ(entry(m.rotation, 2, 1), 1);
  EXPECT_LT(m.root_mean_square, 1e-20);
}

// Of all rotations that carry the line onto itself, that by the smallest angle is none at all.
TEST(Align, OfEquallyGoodRotationsTheSmallest) {
  const cloud x = {{0, 0, 0}, {1, 0, 0}, {5, 0, 0}}, y = {{0, 0, 0}, {0, 1, 0}, {0, 5, 0}};
  const space_alignment still = tessarn::align(x, x), quarter = tessarn::align(x, y);
  EXPECT_EQ(still.state, status::collinear);
  EXPECT_EQ(quarter.root_mean_square, 0);
  for (int r = 0; r < 3; ++r) EXPECT_EQ(entry(still.rotation, r, r), 1);
  EXPECT_EQ(entry(quarter.rotation, 2, 2), 1);             // about the z axis
  const cloud back = {{0, 0, 0}, {-1, 0, 0}, {-5, 0, 0}};  // half turns alone are best
  const space_alignment half = tessarn::align(x, back);
  EXPECT_EQ(entry(half.rotation, 0, 0), -1);
  EXPECT_EQ(half.root_mean_square, 0);
}

// The mirror image of a symmetric set, and sets that have nothing in common.
TEST(Align, OtherUndeterminedRotationsAreTold) {
  const cloud axes = {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
  cloud opposite;
  for (const vector3d& p : axes) opposite.push_back({-p.x, -p.y, -p.z});
  EXPECT_EQ(tessarn::align(axes, opposite).state, status::not_determined);
  EXPECT_EQ(tessarn::align(axes, axes).state, status::ok);
  // The coordinates of the turned set are rounded.
  cloud turned;
  for (const vector3d& p : opposite) turned.push_back(p.rotate(vector3d(1, 2, 3), 1));
  EXPECT_EQ(tessarn::align(axes, turned).state, status::not_determined);
  random_source random(1711);
  cloud a, b;
  for (int i = 0; i < 8; ++i) {  // every a has the opposite b twice
    const vector3d p(random.uniform(), random.uniform(), random.uniform());
    const vector3d q(random.uniform(), random.uniform(), random.uniform());
    a.insert(a.end(), {p, p});
    b.insert(b.end(), {q, {-q.x, -q.y, -q.z}});
  }
  align_options o;
  o.scale = true;
  const space_alignment nothing = tessarn::align(a, b, o);
  EXPECT_EQ(nothing.state, status::not_determined);
  EXPECT_LT(nothing.scale, 1e-15);
  EXPECT_LT(nothing.determination, 1e-15);
}

TEST(Align, TooLargeIsTold) {
  cloud large, small;
  for (const vector3d& p : corner) {
    large.push_back({p.x * 1e307, p.y * 1e307, p.z * 1e307});
    small.push_back({p.x * 1e-307, p.y * 1e-307, p.z * 1e-307});
  }
  align_options o;
  o.scale = true;
  EXPECT_EQ(tessarn::align(small, large, o).state, status::out_of_range);
  EXPECT_EQ(tessarn::align(large, small, o).state, status::out_of_range);
  EXPECT_EQ(tessarn::align(large, small).state, status::ok);
  EXPECT_EQ(tessarn::align(large, large, o).scale, 1);
  EXPECT_EQ(tessarn::align(small, small, o).scale, 1);
  EXPECT_EQ(tessarn::align(small, small).root_mean_square, 0);
  const cloud ends = {{-1.7e308, 0, 0}, {1.7e308, 0, 0}, {0, 1.7e308, 0}};
  EXPECT_EQ(tessarn::align(ends, ends).state, status::ok);
  EXPECT_EQ(tessarn::align(ends, ends).root_mean_square, 0);
  const cloud apart = {{-1.7e308, -1.7e308, 0}, {1.7e308, 1.7e308, 0}, {0, 0, 0}, {0, 0, 1.7e308}};
  EXPECT_EQ(tessarn::align(corner, apart).state, status::out_of_range);  // a distance
  cloud right, left, near(100, vector3d(0, 0, 0)), outlier;
  for (const vector3d& p : corner) {
    right.push_back(p * 1e300 + vector3d(1.7e308, 0, 0));
    left.push_back(p * 1e300 - vector3d(1.7e308, 0, 0));
  }
  EXPECT_EQ(tessarn::align(right, left).state, status::out_of_range);  // the translation
  for (int i = 0; i < 100; ++i) near[static_cast<std::size_t>(i)] = corner[static_cast<std::size_t>(i % 4)];
  outlier = near;
  outlier[0] = {1.7e308, 1.7e308, 1.7e308};
  EXPECT_EQ(tessarn::align(near, outlier).state, status::out_of_range);  // one distance, and no other number
}

// Coordinates of all sizes: an answer comes, with a rotation in it where the status says so.
TEST(Align, AllFiniteNumbers) {
  random_source random(1712);
  int ok = 0;
  for (int i = 0; i < 5000; ++i) {
    cloud a, b;
    const int n = 3 + static_cast<int>(random.below(5));
    for (int k = 0; k < 2 * n; ++k) {
      const double x = random.hostile_finite(), y = random.hostile_finite();
      (k < n ? a : b).push_back({x, y, random.hostile_finite()});
    }
    align_options o;
    o.scale = i % 2 == 1;
    const space_alignment m = tessarn::align(a, b, o);
    const bool moves = m.state == status::ok || m.state == status::collinear || m.state == status::not_determined;
    ASSERT_EQ(m.rotation.getHeight(), moves ? 3u : 0u) << i;
    if (!moves) continue;
    ++ok;
    for (int r = 0; r < 3; ++r) {
      double square = 0;
      for (int c = 0; c < 3; ++c) square += entry(m.rotation, r, c) * entry(m.rotation, r, c);
      EXPECT_NEAR(square, 1, 1e-15);
    }
    EXPECT_TRUE(std::isfinite(m.root_mean_square) && m.root_mean_square <= m.largest_residual * (1 + 1e-15));
    EXPECT_TRUE(std::isfinite(m.translation.x) && std::isfinite(m.translation.y) && std::isfinite(m.translation.z));
  }
  EXPECT_GT(ok, 2000);
}

// A thin set whose rotation about its long direction is hardly determined: residuals across it are kept all the same.
TEST(Align, SmallResidualsOfThinSetsAreKept) {
  cloud a, b;
  for (int k = 0; k < 6; ++k) {
    const double across = k % 2 == 0 ? 1e-11 : -1e-11;
    a.push_back({static_cast<double>(k), across, 0});
    b.push_back({static_cast<double>(k), k == 2 ? 2 * across : across, 0});
  }
  const space_alignment m = tessarn::align(a, b);
  ASSERT_EQ(m.state, status::ok);
  EXPECT_LT(m.determination, 1e-22);
  EXPECT_GT(m.distances.getData()[2], 4e-12);
}

TEST(Align, ThePlane) {
  const std::vector<vector> a = {{0, 0}, {1, 0}, {0, 2}}, b = {{3, 4}, {3, 5}, {1, 4}},
                            mirror = {{0, 0}, {1, 0}, {0, -2}};
  const tessarn::plane_alignment m = tessarn::align(a, b);
  ASSERT_EQ(m.state, status::ok);
  const double expected[] = {0, -1, 1, 0};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(m.rotation.getData()[i], expected[i]) << i;
  EXPECT_EQ(m.translation, vector(3, 4));
  EXPECT_EQ(m.map({1, 1}), vector(2, 5));
  EXPECT_EQ(m.root_mean_square, 0);
  align_options o;
  o.reflections = true;
  EXPECT_TRUE(tessarn::align(a, mirror, o).reflected);
  EXPECT_EQ(tessarn::align(a, mirror, o).root_mean_square, 0);
  EXPECT_GT(tessarn::align(a, mirror).root_mean_square, 0.1);
  EXPECT_FALSE(tessarn::align(a, b, o).reflected);
  const std::vector<vector> pair = {{0, 0}, {1, 0}}, one = {{0, 0}}, same = {{1, 1}, {1, 1}}, none;
  EXPECT_EQ(tessarn::align(pair, pair).state, status::ok);
  EXPECT_EQ(tessarn::align(one, one).state, status::too_few_points);
  EXPECT_EQ(tessarn::align(pair, same).state, status::too_few_distinct);
  EXPECT_EQ(tessarn::align(pair, one).state, status::sizes_differ);
  EXPECT_EQ(tessarn::align(none, none).state, status::no_points);
  EXPECT_EQ(tessarn::align(none, none).map({1, 2}), vector(0, 0));
  random_source random(1714);
  for (int i = 0; i < 200; ++i) {  // on a line the mirror image fits as well as the rotation
    std::vector<vector> line, other;
    const double x = random.uniform(), y = random.uniform();
    for (int k = 0; k < 5; ++k) {
      const double t = random.uniform();
      line.emplace_back(t * x, t * y);
      other.emplace_back(t * y, t * x);
    }
    EXPECT_FALSE(tessarn::align(line, other, o).reflected) << i;
  }
  const std::vector<vector> square = {{1, 1}, {1, -1}, {-1, -1}, {-1, 1}},
                            crossed = {{1, 1}, {-1, -1}, {1, 1}, {-1, -1}};
  EXPECT_EQ(tessarn::align(square, crossed).state, status::not_determined);
  const std::vector<vector> wrong = {{0, 0}, {1, std::nan("")}};
  EXPECT_EQ(tessarn::align(pair, wrong).state, status::not_finite);
}

}  // namespace
