// Decisions beside ties: where two sums, or two distances, are nearly or exactly equal.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "geometry/bounds.h"
#include "geometry/residual_model.h"
#include "plain/plane_fit.h"
#include "simd/isa.h"
#include "support/instruction_set.h"
#include "support/pairs.h"

namespace {

using tessarn::detail::candidate_lanes;
using tessarn::detail::cloud;
using tessarn::detail::isa;
using tessarn::detail::residual_bounds;
using tessarn::detail::residual_model;

template <class T>
void shuffle(std::vector<T>& v, test::random_source& random) {
  for (std::size_t i = v.size(); i > 1; --i) std::swap(v[i - 1], v[random.below(static_cast<unsigned>(i))]);
}

double power(test::random_source& random, unsigned exponents, int least) {
  return std::ldexp(random.uniform(0.5, 1), static_cast<int>(random.below(exponents)) + least);
}

// The sums of the nine cells around (x, y), row by row.
struct nine_sums {
  double cost[9];
  nine_sums(const cloud& points, double x, double y, double step) {
    for (int first = 0; first < 9; first += 8) {
      double cx[candidate_lanes], cy[candidate_lanes], cz[candidate_lanes], mean[candidate_lanes], sum[candidate_lanes];
      for (int k = 0; k < 8; ++k) {
        const int cell = std::min(first + k, 8);
        cx[k] = x + (cell % 3 - 1) * step;
        cy[k] = y + (cell / 3 - 1) * step;
        cz[k] = std::sqrt(1 - cx[k] * cx[k] - cy[k] * cy[k]);
      }
      tessarn::detail::geometry_kernels_in_use().residuals(points.arrays(), cx, cy, cz, mean, sum);
      for (int k = 0; first + k < 9 && k < 8; ++k) cost[first + k] = sum[k];
    }
  }
  bool is_least(int best) const {
    for (int k = 0; k < 9; ++k)
      if (k != best && !(cost[k] > cost[best])) return false;
    return cost[best] > 0;
  }
};

// Near a plane, or with all points at two distances from one; tilted, and away from the origin.
std::vector<vector3d> draw_cloud(test::random_source& random) {
  const double extent = power(random, 8, -4), away = random.below(2) ? 0 : power(random, 16, -4);
  const double noise = extent * power(random, 12, -11);
  const double slope_x = random.below(3) ? random.uniform() : 0, slope_y = random.below(3) ? random.uniform() : 0;
  const bool two_levels = random.below(2);
  std::vector<vector3d> points;
  const std::size_t n = 6 + random.below(random.below(4) ? 40 : 1500);
  for (std::size_t i = 0; i < n; ++i) {
    const double x = extent * random.uniform(), y = extent * random.uniform();
    const double z = noise * (two_levels ? random.below(2) : random.normal());
    points.emplace_back(x + away, y - away, slope_x * x + slope_y * y + z + away);
  }
  return points;
}

// Finds where the model goes from undecided to decided beside a tie of two columns or rows, and
// compares just behind it: its cell must be that of the least computed sum. The base of the model
// is there, or some steps away.
class edges_of_the_model {
 public:
  edges_of_the_model(const std::vector<vector3d>& all, double step, test::random_source& random)
      : points_(all.data(), static_cast<tessarn::ulong>(all.size())),
        bounds_(points_),
        fresh_(bounds_.form(), bounds_.usable()),
        step_(step),
        along_x_(random.below(2) != 0),
        away_(random.below(2) ? step * random.uniform(0, 2) : 0),
        side_(step * random.uniform(-2, 2)) {
    std::vector<vector3d> copy = all;
    normal_ = plane(copy.data(), static_cast<tessarn::ulong>(copy.size())).normal;  // near the least sum
  }
  void compare() {
    double before = -3 * step_;
    int cell = cell_at(before);
    for (int k = 1; k <= 60; ++k) {
      const double t = (0.1 * k - 3) * step_;
      const int next = cell_at(t);
      if (next != cell) {
        compare_behind(before, t, cell);
        compare_behind(t, before, next);
      }
      before = t;
      cell = next;
    }
  }
  int edges = 0, compared = 0, wrong = 0;

