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

constexpr std::size_t complex_kernel_size = 8;

void multiply_small(const cplx* a, const cplx* b, cplx* c, std::size_t n) {
  for (std::size_t r = 0; r < n; ++r)
    for (std::size_t x = 0; x < n; ++x) {
      real re = 0, im = 0;
      for (std::size_t k = 0; k < n; ++k) {
        const cplx& u = a[r * n + k];
        const cplx& v = b[k * n + x];
        re += u.re * v.re - u.im * v.im;
        im += u.re * v.im + u.im * v.re;
      }
      c[r * n + x].re = re;
      c[r * n + x].im = im;
    }
}

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
  const std::size_t size = kernels.multiply_workspace(rows, inner, columns);
  const real_array workspace = size == 0 ? nullptr : allocate(size);
  kernels.multiply(as_doubles(a), as_doubles(b), as_doubles(c), rows, inner, columns, as_doubles(workspace.get()));
}

void multiply(const cplx* a, const cplx* b, cplx* c, std::size_t n) {
  if (n < complex_kernel_size) return multiply_small(a, b, c, n);
  const matrix_kernels& kernels = matrix();
  const std::size_t entries = n * n;
  const std::size_t stride = kernels.complex_stride(n);
  const real_array parts = allocate(4 * entries + 2 * n * stride + kernels.complex_workspace(n));
  double* a_re = as_doubles(parts.get());
  double* a_im = a_re + entries;
  double* b_re = a_im + entries;
  double* b_im = b_re + entries;
  double* c_re = b_im + entries;
  double* c_im = c_re + n * stride;
  for (std::size_t i = 0; i < entries; ++i) {
    a_re[i] = static_cast<double>(a[i].re);
    a_im[i] = static_cast<double>(a[i].im);
    b_re[i] = static_cast<double>(b[i].re);
    b_im[i] = static_cast<double>(b[i].im);
  }
  kernels.complex_multiply(a_re, a_im, b_re, b_im, c_re, c_im, n, c_im + n * stride);
  for (std::size_t r = 0; r < n; ++r)
    for (std::size_t x = 0; x < n; ++x) {
      c[r * n + x].re = c_re[r * stride + x];
      c[r * n + x].im = c_im[r * stride + x];
    }
}

}  // namespace tessarn::detail
