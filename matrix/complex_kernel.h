// Product and elimination of complex matrices whose parts stand in arrays of their own. Every product is rounded,
// (re re' - im im', re im' + im re'), and every sum runs in the stated order. Kernel sources only.
#pragma once

#include "core/lanes.h"

namespace tessarn::detail::TESSARN_ISA {

// A tile of the complex product: rows by vectors of columns, both parts in registers.
#if defined(TESSARN_ISA_avx512)
static constexpr size_t complex_rows = 4, complex_vectors = 2;
#else
static constexpr size_t complex_rows = 2, complex_vectors = 1;
#endif
static constexpr size_t complex_panel = complex_vectors * width;

// b in panels of complex_panel columns, k by k the real parts and then the imaginary parts, padded with zeros.
TESSARN_INLINE void pack_panel(const double* re, const double* im, size_t n, size_t column, double* to) {
  const size_t columns = n - column < complex_panel ? n - column : complex_panel;
  for (size_t k = 0; k < n; ++k) {
    for (size_t x = 0; x < complex_panel; ++x) to[x] = x < columns ? re[k * n + column + x] : 0.0;
    for (size_t x = 0; x < complex_panel; ++x) to[complex_panel + x] = x < columns ? im[k * n + column + x] : 0.0;
    to += 2 * complex_panel;
  }
}

template <size_t ROWS>
TESSARN_INLINE void complex_tile(const double* a_re, const double* a_im, size_t n, const double* panel, double* c_re,
                                 double* c_im, size_t c_stride) {
  vec re[ROWS][complex_vectors] = {};
  vec im[ROWS][complex_vectors] = {};
  for (size_t k = 0; k < n; ++k) {
    for (size_t v = 0; v < complex_vectors; ++v) {
      const vec b_re = load(panel + v * width);
      const vec b_im = load(panel + complex_panel + v * width);
      for (size_t r = 0; r < ROWS; ++r) {
        const vec f_re = broadcast_from(a_re + r * n + k);
        const vec f_im = broadcast_from(a_im + r * n + k);
        re[r][v] += f_re * b_re - f_im * b_im;
        im[r][v] += f_re * b_im + f_im * b_re;
      }
    }
    panel += 2 * complex_panel;
  }
  for (size_t r = 0; r < ROWS; ++r)
    for (size_t v = 0; v < complex_vectors; ++v) {
      store(c_re + r * c_stride + v * width, re[r][v]);
      store(c_im + r * c_stride + v * width, im[r][v]);
    }
}

static size_t complex_stride(size_t n) { return (n + complex_panel - 1) / complex_panel * complex_panel; }

// c = a b, n x n; the parts of c in rows of complex_stride(n). The workspace holds 2 n complex_panel doubles.
static void complex_multiply(const double* a_re, const double* a_im, const double* b_re, const double* b_im,
                             double* c_re, double* c_im, size_t n, double* workspace) {
  const size_t stride = complex_stride(n);
  for (size_t x = 0; x < n; x += complex_panel) {
    pack_panel(b_re, b_im, n, x, workspace);
    size_t r = 0;
    for (; r + complex_rows <= n; r += complex_rows)
      complex_tile<complex_rows>(a_re + r * n, a_im + r * n, n, workspace, c_re + r * stride + x, c_im + r * stride + x, stride);
    for (; r < n; ++r)
      complex_tile<1>(a_re + r * n, a_im + r * n, n, workspace, c_re + r * stride + x, c_im + r * stride + x, stride);
  }
}

static size_t complex_workspace(size_t n) { return 2 * n * complex_panel; }

// Forward elimination without pivoting of rows x columns entries in rows of stride, columns <= stride - width: row r
// becomes f row p + row r from the pivot's column on, f = entry / -pivot by the reciprocal of |pivot|^2 and 0
// where that is exactly 0. The padding behind the columns is overwritten.
static void complex_eliminate(double* re, double* im, size_t rows, size_t columns, size_t stride) {
  for (size_t p = 0; p + 1 < rows; ++p) {
    const double* upper_re = re + p * stride;
    const double* upper_im = im + p * stride;
    const double q_re = -upper_re[p];
    const double q_im = -upper_im[p];
    const double square = q_im * q_im + q_re * q_re;
    const double reciprocal = 1 / square;
    for (size_t r = p + 1; r < rows; ++r) {
      double* row_re = re + r * stride;
      double* row_im = im + r * stride;
      double f_re = 0, f_im = 0;
      if (!(square == 0)) {
        f_re = (row_im[p] * q_im + row_re[p] * q_re) * reciprocal;
        f_im = (row_im[p] * q_re - row_re[p] * q_im) * reciprocal;
      }
      const vec factor_re = broadcast(f_re);
      const vec factor_im = broadcast(f_im);
      for (size_t c = p; c < columns; c += width) {
        const vec u_re = load(upper_re + c);
        const vec u_im = load(upper_im + c);
        store(row_re + c, (factor_re * u_re - factor_im * u_im) + load(row_re + c));
        store(row_im + c, (factor_re * u_im + factor_im * u_re) + load(row_im + c));
      }
    }
  }
}

}  // namespace tessarn::detail::TESSARN_ISA
