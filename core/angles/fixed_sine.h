// Sine and cosine in fixed-point numbers of any length.
#pragma once

#include "core/angles/fixed_point.h"

namespace tessarn::angles {

// An exact number of a normal double's magnitude: high + low with |low| at most half an ulp of high and a multiple of a
// quarter of it, as the midpoint of two neighbouring doubles has it.
struct exact_number {
  double high;
  double low;
};

enum class function { sine, cosine };

struct signed_fixed_point {
  fixed_point magnitude;
  bool negative;
};

// |x| < 2^32 with n words behind the point, cut.
fixed_point placed(exact_number x, std::size_t n);

// The sine or cosine of an angle of any size, for n >= 3; the error is below a unit of the last word but one
// (docs/angles.md).
signed_fixed_point value_at(function f, exact_number angle, std::size_t n);

}  // namespace tessarn::angles
