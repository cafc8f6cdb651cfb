// Minors of square matrices: what is left without a row and a column.
#pragma once

#include <cstddef>

#include "tessarn/scalar.h"

namespace tessarn::detail {

// The sign of the cofactor of row i and column j.
inline real sign_of(std::size_t i, std::size_t j) noexcept { return (i + j) % 2 == 0 ? 1 : -1; }

// to = the n x n matrix m without the given row and column, each entry by way of change.
template <class T, class Change>
void copy_minor(const T* m, std::size_t n, std::size_t row, std::size_t column, T* to, Change change) {
  for (std::size_t r = 0; r < n; ++r)
    for (std::size_t c = 0; c < n; ++c)
      if (r != row && c != column) *to++ = change(m[r * n + c]);
}

}  // namespace tessarn::detail
