// The singular value decomposition over arrays.
#pragma once

#include <cstddef>

#include "tessarn/scalar.h"

namespace tessarn::detail {

// a = U S V' of the row-major rows x columns matrix a: U rows x columns, S and V columns x columns. Only the diagonal
// of S is written. Allocates a padded copy of a, at most two matrices like V and vectors; nothing for small matrices.
void decompose(const real* a, std::size_t rows, std::size_t columns, real* U, real* S, real* V);

}  // namespace tessarn::detail
