/// \file
/// The rounding of reals to integers, and the equality of reals that counts a NaN as equal.
#pragma once

#include <cmath>

#include "tessarn/scalar.h"

namespace tessarn::detail {

/// The largest integer not above x. Values that a 64-bit integer cannot hold (NaN among them) and integral
/// values come back unchanged; the conversion rounds towards zero, so no library routine is called.
inline real floor_of(real x) noexcept {
  constexpr real limit = static_cast<real>(9223372036854775808.0);
  if (!(x >= -limit && x < limit)) return x;
  const auto t = static_cast<std::int64_t>(x);
  if (static_cast<real>(t) == x) return x;
  return static_cast<real>(std::signbit(x) ? t - 1 : t);
}

/// The smallest integer not below x, with the same exceptions as floor_of; values in (-1, 0) give +0.0.
inline real ceil_of(real x) noexcept {
  constexpr real limit = static_cast<real>(9223372036854775808.0);
  if (!(x >= -limit && x < limit)) return x;
  const auto t = static_cast<std::int64_t>(x);
  if (static_cast<real>(t) == x) return x;
  return static_cast<real>(std::signbit(x) ? t : t + 1);
}

/// Truncation to 32 bits; what does not fit, and NaN, gives the bit pattern 0x80000000.
inline int truncate_32(real x) noexcept {
  if (x > static_cast<real>(-2147483649.0) && x < static_cast<real>(2147483648.0)) return static_cast<int>(x);
  return (std::numeric_limits<int>::min)();
}

/// The magnitude of x rounded half up: 2.5 and -2.5 give 3. Results from 2^31 on, and NaN, give 2^31.
inline unsigned int round_magnitude(real x) noexcept {
  const real a = std::fabs(x);
  const real f = floor_of(a);
  return static_cast<unsigned int>(truncate_32(a - f >= static_cast<real>(0.5) ? ceil_of(a) : f));
}

/// x rounded half up for x >= 0 and down to its floor for every negative x: 2.5 gives 3, -0.2 gives -1.
/// Results outside 32 bits, and NaN, give -2147483648.
inline int round_signed(real x) noexcept {
  const real f = floor_of(x);
  if (x >= 0 && x - f >= static_cast<real>(0.5)) return truncate_32(ceil_of(x));
  return truncate_32(f);
}

/// Equality in which an unordered pair (a NaN on either side) counts as equal.
inline bool equal_or_unordered(real a, real b) noexcept { return !(a < b || a > b); }

}  // namespace tessarn::detail
