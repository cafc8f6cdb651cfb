// Least-squares planes and minimum zones: examples, each status, and invariance.
#include <gtest/gtest.h>
#include <tessarn/flat.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "../support/random.h"

namespace {

using tessarn::flatness_options;
using tessarn::flatness_result;
using tessarn::status;
using test::random_source;
using cloud = std::vector<vector3d>;

constexpr double infinite = std::numeric_limits<double>::infinity();

const cloud tetrahedron = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};

TEST(Flat, APlate) {
  const cloud plate = {{0, 0, 5}, {9, 0, 5}, {0, 9, 5}, {9, 9, 5}, {3, 4, 5.5}, {6, 2, 4.75}};
  const flatness_result f = tessarn::flatness(plate);
  ASSERT_EQ(f.state, status::ok);
  EXPECT_EQ(f.middle.state, status::ok);
  EXPECT_EQ(f.least_squares.state, status::ok);
  EXPECT_EQ(f.points_used, 6u);
  EXPECT_LE(f.zone, 0.75);
  EXPECT_LE(f.zone, f.least_squares.peak_to_valley);
  EXPECT_EQ(f.zone, f.middle.peak_to_valley);
  EXPECT_EQ(f.least_squares.highest, 4u);
  EXPECT_EQ(f.least_squares.lowest, 5u);
  EXPECT_EQ(f.middle.highest, 4u);
  EXPECT_EQ(f.middle.lowest, 0u);  // the zone leans: it touches two corners and the lowest point
  EXPECT_GT(f.middle.normal.z, 0.99);
  EXPECT_EQ(f.touching_above, 1u);
  EXPECT_EQ(f.touching_below, 3u);
}

// A regular tetrahedron is thinnest between two opposite edges, one with a right corner between a face and its corner.
TEST(Flat, FacesAndEdges) {
  const cloud regular = {{1, 1, 1}, {1, -1, -1}, {-1, 1, -1}, {-1, -1, 1}};
  const flatness_result edges = tessarn::flatness(regular);
  EXPECT_EQ(edges.zone, 2);
  EXPECT_EQ(edges.touching_above, 2u);
  EXPECT_EQ(edges.touching_below, 2u);
  EXPECT_EQ(edges.least_squares.state, status::not_determined);
  const flatness_result face = tessarn::flatness(tetrahedron);
  EXPECT_EQ(face.zone, std::sqrt(1.0 / 3));
  EXPECT_EQ(face.touching_above, 3u);
  EXPECT_EQ(face.touching_below, 1u);
  EXPECT_EQ(face.touching[3], 0u);
  EXPECT_EQ(face.middle.lowest, 0u);
}

TEST(Flat, PointsInOnePlane) {
  const cloud flat = {{0, 0, 0}, {1, 2, 3}, {2, 4, 6}, {1, 0, 1}, {0, 2, 2}, {5, 4, 9}};  // z = x + y
  const flatness_result f = tessarn::flatness(flat);
  ASSERT_EQ(f.state, status::ok);
  EXPECT_EQ(f.zone, 0);
  EXPECT_EQ(f.touching_above, 3u);
  EXPECT_EQ(f.touching_below, 0u);
  EXPECT_EQ(f.middle.peak_to_valley, 0);
  EXPECT_EQ(f.least_squares.root_mean_square, 0);
  EXPECT_DOUBLE_EQ(f.middle.normal.x, std::sqrt(1.0 / 3));
  EXPECT_DOUBLE_EQ(f.middle.normal.z, -std::sqrt(1.0 / 3));
  EXPECT_EQ(f.middle.offset, 0);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(f.middle.residuals.getData()[i], 0);
  const flatness_result wall = tessarn::flatness(cloud{{7, 0, 0}, {7, 1, 0}, {7, 0, 1}});
  EXPECT_EQ(wall.middle.normal, vector3d(1, 0, 0));
  EXPECT_EQ(wall.middle.offset, 7);
  EXPECT_EQ(wall.least_squares.offset, 7);
}

