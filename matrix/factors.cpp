#include "matrix/factors.h"

#include "core/workspace.h"
#include "matrix/kernels/kernels.h"

namespace tessarn::detail {

std::size_t factors_stride(std::size_t n) { return matrix_kernels_in_use().lu_stride(n); }

bool factorise(double* w, std::size_t n, std::size_t* order) {
  workspace<double, 1024> work(matrix_kernels_in_use().lu_workspace(n));
  return matrix_kernels_in_use().factorise_kept(w, n, order, work.data());
}

void invert_factors(const double* w, std::size_t n, double* lower, double* upper) {
  matrix_kernels_in_use().invert_triangles(w, n, lower, upper);
}

void multiply_inverses(const double* lower, const double* upper, std::size_t n, double* product) {
  matrix_kernels_in_use().multiply_triangles(lower, upper, product, n);
}

void add_product(const double* a, const double* b, std::size_t n, double* c) {
  matrix_kernels_in_use().add_square(a, false, false, b, c, n);
}
void subtract_transposed_product(const double* a, const double* b, std::size_t n, double* c) {
  matrix_kernels_in_use().add_square(a, true, true, b, c, n);
}

}  // namespace tessarn::detail
