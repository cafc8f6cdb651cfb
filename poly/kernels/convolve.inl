// The product of two polynomials, in lanes.
#pragma once

#include "poly/kernels/fit_sums.inl"
#include "poly/kernels/kernels.h"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// Coefficients of the product that are summed side by side, as many vectors as there are registers for.
constexpr size_t product_vectors = width == 8 ? 4 : 6;
constexpr size_t product_block = product_vectors * width;

// The coefficients k .. k + product_block - 1 of the product, each the sum of c[k - j] q[j] over j ascending. Vector v
// runs v * width behind: it is at j = t + v * width when vector 0 is at j = t. All vectors then need the same
// coefficients c[k - t], c[k - t + 1], ..., which are loaded once. The sums begin and end with products with the zeros
// around c and q.
TESSARN_INLINE void convolve_block(const double* c, ptrdiff_t n, const double* q, ptrdiff_t nq, ptrdiff_t k,
                                   double* r) {
  constexpr auto lead = static_cast<ptrdiff_t>(product_block - width);
  const ptrdiff_t first = k - n + 1 > -lead ? k - n + 1 : -lead;
  const ptrdiff_t from_last = k + static_cast<ptrdiff_t>(width);
  const ptrdiff_t end = from_last < nq ? from_last : nq;
  vec sum[product_vectors] = {};
  for (ptrdiff_t t = first; t < end; ++t) {
    const vec shared = load(c + (k - t));
    for (size_t v = 0; v < product_vectors; ++v) sum[v] += shared * broadcast(q[t + static_cast<ptrdiff_t>(v * width)]);
  }
  for (size_t v = 0; v < product_vectors; ++v) store(r + v * width, sum[v]);
}

// Among n numbers and those behind them in the last vector.
TESSARN_INLINE mask some_not_finite(const double* x, size_t n) {
  mask others = {};
  for (size_t i = 0; i < n; i += width) others |= not_finite(load(x + i));
  return others;
}

bool convolve(const double* c, size_t n, const double* q, size_t nq, double* r) {
  if (!none(some_not_finite(c, n) | some_not_finite(q, nq))) return false;
  for (size_t k = 0; k < n + nq - 1; k += product_block)
    convolve_block(c, static_cast<ptrdiff_t>(n), q, static_cast<ptrdiff_t>(nq), static_cast<ptrdiff_t>(k), r + k);
  return true;
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
