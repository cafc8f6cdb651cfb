// Inputs that need arithmetic. This file is compiled without contraction in both programs, so that
// they time the same numbers and the hashes of our results can be compared.
#include "inputs.h"

#include <cmath>

namespace bench {

std::vector<plain::vec2> curve_points(long n, std::uint64_t seed) {
  test::random_source r(seed);
  std::vector<plain::vec2> points(static_cast<std::size_t>(n));
  for (plain::vec2& p : points) {
    p.x = r.uniform();
    p.y = 1 + p.x * (2 - p.x * (3 + p.x)) + 0.1 * r.uniform();
  }
  return points;
}

std::vector<plain::vec3> surface_points(long n, std::uint64_t seed) {
  test::random_source r(seed);
  std::vector<plain::vec3> points(static_cast<std::size_t>(n));
  for (plain::vec3& p : points) {
    p.x = r.uniform();
    p.y = r.uniform();
    p.z = 1 + p.x * p.y - p.x * p.x + 0.1 * r.uniform();
  }
  return points;
}

std::vector<plain::vec3> plane_points(long n, std::uint64_t seed) {
  test::random_source r(seed);
  std::vector<plain::vec3> points(static_cast<std::size_t>(n));
  for (plain::vec3& p : points) {
    p.x = r.uniform();
    p.y = r.uniform();
    p.z = 0.2 * p.x - 0.3 * p.y + 1 + 0.05 * r.uniform();
  }
  return points;
}

point_pairs matched_points(long n, std::uint64_t seed) {
  test::random_source r(seed);
  // A rotation by Euler angles.
  const double a = r.uniform(), b = r.uniform(), c = r.uniform();
  const double t[3][3] = {
      {std::cos(a) * std::cos(b), std::cos(a) * std::sin(b) * std::sin(c) - std::sin(a) * std::cos(c),
       std::cos(a) * std::sin(b) * std::cos(c) + std::sin(a) * std::sin(c)},
      {std::sin(a) * std::cos(b), std::sin(a) * std::sin(b) * std::sin(c) + std::cos(a) * std::cos(c),
       std::sin(a) * std::sin(b) * std::cos(c) - std::cos(a) * std::sin(c)},
      {-std::sin(b), std::cos(b) * std::sin(c), std::cos(b) * std::cos(c)}};
  point_pairs pairs{Eigen::Matrix3Xd(3, n), Eigen::Matrix3Xd(3, n)};
  for (long k = 0; k < n; ++k) {
    for (int i = 0; i < 3; ++i) pairs.a(i, k) = 10 * r.uniform();
    for (int i = 0; i < 3; ++i) {
      double s = 5 - i;
      for (int j = 0; j < 3; ++j) s += t[i][j] * pairs.a(j, k);
      pairs.b(i, k) = s + 0.01 * r.uniform();
    }
  }
  return pairs;
}

values curve_with_zero(double v) { return {2 * v, -2, 0, 0, v, -1}; }

values curve_with_bend(double v) {
  return {v * v / 2 + v * v * v * v / 100, -v - v * v * v / 25, 0.5 + 0.06 * v * v, -v / 25, 0.01, 0};
}

double before_one(double step, int i) { return 1 - step * (1.3 + i); }

}  // namespace bench
