// Circles and spheres judged by a plain search in 256 bits, on random and hostile points.
#include <tessarn/shapes.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <vector>

#include "../support/random.h"
#include "precise.h"

#if defined(TESTS_HAVE_GMP)

namespace {

using tessarn::status;
using test::precise;
using test::precise_bits;
using test::precise_column;
using test::precise_points;
using test::precise_sums;
using test::random_source;
using test::to_precise;

// How often each test runs: 800 times, or as the environment says.
int rounds() {
  const char* told = std::getenv("TESSARN_ANALYSIS_ROUNDS");
  return told ? std::atoi(told) : 800;
}

constexpr double pi = 3.141592653589793;

// Points on part of a circle or sphere, and where they come from.
struct sample {
  std::vector<std::vector<double>> points;
  std::vector<tessarn::real> weights;
  std::vector<double> truth;  // the centre and the radius
};

enum kind : int {
  whole,          // all around, with noise of a thousandth of the radius
  exact,          // all around, but for the rounding of the coordinates
  short_arc,      // a degree or much less, with noise of a thousandth of the height of the arc
  far_away,       // a million from the origin
  noisy,          // noise of half of the radius
  blob,           // noise of ten times the radius
  medium_arc,     // up to a radian
  hardly_an_arc,  // 1e-4 radians or less, with noise up to a third of the height
  vast_or_tiny,   // units of 1e-150 to 1e150
  weighted,       // weights from 0.001 to 1000
  grid,           // whole numbers, where many distances are equal
  scattered,      // coordinates of very different sizes
  repeated,       // each place several times
  kinds
};

double arc_of(random_source& random, kind k) {
  switch (k) {
    case short_arc: return pi / 360 * std::exp(random.uniform(-5, 0));
    case medium_arc: return random.uniform(0.01, 1);
    case hardly_an_arc: return 1e-4 * std::exp(random.uniform(-3, 0));
    default: return pi;
  }
}

double noise_of(random_source& random, kind k, double arc) {
  switch (k) {
    case exact: return 0;
    case short_arc: return 1e-3 * arc * arc;
    case noisy: return 0.5;
    case blob: return 10;
    case medium_arc: return 1e-2 * arc * arc;
    case hardly_an_arc: return arc * arc * random.uniform(0, 0.3);
    default: return 1e-3;
  }
}

sample draw(random_source& random, kind k, std::size_t d) {
  sample s;
  const std::size_t n = d + 1 + random.below(12);
  const double unit = k == vast_or_tiny ? std::ldexp(1.0, static_cast<int>(random.below(1000)) - 500) : 1;
  const double radius = unit * std::exp(random.uniform(-2, 5)), away = k == far_away ? 1e6 : 10 * unit;
  const double arc = arc_of(random, k), noise = noise_of(random, k, arc);
  const double middle = random.uniform(-pi, pi), raised = random.uniform(-1, 1);
  for (std::size_t i = 0; i < d; ++i) s.truth.push_back(away * random.uniform());
  s.truth.push_back(radius);
  for (std::size_t i = 0; i < n; ++i) {
    const double a = middle + arc * random.uniform(), b = d == 2    ? 0
                                                          : arc < 3 ? raised + arc * random.uniform()
                                                                    : std::asin(random.uniform());
    const double r = radius * (1 + noise * random.normal());
    const double out[3] = {std::cos(a) * std::cos(b), std::sin(a) * std::cos(b), std::sin(b)};
    std::vector<double> p;
    for (std::size_t c = 0; c < d; ++c) p.push_back(s.truth[c] + r * out[c]);
    for (double& v : p) {
      if (k == grid) v = static_cast<double>(random.below(7)) - 3;
      if (k == scattered) v = std::ldexp(random.uniform(), static_cast<int>(random.below(60)) - 30);
    }
    s.points.push_back(p);
    if (k == repeated && random.below(2) == 0)
      s.points.push_back(s.points[random.below(static_cast<std::uint32_t>(i) + 1)]);
  }
  if (k == weighted)
    for (std::size_t i = 0; i < s.points.size(); ++i) s.weights.push_back(std::exp(random.uniform(-7, 7)));
  return s;
}

// What both fits have, in one form.
struct answer {
  tessarn::shape_fit fit;
  std::vector<double> parameters, errors;  // the centre and the radius
};

answer ask(const sample& s, std::size_t d) {
  answer a;
  tessarn::shape_options o;
  o.weights = s.weights;
  if (d == 2) {
    std::vector<vector> p;
    for (const auto& v : s.points) p.emplace_back(v[0], v[1]);
    const tessarn::circle_fit f = tessarn::fit_circle(p, o);
    a.fit = f;
    a.parameters = {f.centre.x, f.centre.y, f.radius};
    a.errors = {f.centre_errors.x, f.centre_errors.y, f.radius_error};
  } else {
    std::vector<vector3d> p;
    for (const auto& v : s.points) p.emplace_back(v[0], v[1], v[2]);
    const tessarn::sphere_fit f = tessarn::fit_sphere(p, o);
    a.fit = f;
    a.parameters = {f.centre.x, f.centre.y, f.centre.z, f.radius};
    a.errors = {f.centre_errors.x, f.centre_errors.y, f.centre_errors.z, f.radius_error};
  }
  return a;
}

precise_points points_of(const sample& s) {
  precise_points p;
  for (std::size_t i = 0; i < s.points.size(); ++i) {
    p.p.emplace_back();
    for (const double v : s.points[i]) p.p.back().push_back(to_precise(v));
    const precise w = to_precise(s.weights.empty() ? 1.0 : s.weights[i]);
    p.weights.push_back(w * w);
  }
  return p;
}

precise_column column_of(const std::vector<double>& v) {
  precise_column c;
  for (const double x : v) c.push_back(to_precise(x));
  return c;
}

// The longest side of the box around the points.
double extent_of(const sample& s) {
  double extent = 0;
  for (std::size_t c = 0; c < s.points[0].size(); ++c)
    for (const auto& p : s.points) extent = std::fmax(extent, std::fabs(p[c] - s.points[0][c]));
  return extent;
}

// |value - right| <= share of |right| + floor.
bool near(double value, const precise& right, double share, double floor) {
  return abs(to_precise(value) - right) <= abs(right) * to_precise(share) + to_precise(floor);
}

// The entry of the inverse of the normal matrix on the diagonal.
precise inverse_entry(const precise_sums& s, std::size_t k) {
  precise_column unit(s.gradient.size(), precise(0, precise_bits));
  unit[k] = 1;
  EXPECT_TRUE(test::eliminate_positive(s.normal, unit));
  return unit[k];
}

// Judges one answer: the parameters, residuals and deviations are those of the minimum to which the plain search goes
// from the answer, and the search from the truth finds no lower one.
void judge(const sample& s, const answer& a) {
  const precise_points points = points_of(s);
  const std::size_t d = s.truth.size() - 1, n = s.points.size();
  const double extent = extent_of(s), tiny = extent * 0x1p-90;
  precise_column x = column_of(a.parameters);
  const precise_sums sums = test::minimise(points, x);
  for (std::size_t k = 0; k <= d; ++k)
    EXPECT_TRUE(near(a.parameters[k], x[k], 0x1.01p-53, a.parameters[d] * 0x1p-80))
        << k << ": " << a.parameters[k] << ' ' << precise(to_precise(a.parameters[k]) - x[k]).get_d();
  precise weights(0, precise_bits);
  for (const precise& w : points.weights) weights += w;
  const precise mean_square = sums.squares / weights, root_mean_square = sqrt(mean_square);
  EXPECT_TRUE(near(a.fit.root_mean_square, root_mean_square, 0x1p-51, tiny));
  for (std::size_t i = 0; i < n; ++i) {
    precise square(0, precise_bits);
    for (std::size_t c = 0; c < d; ++c) square += (points.p[i][c] - x[c]) * (points.p[i][c] - x[c]);
    const precise distance = sqrt(square) - x[d];
    EXPECT_TRUE(near(a.fit.residuals.getData()[i], distance, 0x1p-52, tiny));
  }
  if (n > d + 1 && root_mean_square > extent * 0x1p-40) {
    const precise variance = sums.squares / static_cast<unsigned long>(n - d - 1), deviation = sqrt(variance);
    EXPECT_TRUE(near(a.fit.residual_deviation, deviation, 0x1p-51, 0));
    for (std::size_t k = 0; k <= d; ++k) {
      const precise error_square = variance * inverse_entry(sums, k), error = sqrt(error_square);
      EXPECT_TRUE(near(a.errors[k], error, 0x1p-45, 0)) << k << ": " << a.errors[k] << ' ' << error.get_d();
    }
  }
  precise_column other = column_of(s.truth);
  const precise_sums from_truth = test::minimise(points, other, 100);
  EXPECT_TRUE(from_truth.squares >=
              sums.squares * to_precise(1 - 1e-9) - weights * to_precise(tiny) * to_precise(tiny));
}

void judge_many(std::uint64_t seed, std::size_t d) {
  random_source random(seed);
  int determined[kinds] = {}, drawn[kinds] = {};
  for (int i = 0; i < rounds() && !testing::Test::HasFailure(); ++i) {
    const kind k = static_cast<kind>(i % kinds);
    const sample s = draw(random, k, d);
    const answer a = ask(s, d);
    SCOPED_TRACE(testing::Message() << "round " << i << ", kind " << k);
    EXPECT_NE(a.fit.state, status::not_converged);
    EXPECT_NE(a.fit.state, status::out_of_range);
    ++drawn[k];
    if (a.fit.state != status::ok) continue;
    ++determined[k];
    judge(s, a);
  }
  for (int k = 0; k < kinds; ++k) {
    const bool some_are_not = k == grid || k == scattered || k == repeated || k == hardly_an_arc;
    EXPECT_GE(determined[k], some_are_not ? drawn[k] / 3 : drawn[k]) << k;
    if (std::getenv("TESSARN_ANALYSIS_ROUNDS"))
      std::printf("kind %d: %d of %d determined\n", k, determined[k], drawn[k]);
  }
}

TEST(ShapesJudged, ManyCircles) { judge_many(1640, 2); }
TEST(ShapesJudged, ManySpheres) { judge_many(1641, 3); }

}  // namespace

#endif