 private:
  double x_at(double t) const { return static_cast<double>(normal_.x) + (along_x_ ? t : side_); }
  double y_at(double t) const { return static_cast<double>(normal_.y) + (along_x_ ? side_ : t); }
  int cell_at(double t) const {
    residual_model model = fresh_;
    if (away_ > 0 && model.best(x_at(t) + away_, y_at(t) - away_, step_) == residual_model::undecided)
      return residual_model::undecided;
    return model.best(x_at(t), y_at(t), step_);
  }
  // The model says cell at good, and something else at bad.
  void compare_behind(double good, double bad, int cell) {
    if (cell == residual_model::undecided) return;
    for (int i = 0; i < 80; ++i) {
      const double middle = 0.5 * (good + bad);
      if (middle == good || middle == bad) break;
      (cell_at(middle) == cell ? good : bad) = middle;
    }
    ++edges;
    const double unit = (std::fabs(x_at(0)) + std::fabs(y_at(0)) + step_) * (good > bad ? 0x1p-53 : -0x1p-53);
    for (const double behind : {0.0, 1.0, 2.0, 3.0, 5.0, 9.0, 20.0}) {
      const double t = good + behind * unit;
      const int found = cell_at(t);
      if (found == residual_model::undecided) continue;
      ++compared;
      wrong += !nine_sums(points_, x_at(t), y_at(t), step_).is_least(found);
    }
  }

  const cloud points_;
  const residual_bounds bounds_;
  const residual_model fresh_;
  vector3d normal_;
  const double step_;
  const bool along_x_;
  const double away_, side_;
};

TEST(Ties, TheModelDecidesNotTooEarly) {
  test::random_source random(91);
  int edges = 0, compared = 0;
  for (int round = 0; round < 400; ++round) {
    test::use_set_of_round(static_cast<int>(round));
    const std::vector<vector3d> all = draw_cloud(random);
    edges_of_the_model e(all, 0.01 * std::ldexp(1.0, -static_cast<int>(random.below(14))), random);
    e.compare();
    ASSERT_EQ(e.wrong, 0) << "round " << round;
    edges += e.edges;
    compared += e.compared;
  }
  test::use_set_of_run();
  EXPECT_GT(edges, 400);
  EXPECT_GT(compared, 2000);
}

// n points of which few have different residuals: half of them differ in y by nothing that counts,
// half in x, in long runs. Thousands of roundings of a sum go the same way, and the sum drifts.
std::vector<vector3d> few_residuals(std::size_t n, double height, double slope, test::random_source& random) {
  std::vector<vector3d> all;
  const double x = random.uniform(0.4, 0.6), y = random.uniform(0.4, 0.6);
  const std::size_t run = 1 + random.below(2) * (n / 8);
  for (std::size_t i = 0; i < n; ++i) {
    const double nothing = 1e-200 * static_cast<double>(i + 1);
    const std::size_t kind = i / run;
    const double side = kind % 2 ? 1 : -1, level = kind / 2 % 2 ? height : -height;
    if (kind / 4 % 2)
      all.emplace_back(side * x, nothing, level + slope * side);
    else
      all.emplace_back(nothing, side * y, level);
  }
  return all;
}

TEST(Ties, TheModelUnderSystematicRounding) {
  test::random_source random(97);
  int edges = 0;
  for (int round = 0; round < 150; ++round) {
    test::use_set_of_round(static_cast<int>(round));
    const std::size_t n = round % 10 ? 300 + random.below(2000) : round < 50 ? 100000 : 20000;
    const std::vector<vector3d> all =
        few_residuals(n, random.uniform(0.1, 0.3), random.below(2) ? 0 : random.uniform(-0.3, 0.3), random);
    edges_of_the_model e(all, std::ldexp(1.0, -10 - static_cast<int>(random.below(12))), random);
    e.compare();
    ASSERT_EQ(e.wrong, 0) << "round " << round;
    edges += e.edges;
  }
  test::use_set_of_run();
  EXPECT_GT(edges, 100);
}

// A cloud that is tall along z, its own mirror image in x and in y: the sum has a maximum at the
// normal (0, 0, 1), and what lies beside it in a row are two equal cells.
TEST(Ties, TheModelAtAMaximumOfTheSum) {
  test::random_source random(92);
  for (int round = 0; round < 600; ++round) {
    test::use_set_of_round(static_cast<int>(round));
    std::vector<vector3d> all;
    const double tall = power(random, 8, 0), flat = power(random, 6, -4);
    for (std::size_t i = 0; i < 2 + random.below(30); ++i) {
      const double x = flat * random.uniform(), y = flat * random.uniform(), z = tall * random.uniform();
      for (const double i_x : {-1.0, 1.0})
        for (const double i_y : {-1.0, 1.0}) all.emplace_back(i_x * x, i_y * y, z);
    }
    shuffle(all, random);
    const cloud points(all.data(), static_cast<tessarn::ulong>(all.size()));
    const residual_bounds bounds(points);
    for (double step = 0.01; step > 1e-6; step *= 0.5) {
      for (int place = 0; place < 4; ++place) {
        const double x = place & 1 ? step * random.uniform(-3, 3) : 0, y = place & 2 ? step * random.uniform(-3, 3) : 0;
        residual_model model(bounds.form(), bounds.usable());
        const int found = model.best(x, y, step);
        if (found == residual_model::undecided) continue;
        ASSERT_TRUE(nine_sums(points, x, y, step).is_least(found)) << "round " << round << ", place " << place;
      }
    }
  }
  test::use_set_of_run();
}

// The fits of such clouds, against the plain form.
TEST(Ties, FitsOfMirroredClouds) {
  test::random_source random(93);
  for (int round = 0; round < 150; ++round) {
    std::vector<vector3d> all;
    const double tall = power(random, 8, round % 2 ? 0 : -8);
    for (std::size_t i = 0; i < 2 + random.below(12); ++i) {
      const double x = random.uniform(), y = random.uniform(), z = tall * random.uniform();
      for (const double i_x : {-1.0, 1.0})
        for (const double i_y : {-1.0, 1.0}) all.emplace_back(i_x * x, i_y * y, z);
    }
    shuffle(all, random);
    std::vector<plain::vec3> copy;
    for (const vector3d& p : all)
      copy.push_back({static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z)});
    const plain::plane want = plain::fit_plane(copy);
    ASSERT_TRUE(test::same(plane(all.data(), static_cast<tessarn::ulong>(all.size())), want)) << "round " << round;
  }
}

