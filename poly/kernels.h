// The kernels of the polynomials, one table for each instruction set. They know arrays and counts, allocate nothing
// and throw nothing; reals are passed as the doubles that they are in memory. Lanes run across points.
#pragma once

#include <stddef.h>

namespace tessarn::detail {

// Points are worked on in blocks of this many.
inline constexpr size_t point_block = 64;

struct poly_kernels {
  // True when every magnitude of a block is at least low and below high.
  bool (*in_range)(const double* x, double low, double high);

  // powers[e * point_block + i] = x[i]^e, correctly rounded, for e below exponents and a whole block of abscissas, for
  // which the chain of powers must be safe (core/power.h).
  void (*powers)(const double* x, unsigned exponents, double* powers);

  // sums[e] += the powers e of the first n points one after the other, for e below exponents, and sums[exponents + e]
  // += power e times y[i] for e below ordinates <= exponents. powers, as by powers(), has room for ordinates more rows.
  void (*add_powers)(double* powers, const double* y, size_t n, unsigned exponents, unsigned ordinates, double* sums);

  // One after the other for the first n points with the powers px and py (rows of point_block) below side = 2 g - 1:
  // sums[b * stride + a] += (py[b] px[a]) w, and moments[j * stride + i] += (py[j] px[i]) z for i, j < g. w may be null.
  // Rows of stride >= side, a multiple of 8; columns from side on receive what is not read. rows holds point_block *
  // stride doubles, zero from column side on.
  void (*add_products)(const double* px, const double* py, const double* w, const double* z, size_t n, unsigned g,
                       size_t stride, double* rows, double* sums, double* moments);

  // y[i] = p(x[i]) by a running power for n points; y may be x.
  void (*values)(const double* cof, size_t count, const double* x, double* y, size_t n);

  // y[i] = the sum over e of (x[i]^e factor[e]) cof[e] ascending for e below count, and a block of abscissas for which
  // the chain of powers is safe.
  void (*power_series)(const double* cof, const double* factor, size_t count, const double* x, double* y);

  // The first three derivatives of a polynomial of count coefficients at a block of abscissas, for which the chain is
  // safe; factors[k * stride + i] is the factor of coefficient i in derivative k + 1, d[k * point_block + i] the result.
  void (*derivatives)(const double* cof, const double* factors, size_t stride, size_t count, const double* x, double* d);

  // The curvature, and its derivative, of a block from the three derivatives.
  void (*curvature)(const double* d, double* y);
  void (*curvature_derivative)(const double* d, double* y);

  // The first i below point_block - 1 where a scan of the samples f(x) stops: x[i] is past the end (at it, where
  // at_end is set), f[i] and f[i + 1] have opposite signs, f[i] is exactly 0, or x[i + 1] is not above x[i].
  // point_block - 1 where there is none.
  size_t (*first_event)(const double* x, const double* f, double end, bool at_end);

  // z[i] = p(x[i], y[i]) by running products for a table of g x g coefficients; z may be x or y.
  void (*surface_values)(const double* cof, size_t g, const double* x, const double* y, double* z, size_t n);

  // r[k] = the sum of c[k - j] q[j] over j ascending from +0.0, for the n + nq - 1 coefficients of a product. c has 32
  // zeros before and behind it, r room for 32 more entries, and q is finite, so that a product with a zero of the
  // margin changes nothing.
  void (*convolve)(const double* c, size_t n, const double* q, size_t nq, double* r);
};

namespace baseline {
extern const poly_kernels poly_table;
}
namespace avx2 {
extern const poly_kernels poly_table;
}
namespace avx512 {
extern const poly_kernels poly_table;
}

// The table of the instruction set in use.
const poly_kernels& poly() noexcept;

}  // namespace tessarn::detail
