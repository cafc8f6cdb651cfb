// The accurate phase: on which side of a threshold a sine or cosine lies, in integers of as many bits as it takes.
#pragma once

#include "core/angles/fixed_sine.h"

namespace tessarn::angles {

// The sign of f(angle) - threshold, neither of which is 0: computed with 192 bits, then with twice as many
// and so on until it is certain. The sine and cosine of a rational number other than 0 are transcendental (F.
// Lindemann, 1882), so that the difference is never 0.
int sign_of_difference(function f, exact_number angle, exact_number threshold);

// That sign as so many 32-bit words behind the point decide it; 0 where they do not.
int sign_of_difference(function f, exact_number angle, exact_number threshold, int words);

// Of the neighbouring doubles a and b, in either order, the one to which f(x) rounds. It lies between them.
double decide(function f, double x, double a, double b) noexcept;

// The like for the inverse function of f at x: asin x is above a midpoint m as x is above sin m, acos x as x is below
// cos m.
double decide_inverse(function f, double x, double a, double b) noexcept;

}  // namespace tessarn::angles
