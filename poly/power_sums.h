// The sums of which the normal equations of the polynomial fits consist.
#pragma once

#include "tessarn/scalar.h"

namespace tessarn::detail {

// sums[e] = sum of x^e for e = 0 .. exponents - 1, and moments[e] = sum of x^e y for e = 0 .. ordinates - 1
// (ordinates <= exponents): correctly rounded powers, each sum in the order of the points from +0.0.
void power_sums(const real* x, const real* y, std::size_t n, unsigned exponents, unsigned ordinates,
                real* sums, real* moments);

}  // namespace tessarn::detail
