// Systems, inverses and determinants by factors in double precision: the guards of their proofs, and sizes with panels
// and blocks, whose exact results are known.
#include <tessarn/solve.h>

#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "../support/random.h"
#include "rounds.h"
#include "solve_judge.h"

namespace {

using tessarn::status;
using tessarn::ulong;
using test::random_source;
using real_matrix = mat<long double>;

constexpr double half_unit = 0x1.001p-53;

// Whether each entry is off by no more than about half a unit in the last place, and 2^-58 of the largest in its
// column.
bool near(const real_matrix& values, const real_matrix& errors) {
  const ulong width = values.getWidth(), height = values.getHeight();
  for (ulong c = 0; c < width; ++c) {
    double largest = 0;
    for (ulong r = 0; r < height; ++r) largest = std::fmax(largest, std::fabs(values.get(c, r)));
    for (ulong r = 0; r < height; ++r)
      if (!(errors.get(c, r) <= std::fabs(values.get(c, r)) * half_unit + largest * 0x1p-58)) return false;
  }
  return true;
}

// Integers whose products are exact as doubles, and with them the right-hand side.
TEST(LargerSystems, HaveTheirExactSolution) {
  random_source random(1701);
  for (const ulong n : {7u, 8u, 9u, 15u, 16u, 17u, 31u, 33u, 50u, 64u, 65u, 100u, 161u, 200u}) {
    real_matrix a(n, n), b(1, n);
    std::vector<std::int64_t> x(n);
    for (std::int64_t& v : x) v = static_cast<std::int64_t>(random.below(2001)) - 1000;
    for (ulong r = 0; r < n; ++r) {
      std::int64_t sum = 0;
      for (ulong c = 0; c < n; ++c) {
        const std::int64_t entry = static_cast<std::int64_t>(random.below(20001)) - 10000;
        a.set(c, r, static_cast<double>(entry));
        sum += entry * x[c];
      }
      b.set(0, r, static_cast<double>(sum));
    }
    const tessarn::linear_solution s = tessarn::solve(a, b);
    ASSERT_EQ(s.state, status::ok) << n;
    EXPECT_EQ(s.rank, n);
    for (ulong i = 0; i < n; ++i) {
      EXPECT_TRUE(x[i] == 0 || s.x.get(0, i) == static_cast<double>(x[i])) << n << ' ' << i;
      EXPECT_LE(std::fabs(s.x.get(0, i) - static_cast<double>(x[i])), s.error.get(0, i)) << n << ' ' << i;
      EXPECT_LE(s.error.get(0, i), (std::fabs(static_cast<double>(x[i])) + 1) * 0x1p-52) << n << ' ' << i;
    }
  }
}

// A = L U with factors of small integers has the determinant 1 and an inverse of integers.
TEST(LargerSystems, HaveTheirExactInverseAndDeterminant) {
  random_source random(1702);
  for (const ulong n : {5u, 8u, 9u, 16u, 17u, 33u, 50u, 64u, 65u, 100u}) {
    std::vector<int> low(n), up(n);
    for (ulong i = 0; i < n; ++i) {
      low[i] = static_cast<int>(random.below(3)) - 1;
      up[i] = static_cast<int>(random.below(3)) - 1;
    }
    real_matrix a(n, n);
    for (ulong r = 0; r < n; ++r) {
      a.set(r, r, 1.0 + (r > 0 ? low[r] * up[r - 1] : 0));
      if (r + 1 < n) a.set(r + 1, r, up[r]);
      if (r > 0) a.set(r - 1, r, low[r]);
    }
    // Entry (i, k) of the inverse of U is a product of -up, of L one of -low.
    const tessarn::inverse_matrix inverse = tessarn::inverse(a);
    ASSERT_EQ(inverse.state, status::ok) << n;
    for (ulong i = 0; i < n; ++i)
      for (ulong j = 0; j < n; ++j) {
        int expected = 0;
        for (ulong k = i > j ? i : j; k < n; ++k) {
          int product = 1;
          for (ulong l = i; l < k; ++l) product *= -up[l];
          for (ulong l = j; l < k; ++l) product *= -low[l + 1];
          expected += product;
        }
        EXPECT_EQ(inverse.inverse.get(j, i), expected) << n << ' ' << i << ' ' << j;
        EXPECT_LE(inverse.error.get(j, i), (std::abs(expected) + 1) * 0x1p-52);
      }
    const tessarn::determinant_value d = tessarn::determinant(a);
    EXPECT_EQ(d.value, 1) << n;
    EXPECT_LE(d.error, 0x1p-52) << n;
  }
}

#if defined(TESTS_HAVE_GMP)

using test::check_square;

// The last row is the sum of two others but for 2^-bits of it.
void make_dependent(real_matrix& a, int bits) {
  const ulong n = a.getWidth();
  for (ulong c = 0; c < n; ++c) a.set(c, n - 1, a.get(c, 0) + a.get(c, 1) + std::ldexp(a.get(c, n - 1), -bits));
}

// Up to the condition number 1e11, 37 bits, results are reals next to the true ones; beyond, what is claimed holds.
TEST(LargerSystems, BoundsHoldUpToSingularity) {
  random_source random(1703);
  const int count = test::rounds(10000) / 1000;
  for (int i = 0; i < count && !HasFailure(); ++i)
    for (int bits = 0; bits < 60; bits += 3) {
      const ulong n = 3 + random.below(12);
      real_matrix a(n, n), b(1, n);
      for (ulong k = 0; k < n * n; ++k) a.getData()[k] = random.uniform();
      for (ulong k = 0; k < n; ++k) b.getData()[k] = random.uniform();
      make_dependent(a, bits);
      const bool proved = check_square(a, b);
      const tessarn::linear_solution s = tessarn::solve(a, b);
      if (s.reciprocal_condition < 1e-11) continue;
      EXPECT_TRUE(proved) << n << ' ' << bits;
      EXPECT_TRUE(near(s.x, s.error)) << n << ' ' << bits;
      const tessarn::inverse_matrix inverse = tessarn::inverse(a);
      EXPECT_TRUE(near(inverse.inverse, inverse.error)) << n << ' ' << bits;
      const tessarn::determinant_value d = tessarn::determinant(a);
      EXPECT_LE(d.error, std::fabs(d.value) * half_unit) << n << ' ' << bits;
    }
}

// Rows and columns of different sizes, up to those that one power of two does not scale.
TEST(LargerSystems, GradedRowsAndColumns) {
  random_source random(1704);
  const int count = test::rounds(10000) / 500;
  for (int i = 0; i < count && !HasFailure(); ++i)
    for (const int range : {30, 300, 490, 520, 900}) {
      const ulong n = 3 + random.below(7);
      real_matrix a(n, n), b(1, n);
      std::vector<int> rows(n), columns(n);
      for (ulong k = 0; k < n; ++k) {
        rows[k] = static_cast<int>(random.below(static_cast<std::uint32_t>(range))) - range / 2;
        columns[k] = static_cast<int>(random.below(static_cast<std::uint32_t>(range))) - range / 2;
      }
      for (ulong r = 0; r < n; ++r) {
        for (ulong c = 0; c < n; ++c) a.set(c, r, std::ldexp(random.uniform(), rows[r] + columns[c]));
        b.set(0, r, std::ldexp(random.uniform(), rows[r]));
      }
      check_square(a, b);
    }
}

// Exactly singular, but for roundings on the way: nothing may be claimed.
TEST(LargerSystems, SingularOnesAreNotProved) {
  random_source random(1705);
  const int count = test::rounds(10000) / 100;
  for (int i = 0; i < count && !HasFailure(); ++i) {
    const ulong n = 3 + random.below(10);
    real_matrix a(n, n), b(1, n);
    for (ulong k = 0; k < n * n; ++k) a.getData()[k] = static_cast<double>(random.below(2001)) - 1000;
    for (ulong c = 0; c < n; ++c) a.set(c, n - 1, a.get(c, 0) + 3 * a.get(c, 1));
    for (ulong k = 0; k < n; ++k) b.getData()[k] = random.uniform();
    EXPECT_FALSE(check_square(a, b));
  }
}

// In the rounding modes for which the proofs in double precision do not hold.
TEST(LargerSystems, OtherRoundingModes) {
  random_source random(1706);
  for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    const ulong n = 6;
    real_matrix a(n, n), b(1, n);
    for (ulong k = 0; k < n * n; ++k) a.getData()[k] = random.uniform();
    for (ulong k = 0; k < n; ++k) b.getData()[k] = random.uniform();
    make_dependent(a, 20);
    std::fesetround(mode);
    const tessarn::linear_solution s = tessarn::solve(a, b);
    std::fesetround(FE_TONEAREST);
    test::rational_matrix x = test::exact(b);
    test::rational det;
    test::eliminate(test::exact(a), x, det);
    for (ulong i = 0; s.state == status::ok && i < n; ++i)
      EXPECT_TRUE(test::within(x[i][0], s.x.getData()[i], s.error.getData()[i])) << mode << ' ' << i;
  }
}

#endif

}  // namespace
