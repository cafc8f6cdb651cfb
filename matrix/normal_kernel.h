// The normal equations of a least-squares system. Kernel sources only.
#pragma once

#include "matrix/product_kernel.h"

namespace tessarn::detail::TESSARN_ISA {

static constexpr size_t normal_block = 64;

static size_t normal_stride(size_t n) { return (n + 1 + width - 1) / width * width; }

static size_t normal_workspace(size_t n) { return normal_block * normal_stride(n); }

// result[c][d] = sum over k ascending of a[k][c] a[k][d], and result[c][n] = sum of a[k][c] b[k], from +0.0, n rows of
// normal_stride(n). Rows of (a, b) are copied in blocks, so that the sums run side by side in lanes and continue
// from one block to the next.
static void normal_equations(const double* a, const double* b, size_t m, size_t n, double* result, double* workspace) {
  const size_t stride = normal_stride(n);
  for (size_t i = 0; i < n * stride; ++i) result[i] = 0;
  for (size_t i = 0; i < normal_block * stride; ++i) workspace[i] = 0;
  for (size_t k0 = 0; k0 < m; k0 += normal_block) {
    const size_t count = m - k0 < normal_block ? m - k0 : normal_block;
    for (size_t k = 0; k < count; ++k) {
      for (size_t c = 0; c < n; ++c) workspace[k * stride + c] = a[(k0 + k) * n + c];
      workspace[k * stride + n] = b[k0 + k];
    }
    for (size_t x = 0; x < stride;) {
      size_t vectors = (stride - x) / width;
      if (vectors > tile_vectors) vectors = tile_vectors;
      tile_columns<from_stored, add_products>(vectors, workspace, 1, stride, workspace + x, stride, count, result + x,
                                              stride, n, false);
      x += vectors * width;
    }
  }
}

}  // namespace tessarn::detail::TESSARN_ISA
