// The integer power that the fits and the derivatives use, against correctly rounded powers.
#include "core/power.h"

#include "core/binary_form.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "plain/power.h"
#include "support/bits.h"
#include "support/random.h"

namespace {

using tessarn::detail::inverse_power;
using tessarn::detail::power;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(Power, ExponentsZeroAndOne) {
  for (const double x : {0.0, -0.0, 1.0, -2.5, 1e300, 5e-324, inf, -inf, nan}) {
    EXPECT_BITS(power(x, 0), 1.0);
    EXPECT_BITS(power(x, 1), x);
  }
}

TEST(Power, ZerosInfinitiesAndNan) {
  EXPECT_BITS(power(-0.0, 2), 0.0);
  EXPECT_BITS(power(-0.0, 3), -0.0);
  EXPECT_BITS(power(-inf, 2), inf);
  EXPECT_BITS(power(-inf, 3), -inf);
  EXPECT_BITS(power(nan, 2), nan);
  EXPECT_BITS(power(-2, 1024), inf);
  EXPECT_BITS(power(-2, 1025), -inf);
  EXPECT_BITS(power(-0.5, 1076), 0.0);
  EXPECT_BITS(power(-0.5, 1077), -0.0);
  EXPECT_BITS(power(0.5, 1074), 5e-324);
}

// Powers that lie exactly between two subnormal numbers go to the even one.
TEST(Power, TiesAmongSubnormalNumbers) {
  EXPECT_BITS(power(std::ldexp(1, -215), 5), 0.0);
  EXPECT_BITS(power(std::ldexp(3, -215), 5), 122 * 5e-324);
  EXPECT_BITS(power(std::ldexp(5, -215), 5), 1562 * 5e-324);
  EXPECT_BITS(power(std::ldexp(-5, -215), 5), -1562 * 5e-324);
  EXPECT_BITS(power(std::ldexp(3, -43), 25), plain::power(std::ldexp(3, -43), 25));
}

TEST(Power, IsCorrectlyRounded) {
  test::random_source r(151);
  for (int i = 0; i < 100000; ++i) {
    const unsigned k = r.below(4) == 0 ? r.below(1100) : r.below(30);
    double x = r.below(3) == 0 ? r.hostile() : r.uniform(-10, 10);
    if (r.below(4) == 0) x = std::exp2(r.uniform(-1076, 1026) / (k == 0 ? 1 : k));
    ASSERT_BITS(power(x, k), plain::power(x, k)) << test::hex(x) << " to the power " << k;
  }
}

TEST(InversePower, SpecialValues) {
  for (const double x : {0.0, -0.0, 1.0, -2.5, inf, nan}) EXPECT_BITS(inverse_power(x, 0), 1.0);
  EXPECT_BITS(inverse_power(0.0, 1), inf);
  EXPECT_BITS(inverse_power(-0.0, 1), -inf);
  EXPECT_BITS(inverse_power(-0.0, 2), inf);
  EXPECT_BITS(inverse_power(-inf, 1), -0.0);
  EXPECT_BITS(inverse_power(-inf, 2), 0.0);
  EXPECT_TRUE(std::isnan(inverse_power(nan, 1)));
  EXPECT_BITS(inverse_power(2.0, 1074), 5e-324);
  EXPECT_BITS(inverse_power(-2.0, 1075), -0.0);
  EXPECT_BITS(inverse_power(-0.5, 1023), -0x1p1023);
  EXPECT_BITS(inverse_power(0.5, 1024), inf);
  EXPECT_BITS(inverse_power(5e-324, 1), inf);
  EXPECT_BITS(inverse_power(3.0, 1), 1.0 / 3.0);
}

// The reference without MPFR, which systems without that library use.
TEST(Power, LongArithmeticAgreesWithTheReference) {
  test::random_source r(7);
  for (int i = 0; i < 20000; ++i) {
    const unsigned k = r.below(2) ? r.below(40) : r.below(2000);
    const double x = r.below(4) ? std::ldexp(r.uniform(-4, 4), static_cast<int>(r.below(40)) - 20) : r.hostile();
    ASSERT_BITS(plain::long_power(x, k), plain::power(x, k)) << test::hex(x) << " to the power " << k;
  }
}

// Against the C library's, which are exact.
TEST(BinaryForm, ExponentsAndScales) {
  test::random_source r(152);
  for (int i = 0; i < 100000; ++i) {
    const double x = r.hostile();
    if (std::isfinite(x) && x != 0) {
      ASSERT_EQ(tessarn::detail::exponent_of(x), std::ilogb(x)) << test::hex(x);
    }
    const int e = static_cast<int>(r.below(6000)) - 3000;
    ASSERT_BITS(tessarn::detail::scaled(x, e), std::ldexp(x, e)) << test::hex(x) << " * 2^" << e;
  }
  for (const int e : {-100000, -2147483647 - 1, 100000, 2147483647})
    for (const double x : {1.0, -5e-324, 1.7976931348623157e308})
      EXPECT_BITS(tessarn::detail::scaled(x, e), std::ldexp(x, e));
}

}  // namespace