// Points at two levels: all residuals have one of two magnitudes, so that thousands of roundings of
// a sum go the same way, and the sum drifts.
TEST(Ties, BoundsHoldUnderSystematicRounding) {
  test::random_source random(94);
  for (int round = 0; round < 240; ++round) {
    test::use_set_of_round(static_cast<int>(round));
    constexpr std::size_t sizes[] = {1000, 4096, 10000, 30000, 100000};
    const std::size_t n = sizes[round < 20 ? 4 : random.below(4)];
    const double height = random.uniform(0.5, 1), level = random.below(3) ? 0 : power(random, 30, -10);
    const double extent = power(random, 12, -10);
    std::vector<vector3d> all;
    for (std::size_t i = 0; i < n; ++i) {
      const double t = static_cast<double>(i) / static_cast<double>(n);
      all.emplace_back(extent * t, extent * (1 - t) * t, level + (i % 2 ? height : -height));
    }
    const cloud points(all.data(), static_cast<tessarn::ulong>(n));
    ASSERT_EQ(points.size(), n);
    const residual_bounds bounds(points);
    for (double x : {0.0, 1e-7, 1e-3}) {
      double cx[candidate_lanes] = {x}, cy[candidate_lanes] = {}, cz[candidate_lanes] = {std::sqrt(1 - x * x)};
      double mean[candidate_lanes], cost[candidate_lanes];
      tessarn::detail::geometry_kernels_in_use().residuals(points.arrays(), cx, cy, cz, mean, cost);
      double gx[candidate_lanes], gy[candidate_lanes], gz[candidate_lanes], low[candidate_lanes], high[candidate_lanes];
      bounds(x, 0, 0, gx, gy, gz, low, high);
      ASSERT_LE(low[0], cost[0]) << n << " points, round " << round;
      ASSERT_GE(high[0], cost[0]) << n << " points, round " << round;
    }
  }
  test::use_set_of_run();
}

TEST(Ties, DirectionBoundsHoldUnderSystematicRounding) {
  test::random_source random(95);
  for (int round = 0; round < 200; ++round) {
    test::use_set_of_round(static_cast<int>(round));
    const std::size_t n = round < 9 ? 100000 : 1000 + random.below(8000);
    const vector3d d(random.uniform(), random.uniform(), random.uniform(0.1, 1));
    std::vector<double> c[3];
    const bool unit = random.below(2);
    const double scale = unit ? 1 / static_cast<double>(d.lenld()) : power(random, 20, -10);
    for (std::size_t i = 0; i < n + candidate_lanes; ++i) {
      c[0].push_back(static_cast<double>(d.x) * scale);
      c[1].push_back(static_cast<double>(d.y) * scale);
      c[2].push_back(static_cast<double>(d.z) * scale);
    }
    const tessarn::detail::point_arrays same{c[0].data(), c[1].data(), c[2].data(), n},
        none{nullptr, nullptr, nullptr, 0};
    const bool along = random.below(2);
    const tessarn::detail::direction_bounds bounds(along ? same : none, along ? none : same);
    double x[candidate_lanes] = {random.uniform()}, y[candidate_lanes] = {0.5 * random.uniform()}, z[candidate_lanes];
    if (x[0] * x[0] + y[0] * y[0] > 1) x[0] = 0;
    z[0] = std::sqrt(1 - x[0] * x[0] - y[0] * y[0]);
    for (std::size_t k = 1; k < candidate_lanes; ++k) z[k] = 0;
    double cost[candidate_lanes] = {};
    if (along)
      tessarn::detail::geometry_kernels_in_use().add_sines(same, x, y, z, cost);
    else
      tessarn::detail::geometry_kernels_in_use().add_cosines(same, x, y, z, cost);
    const tessarn::detail::interval i = bounds(x[0], y[0], z[0]);
    ASSERT_LE(i.low, cost[0]) << n;
    ASSERT_GE(i.high, cost[0]) << n;
  }
  test::use_set_of_run();
}

