// Sine, cosine and their inverses: special arguments, the guards of the quick phase, and the accurate phase by itself.
// What they give at many arguments is compared with MPFR by angles_check.
#include "tessarn/angles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/angles/decision.h"
#include "core/angles/reduction.h"
#include "support/bits.h"
#include "support/random.h"

namespace {

namespace angles = tessarn::angles;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double half_pi = 1.5707963267948966;

TEST(Angles, ZerosKeepTheirSign) {
  EXPECT_BITS(angles::sin(0.0), 0.0);
  EXPECT_BITS(angles::sin(-0.0), -0.0);
  EXPECT_BITS(angles::asin(0.0), 0.0);
  EXPECT_BITS(angles::asin(-0.0), -0.0);
  EXPECT_BITS(angles::cos(0.0), 1.0);
  EXPECT_BITS(angles::cos(-0.0), 1.0);
  EXPECT_BITS(angles::acos(0.0), half_pi);
  EXPECT_BITS(angles::acos(-0.0), half_pi);
}

TEST(Angles, InfinitiesAndNanGiveNan) {
  for (const double x : {inf, -inf, nan}) {
    EXPECT_TRUE(std::isnan(angles::sin(x)));
    EXPECT_TRUE(std::isnan(angles::cos(x)));
    EXPECT_TRUE(std::isnan(angles::asin(x)));
    EXPECT_TRUE(std::isnan(angles::acos(x)));
    EXPECT_TRUE(std::isnan(angles::sin_cos(x).sine) && std::isnan(angles::sin_cos(x).cosine));
  }
}

TEST(Angles, InversesAtTheEndsOfTheirDomain) {
  EXPECT_BITS(angles::asin(1), half_pi);
  EXPECT_BITS(angles::asin(-1), -half_pi);
  EXPECT_BITS(angles::acos(1), 0.0);
  EXPECT_BITS(angles::acos(-1), 2 * half_pi);
  for (const double beyond : {std::nextafter(1.0, 2.0), 2.0, 1e300}) {
    for (const double x : {beyond, -beyond}) {
      EXPECT_TRUE(std::isnan(angles::asin(x))) << x;
      EXPECT_TRUE(std::isnan(angles::acos(x))) << x;
    }
  }
  // acos(1 - 2^-53) = 2^-26 (1 + 2^-55 / 3 ...)
  EXPECT_BITS(angles::acos(std::nextafter(1.0, 0.0)), 0x1p-26);
  EXPECT_BITS(angles::acos(std::nextafter(-1.0, 0.0)), 0x1.921fb52442d18p+1);
}

TEST(Angles, TinyArguments) {
  for (const double x : {5e-324, 2.2250738585072014e-308, 1e-300, 1e-20, 0x1p-28, 0x1.fffffffffffffp-28}) {
    EXPECT_BITS(angles::sin(x), x);
    EXPECT_BITS(angles::asin(-x), -x);
    EXPECT_BITS(angles::cos(x), 1.0);
  }
  EXPECT_BITS(angles::acos(5e-324), half_pi);
}

// Each of these inputs fails when the guard that it belongs to is moved.
TEST(Angles, WhereTheShortWaysEnd) {
  // sin x = x and cos x = 1 hold below 2^-27: at 2^-26 they do not.
  EXPECT_BITS(angles::sin(0x1.ffp-26), 0x1.fefffffffffffp-26);
  EXPECT_BITS(angles::asin(0x1.ffp-26), 0x1.ff00000000001p-26);
  EXPECT_BITS(angles::cos(0x1.7p-27), 0x1.fffffffffffffp-1);
  // Multiples of pi need more bits of pi than the short reduction has, the sooner the larger they are.
  EXPECT_BITS(angles::sin(0x1.921fb54442d18p+1), 0x1.1a62633145c07p-53);
  EXPECT_BITS(angles::sin(0x1.921fb54442d18p+19), -0x1.1a62633145c07p-35);
  EXPECT_BITS(angles::cos(0x1.921fb54442d18p+0), 0x1.1a62633145c07p-54);
  // The nearest double to a multiple of pi/2.
  EXPECT_BITS(angles::cos(std::ldexp(6381956970095103.0, 797)), -0x1.14ae72e6ba22fp-61);
}

TEST(Angles, SineAndCosineTogetherAreTheSame) {
  test::random_source r(1801);
  for (int i = 0; i < 20000; ++i) {
    const double x = i % 2 == 0 ? r.uniform(-7, 7) : r.hostile();
    const auto both = angles::sin_cos(x);
    ASSERT_BITS(both.sine, angles::sin(x)) << test::hex(x);
    ASSERT_BITS(both.cosine, angles::cos(x)) << test::hex(x);
  }
  const double near[] = {0x1.921fb54442d18p+1, 0x1.921fb54442d18p+0, 0x1.2d97c7f3321d2p+2,
                         std::ldexp(6381956970095103.0, 797)};
  for (const double x : near) {
    EXPECT_BITS(angles::sin_cos(x).sine, angles::sin(x));
    EXPECT_BITS(angles::sin_cos(x).cosine, angles::cos(x));
  }
}

// The two reductions agree where both apply: x = k pi/512 + rest.
TEST(AngleReduction, ShortAndLongAgree) {
  test::random_source r(1802);
  for (int i = 0; i < 100000; ++i) {
    const double x = std::ldexp(r.uniform(-1, 1), static_cast<int>(r.below(21)));
    if (std::fabs(x) < 0.5) continue;
    const angles::quotient q = angles::nearest_quotient(x);
    const angles::two_part a = angles::rest_after(x, q.k);
    const angles::reduced b = angles::reduce_by_bits(x);
    if (((q.place ^ b.place) & 1023) != 0) continue;  // beside the middle of two points
    ASSERT_LT(std::fabs((a.high - b.rest.high) + (a.low - b.rest.low)), 0x1p-80) << test::hex(x);
  }
}

// The sign of sin(angle) - threshold with few words is that with many, or not decided.
TEST(AngleDecision, FewWordsNeverDecideWrongly) {
  test::random_source r(1803);
  int undecided = 0;
  for (int i = 0; i < 1000; ++i) {
    const double x = std::ldexp(r.uniform(-1, 1), static_cast<int>(r.below(i % 2 == 0 ? 3 : 1000)));
    if (std::fabs(x) < 0x1p-20) continue;
    const double s = angles::sin(x);
    const double beside = std::nextafter(s, i % 4 < 2 ? 2.0 : -2.0);
    const angles::exact_number thresholds[] = {{s, 0}, {s, 0.5 * (beside - s)}};
    for (const angles::exact_number& threshold : thresholds) {
      const int sign = angles::sign_of_difference(angles::function::sine, {x, 0}, threshold);
      ASSERT_NE(sign, 0);
      for (int words = 3; words <= 27; words += 3) {
        const int few = angles::sign_of_difference(angles::function::sine, {x, 0}, threshold, words);
        if (few == 0)
          ++undecided;
        else
          ASSERT_EQ(few, sign) << test::hex(x) << " with " << words;
      }
    }
  }
  EXPECT_GT(undecided, 0);
  // 1 - cos(2^-49) = 2^-99 is less than the last of three words.
  EXPECT_EQ(angles::sign_of_difference(angles::function::cosine, {0x1p-49, 0}, {1, 0}, 3), 0);
  EXPECT_EQ(angles::sign_of_difference(angles::function::cosine, {0x1p-49, 0}, {1, 0}), -1);
}

// Beyond the stored bits pi and 2/pi are computed; the thresholds are the doubles on both sides of the value.
TEST(AngleDecision, ManyWordsComputePi) {
  for (const double x : {0.7, 3.0, 1e5, 1e22, 1e300, 1.7976931348623157e308}) {
    for (const angles::function f : {angles::function::sine, angles::function::cosine}) {
      const double v = f == angles::function::sine ? angles::sin(x) : angles::cos(x);
      const double ulp = std::nextafter(v, 2.0) - v;
      for (const int words : {25, 30, 60, 100, 200}) {
        EXPECT_EQ(angles::sign_of_difference(f, {x, 0}, {v, 0.5 * ulp}, words), -1) << x << " " << words;
        EXPECT_EQ(angles::sign_of_difference(f, {x, 0}, {v, -0.5 * ulp}, words), 1) << x << " " << words;
      }
    }
  }
}

}  // namespace
