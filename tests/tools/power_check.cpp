// Compares the integer power of the library with MPFR's correctly rounded one.
//   power_check [count] [seed]
// Prints the disagreements (at most 20) and ends with 1 when there is one.
#include <mpfr.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "core/power.h"
#include "support/bits.h"
#include "support/random.h"

namespace {

// The correctly rounded x^k, subnormal results included; one variable for all calls.
class reference_power {
 public:
  reference_power() {
    mpfr_set_emin(-1073);
    mpfr_set_emax(1024);
    mpfr_init2(v_, 53);
  }
  ~reference_power() { mpfr_clear(v_); }
  reference_power(const reference_power&) = delete;
  reference_power& operator=(const reference_power&) = delete;

  double operator()(double x, long k) {
    if (k == 0) return 1.0;
    if (!std::isfinite(x)) return std::pow(x, static_cast<double>(k));
    mpfr_set_d(v_, x, MPFR_RNDN);
    const int ternary = mpfr_pow_si(v_, v_, k, MPFR_RNDN);
    mpfr_subnormalize(v_, ternary, MPFR_RNDN);
    return mpfr_get_d(v_, MPFR_RNDN);
  }

 private:
  mpfr_t v_;
};

unsigned draw_exponent(test::random_source& r) {
  switch (r.below(8)) {
    case 0: return r.below(4);
    case 1: return r.below(2000);
    case 2: return 1u << r.below(20);
    case 3: return static_cast<unsigned>(r.next()) >> r.below(32);
    default: return 2 + r.below(30);
  }
}

double draw_base(test::random_source& r, unsigned k) {
  // Odd multiples of 2^-1075 lie between two subnormal numbers.
  if ((k == 5 || k == 25 || k == 43) && r.below(4) == 0) {
    return std::ldexp(2.0 * r.below(40) + 1, -1075 / static_cast<int>(k));
  }
  switch (r.below(10)) {
    case 0: return r.hostile();
    case 1: return test::from_bits(r.next());
    case 2: {
      // A result near the overflow threshold, the smallest normal or the subnormal numbers.
      const double target[] = {1023.5, 1024, -1021.5, -1022, -1040, -1073.5, -1074.5, -1075, -960, 960};
      const double e = target[r.below(10)] + r.uniform(-1, 1) * std::ldexp(1.0, -static_cast<int>(r.below(40)));
      const double x = std::exp2(e / (k == 0 ? 1 : k));
      return r.below(2) ? x : -x;
    }
    case 3: {
      // Few bits, so that exact and half-way powers are common.
      const double x =
          std::ldexp(static_cast<double>(r.below(1u << (1 + r.below(27)))), static_cast<int>(r.below(60)) - 45);
      return r.below(2) ? x : -x;
    }
    case 4: return 1.0 + r.uniform() * std::ldexp(1.0, -static_cast<int>(r.below(52)));
    case 5: return std::ldexp(r.below(2) ? 1.0 : -1.0, static_cast<int>(r.below(2200)) - 1100);
    case 6: return std::ldexp(r.uniform(), static_cast<int>(r.below(80)) - 40);
    default: return r.uniform(-10, 10);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const long count = argc > 1 ? std::atol(argv[1]) : 200000;
  const unsigned long seed = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 1;
  test::random_source r(seed);
  reference_power reference;
  long wrong = 0;
  for (long i = 0; i < count; ++i) {
    const unsigned k = draw_exponent(r);
    const double x = draw_base(r, k);
    for (const bool inverse : {false, true}) {
      const double y = inverse ? tessarn::detail::inverse_power(x, k) : tessarn::detail::power(x, k);
      const double z = reference(x, inverse ? -static_cast<long>(k) : static_cast<long>(k));
      if (test::same_bits(y, z)) continue;
      if (++wrong <= 20) {
        std::printf("%s to the power %s%u: %s, correctly rounded %s\n", test::hex(x).c_str(), inverse ? "-" : "", k,
                    test::hex(y).c_str(), test::hex(z).c_str());
      }
    }
  }
  std::printf("%ld powers and as many inverse ones, %ld wrong\n", count, wrong);
  return wrong == 0 ? 0 : 1;
}
