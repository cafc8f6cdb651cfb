// Integer powers of a real, correctly rounded. The C library's pow misses the correctly rounded value in
// about one of a thousand inputs and its bits change with the processor; this one is reproducible.
#pragma once

#include <cmath>
#include <cstring>

#include "tessarn/detail/product.h"
#include "tessarn/scalar.h"

namespace tessarn::detail {

// x^k, correctly rounded for every finite x; 1 for k = 0 and x for k = 1, also when x is NaN. Powers of
// infinities and zeros are those of IEEE 754.
real power(real x, unsigned k) noexcept;

// An unevaluated sum high + low with |low| at most half an ulp of high, about 106 bits.
struct double_double {
  real high;
  real low;
};

// x with the lower 27 bits of its significand cleared. Uses a two-lane vector so that the value stays in a floating-point
// register: a move to an integer register would add its latency to every step of a chain of powers.
inline real leading_bits(real x) noexcept {
#if defined(__GNUC__) || defined(__clang__)
  typedef double two __attribute__((vector_size(16)));
  typedef std::int64_t two_bits __attribute__((vector_size(16)));
  const two v = {static_cast<double>(x), 0};
  return ((two)((two_bits)v & ~(two_bits{} + 0x7FFFFFF)))[0];
#else
  std::uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  bits &= ~std::uint64_t{0x7FFFFFF};
  std::memcpy(&x, &bits, sizeof x);
  return x;
#endif
}

// x as the sum of its 26 leading bits and the rest of at most 27, as T. Dekker splits (A floating-point technique
// for extending the available precision, 1971) but by cutting bits. Products of the parts are exact, but for the
// last bit of that of two rests, which is 2^-106 of the whole.
inline double_double split(real x) noexcept {
  const real high = leading_bits(x);
  return {high, x - high};
}

// a * x as a rounded product and its error.
inline double_double exact_product(real a, real x, double_double halves) noexcept {
  const real p = product(a, x);
  const double_double b = split(a);
  const real e = ((product(b.high, halves.high) - p) + product(b.high, halves.low) +
                  product(b.low, halves.high)) +
                 product(b.low, halves.low);
  return {p, e};
}

// (w.high + w.low) * x: the step of a chain of powers. The relative error is about 2^-105 a step, so
// the high part is the correctly rounded power as long as nothing leaves the normal range.
inline double_double times(double_double w, real x, double_double halves) noexcept {
  const double_double p = exact_product(w.high, x, halves);
  const real t = p.low + product(w.low, x);
  const real high = p.high + t;
  return {high, t - (high - p.high)};
}

// 2^(e - 1023) for e = 1 .. 2046.
inline double power_of_two(int biased) noexcept {
  const std::uint64_t bits = static_cast<std::uint64_t>(biased) << 52;
  double v;
  std::memcpy(&v, &bits, sizeof v);
  return v;
}

// The largest k |log2|x|| for which a chain of powers keeps its accuracy.
inline constexpr unsigned safe_exponent_range = 960;

// True when the chain x, x^2, ..., x^k stays in the range where its steps are exact to 105 bits: the
// magnitude of k log2|x| is at most 960, judged by the exponent of x, which is generous by less than one.
inline bool chain_is_safe(real x, unsigned k) noexcept {
  std::uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  const int exponent = static_cast<int>((bits >> 52) & 0x7FF) - 1023;
  const int magnitude = exponent >= 0 ? exponent + 1 : -exponent;
  return static_cast<std::uint64_t>(magnitude) * k <= safe_exponent_range;
}

// chain_is_safe in one comparison, for an exponent K of 1 or more that is a compile-time constant.
template <unsigned K>
inline bool chain_is_safe(real x) noexcept {
  constexpr std::uint64_t limit = safe_exponent_range / K, least = (1023 - limit) << 53, extent = 2 * limit << 53;
  std::uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  return 2 * bits - least < extent;
}

}  // namespace tessarn::detail
