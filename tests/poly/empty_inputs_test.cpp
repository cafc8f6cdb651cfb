// Fits and polynomials of which one extent is 0 and the others are large. Written for the memory
// checkers as much as for its expectations.
#include <gtest/gtest.h>

#include <vector>

#include "support/bits.h"
#include "tessarn/poly.h"
#include "tessarn/vectors.h"

namespace {

constexpr tessarn::ulong large[] = {1, 2, 3, 5, 8, 16, 17, 40, 300};

void expect_zeros(binom& p, tessarn::ulong count) {
  ASSERT_EQ(static_cast<tessarn::ulong>(p.getcofcnt()), count);
  for (tessarn::ulong i = 0; i < count; ++i) ASSERT_BITS(p.get(static_cast<tessarn::slong>(i)), 0.0);
}

TEST(EmptyInputs, FitsWithoutPoints) {
  std::vector<vector> marked(1100, vector(-1, 5));
  for (tessarn::ulong m : large) {
    binom p;
    p.create(marked.data(), 0, m);
    expect_zeros(p, m);
    p.create(static_cast<vector*>(nullptr), 0, m);
    expect_zeros(p, m);
    p.create(marked.data(), 1100, m);  // none of which counts
    expect_zeros(p, m);
    p.createtan(static_cast<vector*>(nullptr), 0, m);
    expect_zeros(p, m);
  }
}

TEST(EmptyInputs, FitsWithoutCoefficients) {
  std::vector<vector> points;
  for (int i = 0; i < 1100; ++i) points.emplace_back(i * 0.01, 1 - i);
  for (tessarn::ulong n : {0u, 1u, 7u, 64u, 65u, 1100u}) {
    binom p;
    p.create(points.data(), n, 0);
    expect_zeros(p, 0);
    p.createtan(points.data(), n, 0);
    expect_zeros(p, 0);
  }
}

TEST(EmptyInputs, Surfaces) {
  std::vector<vector3d> points(1100, vector3d(1, 2, 3));
  std::vector<tessarn::real> weights(1100, 2);
  for (tessarn::ulong n : {0u, 1u, 7u, 64u, 65u, 1100u}) {
    hyperbinom s;
    s.create(points.data(), n, 0);
    EXPECT_EQ(static_cast<tessarn::ulong>(s.getgrade()), 0u);
    s.create(points.data(), weights.data(), n, 0);
    EXPECT_EQ(static_cast<tessarn::ulong>(s.getgrade()), 0u);
  }
  for (tessarn::slong g : {1, 2, 3, 4, 5, 9}) {
    hyperbinom s;
    s.create(points.data(), 0, static_cast<tessarn::ulong>(g));
    for (tessarn::slong i = 0; i < g; ++i)
      for (tessarn::slong j = 0; j < g; ++j) ASSERT_BITS(s.get(i, j), 0.0);
    s.create(static_cast<vector3d*>(nullptr), static_cast<tessarn::real*>(nullptr), 0, static_cast<tessarn::ulong>(g));
    for (tessarn::slong i = 0; i < g; ++i)
      for (tessarn::slong j = 0; j < g; ++j) ASSERT_BITS(s.get(i, j), 0.0);
  }
}

// An empty polynomial over many abscissas, and long ones over none.
TEST(EmptyInputs, Values) {
  std::vector<tessarn::real> x(1100, 1), y(1100);
  const auto n = static_cast<tessarn::ulong>(x.size());
  for (tessarn::slong count : {0, 1, 2, 30, 200}) {
    binom p;
    p.create(count);
    for (tessarn::ulong many : {tessarn::ulong{0}, n}) {
      tessarn::real* const to = many == 0 ? nullptr : y.data();
      const tessarn::real* const from = many == 0 ? nullptr : x.data();
      y.assign(y.size(), 7);
      p.func(from, to, many);
      for (tessarn::ulong i = 0; i < many; ++i) ASSERT_BITS(y[i], 0.0);
      p.func_1(from, to, many);
      p.func_2(from, to, many);
      p.func_3(from, to, many);
      p.func_4(from, to, many);
      p.arc(from, to, many);
      p.arc_1(from, to, many);
      for (tessarn::ulong i = 0; i < many; ++i) ASSERT_BITS(y[i], 0.0);
    }
  }
  hyperbinom s;
  y.assign(y.size(), 7);
  s.func(x.data(), x.data(), y.data(), n);
  for (tessarn::real v : y) ASSERT_BITS(v, 0.0);
  s.create(40);
  s.func(nullptr, nullptr, nullptr, 0);
}

TEST(EmptyInputs, Searches) {
  binom none;
  EXPECT_BITS(none.find_zero(1, 2, 0.001, 1e-9), 1.0);  // 0 everywhere
  EXPECT_BITS(none.find_extrpoint_arc(1, 2, 0.001, 1e-9), 1.0);
  EXPECT_BITS(none.scalar(none, 0, 1, 0.001), 0.0);
  binom inverse = none.antifunction(0, 1, 0.001);
  expect_zeros(inverse, 0);
  binom p;
  p.create(40);
  p.set(1, 1.0);
  EXPECT_BITS(p.scalar(p, 0, -0.9, 1), 0.0);  // no samples
  binom fitted = p.antifunction(0, -0.9, 1);
  expect_zeros(fitted, 40);
}

}  // namespace
