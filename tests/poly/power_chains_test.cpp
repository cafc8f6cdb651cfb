// The powers in lanes, and what is summed from them, against the powers one by one.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "core/power.h"
#include "poly/kernels/kernels.h"
#include "poly/power_sums.h"
#include "support/bits.h"
#include "support/random.h"

namespace {

using tessarn::detail::partial_sums;
using tessarn::detail::point_block;
using tessarn::detail::poly_kernels_in_use;

using block = std::array<double, point_block>;

// Odd numbers of 11 bits have fifth powers of 54 and 55 bits, which lie exactly between two numbers or near the middle.
block ties(test::random_source& r) {
  block x;
  for (double& v : x)
    v = std::ldexp(1553.0 + 2 * r.below(500), static_cast<int>(r.below(60)) - 30) * (r.below(2) ? 1 : -1);
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
  poly_kernels_in_use().powers(exponents, powers.data());
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

// What add_plane_points adds at once is what the powers of the same points give; it ends before a point
// that it must not add.
TEST(PowerChains, SumsOfPointsAreThoseOfTheirPowers) {
  test::random_source r(84);
  int whole = 0, ended = 0;
  for (int round = 0; round < 3000; ++round) {
    const std::size_t n = r.below(4 * point_block);
    const double scale = r.below(3) == 0 ? std::ldexp(1.0, -static_cast<int>(r.below(400))) : 1;
    std::vector<vector> points;
    while (points.size() < n) {
      const block x = drawn(r);
      const bool few_bits = r.below(3) > 0;
      for (const double v : x) {
        if (points.size() == n) break;
        points.emplace_back((few_bits ? std::round(v * 64) / 64 : v) * scale,
                            r.below(20) == 0 ? r.hostile() : r.uniform());
      }
    }
    const double marker = r.below(4) == 0 ? std::nan("") : -1;
    if (n > 0 && r.below(3) == 0) {
      constexpr double out_of_range[] = {-1, 5e-324, 1e-60, 1e300, std::numeric_limits<double>::infinity()};
      points[r.below(static_cast<unsigned>(n))].x = out_of_range[r.below(5)];
    }
    const unsigned exponents = 1 + 2 * r.below(9);
    const std::size_t length = (exponents + (exponents + 1) / 2) * partial_sums;
    std::vector<double> sums(length);
    for (double& v : sums) v = scale < 1 ? 0 : r.uniform();
    std::vector<double> expected = sums;
    const double* data = reinterpret_cast<const double*>(points.data());
    const std::size_t added = poly_kernels_in_use().add_plane_points(data, n, marker, exponents, sums.data());
    ASSERT_LE(added, n);
    ASSERT_TRUE(added == n || added % partial_sums == 0);
    ++(added == n ? whole : ended);
    for (std::size_t k = 0; k < added; ++k) {
      ASSERT_FALSE(points[k].x == marker);
      for (unsigned e = 0; e < exponents; ++e) {
        const double p = tessarn::detail::power(points[k].x, e);
        if (e > 0) expected[e * partial_sums + k % partial_sums] += p;
        if (2 * e < exponents) expected[(exponents + e) * partial_sums + k % partial_sums] += p * points[k].y;
      }
    }
    for (std::size_t k = partial_sums; k < length; ++k) ASSERT_BITS(sums[k], expected[k]) << exponents << ' ' << added;
  }
  EXPECT_GT(whole, 300);
  EXPECT_GT(ended, 300);
}

TEST(PowerChains, SumsOfRowsAreThoseOfTheirPowers) {
  test::random_source r(85);
  for (int round = 0; round < 300; ++round) {
    const unsigned exponents = 1 + r.below(28);
    const std::size_t n = partial_sums * (1 + r.below(point_block / partial_sums));
    std::vector<double> powers(exponents * point_block), sums((exponents + (exponents + 1) / 2) * partial_sums);
    block y;
    for (double& v : y) v = r.below(20) == 0 ? r.hostile() : r.uniform();
    for (double& v : powers) v = r.uniform();
    for (double& v : sums) v = r.uniform();
    std::vector<double> expected = sums;
    poly_kernels_in_use().add_powers(powers.data(), y.data(), n, exponents, sums.data());
    for (unsigned e = 0; e < exponents; ++e)
      for (std::size_t i = 0; i < n; ++i) {
        const double p = powers[e * point_block + i];
        expected[e * partial_sums + i % partial_sums] += p;
        if (2 * e < exponents) expected[(exponents + e) * partial_sums + i % partial_sums] += p * y[i];
      }
    for (std::size_t k = partial_sums; k < sums.size(); ++k) ASSERT_BITS(sums[k], expected[k]) << exponents;
  }
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
    return poly_kernels_in_use().unpack_plane(reinterpret_cast<const double*>(points.data()), marker, x.data(),
                                              y.data());
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

TEST(Unpack, WeightsMeetTheirPoints) {
  test::random_source r(87);
  std::vector<vector3d> points;
  std::vector<double> w, px(3 * point_block), py(3 * point_block), z(2 * point_block);
  for (std::size_t i = 0; i < point_block; ++i) {
    points.emplace_back(r.uniform(), r.uniform(), r.uniform());
    w.push_back(r.uniform());
  }
  poly_kernels_in_use().unpack_space(reinterpret_cast<const double*>(points.data()), 3, px.data(), py.data(), z.data());
  poly_kernels_in_use().apply_weights(w.data(), z.data());
  for (std::size_t i = 0; i < point_block; ++i) {
    EXPECT_BITS(z[i], (w[i] * static_cast<double>(points[i].z)) * w[i]);
    EXPECT_BITS(z[point_block + i], w[i] * w[i]);
  }
}

// With the powers of the numbers that quick chains know.
TEST(Unpack, SpacePoints) {
  test::random_source r(86);
  int with_powers = 0, without = 0;
  for (int round = 0; round < 2000; ++round) {
    const block bx = drawn(r), by = drawn(r);
    const bool few_bits = r.below(2) == 0;
    std::vector<vector3d> points;
    for (std::size_t i = 0; i < point_block; ++i)
      points.emplace_back(few_bits ? std::round(bx[i] * 64) / 64 : bx[i],
                          few_bits ? std::round(by[i] * 64) / 64 : by[i], r.uniform());
    if (r.below(4) == 0) {
      constexpr double out_of_range[] = {5e-324, 1e-100, 1e300, std::numeric_limits<double>::infinity()};
      const double v = r.below(5) == 0 ? std::nan("") : out_of_range[r.below(4)];
      (r.below(2) ? points[r.below(point_block)].x : points[r.below(point_block)].y) = r.below(2) ? v : -v;
    }
    const unsigned exponents = 3 + 2 * r.below(4);
    std::vector<double> px(exponents * point_block), py(exponents * point_block), z(point_block);
    const double* data = reinterpret_cast<const double*>(points.data());
    const bool done = poly_kernels_in_use().unpack_space(data, exponents, px.data(), py.data(), z.data());
    ++(done ? with_powers : without);
    for (std::size_t i = 0; i < point_block; ++i) {
      EXPECT_BITS(px[point_block + i], points[i].x);
      EXPECT_BITS(py[point_block + i], points[i].y);
      EXPECT_BITS(z[i], points[i].z);
      for (unsigned e = 2; done && e < exponents; ++e) {
        const double x = tessarn::detail::power(points[i].x, e), y = tessarn::detail::power(points[i].y, e);
        // A power of 0 is a zero of either sign.
        ASSERT_BITS(px[e * point_block + i] + 0.0, x + 0.0) << test::hex(points[i].x) << " to the power " << e;
        ASSERT_BITS(py[e * point_block + i] + 0.0, y + 0.0) << test::hex(points[i].y) << " to the power " << e;
      }
    }
  }
  EXPECT_GT(with_powers, 100);
  EXPECT_GT(without, 100);
}

}  // namespace
