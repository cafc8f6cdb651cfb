// Points that do not determine a shape, or hardly do, and the ends of the range of reals.
#include <tessarn/shapes.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "../support/random.h"

namespace {

using tessarn::fit_circle;
using tessarn::fit_cylinder;
using tessarn::fit_line;
using tessarn::fit_sphere;
using tessarn::status;
using test::random_source;

using flat_points = std::vector<vector>;
using cloud = std::vector<vector3d>;

TEST(ShapeLimits, LineWithoutALongestDirection) {
  EXPECT_EQ(fit_line(cloud{{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}}).state, status::not_determined);
  EXPECT_EQ(fit_line(cloud{{1 + 1e-12, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}}).state, status::ok);
  EXPECT_EQ(fit_line(cloud{{1e20, 0, 0}, {1e20, 1, 0}}).state, status::not_determined);  // below the digits of 1e20
  const auto f = fit_line(cloud{{0, 0, -7}, {0, 0, -9}});
  EXPECT_EQ(f.direction.z, 1);
  EXPECT_EQ(f.point.z, -8);
}

TEST(ShapeLimits, CollinearPointsHaveNoCircle) {
  EXPECT_EQ(fit_circle(flat_points{{0, 0}, {1, 1}, {2, 2}, {5, 5}}).state, status::collinear);
  random_source random(1660);
  for (int i = 0; i < 200; ++i) {  // collinear but for the rounding of the coordinates
    const double a = random.uniform(), b = random.uniform(), away = i % 2 == 0 ? 1 : 1e6;
    flat_points p;
    cloud q;
    for (int k = 0; k < 8; ++k) {
      p.emplace_back(away + a * k, b * k - away);
      q.emplace_back(away + a * k, b * k, a - b * k);
    }
    EXPECT_EQ(fit_circle(p).state, status::collinear);
    EXPECT_EQ(fit_sphere(q).state, status::collinear);
    EXPECT_EQ(fit_cylinder(q).state, status::collinear);
  }
}

TEST(ShapeLimits, CoplanarPointsHaveNoSphere) {
  random_source random(1661);
  for (int i = 0; i < 200; ++i) {
    const double a = random.uniform(), b = random.uniform(), away = i % 2 == 0 ? 1 : 1e6;
    cloud q;
    for (int k = 0; k < 8; ++k) {
      const double s = random.uniform(), t = random.uniform();
      q.emplace_back(away + s, t, away + a * s + b * t);
    }
    EXPECT_EQ(fit_sphere(q).state, status::coplanar);
    EXPECT_EQ(fit_cylinder(q).state, status::coplanar);
  }
}

// By their symmetry these points lie better on a line or plane than on any curved shape.
TEST(ShapeLimits, ALineOrPlaneCanBeTheBestShape) {
  flat_points zigzag;
  cloud folded;
  for (int i = -10; i <= 10; ++i) {
    zigzag.emplace_back(i, i % 2 == 0 ? 0 : i > 0 ? 0.1 : -0.1);
    for (int k = -10; k <= 10; ++k) folded.emplace_back(i, k, (i * k) % 2 == 0 ? 0 : i > 0 ? 0.1 : -0.1);
  }
  EXPECT_EQ(fit_circle(zigzag).state, status::not_determined);
  EXPECT_EQ(fit_sphere(folded).state, status::not_determined);
  EXPECT_EQ(fit_cylinder(folded).state, status::not_determined);
  zigzag[0].y += 0.01;
  const auto f = fit_circle(zigzag);
  ASSERT_EQ(f.state, status::ok);
  EXPECT_GT(f.radius, 1000);
  EXPECT_GT(f.radius_error, f.radius / 10);  // and its error says that it is hardly told
}

// The height of the arc decides: 2^-50 of the largest coordinate is the limit.
TEST(ShapeLimits, TheFlattestArc) {
  const auto arc = [](double height, double away) {
    return flat_points{{away - 1, 0}, {away, height}, {away + 1, 0}, {away + 0.5, 0.75 * height}};
  };
  EXPECT_EQ(fit_circle(arc(0x1p-52, 0)).state, status::collinear);
  EXPECT_EQ(fit_circle(arc(0x1p-30, 1e9)).state, status::collinear);
  const auto f = fit_circle(arc(0x1p-40, 0));
  ASSERT_EQ(f.state, status::ok);
  EXPECT_NEAR(f.radius * 0x1p-39, 1, 1e-10);
  const auto g = fit_circle(arc(0x1p-20, 1e6));
  ASSERT_EQ(g.state, status::ok);
  EXPECT_NEAR(g.radius * 0x1p-19, 1, 1e-10);
}

TEST(ShapeLimits, EndsOfTheRange) {
  constexpr double huge = 1.7e308, tiny = std::numeric_limits<double>::denorm_min();
  const auto f = fit_circle(flat_points{{huge, 0}, {-huge, 0}, {0, huge}, {0, -huge}});
  ASSERT_EQ(f.state, status::ok);
  EXPECT_EQ(f.radius, huge);
  EXPECT_EQ(f.centre.x, 0);
  const double middle = 1.2e308, away = 0.4e308;  // the sum of two coordinates is too large
  const auto g = fit_circle(
      flat_points{{middle + away, middle}, {middle - away, middle}, {middle, middle + away}, {middle, middle - away}});
  ASSERT_EQ(g.state, status::ok);
  EXPECT_NEAR(g.radius / away, 1, 1e-15);
  const auto s = fit_circle(flat_points{{8 * tiny, 0}, {-8 * tiny, 0}, {0, 8 * tiny}, {0, -8 * tiny}});
  ASSERT_EQ(s.state, status::ok);
  EXPECT_EQ(s.radius, 8 * tiny);
  EXPECT_EQ(fit_circle(flat_points{{huge, 0}, {-huge, 0}, {0, huge / 1e9}, {0, huge / 1e9}}).state,
            status::out_of_range);
  EXPECT_EQ(fit_sphere(cloud{{huge, 0, 0}, {-huge, 0, 0}, {0, huge, 0}, {0, 0, huge / 1e5}, {0, -huge, 0}}).state,
            status::out_of_range);
  const auto l = fit_line(cloud{{huge, 0, 0}, {-huge, 0, 0}});
  ASSERT_EQ(l.state, status::ok);
  EXPECT_EQ(l.direction.x, 1);
}

// The centre or the point of the axis is too large for a real, and the radius is not.
TEST(ShapeLimits, ACentreOutOfRange) {
  flat_points p;
  cloud q;
  for (int i = -4; i <= 4; ++i) {
    const double a = 0.2 * i, x = 1.35e308 + 0.6e308 * (1 - std::cos(a)), y = 0.6e308 * std::sin(a);
    p.emplace_back(x, y);
    for (const double z : {-0.3e308, 0.1e308, 0.2e308}) q.emplace_back(x, y, z);
  }
  EXPECT_EQ(fit_circle(p).state, status::out_of_range);
  EXPECT_EQ(fit_cylinder(q).state, status::out_of_range);
  EXPECT_EQ(fit_circle(p).radius, 0);
  EXPECT_EQ(fit_cylinder(q).residuals.getHeight(), 0u);
}

// Whatever the numbers are, a fit ends, and what it calls a result is finite.
TEST(ShapeLimits, HostileNumbersEnd) {
  random_source random(1662);
  int found = 0;
  for (int i = 0; i < 2000; ++i) {
    flat_points p;
    cloud q;
    const std::size_t n = 1 + random.below(12);
    const bool with_nan = i % 4 == 0;
    const auto draw = [&] { return with_nan ? random.hostile() : random.hostile_finite(); };
    for (std::size_t k = 0; k < n; ++k) {
      const double x = draw(), y = draw(), z = draw();
      p.emplace_back(x, y);
      q.emplace_back(x, y, z);
    }
    tessarn::shape_options o;
    o.leave_out_not_finite = i % 8 == 0;
    const auto c = fit_circle(p, o);
    const auto s = fit_sphere(q, o);
    const auto l = fit_line(q, o);
    const auto t = fit_cylinder(q, o);
    if (c.state == status::ok) {
      EXPECT_TRUE(std::isfinite(c.radius) && c.radius > 0 && std::isfinite(c.centre.x) && std::isfinite(c.centre.y));
    }
    if (s.state == status::ok) {
      EXPECT_TRUE(std::isfinite(s.radius) && s.radius > 0 && std::isfinite(s.centre.z));
    }
    if (l.state == status::ok) {
      EXPECT_NEAR(l.direction.lenld(), 1, 1e-15);
    }
    if (t.state == status::ok) {
      EXPECT_NEAR(t.direction.lenld(), 1, 1e-15);
      EXPECT_TRUE(std::isfinite(t.radius) && t.radius > 0 && std::isfinite(t.point.x));
    }
    found += (c.state == status::ok) + (s.state == status::ok) + (l.state == status::ok) + (t.state == status::ok);
  }
  EXPECT_GT(found, 500);
}

TEST(ShapeLimits, TooFewStepsAreTold) {
  random_source random(1663);
  flat_points p;
  cloud q;
  for (int i = 0; i < 30; ++i) {
    p.emplace_back(random.normal(), random.normal());
    q.emplace_back(random.normal(), random.normal(), random.normal());
  }
  tessarn::shape_options o;
  o.most_steps = 1;
  EXPECT_EQ(fit_circle(p, o).state, status::not_converged);
  EXPECT_EQ(fit_sphere(q, o).state, status::not_converged);
  EXPECT_EQ(fit_cylinder(q, o).state, status::not_converged);
  EXPECT_EQ(fit_circle(p).state, status::ok);
  for (o.most_steps = 1; o.most_steps < 12; ++o.most_steps) EXPECT_LE(fit_circle(p, o).steps, o.most_steps);
}

// The corners of a cube lie on three cylinders; one more point decides.
TEST(ShapeLimits, EqualSumsAreTold) {
  cloud cube;
  for (int i = 0; i < 8; ++i) cube.emplace_back(i & 1 ? 1 : -1, i & 2 ? 1 : -1, i & 4 ? 1 : -1);
  EXPECT_EQ(fit_cylinder(cube).state, status::not_determined);
  cube.emplace_back(5, std::sqrt(2.0), 0);  // on one of the three
  const auto f = fit_cylinder(cube);
  ASSERT_EQ(f.state, status::ok);
  EXPECT_EQ(f.direction.x, 1);
  // Points with a mirror: the lowest circle lies beside it, and so does its image.
  const flat_points mirrored{{1, 3}, {1, -3}, {5, 1}, {5, -1}, {-8, 4}, {-8, -4}, {-2, 1}, {-2, -1}};
  EXPECT_EQ(fit_circle(mirrored).state, status::not_determined);
  flat_points tilted = mirrored;
  tilted[0].y += 0.01;
  const auto c = fit_circle(tilted);
  ASSERT_EQ(c.state, status::ok);
  EXPECT_GT(std::fabs(c.centre.y), 3);
}

// Scattered points, whose lowest circle no algebraic start leads to.
TEST(ShapeLimits, TheLowestOfSeveralMinima) {
  const flat_points p{{8, -7}, {1, -3}, {-2, -8}, {5, 9}, {7, -7}, {-8, 6}, {2, 1}, {-4, -1}};
  EXPECT_NEAR(fit_circle(p).root_mean_square, 3.0877595645886, 1e-11);
}

// Six to nine points on a cylinder, with many other minima: the one where all distances vanish is found.
TEST(ShapeLimits, CylindersThroughFewPoints) {
  random_source random(1664);
  for (int i = 0; i < 100; ++i) {
    cloud q;
    const double length = std::exp(random.uniform(-2, 2));
    for (std::size_t k = 6 + random.below(4); k > 0; --k) {
      const double a = random.uniform(-3.2, 3.2), t = length * random.uniform();
      q.emplace_back(0.8 * std::cos(a) + 0.6 * t, std::sin(a), 0.8 * t - 0.6 * std::cos(a));
    }
    EXPECT_LT(fit_cylinder(q).root_mean_square, 1e-14) << i;
  }
}

// Two of the three places are so near to each other that the direction between them is hardly told.
TEST(ShapeLimits, NearlyEqualPlacesDoNotDetermineACircle) {
  const auto through = [](double apart) { return fit_circle(flat_points{{-1, 0}, {1, 0}, {1, apart}}); };
  for (const double apart : {1e-11, 1.5e-9}) EXPECT_EQ(through(apart).state, status::not_determined);
  const auto g = through(4e-9);  // double precision takes the line through the places for a minimum
  ASSERT_EQ(g.state, status::ok);
  EXPECT_NEAR(g.centre.y, 2e-9, 1e-24);
  const auto f = through(1e-6);
  ASSERT_EQ(f.state, status::ok);
  EXPECT_NEAR(f.centre.y, 5e-7, 1e-22);
  EXPECT_LT(f.reciprocal_condition, 1e-5);
}

}  // namespace
