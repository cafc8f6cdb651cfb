// The inverse by the adjugate formula, on arrays.
#pragma once

#include <cstddef>

#include "tessarn/scalar.h"

namespace tessarn::detail {

// dst = q times the adjugate of the n x n matrix m, n >= 2, both row-major; m holds no quiet NaN. Every entry has
// the bits of the determinant of its own minor, times the sign, times q.
void scaled_adjugate(const real* m, std::size_t n, real q, real* dst);

}  // namespace tessarn::detail
