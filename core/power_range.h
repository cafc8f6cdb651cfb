// The range in which chains of powers are exact enough: one constant, from which every test of an abscissa is made.
// Constants alone, so that kernels may include it.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace tessarn::detail {

// The powers x, x^2, ..., x^k are safe where 2^-960 <= |x^k| <= 2^960; then the smaller ones are, too.
//
// Below: where a product a x of two numbers of 53 bits is at least 2^-961 in magnitude, the products of its parts are
// multiples of 2^-961 2^-104 = 2^-1065. The smallest number is 2^-1074, so they are exact, as if there were no lower
// end. What a step multiplies by an error that is as small as 2^-53 of the power is rounded in the normal range, or the
// rounding, 2^-1075 at most, is below 2^-114 of the power. Above: sums of parts exceed a power by less than a factor 2,
// and 2^961 is far from overflow. 960 leaves a few exponents at both ends and has many divisors.
inline constexpr unsigned safe_exponent_range = 960;

// One-comparison form for a highest exponent K of 1 or more that is a compile-time constant: x is safe where
//   2 bits(x) - least <= extent in unsigned arithmetic. Doubling drops the sign; numbers are ordered as their bits are.
// It takes 2^-limit <= |x| <= 2^limit.
template <unsigned K>
struct safe_range {
  static constexpr uint64_t limit = safe_exponent_range / K, least = (1023 - limit) << 53, extent = 2 * limit << 53;
};

}  // namespace tessarn::detail
