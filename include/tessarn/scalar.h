/// \file
/// The scalar and integer types of the library, the rounding of reals to integers, and the rule that
/// keeps the inline arithmetic of these headers the same under every caller's compiler flags.
///
/// Reals are 64-bit IEEE-754 numbers everywhere. Angles are radians. Counts are 32-bit.
#pragma once

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "tessarn/export.h"
#include "tessarn/version.h"

namespace tessarn {

/// The real number of every field, argument and result: `long double` where the compiler gives it the
/// 64-bit format (Microsoft's ABI, Apple silicon), `double` elsewhere.
#if LDBL_MANT_DIG == 53
using real = long double;
#else
using real = double;
#endif

/// 32-bit count and index types: `unsigned long` and `long` where these have 32 bits.
using ulong = std::conditional_t<sizeof(unsigned long) == 4, unsigned long, std::uint32_t>;
using slong = std::conditional_t<sizeof(long) == 4, long, std::int32_t>;

static_assert(sizeof(real) == 8 && std::numeric_limits<real>::is_iec559 &&
                  std::numeric_limits<real>::digits == 53,
              "tessarn needs a 64-bit IEEE-754 real");
static_assert(sizeof(ulong) == 4 && sizeof(slong) == 4, "counts are 32-bit");
static_assert(sizeof(int) == 4, "rounded coordinates are 32-bit");

/// The doubles nearest to pi, 2 pi and pi/2.
inline constexpr real pi = static_cast<real>(3.141592653589793);
inline constexpr real two_pi = static_cast<real>(6.283185307179586);
inline constexpr real half_pi = static_cast<real>(1.5707963267948966);

namespace detail {

/// a * b, rounded once. A product that feeds a sum, here or after inlining in the caller's expression,
/// goes through this function, because callers compile these headers with flags of their own and a
/// fused multiply-add would change the bits. Without fused instructions it is an ordinary product; with
/// them the value passes through an empty assembly statement: clang fuses under -ffp-contract=fast
/// whatever a pragma says, and GCC loses __builtin_assoc_barrier when it vectorises. The library itself
/// is compiled without contraction.
inline real product(real a, real b) noexcept {
#if defined(TESSARN_BUILD) || (defined(__x86_64__) && !defined(__FMA__))
  return a * b;
#elif (defined(__GNUC__) || defined(__clang__)) && defined(__x86_64__)
  real p = a * b;
  __asm__("" : "+x"(p));
  return p;
#elif (defined(__GNUC__) || defined(__clang__)) && defined(__aarch64__)
  real p = a * b;
  __asm__("" : "+w"(p));
  return p;
#elif defined(__GNUC__) || defined(__clang__)
  volatile real p = a * b;
  return p;
#else
#if defined(_MSC_VER)
#pragma fp_contract(off)
#endif
  return a * b;
#endif
}

/// The largest integer not above x. Values that a 64-bit integer cannot hold (also NaN) and integral
/// values come back unchanged; the conversion rounds towards zero, so no library routine is called.
inline real floor_of(real x) noexcept {
  constexpr real limit = static_cast<real>(9223372036854775808.0);
  if (!(x >= -limit && x < limit)) return x;
  const auto t = static_cast<std::int64_t>(x);
  if (static_cast<real>(t) == x) return x;
  return static_cast<real>(std::signbit(x) ? t - 1 : t);
}

/// The smallest integer not below x, with the same exceptions; values in (-1, 0) give +0.0.
inline real ceil_of(real x) noexcept {
  constexpr real limit = static_cast<real>(9223372036854775808.0);
  if (!(x >= -limit && x < limit)) return x;
  const auto t = static_cast<std::int64_t>(x);
  if (static_cast<real>(t) == x) return x;
  return static_cast<real>(std::signbit(x) ? t : t + 1);
}

/// Truncation to 32 bits; what does not fit, and NaN, gives the bit pattern 0x80000000.
inline int truncate_32(real x) noexcept {
  if (x > static_cast<real>(-2147483649.0) && x < static_cast<real>(2147483648.0))
    return static_cast<int>(x);
  return std::numeric_limits<int>::min();
}

/// The magnitude of x rounded half up: 2.5 and -2.5 give 3. Results from 2^31 on, and NaN, give 2^31.
inline unsigned int round_magnitude(real x) noexcept {
  const real a = std::fabs(x);
  const real f = floor_of(a);
  return static_cast<unsigned int>(
      truncate_32(a - f >= static_cast<real>(0.5) ? ceil_of(a) : f));
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

/// The same object without const, for the overloads that hand constants and temporaries to members
/// which are declared with non-const references but change nothing.
template <class T>
inline T& mutable_ref(const T& object) noexcept {
  return const_cast<T&>(object);
}

/// The index i, not below the bound, wrapped into [0, bound) as if by repeated subtraction of the bound:
/// with a bound of 0 it never returns, which is what matrices without entries promise.
inline ulong wrap(ulong i, ulong bound) noexcept {
  const volatile ulong none = 0;
  while (bound == none) {
  }
  return i % bound;
}

/// Gives the library's own sources the fields of the owning classes.
struct access;

/// Enabled for pointers to constant T only, so that a null pointer still chooses the documented overload.
template <class Pointer, class T>
inline constexpr bool is_pointer_to_const =
    std::is_convertible_v<Pointer, const T*> && !std::is_convertible_v<Pointer, T*>;
template <class Pointer, class T>
using if_pointer_to_const = std::enable_if_t<is_pointer_to_const<Pointer, T>>;

}  // namespace detail
}  // namespace tessarn
