#include "matrix/multiply.h"

#include "core/nan_rule.h"
#include "core/storage.h"
#include "matrix/kernels.h"

namespace tessarn::detail {
namespace {

// Below this size the plain loop is done before a kernel is called.
constexpr std::size_t kernel_size = 6;

// k runs in the middle loop: each entry still sees its terms in ascending order.
void multiply_small(const real* a, const real* b, real* c, std::size_t rows, std::size_t inner, std::size_t columns) {
  for (std::size_t r = 0; r < rows; ++r)
    for (std::size_t x = 0; x < columns; ++x) {
      real sum = 0;
      for (std::size_t k = 0; k < inner; ++k) sum += a[r * inner + k] * b[k * columns + x];
      c[r * columns + x] = computed(sum);
    }
}

}  // namespace

void multiply(const real* a, const real* b, real* c, std::size_t rows, std::size_t inner, std::size_t columns) {
  if (rows < kernel_size && inner < kernel_size && columns < kernel_size)
    return multiply_small(a, b, c, rows, inner, columns);
  const matrix_kernels& kernels = matrix();
  const real_array workspace = allocate(kernels.multiply_workspace(rows, inner, columns));
  kernels.multiply(as_doubles(a), as_doubles(b), as_doubles(c), rows, inner, columns, as_doubles(workspace.get()));
}

void multiply(const cplx* a, const cplx* b, cplx* c, std::size_t n) {
  for (std::size_t r = 0; r < n; ++r)
    for (std::size_t x = 0; x < n; ++x) {
      cplx sum;
      for (std::size_t k = 0; k < n; ++k) sum += a[r * n + k] * b[k * n + x];
      c[r * n + x] = sum;
    }
}

}  // namespace tessarn::detail
