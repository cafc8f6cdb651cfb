// The kernels of the matrix family; compiled once for each instruction set.
#include "matrix/kernels/complex.inl"
#include "matrix/kernels/decompose.inl"
#include "matrix/kernels/elimination.inl"
#include "matrix/kernels/gram.inl"
#include "matrix/kernels/kernels.h"
#include "matrix/kernels/lu.inl"
#include "matrix/kernels/match.inl"
#include "matrix/kernels/normal_equations.inl"
#include "matrix/kernels/product.inl"
#include "matrix/kernels/triangles.inl"

namespace tessarn::detail::TESSARN_ISA {

// Defined in matrix/kernels/adjugate.cpp.
size_t adjugate_workspace(size_t n);
double adjugate(const double* m, size_t n, double* dst, double* workspace);

namespace {

size_t multiply_workspace(size_t rows, size_t inner, size_t columns) {
  if (rows <= unpacked_limit && inner <= unpacked_limit && columns <= unpacked_limit) return 0;
  return packed_size(rows, inner, columns);
}

// 8 x 8, for vectors as wide as a row. The sizes are compile-time constants. The loop over k is not unrolled, which is
// faster here than eight rounds one after the other. The tiles take 1.2 times as long.
void multiply_eight(const double* a, const double* b, double* c) {
  vec sum[8] = {};
  TESSARN_KEEP_LOOP
  for (size_t k = 0; k < 8; ++k) {
    const vec row = load(b + 8 * k);
    TESSARN_UNROLL
    for (size_t r = 0; r < 8; ++r) sum[r] += broadcast_from(a + 8 * r + k) * row;
  }
  TESSARN_UNROLL
  for (size_t r = 0; r < 8; ++r) store(c + 8 * r, without_nan(sum[r]));
}

// Chooses among 4 x 4, 8 x 8, operands that the nearest cache holds, and packed copies. The product of 4 x 4 matrices
// takes 1.2 times as long without its own path.
void multiply(const double* a, const double* b, double* c, size_t rows, size_t inner, size_t columns,
              double* workspace) {
#if TESSARN_VECTOR_LANES
  if (rows == 4 && columns == 4) return four_columns<4, from_zero, add_products>(a, inner, b, 4, inner, c, 4, true);
#endif
  if (width == 8 && rows == 8 && columns == 8 && inner == 8) return multiply_eight(a, b, c);
  if (multiply_workspace(rows, inner, columns) == 0 || inner == 0)
    multiply_unpacked<from_zero, add_products>(a, inner, b, columns, c, columns, rows, inner, columns, true);
  else
    multiply_packed<add_products>(a, inner, b, columns, c, columns, rows, inner, columns, true, true, workspace);
}

}  // namespace

const matrix_kernels matrix_table = {
    .multiply = multiply,
    .multiply_workspace = multiply_workspace,
    .factorise = factorise,
    .factorise_kept = factorise_kept,
    .lu_stride = lu_stride,
    .lu_workspace = lu_workspace,
    .invert_triangles = invert_triangles,
    .multiply_triangles = multiply_triangles,
    .add_square = add_square,
    .eliminate = eliminate,
    .elimination_workspace = elimination_workspace,
    .orthogonalize = orthogonalize,
    .orthogonalize_workspace = orthogonalize_workspace,
    .triangularise = triangularise,
    .adjugate = adjugate,
    .adjugate_workspace = adjugate_workspace,
    .complex_multiply = complex_multiply,
    .complex_workspace = complex_workspace,
    .complex_multiply_four = complex_multiply_four,
    .complex_eliminate = complex_eliminate,
    .normal_equations = normal_equations,
    .normal_stride = normal_stride,
    .normal_workspace = normal_workspace,
    .decompose = svd::decompose,
    .decompose_workspace = svd::workspace,
    .sum_points = sum_points,
    .sum_products = sum_products,
    .sum_residuals = sum_residuals,
};

}  // namespace tessarn::detail::TESSARN_ISA
