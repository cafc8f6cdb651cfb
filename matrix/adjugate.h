// The inverse by the adjugate formula, on arrays.
#pragma once

#include <cstddef>

#include "tessarn/scalar.h"

namespace tessarn::detail {

// dst = the adjugate of the n x n matrix m times the reciprocal of its determinant, n >= 2, both row-major; m holds no
// quiet NaN. Every entry has the bits of the determinant of its own minor, times the sign, times the reciprocal.
// Works on up to fifteen times the memory of m.
void invert_by_adjugate(const real* m, std::size_t n, real* dst);

}  // namespace tessarn::detail