#if defined(FE_UPWARD) && !defined(__wasm__)  // whose processor has no other mode
// Exact arithmetic needs rounding to nearest; without it the search for the hull would not end.
TEST(Flat, OtherRoundingIsTold) {
  const cloud points = {{0, 0, 0.1}, {1, 0, 0.2}, {0, 1, 0.3}, {1, 1, 0.7}, {0.3, 0.6, 0.9}};
  for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    if (std::fesetround(mode) != 0) continue;
    const flatness_result f = tessarn::flatness(points);
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(f.state, status::other_rounding);
    EXPECT_EQ(f.least_squares.state, status::other_rounding);
  }
  EXPECT_EQ(tessarn::flatness(points).state, status::ok);
}
#endif

TEST(Flat, StatusesOneByOne) {
  const cloud none, two(2, vector3d(1, 2, 3)), same(5, vector3d(1, 2, 3));
  const cloud line = {{0, 0, 0}, {1, 2, 3}, {2, 4, 6}, {-3, -6, -9}};
  EXPECT_EQ(tessarn::flatness(none).state, status::no_points);
  EXPECT_EQ(tessarn::flatness(two).state, status::too_few_points);
  EXPECT_EQ(tessarn::flatness(same).state, status::too_few_distinct);
  EXPECT_EQ(tessarn::flatness(same).least_squares.state, status::too_few_distinct);
  const flatness_result on_a_line = tessarn::flatness(line);
  EXPECT_EQ(on_a_line.state, status::collinear);
  EXPECT_EQ(on_a_line.middle.state, status::collinear);
  EXPECT_EQ(on_a_line.least_squares.state, status::collinear);
  EXPECT_EQ(on_a_line.points_used, 4u);
  EXPECT_EQ(on_a_line.middle.residuals.getHeight(), 0u);
  const tessarn::real numbers[] = {1, 2, 3, 4};
  const tessarn::space_points uneven({numbers, 4}, {numbers, 3}, {numbers, 4});
  EXPECT_EQ(tessarn::flatness(uneven).state, status::sizes_differ);
  for (const double bad : {infinite, -infinite, std::nan("")}) {
    cloud c = tetrahedron;
    c.push_back({1, bad, 1});
    EXPECT_EQ(tessarn::flatness(c).state, status::not_finite);
    flatness_options o;
    o.leave_out_not_finite = true;
    const flatness_result f = tessarn::flatness(c, o);
    EXPECT_EQ(f.state, status::ok);
    EXPECT_EQ(f.points_used, 4u);
    EXPECT_EQ(f.points_left_out, 1u);
    EXPECT_TRUE(std::isnan(f.middle.residuals.getData()[4]));
    EXPECT_TRUE(std::isnan(f.least_squares.residuals.getData()[4]));
    EXPECT_EQ(tessarn::flatness(cloud(3, vector3d(0, 0, bad)), o).state, status::no_points);
  }
  const double m = 1.7e308;
  EXPECT_EQ(tessarn::flatness(cloud{{m, m, m}, {m, -m, -m}, {-m, m, -m}, {-m, -m, m}}).state, status::out_of_range);
  cloud cube;  // its zone and the peak to valley are too large, and nothing else
  for (int i = 0; i < 8; ++i)
    cube.push_back({i & 1 ? 1.2e308 : -1.2e308, i & 2 ? 1.2e308 : -1.2e308, i & 4 ? 1.2e308 : -1.2e308});
  EXPECT_EQ(tessarn::flatness(cube).state, status::out_of_range);
  EXPECT_EQ(tessarn::flatness(cube).middle.state, status::out_of_range);
  EXPECT_EQ(tessarn::flatness(cube).least_squares.state, status::out_of_range);
  const flatness_result large = tessarn::flatness(cloud{{m, 0, 0}, {-m, 0, 0}, {0, m, 0}, {0, 0, 1e300}});
  EXPECT_EQ(large.state, status::ok);
  EXPECT_NEAR(static_cast<double>(large.zone), 1e300, 1e292);
}

