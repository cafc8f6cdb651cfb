// The kernels of the matrix family; compiled once for each instruction set.
#include "matrix/complex_kernel.h"
#include "matrix/decompose_kernel.h"
#include "matrix/elimination_kernel.h"
#include "matrix/kernels.h"
#include "matrix/lu_kernel.h"
#include "matrix/match_kernel.h"
#include "matrix/normal_kernel.h"
#include "matrix/product_kernel.h"

namespace tessarn::detail::TESSARN_ISA {

// In a source of their own (adjugate_kernel.cpp).
size_t adjugate_workspace(size_t n);
double adjugate(const double* m, size_t n, double* dst, double* workspace);

namespace {

size_t multiply_workspace(size_t rows, size_t inner, size_t columns) {
  if (rows <= unpacked_limit && inner <= unpacked_limit && columns <= unpacked_limit) return 0;
  return packed_size(rows, inner, columns);
}

#if defined(TESSARN_ISA_avx512)
// 8 x 8. Its sizes are constants; the loop over k stays one, which is faster here than its eight rounds in a row.
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
#endif

void multiply(const double* a, const double* b, double* c, size_t rows, size_t inner, size_t columns,
              double* workspace) {
#if defined(__GNUC__) || defined(__clang__)
  if (rows == 4 && columns == 4) return four_columns<4, from_zero, add_products>(a, inner, b, 4, inner, c, 4, true);
#endif
#if defined(TESSARN_ISA_avx512)
  if (rows == 8 && columns == 8 && inner == 8) return multiply_eight(a, b, c);
#endif
  if (multiply_workspace(rows, inner, columns) == 0 || inner == 0)
    multiply_unpacked<from_zero, add_products>(a, inner, b, columns, c, columns, rows, inner, columns, true);
  else
    multiply_packed<add_products>(a, inner, b, columns, c, columns, rows, inner, columns, true, true, workspace);
}

}  // namespace

const matrix_kernels matrix_table = {multiply, multiply_workspace, factorise, lu_stride, lu_workspace,
                                     eliminate, elimination_workspace, adjugate, adjugate_workspace,
                                     complex_multiply, complex_workspace, complex_multiply_four, complex_eliminate,
                                     normal_equations, normal_stride, normal_workspace,
                                     svd::decompose, svd::workspace, sum_points, sum_products, sum_residuals};

}  // namespace tessarn::detail::TESSARN_ISA
