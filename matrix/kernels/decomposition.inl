// The working state of a singular value decomposition: where its arrays are, and how a matrix is read into them. Kernel
// sources only.
#pragma once

#include "matrix/kernels/columns.inl"

namespace tessarn::detail::TESSARN_ISA::svd {

// Up to this many rows of U and V together the rotations of a sweep are applied while it runs: they hide behind its own
// chain of roots and quotients. More rows than that leave the cache, and are better served one group after the other.
static constexpr size_t direct_rows = 512;

struct decomposition {
  size_t m, n;                // rows and columns
  size_t u_stride, v_stride;  // of the columns
  bool rotates_separately;    // the left rotations are collected in a matrix of their own
  bool published_order;       // the sweeps compute in the order of the published algorithm
  double* u;                  // the columns of U
  double* v;                  // and of V
  double* left;               // the left rotations act on this: u, or n columns of n rows where rotates_separately
  size_t left_rows, left_stride;
  double* w;                // diagonal of the bidiagonal form
  double* rv1;              // its superdiagonal
  double* factor;           // of the reflected column in each later one
  double* row;              // the reflection of a row; after the sort: the signs of the columns
  double* ratio;            // row over its denominator; after the sort: the numbers of the columns
  double* right_rotations;  // of a sweep, for the columns of V: cosine and sine, one pair after the other
  double* left_rotations;   // and for those of U
  double* sums;             // eight partial sums for each column
  double norm;
};

// True for many rows a column: rotating n columns of n rows, and one product, then cost less than rotating the columns
// of U. The rotations of one or two columns keep the order of the published algorithm.
TESSARN_INLINE bool rotates_separately(size_t m, size_t n) { return n > 2 && m >= 2 * n && m > block_rows; }

static size_t workspace(size_t m, size_t n) {
  const size_t columns = whole_blocks(n);
  return block_rows + n * (column_stride(m) + column_stride(n) * (rotates_separately(m, n) ? 2 : 1)) + 9 * columns +
         block_rows * n;
}

// Cuts the memory into the arrays of the decomposition, U's columns at a whole cache line; V begins as zeros. The
// published order costs nothing for few columns, and gives them the signs that the algorithm would.
static void set_up(decomposition& d, size_t m, size_t n, double* memory) {
  const size_t misaligned = reinterpret_cast<uintptr_t>(memory) / sizeof(double) % block_rows;
  const size_t columns = whole_blocks(n);
  d.m = m;
  d.n = n;
  d.u_stride = column_stride(m);
  d.v_stride = column_stride(n);
  d.rotates_separately = rotates_separately(m, n);
  d.published_order = n <= 4;
  d.u = memory + (block_rows - misaligned);
  d.v = d.u + n * d.u_stride;
  d.left = d.rotates_separately ? d.v + n * d.v_stride : d.u;
  d.left_rows = whole_blocks(d.rotates_separately ? n : m);
  d.left_stride = d.rotates_separately ? d.v_stride : d.u_stride;
  d.w = d.v + n * d.v_stride * (d.rotates_separately ? 2 : 1);
  d.rv1 = d.w + columns;
  d.factor = d.rv1 + columns;
  d.row = d.factor + columns;
  d.ratio = d.row + columns;
  d.right_rotations = d.ratio + columns;
  d.left_rotations = d.right_rotations + 2 * columns;
  d.sums = d.left_rotations + 2 * columns;
  d.norm = 0;
  for (double* p = d.v; p < d.w; ++p) *p = 0;
}

// Copies the rows of a into columns, and forms the products of the first column with each; returns the sum of all
// squares. Goes by chunks of rows: a vector read right after its entries were stored one by one would wait for them.
static double load_columns(decomposition& d, const double* a) {
  constexpr size_t chunk = 8 * block_rows;
  block total = {};
  for (size_t j = 0; j < block_rows * d.n; ++j) d.sums[j] = 0;
  for (size_t j = 0; j < d.n; ++j)
    for (size_t k = d.m; k < whole_blocks(d.m); ++k) d.u[j * d.u_stride + k] = 0;
  for (size_t start = 0; start < d.m; start += chunk) {
    const size_t end = d.m - start < chunk ? d.m : start + chunk;
    for (size_t k = start; k < end; k += block_rows)
      for (size_t j = 0; j < d.n; ++j)
        for (size_t r = k; r < k + block_rows && r < end; ++r) d.u[j * d.u_stride + r] = a[r * d.n + j];
    for (size_t j = 0; j < d.n; ++j) {
      block sum = load_block(d.sums + j * block_rows);
      for (size_t k = start; k < end; k += block_rows) {
        const block c = load_block(d.u + j * d.u_stride + k);
        add_product(sum, load_block(d.u + k), c);
        add_product(total, c, c);
      }
      store_block(d.sums + j * block_rows, sum);
    }
  }
  return tree_sum(total);
}

TESSARN_INLINE void raise_norm(decomposition& d, size_t i) {
  const double sum = magnitude(d.w[i]) + magnitude(d.rv1[i]);
  if (d.norm < sum) d.norm = sum;
}

}  // namespace tessarn::detail::TESSARN_ISA::svd
