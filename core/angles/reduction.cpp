// Reduction of any angle by multiples of pi/512, in integers.
#include "core/angles/reduction.h"

#include <bit>
#include <cstring>

#include "core/angles/tables.inl"

namespace tessarn::angles {
namespace {

// The 128-bit product of two 64-bit numbers.
struct wide {
  std::uint64_t high, low;
};
inline wide multiplied(std::uint64_t a, std::uint64_t b) noexcept {
#ifdef __SIZEOF_INT128__
  __extension__ typedef unsigned __int128 u128;
  const u128 p = static_cast<u128>(a) * b;
  return {static_cast<std::uint64_t>(p >> 64), static_cast<std::uint64_t>(p)};
#else
  const std::uint64_t a0 = a & 0xFFFFFFFF, a1 = a >> 32, b0 = b & 0xFFFFFFFF, b1 = b >> 32;
  const std::uint64_t p00 = a0 * b0, p01 = a0 * b1, p10 = a1 * b0;
  const std::uint64_t middle = (p00 >> 32) + (p01 & 0xFFFFFFFF) + (p10 & 0xFFFFFFFF);
  return {a1 * b1 + (p01 >> 32) + (p10 >> 32) + (middle >> 32), (middle << 32) | (p00 & 0xFFFFFFFF)};
#endif
}

}  // namespace

// M. Payne and R. Hanek, Radian reduction for trigonometric functions, 1983: x = m 2^e with an integer m of 53 bits. Of
// the bits of 2/pi those that make multiples of 4 are left out; of the rest 192 are taken, which leaves an error below
// 2^-137 in the quotient. The quotient of a double is never nearer than 2^-62 to an integer (docs/angles.md), so that
// at least 75 bits of the remainder are right.
reduced reduce_by_bits(double x) noexcept {
  std::uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  const int e = static_cast<int>((bits >> 52) & 0x7FF) - 1075;
  const std::uint64_t m = (bits & 0xFFFFFFFFFFFFF) | 0x10000000000000;
  // The first bit of 2/pi that counts is the one of weight 2^(1 - e), bit e - 2 counted from 0; 64 zeros stand before.
  const unsigned first = static_cast<unsigned>(e - 2 + 64), word = first / 64, shift = first % 64;
  const std::uint64_t* w = two_over_pi_bits + word;
  const auto window = [w, shift](int k) { return shift == 0 ? w[k] : w[k] << shift | w[k + 1] >> (64 - shift); };
  const wide p2 = multiplied(m, window(2)), p1 = multiplied(m, window(1));
  const std::uint64_t low = p2.low;
  const std::uint64_t middle = p1.low + p2.high;
  const std::uint64_t high = m * window(0) + p1.high + (middle < p1.low);
  // high:middle:low is the quotient by pi/2 modulo 4 in units of 2^-190. Its ten leading bits, rounded, are the place;
  // the others, taken as a number in two's complement, are the fraction of pi/512 between -1/2 and 1/2.
  auto place = static_cast<unsigned>((high >> 54) + ((high >> 53) & 1));
  std::uint64_t f2 = high << 10 | middle >> 54, f1 = middle << 10 | low >> 54, f0 = low << 10;
  const bool negative = f2 >> 63;
  if (negative) {
    f0 = ~f0 + 1;
    f1 = ~f1 + (f0 == 0);
    f2 = ~f2 + (f0 == 0 && f1 == 0);
  }
  // The leading zeros go; 26, 53 and 49 bits of the fraction are left.
  int zeros = std::countl_zero(f2);
  if (zeros == 64) {
    f2 = f1;
    f1 = f0;
    f0 = 0;
    zeros += std::countl_zero(f2);
  }
  const int by = zeros % 64;
  if (by != 0) {
    f2 = f2 << by | f1 >> (64 - by);
    f1 = f1 << by | f0 >> (64 - by);
  }
  std::uint64_t scale_bits = static_cast<std::uint64_t>(1023 - 64 - zeros) << 52;
  double scale;
  std::memcpy(&scale, &scale_bits, sizeof scale);
  if (negative != (x < 0)) scale = -scale;
  if (x < 0) place = 0 - place;
  const double a1 = static_cast<double>(f2 >> 38 << 38);
  const double a2 = static_cast<double>((f2 & 0x3FFFFFFFFF) << 15 | f1 >> 49) * 0x1p-15;
  const double rest = a1 * step_split[1] + a2 * (step_split[0] + step_split[1]);
  const two_part r = ordered_sum(a1 * step_split[0], rest);
  return {{r.high * scale, r.low * scale}, place};
}

}  // namespace tessarn::angles
