// The powers in lanes, and what is summed from them, against the powers one by one.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "core/power.h"
#include "poly/kernels.h"
#include "poly/power_sums.h"
#include "support/bits.h"
#include "support/random.h"

namespace {

using tessarn::detail::partial_sums;
using tessarn::detail::point_block;
using tessarn::detail::poly;

using block = std::array<double, point_block>;

// Odd numbers of 11 bits have fifth powers of 54 and 55 bits, which lie exactly between two numbers or near the middle.
block ties(test::random_source& r) {
  block x;
  for (double& v : x) v = std::ldexp(1553.0 + 2 * r.below(500), static_cast<int>(r.below(60)) - 30) * (r.below(2) ? 1 : -1);
  return x;
}

block drawn(test::random_source& r) {
  if (r.below(4) == 0) return ties(r);
  block x;
  for (double& v : x) {
    v = r.uniform(-3, 3);
    if (r.below(4) == 0) v = std::ldexp(v, static_cast<int>(r.below(70)) - 35);
    if (r.below(4) == 0) v = std::ldexp(1.0 + r.below(1u << (1 + r.below(27))), -static_cast<int>(r.below(30)));
    if (r.below(8) == 0) v = std::nextafter(std::ldexp(1.0, static_cast<int>(r.below(5)) - 2), r.below(2) ? 0 : 9);
    if (r.below(8) == 0) v = 0;
  }
  return x;
}

// The powers of a block: rows 0 and 1 are given, the kernel makes the others.
std::vector<double> powers_of(const block& x, unsigned exponents) {
  std::vector<double> powers(std::max(exponents, 2u) * point_block, 1.0);
  std::copy(x.begin(), x.end(), powers.begin() + point_block);
  poly().powers(exponents, powers.data());
  return powers;
}

TEST(PowerChains, AreCorrectlyRounded) {
  test::random_source r(83);
  for (int round = 0; round < 1500; ++round) {
    const block x = drawn(r);
    const unsigned exponents = r.below(30);
    if (!tessarn::detail::chains_are_safe(x.data(), exponents)) continue;
    const std::vector<double> powers = powers_of(x, exponents);
    for (unsigned e = 0; e < exponents; ++e)
      for (std::size_t i = 0; i < point_block; ++i) {
        const double expected = tessarn::detail::power(x[i], e);
        const double given = powers[e * point_block + i];
        if (x[i] == 0 && given == expected) continue;  // of either sign
        ASSERT_BITS(given, expected) << test::hex(x[i]) << " to the power " << e;
      }
  }
}

TEST(PowerChains, QuickSumsAreThoseOfTheRowsOrAreRefused) {
  test::random_source r(84);
  int quick = 0, refused = 0;
  for (int round = 0; round < 1500; ++round) {
    const block x = drawn(r);
    const unsigned exponents = 1 + r.below(28), ordinates = r.below(exponents + 1);
    if (!tessarn::detail::chains_are_safe(x.data(), exponents)) continue;
    block y;
    for (double& v : y) v = r.below(20) == 0 ? r.hostile() : r.uniform();
    const std::size_t length = (exponents + ordinates) * partial_sums;
    std::vector<double> from(length), to(length);
    for (double& v : from) v = r.uniform();
    const std::vector<double> before = from;
    if (!poly().add_quick_powers(x.data(), y.data(), exponents, ordinates, from.data(), to.data())) {
      ++refused;
      EXPECT_EQ(from, before);
      continue;
    }
    ++quick;
    poly().add_powers(powers_of(x, exponents).data(), y.data(), exponents, ordinates, from.data());
    for (std::size_t k = partial_sums; k < length; ++k) ASSERT_BITS(to[k], from[k]) << k;
  }
  EXPECT_GT(quick, 300);
  EXPECT_GT(refused, 100);
}

TEST(PowerChains, RangeTakesZeroForSafe) {
  block x;
  x.fill(1);
  EXPECT_TRUE(tessarn::detail::chains_are_safe(x.data(), 10));
  for (const double v : {0.0, -0.0}) {
    x[17] = v;
    EXPECT_TRUE(tessarn::detail::chains_are_safe(x.data(), 10));
  }
  for (const double v : {5e-324, 1e-300, 1e300, std::numeric_limits<double>::infinity(), std::nan("")})
    for (std::size_t i = 0; i < point_block; ++i) {
      x.fill(1);
      x[i] = v;
      EXPECT_FALSE(tessarn::detail::chains_are_safe(x.data(), 10));
    }
}

TEST(Unpack, PlanePoints) {
  std::vector<vector> points;
  for (std::size_t i = 0; i < point_block; ++i) points.emplace_back(2.0 + double(i), -double(i));
  block x, y;
  const auto unpacked = [&](double marker) {
    return poly().unpack_plane(reinterpret_cast<const double*>(points.data()), marker, x.data(), y.data());
  };
  EXPECT_TRUE(unpacked(-1));
  for (std::size_t i = 0; i < point_block; ++i) {
    EXPECT_EQ(x[i], points[i].x);
    EXPECT_EQ(y[i], points[i].y);
    const double old = points[i].x;
    points[i].x = -1;
    EXPECT_FALSE(unpacked(-1));
    EXPECT_TRUE(unpacked(std::nan("")));
    points[i].x = std::nan("");
    EXPECT_FALSE(unpacked(-1));
    points[i].x = old;
  }
}

TEST(Unpack, SpacePoints) {
  std::vector<vector3d> points;
  for (std::size_t i = 0; i < point_block; ++i) points.emplace_back(double(i), -double(i), 0.5 * double(i));
  block x, y, z;
  poly().unpack_space(reinterpret_cast<const double*>(points.data()), x.data(), y.data(), z.data());
  for (std::size_t i = 0; i < point_block; ++i) {
    EXPECT_EQ(x[i], points[i].x);
    EXPECT_EQ(y[i], points[i].y);
    EXPECT_EQ(z[i], points[i].z);
  }
}

}  // namespace
