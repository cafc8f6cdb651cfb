// How much memory the operations ask for, all in all: the multiples that their comments state.
#include <tessarn/tessarn.h>

#include <functional>
#include <string>
#include <vector>

#include "../matrix/matrix_support.h"
#include "../support/failing_new.h"

namespace {

using namespace test;

constexpr long long slack = 1024;  // for what does not grow

long long bytes_of(const std::function<void()>& call) {
  const long long before = requested_bytes();
  call();
  return requested_bytes() - before;
}

long long bytes(double entries) { return static_cast<long long>(entries * sizeof(double)); }

void expect_within(long long used, long long allowed, const std::string& what) {
  EXPECT_LE(used, allowed + slack) << what;
}

TEST_EVERY_BUILD(Memory, SquareMatrices) {
  random_source random(811);
  for (u32 n : {1u, 4u, 8u, 9u, 13u, 17u, 40u, 97u, 130u, 161u, 200u}) {
    const double entries = static_cast<double>(n) * n;
    real_square a = to_library(random_square(n, random, entries::ordinary));
    real_matrix m = to_library(random_matrix(n, n, random, entries::ordinary));
    real_matrix b = to_library(random_matrix(1, n, random, entries::ordinary));
    complex_square c = to_library(random_csquare(n, random, entries::ordinary));
    complex_square d = c;
    complex_matrix right = to_library(random_cmatrix(1, n, random, entries::ordinary));
    const std::string size = std::to_string(n);
    expect_within(bytes_of([&] { a.solve(b); }), bytes(4 * entries), "solve " + size);
    expect_within(bytes_of([&] { a.det(); }), bytes(2 * entries), "det " + size);
    expect_within(bytes_of([&] { c *= d; }), bytes(2 * 3 * entries), "complex product " + size);
    expect_within(bytes_of([&] { c.solve(right); }), bytes(2 * 3 * entries), "complex solve " + size);
    real_matrix result;
    if (n <= 40) expect_within(bytes_of([&] { m.invert(result); }), bytes(26 * entries), "invert " + size);
    expect_within(bytes_of([&] { result = m * m; }), bytes(3 * entries), "product " + size);
  }
}

TEST_EVERY_BUILD(Memory, RectangularMatrices) {
  random_source random(812);
  struct {
    u32 rows, columns;
  } const shapes[] = {{3, 3}, {8, 8}, {50, 3}, {500, 10}, {3, 50}, {1, 100}, {100, 1}, {120, 120}, {2000, 1}};
  for (const auto& shape : shapes) {
    const double m = shape.rows, n = shape.columns;
    real_matrix a = to_library(random_matrix(shape.columns, shape.rows, random, entries::ordinary));
    real_matrix b = to_library(random_matrix(1, shape.rows, random, entries::ordinary));
    real_matrix t, u, s, v, x;
    a.transpose(t);
    const std::string size = std::to_string(shape.rows) + " x " + std::to_string(shape.columns);
    expect_within(bytes_of([&] { a.decompose(u, s, v); }), bytes(3 * (m * n + 2 * n * n)), "decompose " + size);
    expect_within(bytes_of([&] { x.solve(a, b); }), bytes(12 * n * (n + 1)), "least squares " + size);
    expect_within(bytes_of([&] { x = a * t; }), bytes(m * m + 2 * m * n), "product " + size);
  }
}

TEST_EVERY_BUILD(Memory, Points) {
  random_source random(813);
  for (u32 n : {3u, 100u, 5000u}) {
    std::vector<vector> plane_points;
    std::vector<vector3d> a, b;
    for (u32 k = 0; k < n; ++k) {
      plane_points.emplace_back(random.uniform() + 2, random.uniform());
      a.emplace_back(random.uniform(), random.uniform(), random.uniform());
      b.emplace_back(random.uniform(), random.uniform(), random.uniform());
    }
    const std::string size = std::to_string(n);
    real_square match;
    expect_within(bytes_of([&] { match.calc_match(a.data(), b.data(), n); }), 0, "calc_match " + size);
    binom p;
    expect_within(bytes_of([&] { p.create(plane_points.data(), n, 3); }), 6144, "fit " + size);
    expect_within(bytes_of([&] { p.createtan(plane_points.data(), n, 4); }), 6144, "fit with tangents " + size);
    hyperbinom h;
    expect_within(bytes_of([&] { h.create(a.data(), n, 2); }), 16384, "surface fit " + size);
    expect_within(bytes_of([&] { p.find_zero(-1, 1, 1e-4, 1e-9); }), 0, "find_zero " + size);
    expect_within(bytes_of([&] { plane fitted(a.data(), n); }), bytes(7.0 * n) + 1024, "plane fit " + size);
  }
}

}  // namespace
