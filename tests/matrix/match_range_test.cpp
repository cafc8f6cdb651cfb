// Point-set matching over the whole range of numbers: never a wrong rotation.
#include <tessarn/vectors.h>

#include "matrix_support.h"
#include "plain/match.h"

namespace {

using namespace test;
using points = std::vector<vector3d>;

points random_points(u32 n, random_source& random) {
  points p;
  for (u32 i = 0; i < n; ++i) p.emplace_back(random.uniform(-5, 5), random.uniform(-5, 5), random.uniform(-5, 5));
  return p;
}

points times_power_of_two(points p, int exponent) {
  for (vector3d& q : p) q = {std::ldexp(q.x, exponent), std::ldexp(q.y, exponent), std::ldexp(q.z, exponent)};
  return p;
}

// A turn about the axis (1, 2, 2) / 3 whose matrix has the entries n / 15.
points turned(points p) {
  constexpr double r[3][3] = {{5, -10, 10}, {14, 5, -2}, {-2, 10, 11}};
  for (vector3d& q : p) {
    double c[3];
    for (int k = 0; k < 3; ++k) c[k] = (r[k][0] * q.x + r[k][1] * q.y + r[k][2] * q.z) / 15;
    q = {c[0], c[1], c[2]};
  }
  return p;
}

bool match(real_square& m, points a, points b) { return m.calc_match(a.data(), b.data(), ul(a.size())); }

// For b = R a the matrix holds R transposed.
void expect_transposed_turn(real_square& m, double tolerance = 1e-13) {
  constexpr double r[3][3] = {{5, 14, -2}, {-10, 5, 10}, {10, -2, 11}};
  for (u32 y = 0; y < 3; ++y)
    for (u32 x = 0; x < 3; ++x) ASSERT_NEAR(m.get(x, y), r[y][x] / 15, tolerance);
}

constexpr int exponents[] = {-1010, -1000, -900, -700, -549, -548, -500, -450, -400, -300, -270, -200, -100, 0,
                             100,   200,   260,  300,  400,  450,  500,  512,  700,  900,  1000, 1015, 1018};

TEST_EVERY_BUILD(CalcMatchRange, ScalesChangeNoBitOfTheRotation) {
  random_source random(181);
  for (u32 n : {3u, 4u, 9u, 200u}) {
    const points a = random_points(n, random), b = turned(a);
    real_square want, m;
    ASSERT_TRUE(match(want, a, b));
    expect_transposed_turn(want);
    for (int first : exponents)
      for (int second : exponents) {
        // Coordinates of different order are matched as well: the rotation does not depend on the
        // sizes.
        m.create(1);
        ASSERT_TRUE(match(m, times_power_of_two(a, first), times_power_of_two(b, second))) << first << " " << second;
        for (u32 y = 0; y < 3; ++y)
          for (u32 x = 0; x < 3; ++x) ASSERT_BITS(m.get(x, y), want.get(x, y)) << first << " " << second;
        if (first != second) continue;
        for (u32 y = 0; y < 3; ++y) ASSERT_BITS(m.get(3, y), std::ldexp(want.get(3, y), first)) << first;
      }
  }
}

TEST_EVERY_BUILD(CalcMatchRange, PowersOfTen) {
  random_source random(182);
  for (int ten = -300; ten <= 307; ++ten) {
    const double scale = std::pow(10.0, ten);
    points a = random_points(20, random), b = turned(a);
    for (points* set : {&a, &b})
      for (vector3d& p : *set) p = {p.x * scale, p.y * scale, p.z * scale};
    real_square m;
    ASSERT_TRUE(match(m, a, b)) << ten;
    expect_transposed_turn(m);
  }
}

// Coordinates of a few bits, down to the smallest numbers: their mean needs more.
TEST_EVERY_BUILD(CalcMatchRange, SubnormalCoordinates) {
  random_source random(187);
  for (u32 n : {3u, 7u, 40u}) {
    points a, b;
    for (u32 i = 0; i < n; ++i) {
      const auto coordinate = [&] { return static_cast<double>(random.below(200)) - 100; };
      a.emplace_back(coordinate(), coordinate(), coordinate());
      b.emplace_back(a.back().y, -a.back().x, a.back().z + 3);  // a quarter turn
    }
    real_square want, m;
    ASSERT_TRUE(match(want, a, b));
    EXPECT_NEAR(want.get(1, 0), -1, 1e-13);
    for (int exponent : {-1074, -1072, -1060, -1030}) {
      ASSERT_TRUE(match(m, times_power_of_two(a, exponent), times_power_of_two(b, exponent)));
      for (u32 y = 0; y < 3; ++y)
        for (u32 x = 0; x < 3; ++x) ASSERT_BITS(m.get(x, y), want.get(x, y)) << exponent;
    }
  }
}

// Small point sets far from the origin: the distances from the centroid are tiny, the coordinates are not.
TEST_EVERY_BUILD(CalcMatchRange, SmallSetsAwayFromTheOrigin) {
  random_source random(183);
  for (int exponent : {-1000, -700, -500, -300, -100}) {
    points a = random_points(16, random), b = a;  // the mean of so many equal coordinates is exact
    for (std::size_t i = 0; i < a.size(); ++i) {
      a[i].x = b[i].x = 0;
      b[i] = {0, -a[i].z, a[i].y};
    }
    a = times_power_of_two(a, exponent);
    b = times_power_of_two(b, exponent);
    for (vector3d& p : a) p.x = 5;
    for (vector3d& p : b) p.x = -3;
    real_square m;
    ASSERT_TRUE(match(m, a, b)) << exponent;
    EXPECT_NEAR(m.get(1, 2), -1, 1e-13) << exponent;
    EXPECT_NEAR(m.get(2, 1), 1, 1e-13) << exponent;
    EXPECT_NEAR(std::fabs(m.get(0, 0)), 1, 1e-13) << exponent;
  }
}

// Sums of coordinates that overflow, also where the NaN rule would hide it: plus and minus infinity
// in turn leave 0.
TEST_EVERY_BUILD(CalcMatchRange, SumsOfCoordinatesThatOverflow) {
  random_source random(184);
  for (u32 n : {4u, 8u, 30u}) {
    points a = random_points(n, random);
    for (vector3d& p : a) p.x = std::fabs(p.x) + 4;  // all of one sign, about 7e307
    const points b = turned(a);
    real_square want, m;
    ASSERT_TRUE(match(want, a, b));
    ASSERT_TRUE(match(m, times_power_of_two(a, 1020), times_power_of_two(b, 1019)));
    for (u32 y = 0; y < 3; ++y)
      for (u32 x = 0; x < 3; ++x) ASSERT_BITS(m.get(x, y), want.get(x, y));
    points one_axis = a;
    for (vector3d& p : one_axis) p.x = std::ldexp(p.x, 1020);
    // Beside such an axis the others are nothing: a set on a line, about which the turn is free.
    ASSERT_TRUE(match(m, one_axis, one_axis));
    EXPECT_NEAR(m.get(0, 0), 1, 1e-13);
    EXPECT_NEAR(m.get(1, 1), m.get(2, 2), 1e-13);
    EXPECT_NEAR(m.get(1, 2), -m.get(2, 1), 1e-13);
  }
}

// A NaN counts as 0.0 at every scale.
TEST_EVERY_BUILD(CalcMatchRange, NanCountsAsZero) {
  random_source random(185);
  for (int exponent : exponents) {
    points a = random_points(7, random);
    const points b = times_power_of_two(turned(a), exponent);
    a = times_power_of_two(a, exponent);
    points zero = a;
    a[3].y = quiet_nan;
    zero[3].y = 0;
    real_square want, m;
    ASSERT_TRUE(match(want, zero, b));
    ASSERT_TRUE(match(m, a, b));
    for (u32 i = 0; i < 16; ++i) ASSERT_BITS(m.getData()[i], want.getData()[i]);
  }
}

// One NaN in one coordinate of one point, of either set.
TEST_EVERY_BUILD(CalcMatchRange, ASingleNan) {
  random_source random(186);
  for (u32 n : {3u, 4u, 9u, 17u}) {
    const points a = random_points(n, random), b = turned(a);
    for (u32 at = 0; at < 6 * n; ++at) {
      points sets[2] = {a, b}, zeros[2] = {a, b};
      const auto coordinate = [&](points& p) -> tessarn::real& {
        vector3d& q = p[at / 6];
        return at % 3 == 0 ? q.x : at % 3 == 1 ? q.y : q.z;
      };
      const u32 set = at / 3 % 2;
      coordinate(sets[set]) = at % 4 ? quiet_nan : -quiet_nan;
      coordinate(zeros[set]) = 0;
      real_square want, m;
      ASSERT_TRUE(match(want, zeros[0], zeros[1]));
      ASSERT_TRUE(match(m, sets[0], sets[1]));
      for (u32 i = 0; i < 16; ++i) ASSERT_BITS(m.getData()[i], want.getData()[i]) << n << " " << at;
    }
  }
}

// Equal points leave nothing to turn by, and the identity.
TEST_EVERY_BUILD(CalcMatchRange, EqualPoints) {
  for (double c : {1e-320, 1e-165, 1e-80, 1.0, 1e80, 1e165, 1e307}) {
    real_square m;
    ASSERT_TRUE(match(m, points(4, {c, c, -c}), points(4, {0, c, c})));
    for (u32 y = 0; y < 3; ++y)
      for (u32 x = 0; x < 3; ++x) EXPECT_BITS(m.get(x, y), x == y ? 1.0 : 0.0);
    EXPECT_BITS(m.get(3, 0), -c);
    EXPECT_BITS(m.get(3, 1), 0.0);
    EXPECT_BITS(m.get(3, 2), c + c);
  }
}

}  // namespace
