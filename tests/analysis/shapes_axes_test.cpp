// Lines and cylinders judged in 256 bits, and cylinders by searches from directions of chance.
#include <tessarn/shapes.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <vector>

#include "../support/random.h"
#include "analysis/round_fit.h"
#include "precise.h"

#if defined(TESTS_HAVE_GMP)

namespace {

using tessarn::status;
using test::precise;
using test::precise_bits;
using test::precise_column;
using test::random_source;
using test::to_precise;

using triple = std::array<precise, 3>;

// How often the tests run: 100 times, or as the environment says.
int rounds() {
  const char* told = std::getenv("TESSARN_ANALYSIS_ROUNDS");
  return told ? std::atoi(told) : 100;
}

precise zero() { return {0, precise_bits}; }
triple triple_of(const vector3d& v) { return {to_precise(v.x), to_precise(v.y), to_precise(v.z)}; }
precise dot(const triple& a, const triple& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
triple plus(const triple& a, const precise& f, const triple& b) {
  return {a[0] + f * b[0], a[1] + f * b[1], a[2] + f * b[2]};
}
triple cross(const triple& a, const triple& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
triple unit(const triple& a) {
  const precise square = dot(a, a), length = sqrt(square);
  return {a[0] / length, a[1] / length, a[2] / length};
}

bool near(double value, const precise& right, double share, double floor) {
  return abs(to_precise(value) - right) <= abs(right) * to_precise(share) + to_precise(floor);
}

// Points along an axis, and where they come from.
struct sample {
  std::vector<vector3d> points;
  std::vector<tessarn::real> weights;
  vector3d point, direction;
  double radius = 1;

  precise weight(std::size_t i) const {
    const precise w = to_precise(weights.empty() ? 1.0 : weights[i]);
    return w * w;
  }
  triple centroid() const {
    triple sum{zero(), zero(), zero()};
    precise total = zero();
    for (std::size_t i = 0; i < points.size(); ++i) {
      sum = plus(sum, weight(i), triple_of(points[i]));
      total += weight(i);
    }
    return {sum[0] / total, sum[1] / total, sum[2] / total};
  }
  double extent() const {
    double e = 0;
    for (const vector3d& v : points)
      e = std::fmax(e, std::fabs(v.x - points[0].x) + std::fabs(v.y - points[0].y) + std::fabs(v.z - points[0].z));
    return e;
  }
};

enum kind : int {
  tube,      // all around, with noise of a thousandth of the radius
  ring,      // a tenth as long as wide
  part,      // an arc of up to 1.5 radians to both sides
  shallow,   // an arc of 0.02 to 0.1 radians
  noisy,     // noise of a fifth of the radius
  blob,      // noise of five times the radius
  exact,     // but for the rounding of the coordinates
  far_away,  // a million from the origin
  vast_or_tiny,
  weighted,
  grid,  // whole numbers
  kinds
};

sample draw(random_source& random, kind k) {
  sample s;
  const std::size_t n = 7 + random.below(20);
  const double scale = k == vast_or_tiny ? std::ldexp(1.0, static_cast<int>(random.below(1000)) - 500) : 1;
  const double arc = k == part ? random.uniform(0.2, 1.5) : k == shallow ? random.uniform(0.02, 0.1) : 3.2;
  const double noise = k == noisy ? 0.2 : k == blob ? 5 : k == exact ? 0 : arc < 3 ? 1e-3 * arc * arc : 1e-3;
  const double half = k == ring ? 0.1 : k == shallow ? arc : 3, away = k == far_away ? 1e6 : 10;
  vector3d u(random.normal(), random.normal(), random.normal()), v(random.normal(), random.normal(), random.normal());
  u = u * (1 / u.lenld());
  vector3d e = u.cross(v);
  e = e * (1 / e.lenld());
  const vector3d f = u.cross(e), c(away * random.uniform(), away * random.uniform(), away * random.uniform());
  for (std::size_t i = 0; i < n; ++i) {
    const double a = arc * random.uniform(), r = 1 + noise * random.normal(), t = half * random.uniform();
    vector3d p = c + e * (r * std::cos(a)) + f * (r * std::sin(a)) + u * t;
    if (k == grid) p = vector3d(random.below(7), random.below(7), random.below(7));
    s.points.push_back(p * scale);
    if (k == weighted) s.weights.push_back(std::exp(random.uniform(-2, 2)));
  }
  s.point = c * scale;
  s.direction = u;
  s.radius = scale;
  return s;
}

// A cylinder in 256 bits: a step moves its point by two lengths across the axis, tilts the axis by two angles, and
// changes the radius.
struct precise_cylinder {
  triple point, direction;
  precise radius;
  triple across[2];

  precise_cylinder(const triple& p, const triple& u, const precise& r) : point(p), direction(unit(u)), radius(r) {
    triple other{to_precise(1), zero(), zero()};
    if (abs(direction[0]) > 0.7) other = {zero(), to_precise(1), zero()};
    across[0] = unit(cross(direction, other));
    across[1] = cross(direction, across[0]);
  }
  precise_cylinder moved(const precise_column& x) const {
    return {plus(plus(point, x[0], across[0]), x[1], across[1]),
            plus(plus(direction, x[2], across[0]), x[3], across[1]), radius + x[4]};
  }
  precise distance(const triple& p) const {
    const triple v = plus(p, to_precise(-1), point);
    const triple w = cross(v, direction);
    const precise square = dot(w, w);
    return sqrt(square) - radius;
  }
  precise squares(const sample& s) const {
    precise sum = zero();
    for (std::size_t i = 0; i < s.points.size(); ++i) {
      const precise r = distance(triple_of(s.points[i]));
      sum += s.weight(i) * r * r;
    }
    return sum;
  }
};

// Steps for differences, small against everything and large against 256 bits.
precise_column step_along(const precise_cylinder& c, std::size_t k, int sign) {
  precise_column x(5, zero());
  x[k] = (k == 2 || k == 3 ? to_precise(1) : c.radius) * to_precise(sign * 0x1p-60);
  return x;
}
precise_column both(const precise_column& a, const precise_column& b) {
  precise_column x = a;
  for (std::size_t k = 0; k < x.size(); ++k) x[k] += b[k];
  return x;
}

// Newton's method with derivatives from central differences; false when the second derivatives are not positive.
bool minimise(const sample& s, precise_cylinder& c, int steps) {
  for (int step = 0; step < steps; ++step) {
    const precise middle = c.squares(s);
    precise_column up(5, zero()), down = up, gradient = up;
    std::vector<precise_column> hessian(5, up);
    for (std::size_t k = 0; k < 5; ++k) {
      up[k] = c.moved(step_along(c, k, 1)).squares(s);
      down[k] = c.moved(step_along(c, k, -1)).squares(s);
      gradient[k] = (up[k] - down[k]) / 2;
      hessian[k][k] = up[k] - 2 * middle + down[k];
    }
    for (std::size_t k = 0; k < 5; ++k)
      for (std::size_t l = 0; l < k; ++l) {
        const precise corner = c.moved(both(step_along(c, k, 1), step_along(c, l, 1))).squares(s);
        const precise opposite = c.moved(both(step_along(c, k, -1), step_along(c, l, -1))).squares(s);
        const precise mixed = corner + opposite - up[k] - down[k] - up[l] - down[l] + 2 * middle;
        hessian[k][l] = hessian[l][k] = mixed / 2;
      }
    if (!test::eliminate_positive(hessian, gradient)) return false;
    precise_column x(5, zero());
    for (std::size_t k = 0; k < 5; ++k) x[k] = -gradient[k] * step_along(c, k, 1)[k];
    c = c.moved(x);
  }
  return true;
}

// The distance derivatives by differences, and the inverse of the sum of their products.
std::vector<precise_column> covariance(const sample& s, const precise_cylinder& c) {
  std::vector<precise_column> normal(5, precise_column(5, zero())), inverse;
  for (std::size_t i = 0; i < s.points.size(); ++i) {
    precise_column d(5, zero());
    for (std::size_t k = 0; k < 5; ++k) {
      const precise_column up = step_along(c, k, 1);
      const triple p = triple_of(s.points[i]);
      d[k] = (c.moved(up).distance(p) - c.moved(step_along(c, k, -1)).distance(p)) / (2 * up[k]);
    }
    for (std::size_t k = 0; k < 5; ++k)
      for (std::size_t l = 0; l < 5; ++l) normal[k][l] += s.weight(i) * d[k] * d[l];
  }
  for (std::size_t k = 0; k < 5; ++k) {
    inverse.emplace_back(5, zero());
    inverse[k][k] = 1;
    EXPECT_TRUE(test::eliminate_positive(normal, inverse[k]));
  }
  return inverse;
}

void expect_error(double told, const std::vector<precise_column>& inverse, const precise_column& change,
                  const precise& variance) {
  precise form = zero();
  for (std::size_t k = 0; k < 5; ++k)
    for (std::size_t l = 0; l < 5; ++l) form += change[k] * inverse[k][l] * change[l];
  const precise square = form * variance, error = sqrt(square);
  EXPECT_TRUE(near(told, error, 0x1p-40, 0)) << told << ' ' << error.get_d();
}

void judge(const sample& s, const tessarn::cylinder_fit& f) {
  const double tiny = s.extent() * 0x1p-90;
  precise_cylinder c(triple_of(f.point), triple_of(f.direction), to_precise(f.radius));
  ASSERT_TRUE(minimise(s, c, 2));  // from the digits of a double to all
  const triple g = s.centroid(), from = plus(g, to_precise(-1), c.point);
  const triple foot = plus(c.point, dot(from, c.direction), c.direction);
  const tessarn::real vector3d::*coordinates[] = {&vector3d::x, &vector3d::y, &vector3d::z};
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_TRUE(near(f.point.*coordinates[k], foot[k], 0x1.01p-53, f.radius * 0x1p-75)) << k;
    EXPECT_TRUE(near(f.direction.*coordinates[k], c.direction[k], 0x1.01p-53, 0x1p-75)) << k;
  }
  EXPECT_TRUE(near(f.radius, c.radius, 0x1.01p-53, 0));
  const precise squares = c.squares(s);
  precise weights = zero();
  for (std::size_t i = 0; i < s.points.size(); ++i) {
    weights += s.weight(i);
    EXPECT_TRUE(near(f.residuals.getData()[i], c.distance(triple_of(s.points[i])), 0x1p-52, tiny));
  }
  const precise mean_square = squares / weights, root_mean_square = sqrt(mean_square);
  EXPECT_TRUE(near(f.root_mean_square, root_mean_square, 0x1p-51, tiny));
  precise_cylinder truth(triple_of(s.point), triple_of(s.direction), to_precise(s.radius));
  if (minimise(s, truth, 5)) {
    EXPECT_TRUE(truth.squares(s) >= squares * to_precise(1 - 1e-9) - weights * to_precise(tiny) * to_precise(tiny));
  }
  if (root_mean_square < s.extent() * 0x1p-40) return;
  const precise_cylinder nearest(foot, c.direction, c.radius);
  const std::vector<precise_column> inverse = covariance(s, nearest);
  const precise variance = squares / static_cast<unsigned long>(s.points.size() - 5);
  const triple centre = plus(foot, to_precise(-1), g);
  expect_error(f.radius_error, inverse, {zero(), zero(), zero(), zero(), to_precise(1)}, variance);
  for (std::size_t k = 0; k < 3; ++k) {
    const precise a = nearest.across[0][k], b = nearest.across[1][k], u = nearest.direction[k];
    expect_error(f.direction_errors.*coordinates[k], inverse, {zero(), zero(), a, b, zero()}, variance);
    expect_error(f.point_errors.*coordinates[k], inverse,
                 {a, b, -dot(centre, nearest.across[0]) * u, -dot(centre, nearest.across[1]) * u, zero()}, variance);
  }
}

TEST(ShapesJudged, ManyCylinders) {
  random_source random(1670);
  int determined[kinds] = {}, drawn[kinds] = {};
  for (int i = 0; i < rounds() && !HasFailure(); ++i) {
    const kind k = static_cast<kind>(i % kinds);
    const sample s = draw(random, k);
    tessarn::shape_options o;
    o.weights = s.weights;
    const tessarn::cylinder_fit f = tessarn::fit_cylinder(s.points, o);
    SCOPED_TRACE(testing::Message() << "round " << i << ", kind " << k);
    EXPECT_NE(f.state, status::not_converged);
    EXPECT_NE(f.state, status::out_of_range);
    ++drawn[k];
    if (f.state != status::ok) continue;
    ++determined[k];
    judge(s, f);
  }
  for (int k = 0; k < kinds; ++k) {
    EXPECT_GE(determined[k], k == grid ? drawn[k] / 2 : drawn[k]) << k;
    if (std::getenv("TESSARN_ANALYSIS_ROUNDS"))
      std::printf("kind %d: %d of %d determined\n", k, determined[k], drawn[k]);
  }
}

// Searches from thirty directions of chance find no lower sum.
TEST(ShapesJudged, NoLowerCylinderIsFound) {
  namespace analysis = tessarn::analysis;
  random_source random(1671);
  int lower = 0;
  for (int i = 0; i < rounds(); ++i) {
    const sample s = draw(random, static_cast<kind>(i % grid));
    tessarn::shape_options o;
    o.weights = s.weights;
    const tessarn::cylinder_fit f = tessarn::fit_cylinder(s.points, o);
    if (f.state != status::ok) continue;
    const tessarn::space_points view = s.points;
    analysis::shape_data data({{view.x, view.y, view.z}, 3, o}, 6, 6);
    data.copy();
    const double root = std::ldexp(f.root_mean_square, -data.exponent());
    const double found = root * root * data.total_weight().high;
    for (int k = 0; k < 30; ++k) {
      analysis::round_shape<double> m{};
      m.dimension = 2;
      m.has_axis = true;
      for (double& u : m.axes[2]) u = random.normal();
      m.axes[1][random.below(3)] = 1;
      analysis::make_orthogonal(m.axes);
      if (!analysis::algebraic_starts(data, m).get(k % 3, m)) continue;
      const double other = analysis::search(data, m, 500).squares;
      if (other < found * (1 - 1e-6) - 1e-24 * data.total_weight().high) {
        ++lower;
        break;
      }
    }
  }
  if (std::getenv("TESSARN_ANALYSIS_ROUNDS")) std::printf("%d of %d lower\n", lower, rounds());
  EXPECT_LE(lower, rounds() / 1000);  // not every minimum of few and noisy points is found
}

// The direction is the limit of powers of the covariance, which are formed by squaring.
TEST(ShapesJudged, ManyLines) {
  random_source random(1672);
  int judged = 0;
  for (int i = 0; i < rounds() * 4 && !HasFailure(); ++i) {
    const sample s = draw(random, static_cast<kind>(i % kinds));
    tessarn::shape_options o;
    o.weights = s.weights;
    const tessarn::line_fit f = tessarn::fit_line(s.points, o);
    ASSERT_EQ(f.state, status::ok);
    const triple g = s.centroid();
    std::array<triple, 3> power;
    for (triple& row : power) row = {zero(), zero(), zero()};
    precise weights = zero(), trace = zero();
    for (std::size_t j = 0; j < s.points.size(); ++j) {
      const triple v = plus(triple_of(s.points[j]), to_precise(-1), g);
      for (std::size_t r = 0; r < 3; ++r)
        for (std::size_t c = 0; c < 3; ++c) power[r][c] += s.weight(j) * v[r] * v[c];
      weights += s.weight(j);
      trace += s.weight(j) * dot(v, v);
    }
    const std::array<triple, 3> covariance = power;
    for (int k = 0; k < 14; ++k) {
      std::array<triple, 3> next;
      const precise largest = power[0][0] + power[1][1] + power[2][2];
      for (std::size_t r = 0; r < 3; ++r)
        for (std::size_t c = 0; c < 3; ++c) {
          next[r][c] = zero();
          for (std::size_t m = 0; m < 3; ++m) next[r][c] += power[r][m] * power[m][c] / (largest * largest);
        }
      power = next;
    }
    std::size_t largest = 0;
    for (std::size_t k = 1; k < 3; ++k)  // the first of equal ones, whatever the last bits here are
      if (power[k][k] > power[largest][largest] * to_precise(1 + 0x1p-50)) largest = k;
    const triple u = unit(power[largest]);
    const triple image{dot(covariance[0], u), dot(covariance[1], u), dot(covariance[2], u)};
    const precise value = dot(image, u);
    if (f.reciprocal_condition < 0.02) continue;  // the powers have not reached their limit
    ++judged;
    const triple g_and_u[] = {g, u};
    const vector3d told[] = {f.point, f.direction};
    for (int k = 0; k < 2; ++k) {
      const double floor = k == 0 ? s.extent() * 0x1p-90 : 0x1p-80;
      EXPECT_TRUE(near(told[k].x, g_and_u[k][0], 0x1.01p-53, floor));
      EXPECT_TRUE(near(told[k].y, g_and_u[k][1], 0x1.01p-53, floor));
      EXPECT_TRUE(near(told[k].z, g_and_u[k][2], 0x1.01p-53, floor));
    }
    const precise squares = trace - value, variance = squares / static_cast<unsigned long>(2 * s.points.size() - 4);
    const precise deviation = sqrt(variance);
    EXPECT_TRUE(near(f.residual_deviation, deviation, 0x1p-51, s.extent() * 0x1p-60));
    const precise turned = variance * (1 - u[1] * u[1]) / value, error = sqrt(turned);
    EXPECT_TRUE(near(f.direction_errors.y, error, 0x1p-50, 0x1p-60));
    const precise shifted = variance * (1 - u[0] * u[0]) / weights, shift = sqrt(shifted);
    EXPECT_TRUE(near(f.point_errors.x, shift, 0x1p-50, s.extent() * 0x1p-60));
  }
  EXPECT_GT(judged, rounds() * 2);
}

}  // namespace

#endif
