// Chains of powers by half exponents (core/half_exponents.inl) round as those by double-doubles do. One
// power of a million is so close to the middle between two numbers that it would be rounded wrongly
// without a margin: it takes millions to see.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/power.h"
#include "poly/kernels/kernels.h"
#include "support/bits.h"
#include "support/random.h"
#include "tessarn/poly.h"

namespace {

using tessarn::detail::point_block;
using tessarn::detail::poly_kernels_in_use;

#if defined(__SANITIZE_ADDRESS__)
constexpr int rounds = 2000;  // which takes as long there
#else
constexpr int rounds = 30000;
#endif

constexpr unsigned most = 26;  // from so many powers on the chains are certain ones

struct power_table {
  alignas(64) double row[most][point_block];
};

void draw_abscissas(test::random_source& random, power_table& t) {
  std::fill_n(t.row[0], point_block, 1.0);
  for (double& x : t.row[1]) x = test::from_bits(0x3FF0000000000000u | random.next() >> 12);  // in [1, 2)
}

// Each number of powers has a loop of its own, and there are two margins.
void expect_certain_powers(unsigned exponents, int tables, std::uint64_t seed) {
  test::random_source random(seed);
  power_table quick, certain;
  for (int i = 0; i < tables; ++i) {
    draw_abscissas(random, certain);
    std::copy_n(certain.row[0], 2 * point_block, quick.row[0]);
    poly_kernels_in_use().powers(most, certain.row[0]);
    poly_kernels_in_use().powers(exponents, quick.row[0]);
    for (unsigned e = 2; e < exponents; ++e)
      for (std::size_t k = 0; k < point_block; ++k) {
        if (quick.row[e][k] != certain.row[e][k])
          FAIL() << test::hex(certain.row[1][k]) << " to the power " << e << " of " << exponents;
      }
  }
}

TEST(PowerDoubts, TensOfMillionsOfPowersInLanes) {
  expect_certain_powers(17, rounds, 151);
  expect_certain_powers(25, rounds / 2, 152);
}

TEST(PowerDoubts, EveryNumberOfPowers) {
  for (unsigned exponents = 3; exponents < most; ++exponents)
    expect_certain_powers(exponents, rounds / 60, 160 + exponents);
}

// The sums of points take powers in loops of their own, one for each number of coefficients. Points
// one by one show their powers. The kernel ends before a group of eight points with a power in doubt,
// which is left out here.
TEST(PowerDoubts, SumsOfPoints) {
  test::random_source random(153);
  std::size_t added = 0, in_doubt = 0;
  for (unsigned exponents = 5; exponents <= 15; exponents += 2) {
    for (int i = 0; i < rounds / 10; ++i) {
      power_table certain;
      draw_abscissas(random, certain);
      poly_kernels_in_use().powers(most, certain.row[0]);
      std::vector<double> points(3 * point_block, 0.0), sums((exponents + (exponents + 1) / 2) * 8, 0.0),
          expected(sums);
      for (std::size_t k = 0; k < point_block; ++k) points[3 * k + 1] = certain.row[1][k];
      for (std::size_t first = 0; first < point_block; first += 8) {
        const std::size_t end = first + poly_kernels_in_use().add_plane_points(&points[3 * first], point_block - first,
                                                                               -1, exponents, sums.data());
        for (unsigned e = 1; e < exponents; ++e)
          for (std::size_t k = first; k < end; ++k) expected[8 * e + k % 8] += certain.row[e][k];
        added += end - first;
        if (end < point_block) ++in_doubt;
        first = end;
      }
      for (unsigned e = 1; e < exponents; ++e)
        for (std::size_t k = 0; k < 8; ++k) ASSERT_EQ(sums[8 * e + k], expected[8 * e + k]) << exponents << ' ' << e;
    }
  }
  EXPECT_LT(1000 * in_doubt, added);
}

// Near the ends of the range in which chains are safe: what is added is a power, or left to be
// added by other means.
TEST(PowerDoubts, NearTheEndsOfTheRange) {
  test::random_source random(155);
  int added_at_once = 0;
  for (unsigned exponents = 5; exponents <= 15; exponents += 2) {
    for (int i = 0; i < rounds / 10; ++i) {
      const int limit = static_cast<int>(960 / exponents) + static_cast<int>(random.below(7)) - 2;
      double points[24] = {};
      for (int k = 0; k < 8; ++k) {
        const double significand = random.uniform(1, 2);  // drawn first: arguments have no order
        points[3 * k + 1] = std::ldexp(significand, random.below(4) ? -limit : limit - 1);
      }
      std::vector<double> sums((exponents + (exponents + 1) / 2) * 8, 0.0);
      if (poly_kernels_in_use().add_plane_points(points, 8, -1, exponents, sums.data()) < 8) continue;
      ++added_at_once;
      for (unsigned e = 1; e < exponents; ++e)
        for (std::size_t k = 0; k < 8; ++k)
          ASSERT_EQ(sums[8 * e + k], tessarn::detail::power(points[3 * k + 1], e))
              << test::hex(points[3 * k + 1]) << ' ' << e;
    }
  }
  EXPECT_GT(added_at_once, rounds / 30);
}

// The chain of a single abscissa, by the derivative of x^(e + 1).
TEST(PowerDoubts, DerivativesAtOneAbscissa) {
  test::random_source random(154);
  for (const int e : {3, 4, 5, 7, 8, 11, 13, 15, 16, 17, 19, 21, 23, 24}) {
    binom p;
    p.create(e + 2);
    p.set(e + 1, 1.0);
    for (int i = 0; i < rounds / 12; ++i) {
      power_table certain;
      draw_abscissas(random, certain);
      poly_kernels_in_use().powers(most, certain.row[0]);
      for (std::size_t k = 0; k < point_block; ++k)
        ASSERT_EQ(p.func_1(certain.row[1][k]), certain.row[e][k] * (e + 1)) << test::hex(certain.row[1][k]) << ' ' << e;
    }
  }
}

}  // namespace
