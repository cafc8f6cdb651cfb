// The kernels of the matrix family, one table for each instruction set. They know arrays and counts, allocate
// nothing and throw nothing; reals are passed as the doubles that they are in memory.
#pragma once

#include <stddef.h>

#include "simd/sets.h"

namespace tessarn::detail {

// Products of matrices with no more rows and columns than this are computed without packed copies.
constexpr size_t unpacked_limit = 96;

struct matrix_kernels {
  // c = a b, row-major, a rows x inner, b inner x columns: each entry the sum over k ascending from +0.0, a
  // NaN stored as 0.0. workspace holds multiply_workspace(...) doubles, none up to the limit above.
  void (*multiply)(const double* a, const double* b, double* c, size_t rows, size_t inner, size_t columns,
                   double* workspace);
  size_t (*multiply_workspace)(size_t rows, size_t inner, size_t columns);

  // LU factorisation with partial pivoting of the n x n matrix w, whose rows are lu_stride(n) doubles apart and have
  // zeros behind them. Leaves the upper triangle in w; b becomes the intermediate column L^-1 P b, each entry b - s
  // with s summed ascending from +0.0 and under the quiet-NaN rule. False when a column of candidate pivots is exactly
  // 0, or when the factorisation meets a NaN: that spreads until a column of candidates holds nothing else. w begins at
  // a whole cache line; workspace holds lu_workspace(n) doubles.
  bool (*factorise)(double* w, size_t n, double* b, double* workspace);
  // LU factorisation with partial pivoting, P A = L U, of which w keeps both factors: U from the diagonal on, and below
  // it L, whose diagonal of ones is not stored. order[i] is the row of A that became row i. False when a column
  // of candidates for the pivot is 0, or a NaN is met. Unlike `factorise` it does not keep to the quiet-NaN rule.
  bool (*factorise_kept)(double* w, size_t n, size_t* order, double* workspace);
  size_t (*lu_stride)(size_t n);
  size_t (*lu_workspace)(size_t n);
  // The transposed inverses of the factors that factorise_kept left in w, in rows of lu_stride(n) with zeros beside the
  // triangles. Each row of an inverse solves its triangular system by substitution, with sums in a fixed order; the
  // entries of the factors are finite.
  void (*invert_triangles)(const double* w, size_t n, double* lower, double* upper);
  // c = a b for the transposed inverses of L and U, an upper and a lower triangle; each entry sums its products in
  // ascending order.
  void (*multiply_triangles)(const double* a, const double* b, double* c, size_t n);
  // c += a b, or -= a b, of n x n matrices in rows of lu_stride(n); each entry takes its products in
  // ascending order. a may be given transposed.
  void (*add_square)(const double* a, bool transposed, bool subtract, const double* b, double* c, size_t n);

  // Forward elimination without pivoting for the determinant: row r += f * row p, f = (-1 / pivot) * entry, with the
  // factors left in place of the eliminated entries. Without the quiet-NaN rule. workspace holds
  // elimination_workspace(n) doubles.
  void (*eliminate)(double* w, size_t n, double* workspace);
  size_t (*elimination_workspace)(size_t n);

  // Gram-Schmidt on the columns of the n x n matrix a, from the left: each column less its projections on the finished
  // ones, all of them of its value before the step; a NaN is stored as 0.0. The first column stays as it is. workspace
  // holds orthogonalize_workspace(n) doubles.
  void (*orthogonalize)(double* a, size_t n, double* workspace);
  size_t (*orthogonalize_workspace)(size_t n);
  // Row r -= f * row p, f = entry / pivot, from the column of each pivot on; with or without the quiet-NaN rule.
  void (*triangularise)(double* a, size_t n, bool rule);

  // dst = the adjugate of the n x n matrix m, n > 4; returns the determinant of m. Both without the quiet-NaN rule.
  // workspace begins at a whole cache line and holds adjugate_workspace(n) doubles.
  double (*adjugate)(const double* m, size_t n, double* dst, double* workspace);
  size_t (*adjugate_workspace)(size_t n);

  // c = a b for n x n complex matrices whose entries lie three doubles apart, the imaginary part behind the real one
  // and the virtual table pointer, which is left alone, before it; each entry the sum over k ascending from 0. c may be
  // a or b, and a may be b. workspace holds complex_workspace(n) doubles.
  void (*complex_multiply)(const double* a, const double* b, double* c, size_t n, double* workspace);
  size_t (*complex_workspace)(size_t n);
  // complex_multiply for n = 4, without a workspace.
  void (*complex_multiply_four)(const double* a, const double* b, double* c);

  // Forward elimination without pivoting, from the column of each pivot on: rows x columns complex entries with the
  // parts in two arrays, in rows of stride >= columns + 8. The factor is 0 where |pivot|^2 is exactly 0. Overwrites the
  // padding behind the columns.
  void (*complex_eliminate)(double* re, double* im, size_t rows, size_t columns, size_t stride);

  // The normal equations of the m x n matrix a and the right-hand side b, without the quiet-NaN rule: result[c][d] =
  // sum of a[k][c] a[k][d] and result[c][n] = sum of a[k][c] b[k], k ascending from +0.0. result has n rows of
  // normal_stride(n) doubles; workspace holds normal_workspace(n).
  void (*normal_equations)(const double* a, const double* b, size_t m, size_t n, double* result, double* workspace);
  size_t (*normal_stride)(size_t n);
  size_t (*normal_workspace)(size_t n);

  // a = U S V', the singular value decomposition of a row-major m x n matrix: U m x n, V n x n, and the singular
  // values descending on the diagonal of the n x n matrix S, of which nothing else is written. workspace holds
  // decompose_workspace(m, n) doubles.
  void (*decompose)(const double* a, size_t m, size_t n, double* U, double* S, double* V, double* workspace);
  size_t (*decompose_workspace)(size_t m, size_t n);

  // The passes of point-set matching. The three coordinates of n points are at a, a + 4, ...; likewise b. Each sum runs
  // over the points in order from +0.0, without the quiet-NaN rule.
  // sums[0..2] and sums[3..5] = the sums of the coordinates of a and b.
  void (*sum_points)(const double* a, const double* b, size_t n, double* sums);
  // h[3 r + c] = sum of (b - cb)_r (a - ca)_c.
  void (*sum_products)(const double* a, const double* b, size_t n, const double* ca, const double* cb, double* h);
  // t[r] = sum of b_r - (((0 + R[r][0] a_0) + R[r][1] a_1) + R[r][2] a_2).
  void (*sum_residuals)(const double* a, const double* b, size_t n, const double* R, double* t);
};

#define TESSARN_TABLE(set)                  \
  namespace set {                           \
  extern const matrix_kernels matrix_table; \
  }
TESSARN_FOR_EACH_SET(TESSARN_TABLE)
#undef TESSARN_TABLE

// The table of the instruction set in use.
const matrix_kernels& matrix_kernels_in_use() noexcept;

}  // namespace tessarn::detail
