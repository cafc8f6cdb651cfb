// Exponents of reals, and products with powers of two, as bits: the C library is not asked.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "tessarn/scalar.h"

namespace tessarn::detail {

// 2^e for -1022 <= e <= 1023.
inline real power_of_two(int e) noexcept {
  const std::uint64_t bits = static_cast<std::uint64_t>(e + 1023) << 52;
  double power;  // emscripten's library has no std::bit_cast yet
  std::memcpy(&power, &bits, sizeof power);
  return static_cast<real>(power);
}

// The e of 2^e <= |x| < 2^(e + 1), for finite x other than 0, subnormal numbers included.
inline int exponent_of(real x) noexcept {
  constexpr int leading_zeros_of_significand = 11;
  const auto d = static_cast<double>(x);
  std::uint64_t bits;
  std::memcpy(&bits, &d, sizeof bits);
  bits &= 0x7FFFFFFFFFFFFFFF;
  const int biased = static_cast<int>(bits >> 52);
  return biased != 0 ? biased - 1023 : -1022 - (std::countl_zero(bits) - leading_zeros_of_significand);
}

// x 2^e, rounded once. Each factor before the last leaves a normal number or overflows for good.
inline real scaled(real x, int e) noexcept {
  const real large = power_of_two(1023), small = power_of_two(-1022 + 53);
  for (int steps = 0; e > 1023; e -= 1023)
    if (x *= large; ++steps == 3) return x;
  for (int steps = 0; e < -1022; e += 1022 - 53)
    if (x *= small; ++steps == 3) return x;
  return x * power_of_two(e);
}

}  // namespace tessarn::detail
