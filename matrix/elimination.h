// Determinants and square systems on arrays, row-major.
#pragma once

#include <cstddef>

#include "tessarn/scalar.h"

namespace tessarn::detail {

// The determinant of the n x n matrix a: Sarrus for n = 3, else elimination without pivoting on a copy.
real determinant(const real* a, std::size_t n);

// A column inside a matrix: entry r is first[(r mod height) * stride].
template <class T>
struct column_view {
  T* first;
  std::size_t height;
  std::size_t stride;
  T& operator[](std::size_t r) const { return first[(r < height ? r : r % height) * stride]; }
};

// Solves a u = b by LU factorisation with partial pivoting, u replacing b. False, leaving b as it is,
// when a column of candidate pivots is exactly 0.
bool solve_lu(const real* a, std::size_t n, column_view<real> b);

}  // namespace tessarn::detail
