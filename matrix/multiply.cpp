#include "matrix/multiply.h"

#include "core/nan_rule.h"
#include "core/storage.h"
#include "matrix/kernels.h"

namespace tessarn::detail {
namespace {

// Below this size the plain loop is done before a kernel is called.
constexpr std::size_t kernel_size = 4;

// k runs in the middle loop: each entry still sees its terms in ascending order.
void multiply_small(const real* a, const real* b, real* c, std::size_t rows, std::size_t inner, std::size_t columns) {
  for (std::size_t r = 0; r < rows; ++r)
    for (std::size_t x = 0; x < columns; ++x) {
      real sum = 0;
      for (std::size_t k = 0; k < inner; ++k) sum += a[r * inner + k] * b[k * columns + x];
      c[r * columns + x] = computed(sum);
    }
}

constexpr std::size_t complex_stack_size = 16;  // up to here nothing is allocated
constexpr std::size_t complex_stack = 2 * complex_stack_size * (complex_stack_size + complex_stack_size);

// 3 x 3, a row of sums at a time.
void multiply_three(const real* a, const real* b, real* c) {
  for (std::size_t r = 0; r < 3; ++r) {
    real row[3] = {};
    for (std::size_t k = 0; k < 3; ++k)
      for (std::size_t x = 0; x < 3; ++x) row[x] += a[r * 3 + k] * b[k * 3 + x];
    for (std::size_t x = 0; x < 3; ++x) c[r * 3 + x] = computed(row[x]);
  }
}

}  // namespace

void multiply(const real* a, const real* b, real* c, std::size_t rows, std::size_t inner, std::size_t columns) {
  if (rows == 3 && inner == 3 && columns == 3) return multiply_three(a, b, c);
  if (rows < kernel_size && inner < kernel_size && columns < kernel_size)
    return multiply_small(a, b, c, rows, inner, columns);
  const matrix_kernels& kernels = matrix();
  if (rows <= unpacked_limit && inner <= unpacked_limit && columns <= unpacked_limit)
    return kernels.multiply(as_doubles(a), as_doubles(b), as_doubles(c), rows, inner, columns, nullptr);
  const real_array workspace = allocate(kernels.multiply_workspace(rows, inner, columns));
  kernels.multiply(as_doubles(a), as_doubles(b), as_doubles(c), rows, inner, columns, as_doubles(workspace.get()));
}

void multiply(cplx* a, const cplx* b, std::size_t n) {
  static_assert(sizeof(cplx) % sizeof(real) == 0, "the kernel steps from entry to entry by whole reals");
  constexpr std::size_t step = sizeof(cplx) / sizeof(real);
  const matrix_kernels& kernels = matrix();
  if (n <= complex_stack_size) {
    double workspace[complex_stack];
    return kernels.complex_multiply(as_doubles(&a->re), as_doubles(&b->re), n, step, workspace);
  }
  const real_array workspace = allocate(kernels.complex_workspace(n));
  kernels.complex_multiply(as_doubles(&a->re), as_doubles(&b->re), n, step, as_doubles(workspace.get()));
}

}  // namespace tessarn::detail