// Nearly on a line as far as the digits tell: the zone is exact, the least-squares plane is not determined.
TEST(Flat, PointsOnALineButForRounding) {
  random_source random(1730);
  for (int i = 0; i < 200; ++i) {
    const vector3d d(random.uniform(), random.uniform(), random.uniform());
    cloud c;
    for (int k = 0; k < 8; ++k) {
      const double t = random.uniform(-5, 5);
      c.push_back({t * d.x + 1000, t * d.y - 1000, t * d.z + 1000});
    }
    const flatness_result f = tessarn::flatness(c);
    EXPECT_EQ(f.least_squares.state, status::collinear) << i;
    EXPECT_EQ(f.state, status::ok) << i;
    EXPECT_LT(f.zone, 1e-12);
    c[3].z += 1e-6;
    EXPECT_EQ(tessarn::flatness(c).least_squares.state, status::ok) << i;
  }
}

TEST(Flat, ExactLinesAreTold) {
  random_source random(1734);
  for (int i = 0; i < 200; ++i) {
    const int n = i < 5 ? 20000 : 40;  // with many points the sums are rounded more than the coordinates are
    const auto whole = [&] { return static_cast<double>(random.below(2001)) - 1000; };
    const double x = whole() + 0.5, y = whole(), z = whole();
    cloud line;
    for (int k = 0; k < n; ++k) {
      const double t = whole();
      line.push_back({t * x, t * y, t * z});
    }
    const flatness_result f = tessarn::flatness(line);
    EXPECT_EQ(f.state, status::collinear) << i;
    EXPECT_EQ(f.least_squares.state, status::collinear) << i;
  }
}

// A cube has no thinnest direction, also when it is turned and its coordinates are rounded.
TEST(Flat, RoundBodiesAreTold) {
  random_source random(1735);
  for (int i = 0; i < 100; ++i) {
    cloud cube;
    const vector3d axis(random.uniform(), random.uniform(), random.uniform());
    for (int k = 0; k < 8; ++k)
      cube.push_back(vector3d(k & 1, (k & 2) / 2, (k & 4) / 4).rotate(axis, 1) + vector3d(100, 0, 0));
    const flatness_result f = tessarn::flatness(cube);
    EXPECT_EQ(f.least_squares.state, status::not_determined) << i;
    EXPECT_NEAR(static_cast<double>(f.zone), 1, 1e-12);
  }
}

// A coordinate in which all points agree takes no digits from the others.
TEST(Flat, AConstantCoordinateDoesNotMatter) {
  const flatness_result wall = tessarn::flatness(cloud{{1e308, 0, 0}, {1e308, 1e-10, 0}, {1e308, 0, 1e-10}});
  EXPECT_EQ(wall.state, status::ok);
  EXPECT_EQ(wall.least_squares.state, status::ok);
  EXPECT_EQ(wall.zone, 0);
  EXPECT_EQ(wall.middle.normal, vector3d(1, 0, 0));
  EXPECT_EQ(wall.middle.offset, 1e308);
}

// The plane x + z = 0 with points that show no symmetry: the sums are rounded, and the normal has no part in y.
TEST(Flat, AComponentThatIsZeroComesOutAsZero) {
  random_source random(1737);
  cloud c;
  for (int k = 0; k < 20; ++k) {
    const double x = random.uniform();
    c.push_back({x, random.uniform(), -x});
  }
  const flatness_result f = tessarn::flatness(c);
  EXPECT_EQ(f.least_squares.normal.y, 0);
  EXPECT_EQ(f.least_squares.offset, 0);
  EXPECT_EQ(f.least_squares.root_mean_square, 0);
}

