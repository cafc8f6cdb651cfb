// The derivatives on which the search for circles, spheres and cylinders rests, against differences.
#include <gtest/gtest.h>

#include <cmath>

#include "../support/random.h"
#include "analysis/round_search.h"

namespace {

using namespace tessarn::analysis;
using test::random_source;

// A shape of chance, with a curvature from nearly none to much.
round_shape<double> draw(random_source& random, std::size_t dimension, bool has_axis) {
  round_shape<double> m{};
  m.dimension = dimension;
  m.has_axis = has_axis;
  do {
    for (std::size_t k = 0; k < m.parts(); ++k) m.v[k] = random.normal();
    m.v[0] *= std::exp(random.uniform(-6, 1));
  } while (!normalise(m));
  for (auto& row : m.axes)
    for (double& e : row) e = random.normal();
  make_orthogonal(m.axes);
  return m;
}

// The distance after steps along two unknowns.
double moved_distance(const round_shape<double>& m, const double* p, std::size_t i, double a, std::size_t j, double b) {
  round_shape<double> n = m;
  double x[most_unknowns] = {};
  x[i] -= a;
  x[j] -= b;
  EXPECT_TRUE(move(n, tangents<double>(m), x));
  return place(n, p).distance;
}

void expect_derivatives(const round_shape<double>& m, const double* p) {
  const tangents<double> t(m);
  const placed_point<double> x = place(m, p);
  if (x.slope < 0.1) return;  // near the centre, where differences need smaller steps
  distance_derivatives<double> d;
  derive(m, t, x, d);
  constexpr double h = 0x1p-13;
  for (std::size_t i = 0; i < m.unknowns(); ++i) {
    const double slope = (moved_distance(m, p, i, h, i, 0) - moved_distance(m, p, i, -h, i, 0)) / (2 * h);
    const double scale = 1 + std::fabs(x.square) + std::fabs(x.axial) + 1 / x.slope;
    EXPECT_NEAR(d.first[i], slope, 1e-5 * scale * scale * scale) << i;
    for (std::size_t j = 0; j <= i; ++j) {
      const double bend = (moved_distance(m, p, i, h, j, h) - moved_distance(m, p, i, h, j, -h) -
                           moved_distance(m, p, i, -h, j, h) + moved_distance(m, p, i, -h, j, -h)) /
                          (4 * h * h);
      EXPECT_NEAR(d.second[entry_at(i, j)], bend, 1e-5 * scale * scale * scale * scale) << i << ' ' << j;
    }
  }
}

TEST(ShapeSearch, DerivativesAreThoseOfDifferences) {
  random_source random(1680);
  for (int i = 0; i < 300 && !HasFailure(); ++i) {
    const double p[3] = {random.uniform(), random.uniform(), i % 3 == 0 ? 0 : random.uniform()};
    expect_derivatives(draw(random, i % 3 == 1 ? 3 : 2, i % 3 == 2), p);
  }
}

// The distance is that from the centre less the radius, also for a shape that is nearly flat.
TEST(ShapeSearch, DistancesOfCirclesAndLines) {
  round_shape<double> m{2, false, {1, -6, -8, 0}, {}};  // (x - 3)^2 + (y - 4)^2 = 25
  ASSERT_TRUE(normalise(m));
  const double origin[3] = {0, 0, 0}, centre[3] = {3, 4, 0}, outside[3] = {3, 16, 0};
  EXPECT_NEAR(place(m, origin).distance, 0, 1e-15);
  EXPECT_NEAR(place(m, centre).distance, -5, 1e-15);
  EXPECT_NEAR(place(m, outside).distance, 7, 1e-15);
  m = {2, false, {0, 3, 4, 10}, {}};
  ASSERT_TRUE(normalise(m));
  EXPECT_NEAR(place(m, centre).distance, 7, 1e-15);  // 3 x + 4 y + 10 = 0
  m = {2, false, {1, 0, 0, 1}, {}};                  // no real circle
  EXPECT_FALSE(normalise(m));
}

// From any shape a search in doubled precision ends where the gradient is at the level of rounding, and no higher than
// it began.
TEST(ShapeSearch, SearchesEndAtAMinimum) {
  random_source random(1682);
  int ended = 0;
  for (int i = 0; i < 200; ++i) {
    std::vector<vector3d> p;
    for (int k = 0; k < 15; ++k) p.emplace_back(random.normal(), random.normal(), random.normal() * (i % 2));
    const tessarn::space_points view = p;
    const tessarn::shape_options options;
    const std::size_t dimension = i % 2 == 0 ? 2 : 3;
    shape_data data({{view.x, view.y, view.z}, dimension, options}, 3, 3);
    data.copy();
    round_result<double> start;
    start.shape = draw(random, i % 4 == 1 ? 2 : dimension, i % 4 == 1);
    double before = squares_of(data, start.shape);
    for (tessarn::ulong steps = 1; steps <= 12; ++steps) {  // no step leads upwards
      const double after = refine(data, start, steps).squares;
      EXPECT_LE(after, before * (1 + 1e-12)) << steps;
      before = after;
    }
    const round_result<doubled> found = refine(data, start, 500);
    const tangents<doubled> t(found.shape);
    const round_sums<doubled> sums(data, found.shape, t);
    EXPECT_LE(sums.squares.high, before * (1 + 1e-12));
    if (!found.converged || !found.determined) continue;
    ++ended;
    for (std::size_t k = 0; k < found.shape.unknowns(); ++k)
      EXPECT_LT(std::fabs(sums.gradient[k].high),
                0x1p-90 * std::sqrt(sums.squares.high * sums.normal[entry_at(k, k)].high));
  }
  EXPECT_GT(ended, 190);
}

// With second derivatives a search needs few steps also where the residuals are large.
TEST(ShapeSearch, StepsAreFew) {
  random_source random(1681);
  double steps = 0;
  for (int i = 0; i < 200; ++i) {
    std::vector<vector> p;
    for (int k = 0; k < 20; ++k) {
      const double a = random.uniform(-3, 3), r = 1 + 0.2 * random.normal();
      p.emplace_back(r * std::cos(a), r * std::sin(a));
    }
    const tessarn::circle_fit f = tessarn::fit_circle(p);
    ASSERT_EQ(f.state, tessarn::status::ok);
    steps += f.steps;
  }
  EXPECT_LT(steps / 200, 8);
}

}  // namespace
