// Sums of two doubles: a value and what its rounding lost. No step needs a fused multiply-add.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>

namespace tessarn::angles {

// high + low, with |low| small beside |high|.
struct two_part {
  double high;
  double low;
};

// a + b and its error, where a = 0 or |a| >= |b| (T. Dekker, 1971).
inline two_part ordered_sum(double a, double b) noexcept {
  const double s = a + b;
  return {s, b - (s - a)};
}

// a + b and its error (D. Knuth, 1969).
inline two_part exact_sum(double a, double b) noexcept {
  const double s = a + b;
  const double t = s - a;
  return {s, (a - (s - t)) + (b - t)};
}

// x rounded to a multiple of 2^-35, for |x| <= 2^-8: at most 27 bits and a sign.
inline double multiple_of_2_to_minus_35(double x) noexcept {
  constexpr double shift = 0x1.8p17;
  return (x + shift) - shift;
}

// The multiple of 1/256 that is nearest to x, for 0 <= x < 2, and which one it is.
struct table_place {
  double point;
  unsigned index;
};
inline table_place nearest_place(double x) noexcept {
  constexpr double shift = 0x1.8p44;
  const double shifted = x + shift;
  std::uint64_t bits;
  std::memcpy(&bits, &shifted, sizeof bits);
  return {shifted - shift, static_cast<unsigned>(bits & 0x1FF)};
}

// 1 or -1, with the sign of x.
inline double sign_of(double x) noexcept { return std::copysign(1.0, x); }

inline two_part times(double sign, two_part v) noexcept { return {sign * v.high, sign * v.low}; }

// The doubles to which the least and the greatest value within the error of high + low round.
struct rounding {
  double least;
  double greatest;
  bool decided() const noexcept { return least == greatest; }
};
inline rounding rounded(two_part v, double relative_error) noexcept {
  const double error = std::fabs(v.high) * relative_error;
  return {v.high + (v.low - error), v.high + (v.low + error)};
}

}  // namespace tessarn::angles
