// The kernels of square systems, one table for each instruction set.
#pragma once

#include <stddef.h>

#include "simd/sets.h"

namespace tessarn::detail {

// A sum over the entries of a row is kept as this many partial sums, column c in partial sum c mod 8. They are added as
// a tree, 0 to 1, 2 to 3 and so on.
inline constexpr size_t row_partial_sums = 8;

inline constexpr size_t residual_workspace = 6 * row_partial_sums * row_partial_sums;

// A square matrix, its rows `stride` apart, a multiple of 8, with zeros behind them.
struct square_rows {
  const double* entries;
  size_t size, stride;
};

enum class matrix_shape { upper, lower, full };

// Columns of doubled numbers, `stride` of the matrix each, zeros at their ends.
struct residual_column {
  double *high, *low;  // the residual
  double* magnitude;   // the sum of the magnitudes of a row's products and of its right-hand side
};

// A vector of doubled numbers by which columns are multiplied, and the weights by which their magnitudes are. `low` and
// `weights` are both null, or neither is.
struct column_of_products {
  const double *high, *low, *weights;
};

// So many rows, or columns, lie between two steps that add to a rounded sum what its roundings lost. Of n terms in such
// a chain, with at most m = 64 between two steps, the sum loses at most (n + 3) min(n + 3, m + 3) u^2 of the
// magnitudes.
inline constexpr size_t columns_between_sums = 64, rows_between_sums = columns_between_sums * row_partial_sums;

// The matrix c - a b, which takes the place of c, of n x n matrices in rows of `stride`, a multiple of 8, with zeros
// behind them. a = a_high + a_low are the parts of half the digits; entry (i, k) of each stands at i row_stride +
// k k_stride. Where a is a lower and b an upper triangle with zeros beside them, `triangles` saves two thirds.
struct accurate_product {
  const double *a, *a_high, *a_low;
  size_t row_stride, k_stride;
  const double* b;
  double* c;
  size_t size, stride;
  bool triangles;
};

struct system_kernels {
  // The doubled numbers high + low take factor * other for each of n entries, by the operations of analysis/doubled.h.
  void (*add_row)(double* high, double* low, double factor_high, double factor_low, const double* other_high,
                  const double* other_low, size_t n);

  // b - A x for x = x_high + x_low. The products with x_high are exact, those with x_low are rounded, and the sums are
  // as good as doubled precision. workspace holds 2 stride + residual_workspace doubles.
  void (*residual)(const square_rows& a, const double* b, const double* x_high, const double* x_low,
                   const residual_column& r, double* workspace);

  // c - a b, each entry one sum with exact products, k ascending, rounded to a double at the end.
  void (*subtract_accurately)(const accurate_product& p);
  // The parts of v, n doubles, a multiple of 8.
  void (*split_all)(const double* v, size_t n, double* high, double* low);

  // sums[c] = sum of Y_kc v_k over the rows in ascending order, for a Y of that shape with zeros beside the triangle.
  // Where `magnitudes` is set, of |Y_kc| v_k.
  void (*column_sums)(const square_rows& y, matrix_shape shape, bool magnitudes, const double* v, double* sums);

  // sums[r] = sum of Y_rc v_c, or of |Y_rc| v_c, over the columns from r on where `upper` is set, else over those
  // before r. The other triangle is not read.
  void (*row_sums)(const square_rows& y, bool upper, bool magnitudes, const double* v, double* sums);

  // high + low = the sum of the products of each column with v, over the rows, a multiple of 8; row r in partial
  // sum r mod 8. `weighted` takes the sum of the magnitudes of each column times the weights.
  void (*products)(const double* const* columns, size_t count, size_t rows, const column_of_products& v, double* high,
                   double* low, double* weighted);

  // As `residual`, for a matrix whose columns are given; the rows are a multiple of 8. Each row is one sum.
  void (*tall_residual)(const double* const* columns, size_t count, size_t rows, const double* b, const double* x_high,
                        const double* x_low, const residual_column& r);

  // The largest magnitude of each of the rows, and of all numbers the sum of v - v, which is 0 where all are finite.
  double (*row_largest)(const double* rows, size_t count, size_t columns, size_t stride, double* largest);
  // The largest magnitude of each column, whose row r is multiplied by factors[r].
  void (*column_largest)(const double* rows, size_t count, size_t columns, size_t stride, const double* factors,
                         double* largest);
  // to = each number times the product of the factors of its row and its column; zeros behind the columns.
  void (*scale)(const double* rows, size_t count, size_t columns, size_t stride, const double* row_factors,
                const double* column_factors, double* to, size_t to_stride);
};

#define TESSARN_TABLE(set)                  \
  namespace set {                           \
  extern const system_kernels system_table; \
  }
TESSARN_FOR_EACH_SET(TESSARN_TABLE)
#undef TESSARN_TABLE

// The table of the instruction set in use.
const system_kernels& system_kernels_in_use() noexcept;

}  // namespace tessarn::detail
