/// \file
/// The rounding of reals to integers, and the equality of reals that counts a NaN as equal.
///
/// The classes' rndu, rndi, rx and their kin go through these functions. Their rules differ from
/// std::round and std::lround, which round halves away from zero and leave values that do not fit
/// undefined; here every input has a stated result. No function reads or depends on the rounding mode
/// of the thread.
#pragma once

#include <cmath>

#include "tessarn/scalar.h"

namespace tessarn::detail {

/// The largest integer not above x.
/// Special results: values that a 64-bit integer cannot hold (NaN among them) and integral values,
/// -0.0 among them, come back unchanged. The conversion rounds towards zero, so no library routine is
/// called.
inline real floor_of(real x) noexcept {
  constexpr real limit = static_cast<real>(9223372036854775808.0);
  if (!(x >= -limit && x < limit)) return x;
  const auto t = static_cast<std::int64_t>(x);
  if (static_cast<real>(t) == x) return x;
  return static_cast<real>(std::signbit(x) ? t - 1 : t);
}

/// The smallest integer not below x, with the exceptions of floor_of; values in (-1, 0) give +0.0 and
/// not -0.0.
inline real ceil_of(real x) noexcept {
  constexpr real limit = static_cast<real>(9223372036854775808.0);
  if (!(x >= -limit && x < limit)) return x;
  const auto t = static_cast<std::int64_t>(x);
  if (static_cast<real>(t) == x) return x;
  return static_cast<real>(std::signbit(x) ? t : t + 1);
}

/// The integer part, as a signed integer of 32 bits.
/// Special results: what does not fit, and NaN, gives the bit pattern 0x80000000, which is what the
/// conversion instruction of x86 gives; in C++ such a conversion is undefined.
inline int truncate_32(real x) noexcept {
  if (x > static_cast<real>(-2147483649.0) && x < static_cast<real>(2147483648.0)) return static_cast<int>(x);
  return (std::numeric_limits<int>::min)();
}

/// The magnitude of x rounded half up: 2.5 and -2.5 give 3, 0.49999 gives 0.
/// Special results: results from 2^31 on, and NaN, give 2^31, although the type could hold some of
/// them.
inline unsigned int round_magnitude(real x) noexcept {
  const real a = std::fabs(x);
  const real f = floor_of(a);
  return static_cast<unsigned int>(truncate_32(a - f >= static_cast<real>(0.5) ? ceil_of(a) : f));
}

/// x rounded half up for x >= 0 and down to its floor for every negative x: 2.5 gives 3, -0.2 gives
/// -1, -2.5 gives -3. Callers rely on the asymmetry, which shifts negative coordinates by up to one
/// unit.
/// Special results: results outside 32 bits, and NaN, give -2147483648.
inline int round_signed(real x) noexcept {
  const real f = floor_of(x);
  if (x >= 0 && x - f >= static_cast<real>(0.5)) return truncate_32(ceil_of(x));
  return truncate_32(f);
}

/// Equality in which an unordered pair (a NaN on either side) counts as equal. Not transitive: 1 and
/// 2 are both equal to NaN.
inline bool equal_or_unordered(real a, real b) noexcept { return !(a < b || a > b); }

}  // namespace tessarn::detail
