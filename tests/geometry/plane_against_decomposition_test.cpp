// The pattern search against the least-squares plane from the decomposition of the centred points.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "simd/isa.h"
#include "support/random.h"
#include "tessarn/geometry.h"
#include "tessarn/matrix.h"

namespace {

std::vector<vector3d> noisy_plane(test::random_source& random, std::size_t n) {
  const double a = random.uniform(-0.4, 0.4), b = random.uniform(-0.4, 0.4);
  std::vector<vector3d> points;
  for (std::size_t i = 0; i < n; ++i) {
    const double x = 10 * random.uniform(), y = 10 * random.uniform();
    points.emplace_back(x + 3, y - 2, a * x + b * y + 5 + 0.01 * random.normal());
  }
  return points;
}

// The direction of the smallest singular value, pointing up.
vector3d decomposition_normal(const std::vector<vector3d>& points) {
  vector3d centre;
  for (const vector3d& p : points) centre += p;
  centre /= static_cast<double>(points.size());
  mat<long double> m, u, s, v;
  m.create(3, static_cast<tessarn::ulong>(points.size()));
  for (std::size_t i = 0; i < points.size(); ++i) {
    const vector3d p = points[i] - centre;
    m.set(0, static_cast<tessarn::ulong>(i), p.x);
    m.set(1, static_cast<tessarn::ulong>(i), p.y);
    m.set(2, static_cast<tessarn::ulong>(i), p.z);
  }
  m.decompose(u, s, v);
  const vector3d n(v.get(2, 0), v.get(2, 1), v.get(2, 2));
  return n.z < 0 ? n * -1.0 : n;
}

TEST(plane_fit, agrees_with_the_decomposition_within_the_final_step) {
  test::random_source random(20);
  for (int round = 0; round < 60; ++round) {
    const auto points = noisy_plane(random, 10 + random.below(500));
    const plane fitted(points.data(), static_cast<tessarn::ulong>(points.size()));
    const vector3d difference = fitted.normal - decomposition_normal(points);
    // The last step is 0.01 / 2^13; the search ends where no neighbour at that distance is better.
    EXPECT_LT(std::fabs(difference.x), 0.01 / 8192);
    EXPECT_LT(std::fabs(difference.y), 0.01 / 8192);
  }
}

TEST(plane_fit, has_the_same_bits_in_every_build) {
  using tessarn::detail::isa;
  test::random_source random(21);
  for (int round = 0; round < 60; ++round) {
    const auto points = noisy_plane(random, 4 + random.below(300));
    const auto fit = [&](isa set) {
      tessarn::detail::force_isa(set);
      return plane(points.data(), static_cast<tessarn::ulong>(points.size()));
    };
    const plane reference = fit(isa{});
    for (int set = 1; set < tessarn::detail::set_count; ++set) {
      const plane other = fit(static_cast<isa>(set));
      EXPECT_TRUE(other.normal == reference.normal && other.origin == reference.origin &&
                  other.axis1 == reference.axis1 && other.axis2 == reference.axis2);
    }
  }
}

}  // namespace