TEST(Flat, OfPointsAtOnePlaceTheFirstIsNamed) {
  const cloud tent = {{2, 2, 1}, {0, 0, 0}, {4, 0, 0}, {0, 4, 0}, {4, 4, 0}};
  cloud twice = tent;
  twice.insert(twice.end(), tent.begin(), tent.end());
  twice.insert(twice.end(), tent.rbegin(), tent.rend());
  const flatness_result f = tessarn::flatness(twice);
  EXPECT_EQ(f.zone, 1);
  EXPECT_EQ(f.touching[0], 0u);
  for (const tessarn::ulong p : f.touching) EXPECT_LT(p, 5u);
  EXPECT_EQ(f.middle.highest, 0u);
}

// The zone does not depend on the order of the points, nor on how they are stored.
TEST(Flat, OrderAndStorageDoNotMatter) {
  random_source random(1731);
  for (int i = 0; i < 200; ++i) {
    cloud c;
    const bool grid = i % 2 == 0;
    for (int k = 0; k < 30; ++k) {
      const auto draw = [&] { return grid ? static_cast<double>(random.below(5)) : random.uniform(); };
      const double x = draw(), y = draw();
      c.push_back({x, y, draw()});
    }
    const flatness_result f = tessarn::flatness(c);
    cloud turned(c.rbegin(), c.rend());
    std::swap(turned[3], turned[20]);
    const flatness_result g = tessarn::flatness(turned);
    EXPECT_EQ(f.state, g.state);
    EXPECT_EQ(f.zone, g.zone);
    EXPECT_EQ(f.middle.normal, g.middle.normal);
    for (int k = 0; k < 4; ++k) EXPECT_EQ(c[f.touching[k]], turned[g.touching[k]]);
    std::vector<tessarn::real> flat;
    for (const vector3d& p : c) flat.insert(flat.end(), {p.x, p.y, p.z});
    const std::size_t step = 3 * sizeof(tessarn::real);
    const flatness_result h = tessarn::flatness(
        {{flat.data(), c.size(), step}, {flat.data() + 1, c.size(), step}, {flat.data() + 2, c.size(), step}});
    EXPECT_EQ(f.zone, h.zone);
    EXPECT_EQ(0, std::memcmp(f.middle.residuals.getData(), h.middle.residuals.getData(), 30 * sizeof(tessarn::real)));
  }
}

// Coordinates of all sizes: an answer comes, and what it says fits together.
TEST(Flat, AllFiniteNumbers) {
  random_source random(1733);
  int ok = 0;
  for (int i = 0; i < 3000; ++i) {
    cloud c;
    const int n = 3 + static_cast<int>(random.below(9));
    for (int k = 0; k < n; ++k) {
      const double x = random.hostile_finite(), y = random.hostile_finite();
      c.push_back({x, y, random.hostile_finite()});
    }
    if (i % 3 == 0)
      for (vector3d& p : c) p.x = c[0].x;  // in an upright plane
    if (i % 3 == 1)
      for (vector3d& p : c) p = p * 0x1p-1000 * 0x1p-60;  // small and subnormal
    const flatness_result f = tessarn::flatness(c);
    if (f.state != status::ok) continue;
    ++ok;
    ASSERT_TRUE(std::isfinite(f.zone) && f.zone >= 0) << i;
    EXPECT_TRUE(i % 3 != 0 || f.zone == 0) << i;
    EXPECT_NEAR(1, static_cast<double>(f.middle.normal.lenld()), 1e-15);
    double widest = 0;
    for (const vector3d& p : c)
      for (const double v : {p.x - c[0].x, p.y - c[0].y, p.z - c[0].z}) widest = std::fmax(widest, std::fabs(v));
    for (int k = 0; k < n; ++k)
      EXPECT_LE(std::fabs(static_cast<double>(f.middle.residuals.getData()[k])),
                f.zone / 2 * (1 + 1e-15) + widest * 0x1p-90 + 0x1p-1073)
          << i;
  }
  EXPECT_GT(ok, 1000);
}

