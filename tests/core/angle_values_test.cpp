// The accurate phase of sine and cosine word by word against MPFR.
#ifdef TESTS_HAVE_GMP  // and MPFR with it
#include <gtest/gtest.h>
#include <mpfr.h>

#include <cmath>
#include <vector>

#include "core/angles/fixed_sine.h"
#include "support/bits.h"
#include "support/random.h"
#include "tessarn/angles.h"

namespace {

namespace angles = tessarn::angles;

// |difference| of a fixed-point number and MPFR's value, as a power of two that is not below it.
long error_exponent(const angles::signed_fixed_point& v, mpfr_srcptr exact) {
  mpfr_t sum, term;
  mpfr_inits2(32 * static_cast<mpfr_prec_t>(v.magnitude.size()) + 64, sum, term, nullptr);
  mpfr_set_zero(sum, 1);
  for (std::size_t k = 0; k < v.magnitude.size(); ++k) {
    mpfr_set_ui_2exp(term, v.magnitude[k], -32 * static_cast<mpfr_exp_t>(k), MPFR_RNDN);
    mpfr_add(sum, sum, term, MPFR_RNDN);
  }
  if (v.negative) mpfr_neg(sum, sum, MPFR_RNDN);
  mpfr_sub(sum, sum, exact, MPFR_RNDN);
  const long result = mpfr_zero_p(sum) ? -1000000 : mpfr_get_exp(sum);
  mpfr_clears(sum, term, nullptr);
  return result;
}

// The decision takes every error for less than a unit of the last word but one, 2^(32 - 32 n); here it has a hundredth
// of that.
TEST(AngleValues, AgreeWithMpfr) {
  test::random_source r(1811);
  mpfr_t x, exact;
  std::vector<std::size_t> lengths = {4, 6, 9, 12, 23, 24, 25, 48, 57, 70, 200, 260};
  for (std::size_t n = 95; n < 160; ++n) lengths.push_back(n);  // where 2/pi takes two iterations
  for (const std::size_t n : lengths) {
    mpfr_inits2(static_cast<mpfr_prec_t>(32 * n + 1200), x, exact, nullptr);
    for (int i = 0; i < (n < 30 ? 400 : 8); ++i) {
      const double high = std::ldexp(r.uniform(0.5, 1) * (r.below(2) ? 1 : -1), static_cast<int>(r.below(1050)) - 25);
      const double low = r.below(2) ? 0 : 0.5 * (std::nextafter(high, r.below(2) ? 1e308 : -1e308) - high);
      mpfr_set_d(x, high, MPFR_RNDN);
      mpfr_add_d(x, x, low, MPFR_RNDN);
      for (const angles::function f : {angles::function::sine, angles::function::cosine}) {
        (f == angles::function::sine ? mpfr_sin : mpfr_cos)(exact, x, MPFR_RNDN);
        ASSERT_LT(error_exponent(angles::value_at(f, {high, low}, n), exact), 32 - 32 * static_cast<long>(n) - 7)
            << test::hex(high) << " + " << test::hex(low) << ", " << n << " words";
      }
    }
    mpfr_clears(x, exact, nullptr);
  }
}

// There the short reduction has too few bits of pi, first of all where the multiple is large.
TEST(AngleValues, BesideLargeMultiplesOfPi) {
  test::random_source r(1812);
  mpfr_t v;
  mpfr_init2(v, 53);
  for (int i = 0; i < 60000; ++i) {
    const double multiple = (131072 + r.below(200000)) * 0x1.921fb54442d18p+1;
    const double x = multiple + std::ldexp(r.uniform(-1, 1), -15 - static_cast<int>(r.below(20)));
    mpfr_set_d(v, x, MPFR_RNDN);
    mpfr_sin(v, v, MPFR_RNDN);
    ASSERT_BITS(angles::sin(x), mpfr_get_d(v, MPFR_RNDN)) << test::hex(x);
  }
  mpfr_clear(v);
}

}  // namespace
#endif
