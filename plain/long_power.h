// The correctly rounded integer power by long multiplication: the whole-number significand is kept to 1024 bits,
// with a mark whether anything nonzero was cut off below.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace plain {

constexpr std::size_t kept_digits = 32;

// digits (32 bits each, least significant first, the last one not zero) * 2^exponent; inexact when smaller digits
// were dropped.
struct long_number {
  std::uint32_t digits[2 * kept_digits] = {};
  std::size_t size = 0;
  std::int64_t exponent = 0;
  bool inexact = false;
};

inline long_number product(const long_number& a, const long_number& b) {
  long_number p;
  p.size = a.size + b.size;
  for (std::size_t i = 0; i < a.size; ++i) {
    std::uint64_t carry = 0;
    for (std::size_t j = 0; j < b.size; ++j) {
      const std::uint64_t t = std::uint64_t{a.digits[i]} * b.digits[j] + p.digits[i + j] + carry;
      p.digits[i + j] = static_cast<std::uint32_t>(t);
      carry = t >> 32;
    }
    p.digits[i + b.size] = static_cast<std::uint32_t>(carry);
  }
  p.exponent = a.exponent + b.exponent;
  p.inexact = a.inexact || b.inexact;
  while (p.digits[p.size - 1] == 0) --p.size;
  const std::size_t cut = p.size > kept_digits ? p.size - kept_digits : 0;
  for (std::size_t i = 0; i < cut; ++i) p.inexact = p.inexact || p.digits[i] != 0;
  for (std::size_t i = cut; cut > 0 && i < p.size; ++i) p.digits[i - cut] = p.digits[i];
  p.size -= cut;
  p.exponent += 32 * static_cast<std::int64_t>(cut);
  return p;
}

// Round half to even to 53 bits, or to fewer in the subnormal range.
inline double rounded(const long_number& a) {
  std::int64_t bits = 32 * static_cast<std::int64_t>(a.size);
  for (std::uint32_t top = a.digits[a.size - 1]; (top >> 31) == 0; top <<= 1) --bits;
  const std::int64_t top_exponent = a.exponent + bits;  // the value is in [2^(top - 1), 2^top)
  if (top_exponent > 1024) return std::numeric_limits<double>::infinity();
  if (top_exponent < -1074) return 0.0;
  const std::int64_t lowest = top_exponent - 53 < -1074 ? -1074 : top_exponent - 53;  // exponent of the last bit
  const auto bit = [&](std::int64_t exponent) {
    const std::int64_t i = exponent - a.exponent;
    return i >= 0 && i < bits && ((a.digits[static_cast<std::size_t>(i / 32)] >> (i % 32)) & 1) != 0;
  };
  std::uint64_t significand = 0;
  for (std::int64_t e = top_exponent - 1; e >= lowest; --e) significand = 2 * significand + bit(e);
  bool below = a.inexact;
  for (std::int64_t e = a.exponent; e < lowest - 1; ++e) below = below || bit(e);
  if (bit(lowest - 1) && (below || (significand & 1) != 0)) ++significand;
  return std::ldexp(static_cast<double>(significand), static_cast<int>(lowest));
}

inline double long_power(double x, unsigned long k) {
  if (k == 0) return 1.0;
  if (!std::isfinite(x) || x == 0) return std::pow(x, static_cast<double>(k));
  const double sign = x < 0 && k % 2 == 1 ? -1.0 : 1.0;
  int exponent = 0;
  const auto m = static_cast<std::uint64_t>(std::ldexp(std::frexp(std::fabs(x), &exponent), 53));
  long_number square{{static_cast<std::uint32_t>(m), static_cast<std::uint32_t>(m >> 32)}, 2, exponent - 53, false};
  long_number result{{1}, 1, 0, false};
  for (;;) {
    if (k & 1) result = product(result, square);
    if ((k >>= 1) == 0) break;
    square = product(square, square);
  }
  return sign * rounded(result);
}

}  // namespace plain
