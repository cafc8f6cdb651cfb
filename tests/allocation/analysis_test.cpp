// Allocation failure at every allocation of the calls that carry a status: they throw std::bad_alloc, leak nothing, and
// leave their arguments as they were.
#include <tessarn/align.h>
#include <tessarn/curve.h>
#include <tessarn/fit.h>
#include <tessarn/flat.h>
#include <tessarn/shapes.h>
#include <tessarn/solve.h>

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <vector>

#include "../support/failing_new.h"
#include "../support/random.h"

namespace {

using namespace test;

// Runs the call with its first, second, ... allocation failing until none is left to fail; how many failed.
long failures_of(const std::function<void()>& call) {
  const long blocks = live_blocks();
  return fail_every_allocation([&](long k) {
    const outcome o = run_failing(k, call);
    EXPECT_EQ(o.threw, o.failed) << "allocation " << k;  // nothing is managed without its memory
    EXPECT_EQ(live_blocks(), blocks) << "failing at allocation " << k;
    return o;
  });
}

TEST(AnalysisAllocation, EveryFailureIsThrownAndLeaksNothing) {
  random_source random(1620);
  // Small arrays stand on the stack; these are too large for it.
  mat<long double> a(70, 70), tall(70, 90), b(1, 70), long_b(1, 90);
  for (int i = 0; i < 70 * 70; ++i) a.getData()[i] = random.uniform();
  for (int i = 0; i < 70 * 90; ++i) tall.getData()[i] = random.uniform();
  for (int i = 0; i < 70; ++i) b.getData()[i] = random.uniform();
  for (int i = 0; i < 90; ++i) long_b.getData()[i] = random.uniform();
  mat<cplx> c, d;
  c.create(35, 35);
  d.create(1, 35);
  for (int i = 0; i < 35 * 35; ++i) c.getData()[i] = cplx(random.uniform(), random.uniform());
  for (int i = 0; i < 35; ++i) d.getData()[i] = cplx(random.uniform(), random.uniform());
  std::vector<vector> points;
  std::vector<vector3d> cloud;
  for (int i = 0; i < 200; ++i) {
    points.emplace_back(random.uniform(), random.uniform());
    cloud.emplace_back(random.uniform(), random.uniform(), random.uniform());
  }
  std::vector<vector3d> flat = cloud;
  for (vector3d& p : flat) p.z = 3;
  const tessarn::polynomial_fit f = tessarn::fit_polynomial(points, 4);
  const tessarn::surface_fit s = tessarn::fit_surface(cloud, 2);
  const binom double_zeros{4, 0, -4, 0, 1};  // (x^2 - 2)^2
  std::vector<tessarn::real> weights(cloud.size(), 1);
  weights[3] = 0;
  tessarn::align_options weighted_pairs;
  tessarn::shape_options weighted_points;
  weighted_pairs.weights = weighted_points.weights = weights;
  std::vector<vector3d> with_nan = cloud;
  with_nan[7].y = std::numeric_limits<double>::quiet_NaN();
  tessarn::flatness_options without_nan;
  without_nan.leave_out_not_finite = true;
  tessarn::robust_options two_rounds;  // later rounds allocate as the second does
  tessarn::robust_surface_options two_rounds_of_surfaces;
  two_rounds.most_rounds = two_rounds_of_surfaces.most_rounds = 2;
  const struct {
    const char* name;
    std::function<void()> call;
    long least;
  } calls[] = {
      {"solve", [&] { (void)tessarn::solve(a, b); }, 8},
      {"solve, complex", [&] { (void)tessarn::solve(c, d); }, 8},
      {"inverse", [&] { (void)tessarn::inverse(a); }, 8},
      {"inverse, complex", [&] { (void)tessarn::inverse(c); }, 8},
      {"determinant", [&] { (void)tessarn::determinant(a); }, 8},
      {"least_squares", [&] { (void)tessarn::least_squares(tall, long_b); }, 12},
      {"align", [&] { (void)tessarn::align(cloud, cloud); }, 4},
      {"align, in the plane", [&] { (void)tessarn::align(points, points); }, 4},
      {"flatness", [&] { (void)tessarn::flatness(cloud); }, 30},
      {"flatness, in one plane", [&] { (void)tessarn::flatness(flat); }, 10},
      {"fit_polynomial", [&] { (void)tessarn::fit_polynomial(points, 25); }, 12},
      {"fit_surface", [&] { (void)tessarn::fit_surface(cloud, 6); }, 12},
      {"zeros", [&] { (void)tessarn::zeros(double_zeros, -9, 9); }, 60},
      {"extremes", [&] { (void)tessarn::extremes(double_zeros, -9, 9); }, 60},
      {"inflections", [&] { (void)tessarn::inflections(double_zeros, -9, 9); }, 60},
      {"curvature_extremes", [&] { (void)tessarn::curvature_extremes(double_zeros, -9, 9); }, 60},
      {"fit_line", [&] { (void)tessarn::fit_line(cloud); }, 2},
      {"fit_circle", [&] { (void)tessarn::fit_circle(points); }, 4},
      {"fit_sphere", [&] { (void)tessarn::fit_sphere(cloud); }, 3},
      {"fit_cylinder", [&] { (void)tessarn::fit_cylinder(cloud); }, 3},
      {"align, some with weights", [&] { (void)tessarn::align(cloud, cloud, weighted_pairs); }, 8},
      {"flatness, with a point left out", [&] { (void)tessarn::flatness(with_nan, without_nan); }, 30},
      {"fit_sphere, some with weights", [&] { (void)tessarn::fit_sphere(cloud, weighted_points); }, 6},
      {"polynomial_fit::expanded", [&] { (void)f.expanded(); }, 1},
      {"surface_fit::expanded", [&] { (void)s.expanded(); }, 1},
      {"fit_robust", [&] { (void)tessarn::fit_robust(points, 25, two_rounds); }, 12},
      {"fit_robust, surface", [&] { (void)tessarn::fit_robust(cloud, 6, two_rounds_of_surfaces); }, 12},
  };
  for (const auto& call : calls) {
    SCOPED_TRACE(call.name);
    EXPECT_GE(failures_of(call.call), call.least);
  }
}

}  // namespace
