// Lines, circles, spheres and cylinders: statuses one by one, options, and what must not change a result.
#include <tessarn/shapes.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "../support/bits.h"
#include "../support/random.h"

namespace {

using tessarn::fit_circle;
using tessarn::fit_cylinder;
using tessarn::fit_line;
using tessarn::fit_sphere;
using tessarn::shape_options;
using tessarn::status;
using test::bits_of;
using test::random_source;

using flat_points = std::vector<vector>;
using cloud = std::vector<vector3d>;
using column = std::vector<tessarn::real>;
constexpr double infinite = std::numeric_limits<double>::infinity();

// Points near a circle of radius 2 about (3, -1).
flat_points ring(random_source& random, std::size_t n, double noise) {
  flat_points p;
  for (std::size_t i = 0; i < n; ++i) {
    const double a = random.uniform(-3.2, 3.2), r = 2 + noise * random.normal();
    p.emplace_back(3 + r * std::cos(a), -1 + r * std::sin(a));
  }
  return p;
}

// Points near a sphere of radius 3 about (1, 2, 3).
cloud ball(random_source& random, std::size_t n, double noise) {
  cloud p;
  for (std::size_t i = 0; i < n; ++i) {
    const double x = random.normal(), y = random.normal(), z = random.normal();
    const double r = (3 + noise * random.normal()) / std::sqrt(x * x + y * y + z * z);
    p.emplace_back(1 + r * x, 2 + r * y, 3 + r * z);
  }
  return p;
}

// Points near a cylinder of radius 2 about the axis through (1, 2, 3) along (0.6, 0, 0.8).
cloud tube(random_source& random, std::size_t n, double noise) {
  cloud p;
  for (std::size_t i = 0; i < n; ++i) {
    const double a = random.uniform(-3.2, 3.2), r = 2 + noise * random.normal(), t = random.uniform(-4, 4);
    const double across = r * std::cos(a);
    p.emplace_back(1 + 0.8 * across + 0.6 * t, 2 + r * std::sin(a), 3 - 0.6 * across + 0.8 * t);
  }
  return p;
}

// Points near the line through (1, 2, 3) along (0.6, 0, 0.8).
cloud rod(random_source& random, std::size_t n, double noise) {
  cloud p;
  for (std::size_t i = 0; i < n; ++i) {
    const double t = random.uniform(-4, 4);
    p.emplace_back(1 + 0.6 * t + noise * random.normal(), 2 + noise * random.normal(),
                   3 + 0.8 * t + noise * random.normal());
  }
  return p;
}

// The four fits, called alike; a circle takes the first two coordinates.
struct shape {
  const char* name;
  cloud (*draw)(random_source&, std::size_t, double);
  tessarn::shape_fit (*fit)(tessarn::space_points, const shape_options&);
  std::size_t needed;
  tessarn::ulong unknowns;
};
cloud ring_in_space(random_source& random, std::size_t n, double noise) {
  cloud p;
  for (const vector& v : ring(random, n, noise)) p.emplace_back(v.x, v.y, 0);
  return p;
}
const shape shapes[] = {
    {"line", rod, [](tessarn::space_points p, const shape_options& o) -> tessarn::shape_fit { return fit_line(p, o); },
     2, 4},
    {"circle", ring_in_space,
     [](tessarn::space_points p, const shape_options& o) -> tessarn::shape_fit {
       return fit_circle(tessarn::plane_points(p.x, p.y), o);
     },
     3, 3},
    {"sphere", ball,
     [](tessarn::space_points p, const shape_options& o) -> tessarn::shape_fit { return fit_sphere(p, o); }, 4, 4},
    {"cylinder", tube,
     [](tessarn::space_points p, const shape_options& o) -> tessarn::shape_fit { return fit_cylinder(p, o); }, 6, 5},
};

TEST(Shapes, StatusesOfAll) {
  random_source random(1650);
  for (const shape& s : shapes) {
    SCOPED_TRACE(s.name);
    const cloud p = s.draw(random, 20, 1e-3);
    const auto state_of = [&](const cloud& c, const shape_options& o = {}) { return s.fit(c, o).state; };
    EXPECT_EQ(state_of(p), status::ok);
    EXPECT_EQ(state_of({}), status::no_points);
    EXPECT_EQ(state_of(cloud(p.begin(), p.begin() + s.needed - 1)), status::too_few_points);
    EXPECT_EQ(state_of(cloud(9, p[0])), status::too_few_distinct);
    cloud few(p.begin(), p.begin() + s.needed - 1);
    for (int i = 0; i < 9; ++i) few.push_back(few[i % (s.needed - 1)]);
    EXPECT_EQ(state_of(few), status::too_few_distinct);
    column weights(20, 1);
    shape_options o;
    o.weights = weights;
    EXPECT_EQ(state_of(cloud(p.begin(), p.begin() + 19), o), status::sizes_differ);
    for (const double bad : {-1.0, infinite, std::nan("")}) {
      weights[3] = bad;
      EXPECT_EQ(state_of(p, o), bad == -1 ? status::bad_weight : status::not_finite);
    }
    weights.assign(20, 0);
    EXPECT_EQ(state_of(p, o), status::bad_weight);
    weights[4] = 1;
    EXPECT_EQ(state_of(p, o), status::too_few_points);
    weights.assign(20, 1);
    weights[7] = 1e-70;
    EXPECT_EQ(state_of(p, o), status::out_of_range);
    o = {};
    o.most_steps = 0;
    EXPECT_EQ(state_of(p, o), status::bad_option);
  }
  const column three{1, 2, 3}, two{1, 2};
  EXPECT_EQ(fit_line(tessarn::space_points(three, two, three)).state, status::sizes_differ);
  EXPECT_EQ(fit_line(tessarn::space_points(three, three, two)).state, status::sizes_differ);
  EXPECT_EQ(fit_circle(tessarn::plane_points(three, two)).state, status::sizes_differ);
}

TEST(Shapes, NotFinitePointsAreToldOrLeftOut) {
  random_source random(1651);
  for (const shape& s : shapes) {
    SCOPED_TRACE(s.name);
    const cloud good = s.draw(random, 20, 1e-3);
    const tessarn::shape_fit right = s.fit(good, {});
    for (const double bad : {infinite, -infinite, std::nan("")})
      for (tessarn::real vector3d::*coordinate : {&vector3d::x, &vector3d::y}) {
        cloud p = good;
        p.insert(p.begin() + 5, p[0]);
        p[5].*coordinate = bad;
        EXPECT_EQ(s.fit(p, {}).state, status::not_finite);
        shape_options o;
        o.leave_out_not_finite = true;
        const tessarn::shape_fit f = s.fit(p, o);
        ASSERT_EQ(f.state, status::ok);
        EXPECT_EQ(f.points_used, 20u);
        EXPECT_EQ(f.points_left_out, 1u);
        EXPECT_TRUE(std::isnan(f.residuals.getData()[5]));
        EXPECT_EQ(bits_of(f.residuals.getData()[6]), bits_of(right.residuals.getData()[5]));
        EXPECT_EQ(bits_of(f.residual_deviation), bits_of(right.residual_deviation));
      }
  }
}

// Residuals, their largest, their span and both deviations belong together; a weight of 2 counts as four points.
TEST(Shapes, ResidualsAndWeights) {
  random_source random(1652);
  int inside = 0;  // how often the largest residual is negative
  for (int round = 0; round < 20; ++round) {
    const shape& s = shapes[round % 4];
    SCOPED_TRACE(s.name);
    cloud p = s.draw(random, 20, 0.05);
    const tessarn::shape_fit f = s.fit(p, {});
    ASSERT_EQ(f.state, status::ok);
    EXPECT_EQ(f.unknowns, s.unknowns);
    double largest = 0, lowest = infinite, highest = -infinite, squares = 0;
    for (std::size_t i = 0; i < 20; ++i) {
      const double r = f.residuals.getData()[i];
      if (std::fabs(r) > std::fabs(largest)) largest = r;
      lowest = std::fmin(lowest, r);
      highest = std::fmax(highest, r);
      squares += r * r;
    }
    EXPECT_EQ(f.largest_residual, largest);
    inside += largest < 0;
    EXPECT_EQ(f.residuals.getData()[f.largest_at], largest);
    const bool is_line = s.unknowns == 4 && s.needed == 2;
    EXPECT_NEAR(f.peak_to_valley, is_line ? 2 * largest : highest - lowest, 1e-15);
    EXPECT_NEAR(f.root_mean_square, std::sqrt(squares / 20), 1e-15);
    EXPECT_NEAR(f.residual_deviation, std::sqrt(squares / ((is_line ? 40.0 : 20.0) - s.unknowns)), 1e-15);
    EXPECT_GT(f.reciprocal_condition, 0.01);
    EXPECT_LE(f.reciprocal_condition, 1);
    column weights(20, 1);
    weights[3] = 2;
    weights[4] = 0;
    shape_options o;
    o.weights = weights;
    const tessarn::shape_fit weighted = s.fit(p, o);
    EXPECT_TRUE(std::isnan(weighted.residuals.getData()[4]));
    EXPECT_EQ(weighted.points_left_out, 1u);
    cloud copies = p;
    copies.erase(copies.begin() + 4);
    for (int i = 0; i < 3; ++i) copies.push_back(p[3]);
    const tessarn::shape_fit repeated = s.fit(copies, {});
    EXPECT_NEAR(weighted.residuals.getData()[3], repeated.residuals.getData()[3], 1e-15);
    EXPECT_NEAR(weighted.root_mean_square, repeated.root_mean_square, 1e-15);
    EXPECT_NE(weighted.root_mean_square, f.root_mean_square);
  }
  EXPECT_GT(inside, 2);
}

// A unit that is a power of two changes nothing but the exponents of the results.
TEST(Shapes, TheUnitDoesNotMatter) {
  random_source random(1653);
  for (const shape& s : shapes) {
    SCOPED_TRACE(s.name);
    const cloud p = s.draw(random, 12, 0.05);
    const tessarn::shape_fit f = s.fit(p, {});
    for (const int e : {-900, -500, -1, 500, 1000}) {
      cloud q = p;
      for (vector3d& v : q) v = vector3d(std::ldexp(v.x, e), std::ldexp(v.y, e), std::ldexp(v.z, e));
      const tessarn::shape_fit g = s.fit(q, {});
      ASSERT_EQ(g.state, status::ok) << e;
      for (int i = 0; i < 12; ++i)
        EXPECT_EQ(bits_of(g.residuals.getData()[i]), bits_of(std::ldexp(f.residuals.getData()[i], e)));
      EXPECT_EQ(bits_of(g.residual_deviation), bits_of(std::ldexp(f.residual_deviation, e)));
      EXPECT_EQ(bits_of(g.reciprocal_condition), bits_of(f.reciprocal_condition));
      EXPECT_EQ(g.steps, f.steps);
    }
  }
}

TEST(Shapes, ParametersAreFound) {
  random_source random(1654);
  const auto l = fit_line(rod(random, 500, 0.01));
  EXPECT_NEAR(l.direction.x, 0.6, 5 * l.direction_errors.x);
  EXPECT_NEAR(l.direction.z, 0.8, 5 * l.direction_errors.z);
  EXPECT_NEAR(l.point.y, 2, 5 * l.point_errors.y);
  EXPECT_NEAR(l.residual_deviation, 0.01, 0.001);
  const auto c = fit_circle(ring(random, 500, 0.01));
  EXPECT_NEAR(c.centre.x, 3, 5 * c.centre_errors.x);
  EXPECT_NEAR(c.centre.y, -1, 5 * c.centre_errors.y);
  EXPECT_NEAR(c.radius, 2, 5 * c.radius_error);
  EXPECT_NEAR(c.residual_deviation, 0.01, 0.001);
  const auto s = fit_sphere(ball(random, 500, 0.01));
  EXPECT_NEAR(s.centre.z, 3, 5 * s.centre_errors.z);
  EXPECT_NEAR(s.radius, 3, 5 * s.radius_error);
  const auto t = fit_cylinder(tube(random, 500, 0.01));
  EXPECT_NEAR(t.direction.x, 0.6, 5 * t.direction_errors.x);
  EXPECT_NEAR(t.direction.y, 0, 5 * t.direction_errors.y);
  EXPECT_NEAR(t.point.y, 2, 5 * t.point_errors.y);
  EXPECT_NEAR(t.radius, 2, 5 * t.radius_error);
  EXPECT_LT(t.radius_error, 0.002);
}

// The standard errors are those of many repetitions with new noise.
TEST(Shapes, StandardErrorsAreThoseOfRepetitions) {
  random_source random(1655);
  const cloud tube_points = tube(random, 30, 0), rod_points = rod(random, 30, 0);
  double squares[4] = {}, told[4] = {};
  constexpr int repetitions = 400;
  for (int i = 0; i < repetitions; ++i) {
    cloud t = tube_points, r = rod_points;
    for (cloud* c : {&t, &r})
      for (vector3d& v : *c)
        v = vector3d(v.x + 0.01 * random.normal(), v.y + 0.01 * random.normal(), v.z + 0.01 * random.normal());
    const auto f = fit_cylinder(t);
    const auto g = fit_line(r);
    const double off[4] = {f.radius - 2, f.direction.y, g.direction.y, g.direction.x - 0.6};
    const double errors[4] = {f.radius_error, f.direction_errors.y, g.direction_errors.y, g.direction_errors.x};
    for (int k = 0; k < 4; ++k) {
      squares[k] += off[k] * off[k];
      told[k] += errors[k] * errors[k];
    }
  }
  for (int k = 0; k < 4; ++k) EXPECT_NEAR(std::sqrt(squares[k] / told[k]), 1, 0.15) << k;
}

TEST(Shapes, WithoutDegreesOfFreedomErrorsAreInfinite) {
  const auto c = fit_circle(flat_points{{5, 0}, {3, 4}, {-4, 3}});
  ASSERT_EQ(c.state, status::ok);
  EXPECT_EQ(c.residual_deviation, infinite);
  EXPECT_EQ(c.radius_error, infinite);
  EXPECT_EQ(c.centre_errors.x, infinite);
  const auto l = fit_line(cloud{{0, 0, 0}, {1, 2, 2}});
  EXPECT_EQ(l.residual_deviation, infinite);
  EXPECT_EQ(l.direction_errors.y, infinite);
  const auto upright = fit_line(cloud{{0, 0, -7}, {0, 0, -9}});
  EXPECT_EQ(upright.direction_errors.z, 0);  // a small turn does not change it
  EXPECT_EQ(upright.point_errors.z, 0);
  EXPECT_EQ(upright.point_errors.x, infinite);
}

}  // namespace
