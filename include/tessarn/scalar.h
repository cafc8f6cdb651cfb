/// \file
/// The scalar and integer types of the library and its angle constants.
///
/// Reals are 64-bit IEEE-754 numbers everywhere. Angles are radians. Counts and indices have 32 bits.
///
/// The header refuses two settings of the compiler under which the documented results cannot hold:
/// flags that assume that there is no NaN, and arithmetic of the x87 unit, which rounds to 80 bits.
/// Other flags for floating point are fine: the inline members keep their bits with fused
/// multiply-add allowed, too.
///
/// At run time the promise needs rounding to nearest and subnormal numbers that are kept, which is
/// how a thread starts; tessarn/selfcheck.h looks.
#pragma once

#include <cfloat>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "tessarn/export.h"
#include "tessarn/version.h"

#if defined(__FAST_MATH__) || (defined(__FINITE_MATH_ONLY__) && __FINITE_MATH_ONLY__) || defined(_M_FP_FAST)
#error "tessarn: compile without -ffast-math (or /fp:fast): NaN and infinities are part of the documented results"
#endif

#if defined(__GNUC__) && (FLT_EVAL_METHOD == 2 || FLT_EVAL_METHOD < 0)
#error "tessarn: compile with -msse2 -mfpmath=sse: the x87 unit does not round to the 64-bit format"
#endif

namespace tessarn {

/// The real number of every field, argument and result: `long double` where the compiler gives it the
/// 64-bit format (Microsoft's ABI, Apple silicon), `double` elsewhere.
#if LDBL_MANT_DIG == 53
// Here long double is the 64-bit format.
using real = long double;
#else
// Here long double has more bits, and no result of the library uses them.
using real = double;
#endif

/// 32-bit count type: `unsigned long` where it has 32 bits. Members that take counts of 64 bits check
/// them and never cut them.
using ulong = std::conditional_t<sizeof(unsigned long) == 4, unsigned long, std::uint32_t>;
/// Signed 32-bit index type: `long` where it has 32 bits.
using slong = std::conditional_t<sizeof(long) == 4, long, std::int32_t>;

static_assert(sizeof(real) == 8 && std::numeric_limits<real>::is_iec559 && std::numeric_limits<real>::digits == 53,
              "tessarn needs a 64-bit IEEE-754 real");
static_assert(sizeof(ulong) == 4 && sizeof(slong) == 4, "counts are 32-bit");
static_assert(sizeof(int) == 4, "rounded coordinates are 32-bit");

/// The double nearest to pi; it is 1.2e-16 below pi, so its sine is that and not 0.
inline constexpr real pi = static_cast<real>(3.141592653589793);
/// The double nearest to 2 pi, exactly 2 * tessarn::pi.
inline constexpr real two_pi = static_cast<real>(6.283185307179586);
/// The double nearest to pi/2, exactly tessarn::pi / 2. Its cosine is 6.1e-17.
inline constexpr real half_pi = static_cast<real>(1.5707963267948966);

}  // namespace tessarn
