// The matrix products.
#pragma once

#include <cstddef>

#include "tessarn/cplx.h"

namespace tessarn::detail {

// c = a b for row-major a (rows x inner) and b (inner x columns): each entry the sum over k ascending from
// +0.0, a NaN stored as 0.0. c is neither a nor b.
void multiply(const real* a, const real* b, real* c, std::size_t rows, std::size_t inner, std::size_t columns);

// c = a b for n x n matrices of complex numbers, each entry the sum over k ascending from 0 + 0i. c is the first real
// part of the product, whose entries need not be constructed yet; c may be that of a or b, and a may be b.
void multiply(const cplx* a, const cplx* b, real* c, std::size_t n);

}  // namespace tessarn::detail
