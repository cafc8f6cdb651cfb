// The inverses of triangular factors. Both are formed transposed, row by row: the row j of the transposed inverse of U
// is (e_j - sum of U_kj row k, k < j) / U_jj, that of L likewise from below, and rows are whole vectors. So each row of
// an inverse X comes from substitution in X U = I, and |X U - I| <= g |X| |U| with g = n u / (1 - n u) (N. Higham,
// Accuracy and Stability of Numerical Algorithms, 2002, section 14.2). Kernel sources only.
#pragma once

#include "matrix/kernels/lu.inl"
#include "simd/lanes.h"

namespace tessarn::detail::TESSARN_ISA {

// Rows that see the rows before their block in one product, and those of the block one by one.
static constexpr size_t triangle_block = 8;

TESSARN_INLINE size_t vectors_from(size_t x, size_t end) {
  const size_t vectors = (end - x) / width;
  return vectors < tile_vectors ? vectors : tile_vectors;
}

// y becomes the identity matrix, its rows `stride` apart.
TESSARN_INLINE void set_identity(double* y, size_t n, size_t stride) {
  for (size_t i = 0; i < n * stride; i += width) store(y + i, vec{});
  for (size_t i = 0; i < n; ++i) y[i * stride + i] = 1;
}

// Takes factor times another row away from a row, of which VECTORS vectors are done at a time.
template <size_t VECTORS>
TESSARN_INLINE void subtract_row(vec (&row)[VECTORS], const double* factor, const double* other) {
  for (size_t v = 0; v < VECTORS; ++v) row[v] -= broadcast_from(factor) * load(other + v * width);
}

// The rows of a block of the transposed inverse of L see those below them in the block.
template <size_t VECTORS>
TESSARN_INLINE void finish_lower(const double* w, size_t stride, size_t first, size_t last, double* y) {
  for (size_t j = last; j-- > first;) {
    vec row[VECTORS];
    for (size_t v = 0; v < VECTORS; ++v) row[v] = load(y + j * stride + v * width);
    for (size_t k = last; --k > j;) subtract_row(row, w + k * stride + j, y + k * stride);
    for (size_t v = 0; v < VECTORS; ++v) store(y + j * stride + v * width, row[v]);
  }
}

template <size_t VECTORS>
TESSARN_INLINE void finish_upper(const double* w, size_t stride, size_t first, size_t last, double* y) {
  for (size_t j = first; j < last; ++j) {
    vec row[VECTORS];
    for (size_t v = 0; v < VECTORS; ++v) row[v] = load(y + j * stride + v * width);
    for (size_t k = first; k < j; ++k) subtract_row(row, w + k * stride + j, y + k * stride);
    const vec divisor = broadcast(w[j * stride + j]);
    for (size_t v = 0; v < VECTORS; ++v) store(y + j * stride + v * width, row[v] / divisor);
  }
}

// From the last block up. In the columns from x on, rows below the last of these columns are still 0 and are left out.
static void invert_lower(const double* w, size_t n, size_t stride, double* y) {
  set_identity(y, n, stride);
  const size_t end = (n + 7) / 8 * 8;
  for (size_t first = (n - 1) / triangle_block * triangle_block;; first -= triangle_block) {
    const size_t last = n - first < triangle_block ? n : first + triangle_block;
    for (size_t x = first; x < end;) {
      const size_t vectors = vectors_from(x, end), next = x + vectors * width;
      const size_t below = next < n ? next : n;
      if (below > last)
        tile_columns<from_stored, subtract_products>(vectors, w + last * stride + first, 1, stride,
                                                     y + last * stride + x, stride, below - last,
                                                     y + first * stride + x, stride, last - first, false);
      switch (vectors) {
        case 1: finish_lower<1>(w, stride, first, last, y + x); break;
        case 2: finish_lower<2>(w, stride, first, last, y + x); break;
        default: finish_lower<tile_vectors>(w, stride, first, last, y + x);
      }
      x = next;
    }
    if (first == 0) return;
  }
}

// From the first block down; in the columns from x on, rows above x are 0.
static void invert_upper(const double* w, size_t n, size_t stride, double* y) {
  set_identity(y, n, stride);
  for (size_t first = 0; first < n; first += triangle_block) {
    const size_t last = n - first < triangle_block ? n : first + triangle_block;
    const size_t end = first + triangle_block;
    for (size_t x = 0; x < end;) {
      const size_t vectors = vectors_from(x, end);
      if (x < first)
        tile_columns<from_stored, subtract_products>(vectors, w + x * stride + first, 1, stride, y + x * stride + x,
                                                     stride, first - x, y + first * stride + x, stride, last - first,
                                                     false);
      switch (vectors) {
        case 1: finish_upper<1>(w, stride, first, last, y + x); break;
        case 2: finish_upper<2>(w, stride, first, last, y + x); break;
        default: finish_upper<tile_vectors>(w, stride, first, last, y + x);
      }
      x += vectors * width;
    }
  }
}

static void invert_triangles(const double* w, size_t n, double* lower, double* upper) {
  invert_lower(w, n, lu_stride(n), lower);
  invert_upper(w, n, lu_stride(n), upper);
}

// c = a b for an upper triangle a and a lower triangle b: entry (i, j) has products from the larger of i and j on.
static void multiply_triangles(const double* a, const double* b, double* c, size_t n) {
  const size_t stride = lu_stride(n), end = (n + 7) / 8 * 8;
  for (size_t x = 0; x < end;) {
    const size_t vectors = vectors_from(x, end);
    for (size_t first = 0; first < n; first += triangle_block) {
      const size_t rows = n - first < triangle_block ? n - first : triangle_block, k = x < first ? first : x;
      tile_columns<from_zero, add_products>(vectors, a + first * stride + k, stride, 1, b + k * stride + x, stride,
                                            k < n ? n - k : 0, c + first * stride + x, stride, rows, false);
    }
    x += vectors * width;
  }
}

template <tile_mode MODE>
static void add_square_product(const double* a, size_t row_stride, size_t k_stride, const double* b, double* c,
                               size_t n) {
  const size_t stride = lu_stride(n), end = (n + 7) / 8 * 8;
  for (size_t x = 0; x < end;) {
    const size_t vectors = vectors_from(x, end);
    tile_columns<from_stored, MODE>(vectors, a, row_stride, k_stride, b + x, stride, n, c + x, stride, n, false);
    x += vectors * width;
  }
}

static void add_square(const double* a, bool transposed, bool subtract, const double* b, double* c, size_t n) {
  const size_t stride = lu_stride(n);
  (subtract ? add_square_product<subtract_products>
            : add_square_product<add_products>)(a, transposed ? 1 : stride, transposed ? stride : 1, b, c, n);
}

}  // namespace tessarn::detail::TESSARN_ISA
