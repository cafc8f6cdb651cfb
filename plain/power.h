// The correctly rounded integer power: by MPFR, or where that library does not exist by plain long arithmetic.
#pragma once

#include <cmath>

#if __has_include(<mpfr.h>) && __has_include(<gmp.h>)  // cross compilers see the first alone
#include <mpfr.h>
#endif

#include "long_power.h"
#include "scalar.h"

namespace plain {

#if __has_include(<mpfr.h>) && __has_include(<gmp.h>)  // cross compilers see the first alone

// The correctly rounded x^k for every finite x, subnormal results included; x^0 is 1.
inline double power(double x, unsigned long k) {
  if (k == 0) return 1.0;
  if (!std::isfinite(x)) return std::pow(x, static_cast<double>(k));
  const mpfr_exp_t emin = mpfr_get_emin();
  const mpfr_exp_t emax = mpfr_get_emax();
  mpfr_set_emin(-1073);
  mpfr_set_emax(1024);
  mpfr_t v;
  mpfr_init2(v, 53);
  mpfr_set_d(v, x, MPFR_RNDN);
  int ternary = mpfr_pow_ui(v, v, k, MPFR_RNDN);
  mpfr_subnormalize(v, ternary, MPFR_RNDN);
  const double result = mpfr_get_d(v, MPFR_RNDN);
  mpfr_clear(v);
  mpfr_set_emin(emin);
  mpfr_set_emax(emax);
  return result;
}

#else

inline double power(double x, unsigned long k) { return long_power(x, k); }

#endif

}  // namespace plain
