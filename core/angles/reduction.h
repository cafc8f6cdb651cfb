// Reduction of an angle by multiples of pi/512, the distance of the points of the sine table.
#pragma once

#include "core/angles/double_parts.h"
#include "core/angles/tables.inl"

namespace tessarn::angles {

// x = rest + place pi/512 modulo 2 pi, |rest| <= pi/1024 + 2^-20. Of place, 8 bits are the point of the table and the
// next 2 the quadrant.
struct reduced {
  two_part rest;
  unsigned place;
};

// For |x| >= 1/2, with a relative error of the rest below 2^-72 where the place is a multiple of pi/2, whatever
// cancels.
reduced reduce_by_bits(double x) noexcept;

// k = round(x 512/pi) for |x| <= 2^20, as a double and its last bits.
struct quotient {
  double k;
  unsigned place;
};
inline quotient nearest_quotient(double x) noexcept {
  constexpr double shift = 0x1.8p52;
  const double shifted = x * inverse_step + shift;
  std::uint64_t bits;
  std::memcpy(&bits, &shifted, sizeof bits);
  return {shifted - shift, static_cast<unsigned>(bits)};
}

// x - k pi/512 with an absolute error below 2^-87. W. Cody and W. Waite, Software manual for the elementary functions,
// 1980: pi/512 in parts so short that their products with k, the last one's excepted, are exact.
inline constexpr double short_angle = 48;
inline two_part rest_of_short_angle(double x, double k) noexcept {
  return ordered_sum(x - k * step_in_two[0], -k * step_in_two[1]);
}
inline two_part rest_after(double x, double k) noexcept {
  if (std::fabs(x) <= short_angle) return rest_of_short_angle(x, k);
  return ordered_sum((x - k * step_in_three[0]) - k * step_in_three[1], -k * step_in_three[2]);  // |x| <= 2^20
}

}  // namespace tessarn::angles
