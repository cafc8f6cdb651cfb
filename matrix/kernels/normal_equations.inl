// The normal equations of a least-squares system. Kernel sources only.
#pragma once

#include "matrix/kernels/product.inl"

namespace tessarn::detail::TESSARN_ISA {

static constexpr size_t normal_block = 16;  // rows that are copied at a time

static size_t normal_stride(size_t n) { return (n + 1 + width - 1) / width * width; }

static size_t normal_workspace(size_t n) { return normal_block * normal_stride(n); }

#if TESSARN_VECTOR_LANES
// The normal equations for N <= 4 columns, straight from the rows: four lanes from the first entry of a row hold the
// row and the beginning of the next one, whose sums are dropped. The blocks take 1.7 to 3.6 times as long.
template <size_t N>
TESSARN_INLINE void narrow_normal_equations(const double* a, const double* b, size_t m, double* result, size_t stride) {
  quad sum[N + 1];
  for (size_t c = 0; c <= N; ++c) sum[c] = all_lanes(0);
  const auto add = [&](const double* row, quad lanes, double ordinate) {
    for (size_t c = 0; c < N; ++c) sum[c] = sum[c] + all_lanes(row[c]) * lanes;
    sum[N] = sum[N] + all_lanes(ordinate) * lanes;
  };
  size_t k = 0;
  for (; k * N + 4 <= m * N; ++k) add(a + k * N, load_quad(a + k * N), b[k]);
  for (; k < m; ++k) {
    double row[4] = {};
    for (size_t c = 0; c < N; ++c) row[c] = a[k * N + c];
    add(row, load_quad(row), b[k]);
  }
  double entries[N + 1][4];
  for (size_t c = 0; c <= N; ++c) store_quad(entries[c], sum[c]);
  for (size_t c = 0; c < N; ++c) {
    for (size_t d = 0; d < N; ++d) result[c * stride + d] = entries[c][d];
    result[c * stride + N] = entries[N][c];
  }
}
#endif

// Rows of (a, b) are copied in blocks, with b as the last column: the product of the block's transpose and the block
// then has all the sums, in lanes side by side. They continue from one block to the next.
static void normal_equations(const double* a, const double* b, size_t m, size_t n, double* result, double* workspace) {
  const size_t stride = normal_stride(n);
#if TESSARN_VECTOR_LANES
  switch (n) {
    case 1: return narrow_normal_equations<1>(a, b, m, result, stride);
    case 2: return narrow_normal_equations<2>(a, b, m, result, stride);
    case 3: return narrow_normal_equations<3>(a, b, m, result, stride);
    case 4: return narrow_normal_equations<4>(a, b, m, result, stride);
    default: break;
  }
#endif
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
