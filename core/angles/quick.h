// The quick phase of sine, cosine and their inverses: 66 correct bits in ordinary doubles. docs/angles.md proves the
// bound.
#pragma once

#include "core/angles/double_parts.h"
#include "core/angles/reduction.h"
#include "core/angles/tables.inl"

namespace tessarn::angles {

// The relative error of every quick result is below this bound.
inline constexpr double quick_error = 0x1p-66;

// sin(d)/d - 1 and cos(d) - 1 for |d| <= 2^-8, from d^2, as B. Taylor's series.
inline double sine_series(double square) noexcept {
  return square * (-0x1.5555555555555p-3 + square * (0x1.1111111111111p-7 - square * 0x1.a01a01a01a01ap-13));
}
inline double cosine_series(double square) noexcept {
  return square * (-0.5 + square * (0x1.5555555555555p-5 - square * 0x1.6c16c16c16c17p-10));
}

// The quick sine of an angle is sign (high + low).
struct quick_sine {
  two_part magnitude;
  double sign;
};

// The sine of rest + place pi/512. At a point of the table the function has the value a = a1 + a2 and the derivative b
// = b1 + b2, both split behind 26 bits, so that with 26 bits of the rest in d1 the product b1 d1 is exact:
//   f = a + b1 d1 + (a (cos d - 1) + b2 d1 + b ((d - d1) + (sin d - d))).
// Where a is 0 the sign of d is that of the result. Which function and which sign is a place in a table: for angles
// without order, branches would be guessed wrongly.
inline quick_sine sine_at(const reduced& r) noexcept {
  static constexpr double signs[4] = {1, 1, -1, -1};
  const unsigned quadrant = r.place >> 8 & 3;
  const double* t = sine_table[r.place & 255] + 2 * (quadrant & 1);
  const double d1 = multiple_of_2_to_minus_35(r.rest.high);
  const double d2 = (r.rest.high - d1) + r.rest.low;
  const double d = d1 + d2;
  const double square = d * d;
  const two_part sum = ordered_sum(t[0], t[2] * d1);
  const double slope = (t[2] + t[3]) * (d2 + d * sine_series(square)) + t[3] * d1;
  return {{sum.high, ((sum.low + t[1]) + slope) + (t[0] + t[1]) * cosine_series(square)}, signs[quadrant]};
}

// The sine of an angle within pi/1024 of a multiple of pi.
inline quick_sine short_sine(const reduced& r) noexcept {
  const double d = r.rest.high;
  return {{d, r.rest.low + d * sine_series(d * d)}, r.place & 512 ? -1.0 : 1.0};
}

// Arc sine of s in [0, 3/4], |s.low| at most an ulp of s.high, and 0 for s.high above 3/8.
inline two_part quick_arc_sine(two_part s) noexcept {
  const table_place place = nearest_place(s.high);
  if (place.index == 0) {
    const double square = s.high * s.high;
    return {s.high,
            s.low + (s.high * square) * ((0x1.5555555555555p-3 + square * 0x1.3333333333333p-4) +
                                         (square * square) * (0x1.6db6db6db6db7p-5 + square * 0x1.f1c71c71c71c7p-6))};
  }
  const double* t = arc_sine_table[place.index];
  const double d = s.high - place.point;
  const double d1 = multiple_of_2_to_minus_35(d);
  const double square = d * d;
  const two_part sum = ordered_sum(t[0], t[2] * d1);
  const double higher =
      (t[4] + d * t[5]) + square * ((t[6] + d * t[7]) + square * ((t[8] + d * t[9]) + square * t[10]));
  const double small = (t[2] * ((d - d1) + s.low) + t[3] * d) + (square * higher + (2 * t[4]) * (d * s.low));
  return {sum.high, (sum.low + t[1]) + small};
}

}  // namespace tessarn::angles
