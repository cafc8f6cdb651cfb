// The scalar rules in their plainest form: floor, ceiling, the two roundings and the
// quiet-NaN rule. Written as the reference for tests, without a look at the library's code.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace plain {

constexpr double pi = 3.141592653589793;
constexpr double two_pi = 6.283185307179586;
constexpr double half_pi = 1.5707963267948966;

inline bool sign_bit(double x) {
  std::uint64_t b;
  std::memcpy(&b, &x, sizeof b);
  return (b >> 63) != 0;
}

inline double flip_sign(double x) {
  std::uint64_t b;
  std::memcpy(&b, &x, sizeof b);
  b ^= std::uint64_t{1} << 63;
  std::memcpy(&x, &b, sizeof x);
  return x;
}

inline double absolute(double x) { return sign_bit(x) ? flip_sign(x) : x; }

// Truncation to 64 bits; false when the value does not fit (NaN included).
inline bool truncate(double x, std::int64_t& t) {
  if (!(x > -0x1p63 && x < 0x1p63)) return false;
  t = static_cast<std::int64_t>(x);
  return true;
}

inline double floor_of(double x) {
  std::int64_t t = 0;
  if (!truncate(x, t)) return x;
  if (static_cast<double>(t) == x) return x;
  return static_cast<double>(sign_bit(x) ? t - 1 : t);
}

inline double ceiling_of(double x) {
  std::int64_t t = 0;
  if (!truncate(x, t)) return x;
  if (static_cast<double>(t) == x) return x;
  return static_cast<double>(sign_bit(x) ? t : t + 1);
}

// Truncating conversion to a signed 32-bit integer; everything outside gives the smallest one.
inline std::int32_t to_int32(double x) {
  if (!(x > -2147483649.0 && x < 2147483648.0)) return std::numeric_limits<std::int32_t>::min();
  return static_cast<std::int32_t>(x);
}

inline std::uint32_t rndu(double x) {
  const double a = absolute(x);
  const double f = floor_of(a);
  const double result = (a - f >= 0.5) ? ceiling_of(a) : f;
  return static_cast<std::uint32_t>(to_int32(result));
}

inline std::int32_t rndi(double x) {
  const double f = floor_of(x);
  const double d = x - f;
  double result;
  if (x >= 0) {
    result = d >= 0.5 ? ceiling_of(x) : f;
  } else {
    result = d > -0.5 ? f : ceiling_of(x);
  }
  return to_int32(result);
}

// Equality of components: an unordered pair counts as equal.
inline bool equal(double a, double b) { return !(a < b) && !(a > b); }

inline double nan_to_zero(double x) { return x != x ? 0.0 : x; }

}  // namespace plain
