// The singular value decomposition of matrices whose squares vanish or overflow.
#include "svd_support.h"

namespace {

using namespace test;

plain::matrix times_power_of_two(plain::matrix a, int exponent) {
  for (double& v : a.data) v = std::ldexp(v, exponent);
  return a;
}

void expect_same_bits(const parts& got, const parts& want, int exponent) {
  ASSERT_TRUE(same(got.u, to_plain(want.u)));
  ASSERT_TRUE(same(got.v, to_plain(want.v)));
  ASSERT_TRUE(same(got.s, times_power_of_two(to_plain(want.s), exponent)));
}

// One and two columns, 3 x 3, few columns, tall, wide, square; more than the stack holds.
constexpr u32 shapes[][2] = {{1, 1},  {1, 40}, {2, 5},  {3, 3},   {3, 2},  {4, 4},
                             {4, 60}, {9, 9},  {12, 5}, {12, 90}, {40, 33}};

// A power of two is a factor of the singular values and of nothing else.
TEST_EVERY_BUILD(DecomposeRange, PowersOfTwoChangeTheSingularValuesAlone) {
  random_source random(171);
  for (const auto& shape : shapes) {
    for (int k = 0; k < 4; ++k) {
      const plain::matrix a =
          random_matrix(shape[0], shape[1], random, k % 2 ? entries::small_integers : entries::ordinary);
      SCOPED_TRACE(std::to_string(shape[0]) + " x " + std::to_string(shape[1]));
      expect_valid(times_power_of_two(a, -390), "small");
      expect_valid(times_power_of_two(a, 390), "large");
      const parts small = decomposed(times_power_of_two(a, -390));
      for (int exponent : {-401, -402, -403, -404, -430, -480, -520, -540, -700, -900})
        expect_same_bits(decomposed(times_power_of_two(a, exponent)), small, exponent + 390);
      const parts large = decomposed(times_power_of_two(a, 390));
      for (int exponent : {395, 396, 397, 398, 399, 400, 401, 440, 500, 520, 700, 900, 1000})
        expect_same_bits(decomposed(times_power_of_two(a, exponent)), large, exponent - 390);
    }
  }
}

// Subnormal entries: U and V are those of the entries, though the singular values are rounded to
// few bits.
TEST_EVERY_BUILD(DecomposeRange, Subnormal) {
  random_source random(172);
  for (const auto& shape : shapes) {
    const plain::matrix a = random_matrix(shape[0], shape[1], random, entries::small_integers);
    const parts want = decomposed(times_power_of_two(a, -390)), got = decomposed(times_power_of_two(a, -1070));
    ASSERT_TRUE(same(got.u, to_plain(want.u)));
    ASSERT_TRUE(same(got.v, to_plain(want.v)));
    ASSERT_TRUE(same(got.s, times_power_of_two(to_plain(want.s), -680)));
  }
}

// The singular values of all entries 1.7e308 are 0 and one that is too large for a number.
TEST_EVERY_BUILD(DecomposeRange, InfiniteSingularValue) {
  plain::matrix a(5, 5);
  for (double& v : a.data) v = 1.7e308;
  const parts p = decomposed(a);
  EXPECT_EQ(p.s.get(0, 0), inf);
  for (u32 i = 0; i < 5; ++i) EXPECT_NEAR(std::fabs(p.v.get(0, i)), std::sqrt(0.2), 1e-14);
  for (u32 i = 1; i < 5; ++i) EXPECT_LT(p.s.get(i, i), 1e294);
}

// Entries so far apart that no factor keeps them all, coupled: what is right is right beside the
// largest.
TEST_EVERY_BUILD(DecomposeRange, EntriesFarApart) {
  random_source random(173);
  for (u32 n : {2u, 3u, 5u, 9u}) {
    for (int k = 0; k < 40; ++k) {
      plain::matrix a = random_matrix(n, n + 2 * (k % 2), random, entries::ordinary);
      for (double& v : a.data) v = std::ldexp(v, 1000 - (random.below(3) ? 0 : static_cast<int>(random.below(2000))));
      const parts p = decomposed(a);
      const double tolerance = 1e-13;
      ASSERT_LE(columns_off(p.u), tolerance);
      ASSERT_LE(columns_off(p.v), tolerance);
      for (u32 y = 0; y < a.height; ++y)
        for (u32 x = 0; x < n; ++x) {
          double s = 0.0;
          for (u32 i = 0; i < n; ++i) s += p.u.get(i, y) * std::ldexp(p.s.get(i, i), -1000) * p.v.get(i, x);
          ASSERT_NEAR(s, std::ldexp(a.get(x, y), -1000), tolerance * std::ldexp(p.s.get(0, 0), -1000));
        }
    }
  }
}

// Without sweeps nothing overflows, and the smallest singular values keep all their digits.
TEST_EVERY_BUILD(DecomposeRange, DiagonalOfEveryMagnitude) {
  plain::matrix d(5, 5);
  const double values[] = {0x1p1020, 0x1p500, 0x1p0, 0x1p-500, 0x1p-1060};
  for (u32 i = 0; i < 5; ++i) d.put(i, i, values[i]);
  const parts p = decomposed(d);
  for (u32 i = 0; i < 5; ++i) EXPECT_EQ(p.s.get(i, i), values[i]);
}

// Neither an infinity nor a NaN is taken for a large number that could be scaled.
TEST_EVERY_BUILD(DecomposeRange, NotFinite) {
  for (double odd : {inf, -inf, quiet_nan}) {
    for (u32 at = 0; at < 9; ++at) {
      plain::matrix a(3, 3);
      for (u32 i = 0; i < 9; ++i) a.data[i] = i == at ? odd : 1e-300 * (i + 1);
      bool found = false;
      const parts p = decomposed(a);
      for (u32 i = 0; i < 9; ++i) found |= !std::isfinite(p.s.getData()[i]) || !std::isfinite(p.u.getData()[i]);
      EXPECT_TRUE(found) << at;
    }
  }
}

// The pseudo-inverse, where the reciprocals of the singular values are numbers.
TEST(DecomposeRange, PseudoInverse) {
  random_source random(174);
  const plain::matrix a = random_matrix(3, 7, random, entries::ordinary);
  real_matrix one = to_library(times_power_of_two(a, -390)), inverse;
  one.invert(inverse);
  const plain::matrix want = to_plain(inverse);
  for (int exponent : {-1000, -800, -600, -450, 0, 450, 600, 800, 1000}) {
    real_matrix m = to_library(times_power_of_two(a, exponent));
    m.invert(inverse);
    for (std::size_t i = 0; i < want.data.size(); ++i)
      ASSERT_NEAR(std::ldexp(inverse.getData()[i], exponent), std::ldexp(want.data[i], -390), 1e-14);
  }
}

}  // namespace
