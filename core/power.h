// Integer powers of a real, correctly rounded. The C library's pow misses the correctly rounded value in about one of a
// thousand inputs and its bits change with the processor; this one is reproducible.
#pragma once

#include "tessarn/scalar.h"

namespace tessarn::detail {

// x^k, correctly rounded for every finite x; 1 for k = 0 and x for k = 1, also when x is NaN. Powers of
// infinities and zeros are those of IEEE 754.
real power(real x, unsigned k) noexcept;

// x^-k, correctly rounded likewise; 1 for k = 0, infinite for zeros, zero for infinities.
real inverse_power(real x, unsigned k) noexcept;

}  // namespace tessarn::detail
