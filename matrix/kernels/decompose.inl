// The singular value decomposition by G. Golub and C. Reinsch (Singular value decomposition and least squares
// solutions, Numerische Mathematik 14, 1970): Householder bidiagonalisation, accumulation of the transformations,
// implicit-shift QR sweeps. The matrices are worked on as columns. Kernel sources only.
#pragma once

#include "matrix/kernels/bidiagonalise.inl"
#include "matrix/kernels/decompose_narrow.inl"
#include "matrix/kernels/decompose_small.inl"
#include "matrix/kernels/sweeps.inl"

namespace tessarn::detail::TESSARN_ISA::svd {

// Reduces a 3 x 3 matrix and accumulates its reflections, all in registers.
static void bidiagonalise_3(decomposition& d, const double* a) {
  matrix_3 t;
  reflect_3(t, a);
  d.w[0] = t.w0;
  d.w[1] = t.w1;
  d.w[2] = t.w2;
  d.rv1[0] = 0;
  d.rv1[1] = t.e1;
  d.rv1[2] = t.e2;
  for (size_t i = 0; i < 3; ++i) raise_norm(d, i);
  accumulate_right_3(t, d.v, d.v_stride);
  accumulate_left_3(t, d.u, d.u_stride);
}

// Shell sort into descending order, as published. Every move negates the moved columns of U and V and the saved ones;
// the columns themselves stay where they are, with their numbers and signs kept apart until they are written.
static void sort(decomposition& d) {
  double* sign = d.row;
  double* column = d.ratio;
  for (size_t i = 0; i < d.n; ++i) {
    column[i] = static_cast<double>(i);
    sign[i] = 1;
  }
  size_t gap = 1;
  do gap = 3 * gap + 1;
  while (gap <= d.n);
  do {
    gap /= 3;
    for (size_t i = gap; i < d.n; ++i) {
      const double saved_value = d.w[i];
      const double saved_column = column[i];
      double saved_sign = sign[i];
      size_t j = i;
      while (j >= gap && d.w[j - gap] < saved_value) {
        d.w[j] = d.w[j - gap];
        column[j] = column[j - gap];
        sign[j] = -sign[j - gap];
        saved_sign = -saved_sign;
        j -= gap;
      }
      d.w[j] = saved_value;
      column[j] = saved_column;
      sign[j] = saved_sign;
    }
  } while (gap > 1);
}

// Writes rows of a result from its sorted columns.
static void write_rows(const decomposition& d, const double* columns, size_t stride, size_t rows, double* to) {
  for (size_t j = 0; j < d.n; ++j) {
    const double* from = columns + static_cast<size_t>(d.ratio[j]) * stride;
    const double sign = d.row[j];
    for (size_t r = 0; r < rows; ++r) to[r * d.n + j] = sign * from[r];
  }
}

// Eight rows of U times COUNT columns of the collected left rotations.
template <size_t COUNT>
TESSARN_INLINE void combine_group(const decomposition& d, const double* u, const double* rotated, double* result) {
  block sum[COUNT] = {};
  for (size_t k = 0; k < d.n; ++k) {
    const block b = load_block(u + k * d.u_stride);
    for (size_t j = 0; j < COUNT; ++j) add_multiple(sum[j], rotated[j * d.left_stride + k], b);
  }
  for (size_t j = 0; j < COUNT; ++j) store_block(result + j * block_rows, sum[j]);
}

// The results as they go out, row by row and in the order of the sort; U from its product with the left rotations,
// where these were collected.
static void write(decomposition& d, double* U, double* S, double* V) {
  for (size_t k = 0; k < d.m; k += block_rows) {
    const size_t rows = d.m - k < block_rows ? d.m - k : block_rows;
    if (d.rotates_separately) {
      size_t j = 0;
      for (; j + 4 <= d.n; j += 4) combine_group<4>(d, d.u + k, d.left + j * d.left_stride, d.sums + j * block_rows);
      for (; j < d.n; ++j) combine_group<1>(d, d.u + k, d.left + j * d.left_stride, d.sums + j * block_rows);
    }
    const double* columns = d.rotates_separately ? d.sums : d.u + k;
    write_rows(d, columns, d.rotates_separately ? block_rows : d.u_stride, rows, U + k * d.n);
  }
  for (size_t k = 0; k < d.n; k += block_rows)
    write_rows(d, d.v + k, d.v_stride, d.n - k < block_rows ? d.n - k : block_rows, V + k * d.n);
  for (size_t i = 0; i < d.n; ++i) S[i * d.n + i] = d.w[i];
}

// Bits are those of the published algorithm for up to two columns and for 3 x 3 matrices.
static void decompose(const double* a, size_t m, size_t n, double* U, double* S, double* V, double* memory) {
  decomposition d;
  set_up(d, m, n, memory);
  if (m == 3 && n == 3) {
    bidiagonalise_3(d, a);
  } else {
    const double squares = load_columns(d, a);
    if (n <= 2) {
      bidiagonalise_narrow(d);
      accumulate_narrow(d);
    } else {
      bidiagonalise(d, !(squares >= smallest_square && squares <= largest_square));
      accumulate_right(d);
      accumulate_left(d);
    }
  }
  if (d.rotates_separately)
    for (size_t i = 0; i < n; ++i) d.left[i * d.left_stride + i] = 1;
  for (size_t k = n; k-- > 0;) diagonalise(d, k);
  sort(d);
  write(d, U, S, V);
}

}  // namespace tessarn::detail::TESSARN_ISA::svd
