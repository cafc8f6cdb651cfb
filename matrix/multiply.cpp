// Products of matrices: small sizes in plain loops, others by the kernels, with a workspace where they need one.
#include "matrix/multiply.h"

#include "core/nan_rule.h"
#include "core/storage.h"
#include "core/workspace.h"
#include "matrix/kernels/kernels.h"

namespace tessarn::detail {
namespace {

// Below this size the plain loop is done before a kernel is called.
constexpr std::size_t kernel_size = 4;

// Every entry is its own sum over k.
void multiply_small(const real* a, const real* b, real* c, std::size_t rows, std::size_t inner, std::size_t columns) {
  for (std::size_t r = 0; r < rows; ++r)
    for (std::size_t x = 0; x < columns; ++x) {
      real sum = 0;
      for (std::size_t k = 0; k < inner; ++k) sum += a[r * inner + k] * b[k * columns + x];
      c[r * columns + x] = nan_to_zero(sum);
    }
}

constexpr std::size_t complex_stack_size = 16;  // up to here nothing is allocated
constexpr std::size_t complex_stack = 2 * complex_stack_size * (complex_stack_size + complex_stack_size);

// 3 x 3, a row of sums at a time; multiply_small takes 1.6 times as long.
void multiply_three(const real* a, const real* b, real* c) {
  for (std::size_t r = 0; r < 3; ++r) {
    real row[3] = {};
    for (std::size_t k = 0; k < 3; ++k)
      for (std::size_t x = 0; x < 3; ++x) row[x] += a[r * 3 + k] * b[k * 3 + x];
    for (std::size_t x = 0; x < 3; ++x) c[r * 3 + x] = nan_to_zero(row[x]);
  }
}

constexpr std::size_t entry_reals = sizeof(cplx) / sizeof(real);  // from entry to entry
static_assert(entry_reals == 3, "the kernels have this distance");

// N x N with N a compile-time constant, a row of sums at a time. b is copied with its parts apart, so that the inner
// loops run over contiguous numbers. The kernel takes 1.5 to 1.9 times as long for N = 2, 1.1 to 1.5 times for 3.
template <std::size_t N>
void multiply_small(const cplx* a, const cplx* b, real* c) {
  real re[N][N], im[N][N];
  for (std::size_t k = 0; k < N; ++k)
    for (std::size_t x = 0; x < N; ++x) {
      re[k][x] = b[k * N + x].re;
      im[k][x] = b[k * N + x].im;
    }
  for (std::size_t r = 0; r < N; ++r) {
    real sum_re[N] = {}, sum_im[N] = {};
    for (std::size_t k = 0; k < N; ++k) {
      const real f_re = a[r * N + k].re, f_im = a[r * N + k].im;
      for (std::size_t x = 0; x < N; ++x) {
        sum_re[x] += f_re * re[k][x] - f_im * im[k][x];
        sum_im[x] += f_re * im[k][x] + f_im * re[k][x];
      }
    }
    for (std::size_t x = 0; x < N; ++x) {
      c[(r * N + x) * entry_reals] = sum_re[x];
      c[(r * N + x) * entry_reals + 1] = sum_im[x];
    }
  }
}

// By the kernel.
void multiply_large(const cplx* a, const cplx* b, real* c, std::size_t n) {
  const matrix_kernels& kernels = matrix_kernels_in_use();
  workspace<real, complex_stack, 64> work(kernels.complex_workspace(n));
  kernels.complex_multiply(as_doubles(&a->re), as_doubles(&b->re), as_doubles(c), n, as_doubles(work.data()));
}

}  // namespace

void multiply(const real* a, const real* b, real* c, std::size_t rows, std::size_t inner, std::size_t columns) {
  if (rows == 3 && inner == 3 && columns == 3) return multiply_three(a, b, c);
  if (rows < kernel_size && inner < kernel_size && columns < kernel_size)
    return multiply_small(a, b, c, rows, inner, columns);
  const matrix_kernels& kernels = matrix_kernels_in_use();
  if (rows <= unpacked_limit && inner <= unpacked_limit && columns <= unpacked_limit)
    return kernels.multiply(as_doubles(a), as_doubles(b), as_doubles(c), rows, inner, columns, nullptr);
  const real_array workspace = allocate(kernels.multiply_workspace(rows, inner, columns));
  kernels.multiply(as_doubles(a), as_doubles(b), as_doubles(c), rows, inner, columns, as_doubles(workspace.get()));
}

void multiply(const cplx* a, const cplx* b, real* c, std::size_t n) {
  switch (n) {
    case 2: return multiply_small<2>(a, b, c);
    case 3: return multiply_small<3>(a, b, c);
    case 4: return matrix_kernels_in_use().complex_multiply_four(as_doubles(&a->re), as_doubles(&b->re), as_doubles(c));
    default: return multiply_large(a, b, c, n);
  }
}

}  // namespace tessarn::detail