// Bodies with many edges: every direction across two steps between points is tried.
TEST(Flat, NoDirectionIsBetter) {
  random_source random(1736);
  for (int i = 0; i < 30; ++i) {
    cloud c, steps;
    for (int k = 0; k < 26; ++k) {
      const vector3d p(random.normal(), random.normal(), random.normal());
      c.push_back(i % 2 == 0 ? p.resize(1) : vector3d(p.x, p.y, 0.01 * (p.x * p.x + p.y * p.y) + 1e-3 * p.z));
      for (int j = 0; j < k; ++j) steps.push_back(c.back() - c[static_cast<std::size_t>(j)]);
    }
    double best = infinite;
    for (std::size_t u = 0; u < steps.size(); ++u)
      for (std::size_t v = 0; v < u; ++v) {
        const vector3d n = steps[u].cross(steps[v]);
        const double length = static_cast<double>(n.lenld());
        if (!(length > 1e-9)) continue;
        double high = -infinite, low = infinite;
        for (const vector3d& p : c) {
          const double h = static_cast<double>(n * p);
          high = h > high ? h : high;
          low = h < low ? h : low;
        }
        if (high - low < best * length) best = (high - low) / length;
      }
    EXPECT_NEAR(static_cast<double>(tessarn::flatness(c).zone) / best, 1, 1e-6) << i;
  }
}

// Larger sets: all points lie in the zone, no direction near the normal is better, and no random one.
TEST(Flat, LargeSetsLieInTheirZone) {
  random_source random(1732);
  for (const int kind : {0, 1, 2, 3}) {
    cloud c;
    for (int k = 0; k < 3000; ++k) {
      double x = random.normal(), y = random.normal(), z = random.normal();
      if (kind == 1) {  // on a sphere
        const double l = std::sqrt(x * x + y * y + z * z);
        x /= l, y /= l, z /= l;
      }
      if (kind == 2) z *= 1e-6;  // a thin plate
      if (kind == 3) x = std::round(3 * x), y = std::round(3 * y), z = std::round(z);
      c.push_back({x, y, z});
    }
    const flatness_result f = tessarn::flatness(c);
    ASSERT_EQ(f.state, status::ok);
    const double half = static_cast<double>(f.zone) / 2;
    for (int k = 0; k < 3000; ++k)
      EXPECT_LE(std::fabs(static_cast<double>(f.middle.residuals.getData()[k])), half * (1 + 1e-14));
    for (int t = 0; t < 400; ++t) {
      const double off = t < 200 ? std::ldexp(1.0, -static_cast<int>(random.below(40))) : 10;
      vector3d n(f.middle.normal.x + off * random.uniform(), f.middle.normal.y + off * random.uniform(),
                 f.middle.normal.z + off * random.uniform());
      n = n.resize(1);
      double high = -infinite, low = infinite;
      for (const vector3d& p : c) {
        high = std::fmax(high, static_cast<double>(n * p));
        low = std::fmin(low, static_cast<double>(n * p));
      }
      EXPECT_GE(high - low, f.zone * (1 - 1e-9)) << kind;
    }
  }
}

// The turning plane touches several corners nearly at once, one of them before the plane began to turn.
TEST(Flat, CornersThatAreTouchedNearlyAtOnce) {
  const double e = 0x1p-39;
  const cloud points = {{e, 0, 0},         {2 + e, 1 - e, 0}, {e, 2, 1 - e},    {e, 2 + e, -e},
                        {2 - e, 2 + e, 1}, {0, 2, e},         {1 - e, 0, 2 - e}};
  EXPECT_NEAR(tessarn::flatness(points).zone, 3 * std::sqrt(0.3), 1e-9);
}

}  // namespace