// Directions whose squares vanish or overflow: the bounds say nothing, and the sums decide.
TEST(Ties, NormalsOfExtremeDirections) {
  test::random_source random(98);
  for (int round = 0; round < 90; ++round) {
    test::use_set_of_round(static_cast<int>(round));
    constexpr double scales[] = {1e-165, 1e-162, 1e-160, 1e-155, 1e-120, 1e-100, 1e100, 1e120, 1e150, 1e153};
    const double scale = scales[round % 10];
    const auto draw = [&](std::size_t n) {
      std::vector<plain::vec3> v;
      for (std::size_t i = 0; i < n; ++i)
        v.push_back({scale * random.uniform(), scale * random.uniform(), scale * random.uniform()});
      return v;
    };
    const std::vector<plain::vec3> par = draw(round % 2 ? 0 : 80), perp = draw(100);
    std::vector<vector3d> along, across;
    for (const plain::vec3& d : par) along.push_back(test::lib(d));
    for (const plain::vec3& d : perp) across.push_back(test::lib(d));
    vector3d n;
    ASSERT_TRUE(plane::CalcNormale(n, along.data(), static_cast<tessarn::ulong>(along.size()), across.data(), 100));
    ASSERT_TRUE(test::same(n, plain::calc_normale(par, perp))) << scale;
  }
  test::use_set_of_run();
}

double distance(const vector3d& a, const vector3d& b) {
  const double x = a.x - b.x, y = a.y - b.y, z = a.z - b.z;
  return std::sqrt((x * x + y * y) + z * z);
}

// Points whose squared distances differ by an ulp or two have equal distances more often than not:
// the first one wins, also where a later one has the larger square. Coordinates in another order
// make such squares.
TEST(Ties, TheFirstOfEquallyFarPoints) {
  test::random_source random(96);
  int ties = 0, larger_behind = 0;
  for (int round = 0; round < 3000; ++round) {
    test::use_set_of_round(static_cast<int>(round));
    const std::size_t n = 4 + random.below(round % 50 ? 300 : 9000);
    double far[3] = {random.uniform(1, 2), random.uniform(1, 2), random.uniform(1, 2)};
    std::vector<vector3d> all;
    for (std::size_t i = 0; i < n; ++i) {
      if (random.below(static_cast<unsigned>(n)) < 6) {  // one of the far ones
        std::next_permutation(far, far + 3);
        const auto sign = [&] { return random.below(2) ? 1.0 : -1.0; };
        all.emplace_back(sign() * far[0], sign() * far[1], sign() * far[2]);
      } else {
        all.emplace_back(random.uniform(-0.5, 0.5), random.uniform(-0.5, 0.5), random.uniform(-0.5, 0.5));
      }
    }
    const cloud points(all.data(), static_cast<tessarn::ulong>(n));
    const vector3d from, to = round % 4 ? vector3d() : vector3d(0x1p-30, 0, 0);
    for (const bool two : {false, true}) {
      const auto far_at = [&](std::size_t i) {
        return two ? distance(points.point(i), from) + distance(points.point(i), to) : distance(points.point(i), from);
      };
      double greatest = two ? distance(from, to) : 0, square = 0;
      std::size_t first = points.size();
      for (std::size_t i = 0; i < points.size(); ++i) {
        const vector3d p = points.point(i);
        const double s = (p.x * p.x + p.y * p.y) + p.z * p.z;
        if (far_at(i) > greatest) {
          greatest = far_at(i);
          first = i;
          square = s;
        } else if (far_at(i) == greatest) {
          ++ties;
          larger_behind += s > square;
        }
      }
      const vector3d found = two ? points.farthest_from(from, to) : points.farthest_from(from);
      const vector3d wanted = first < points.size() ? points.point(first) : from;
      ASSERT_TRUE(found.x == wanted.x && found.y == wanted.y && found.z == wanted.z)
          << "round " << round << " of " << n;
    }
  }
  test::use_set_of_run();
  EXPECT_GT(ties, 1000);
  EXPECT_GT(larger_behind, 300);
}

}  // namespace
