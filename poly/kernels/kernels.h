// The kernels of the polynomials, one table for each instruction set. They know arrays and counts, allocate nothing
// and throw nothing; reals are passed as the doubles that they are in memory. Lanes run across points.
#pragma once

#include <stddef.h>

#include "simd/sets.h"

namespace tessarn::detail {

// Points and abscissas are worked on in blocks of this many.
inline constexpr size_t point_block = 64;

// Scans go on by this many samples where nothing can happen but a change of sign.
inline constexpr size_t long_block = 1024;

// Each sum of a fit is kept as this many partial sums, point k in partial sum k mod 8, added at the end as a balanced
// tree: the order of the sum is free, and this one lets eight points be added at once in every build.
inline constexpr size_t partial_sums = 8;

// Blocks of the points of a surface, stride numbers apart. A block consists of rows of point_block numbers: the powers
// of x, as many powers of y, then z, then the weights w.
struct surface_blocks {
  const double* first;
  size_t count, rows, stride;
};

struct poly_kernels {
  // Adds plane points to the sums of a fit.
  //   points     n points, three doubles each: the virtual table pointer, x, y
  //   exponents  3, 5, ..., 15; for other numbers nothing is added and the result is 0
  //   sums       partial_sums numbers a sum, point i goes to number i mod partial_sums. Sum e, for 0 < e < exponents,
  //              takes x^e; sum exponents + e, for 2 e < exponents, takes x^e y. Sum 0, which would count the points,
  //              is not used.
  // Returns the number of points added, n or a multiple of partial_sums below it. It stops before a group of
  // partial_sums points, or some groups before it, that holds a point it cannot add: x is the marker (which is not 0),
  // outside the safe range of powers, or one of its powers is in doubt (docs/powers.md).
  size_t (*add_plane_points)(const double* points, size_t n, double marker, unsigned exponents, double* sums);

  // Takes a block of plane points apart into x and y. False where an x is the marker or a NaN.
  bool (*unpack_plane)(const double* points, double marker, double* x, double* y);

  // Takes a block of space points, four doubles each, apart: x and y become the rows of power 1 in px and py, a row
  // being point_block numbers. True where the rows 2 to exponents - 1 have been formed and stored, too; else the caller
  // forms them.
  bool (*unpack_space)(const double* points, size_t exponents, double* px, double* py, double* z);

  // Replaces the ordinates z of a block by (w z) w, and stores w w in the row behind them.
  void (*apply_weights)(const double* w, double* z);

  // True when every magnitude of a block is 0, or at least low and below high.
  bool (*in_range)(const double* x, double low, double high);

  // powers[e * point_block + i] = x[i]^e, correctly rounded, for 2 <= e < exponents and the block of abscissas x =
  // powers + point_block. Each x[i] is 0 or in the safe range for these exponents (core/power_range.h). A power of 0 is
  // a zero of either sign.
  void (*powers)(unsigned exponents, double* powers);

  // Adds the first n points of a block to the sums of a fit, from their powers and y, for any number of exponents. The
  // sums are those of add_plane_points; n is a multiple of partial_sums.
  void (*add_powers)(const double* powers, const double* y, size_t n, unsigned exponents, double* sums);

  // Adds the points of blocks to the sums of a surface of grade g, side = 2 g - 1, in partial sums as add_plane_points.
  // Sum side b + a takes (y^b x^a) w for a, b < side, and moment g j + i takes (y^j x^i) z for i, j < g. Without
  // weights the factor w is left out, and sum 0 is not used. All blocks are full: where there are fewer points, x, y,
  // z, w are 0.
  void (*add_products)(const surface_blocks& blocks, bool weighted, unsigned g, double* sums, double* moments);

  // Adds n space points to the sums of a surface of grade 2, straight from the points; n is a multiple of partial_sums,
  // not 0. With weights a point's terms are (y^b x^a) (w w) and (y^j x^i) ((w z) w). The sums are those of
  // add_products.
  void (*add_points)(const double* points, const double* w, size_t n, double* sums, double* moments);

  // y[i] = p(x[i]) by a running power for a block of abscissas; y may be x.
  void (*values)(const double* cof, size_t count, const double* x, double* y);

  // y[i] = the sum of (x[i]^e factor[e]) cof[e] over e < count ascending, for a block of abscissas in the safe range.
  void (*power_series)(const double* cof, const double* factor, size_t count, const double* x, double* y);

  // The first three derivatives of a polynomial of count coefficients at a block of abscissas in the safe range.
  // factors[k * stride + i] is the factor of coefficient i in derivative k + 1, d[k * point_block + i] the result.
  void (*derivatives)(const double* cof, const double* factors, size_t stride, size_t count, const double* x,
                      double* d);

  // The curvature, and its derivative, of a block from the three derivatives that the kernel above stores.
  void (*curvature)(const double* d, double* y);
  void (*curvature_derivative)(const double* d, double* y);

  // The first i below point_block - 1 where a scan of the samples f(x) stops: x[i] is past the end (or at it, where
  // at_end is set), f[i] and f[i + 1] have opposite signs, f[i] is exactly 0, or x[i + 1] is not above x[i].
  // point_block - 1 where there is none.
  size_t (*first_event)(const double* x, const double* f, double end, bool at_end);

  // True when the values at first + i step for all i below long_block, which are exact sums, are all above 0 or all
  // below.
  bool (*one_sign)(const double* cof, size_t count, double first, double step);

  // z[i] = p(x[i], y[i]) by running products for a table of g x g coefficients; z may be x or y.
  void (*surface_values)(const double* cof, size_t g, const double* x, const double* y, double* z, size_t n);

  // r[k] = the sum of c[k - j] q[j] over j ascending from +0.0, for the n + nq - 1 coefficients of a product. There are
  // 8 zeros before and behind c, 24 before and behind q, and room for 32 more entries behind r. Products with these
  // zeros change nothing as long as all coefficients are finite; where one is not, the result is false and r is not
  // written.
  bool (*convolve)(const double* c, size_t n, const double* q, size_t nq, double* r);
};

#define TESSARN_TABLE(set)              \
  namespace set {                       \
  extern const poly_kernels poly_table; \
  }
TESSARN_FOR_EACH_SET(TESSARN_TABLE)
#undef TESSARN_TABLE

// The table of the instruction set in use.
const poly_kernels& poly_kernels_in_use() noexcept;

}  // namespace tessarn::detail
