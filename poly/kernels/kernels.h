// The kernels of the polynomials, one table for each instruction set. They know arrays and counts, allocate nothing
// and throw nothing; reals are passed as the doubles that they are in memory. Lanes run across points.
#pragma once

#include <stddef.h>

#include "simd/sets.h"

namespace tessarn::detail {

// Points are worked on in blocks of this many.
inline constexpr size_t point_block = 64;

// Scans go on by this many samples where nothing can happen but a change of sign.
inline constexpr size_t long_block = 1024;

// The sums of the fits run in this many partial sums, point k in sum k mod 8, added at the end as a balanced tree:
// their order is free, and this one lets eight points be added at once in every build.
inline constexpr size_t partial_sums = 8;

// Blocks of the points of a surface, stride numbers apart. Each consists of rows of point_block numbers: the powers of
// x, those of y, as many, then z and w.
struct surface_blocks {
  const double* first;
  size_t count, rows, stride;
};

struct poly_kernels {
  // Adds n plane points, each three doubles of which x and y are the last two, to sums in partial_sums lanes each,
  // point i to lane i mod partial_sums: to sum e the powers e for e below exponents, but for sum 0, which would count
  // the points, and to sum exponents + e the powers e times y, for 2 e below exponents. Gives the number of points that
  // it has added, all or a multiple of partial_sums: it stops at the first point that it
  // cannot add, one whose x is the marker (which is not 0) or outside the range in which chains of powers are exact enough
  // (power_chains.inl). It handles 3, 5, ..., 15 exponents and returns 0 for other numbers.
  size_t (*add_plane_points)(const double* points, size_t n, double marker, unsigned exponents, double* sums);

  // The coordinates of a block of plane points; false where an x is the marker or a NaN.
  bool (*unpack_plane)(const double* points, double marker, double* x, double* y);

  // The coordinates of a block of space points, each four doubles: x and y as the powers 1 in px and py, with
  // point_block numbers a power. True where quick chains (power_chains.inl) could form the powers from 2 to
  // below exponents; these are then stored, too.
  bool (*unpack_space)(const double* points, size_t exponents, double* px, double* py, double* z);

  // Makes (w z) w of the ordinates of a block as unpack_space leaves them, and w w behind them.
  void (*apply_weights)(const double* w, double* z);

  // True when every magnitude of a block is 0, or at least low and below high.
  bool (*in_range)(const double* x, double low, double high);

  // powers[e * point_block + i] = x[i]^e, correctly rounded, for e from 2 to below exponents and a whole block of
  // abscissas x = powers + point_block, each 0 or such that the chain of powers is safe (core/power.h). A power of 0 is
  // a zero of either sign.
  void (*powers)(unsigned exponents, double* powers);

  // Like add_plane_points, but from powers and y already computed for the first n points of a block, and for any number
  // of exponents; powers 0 are 1, and sum 0 is not used.
  void (*add_powers)(const double* powers, const double* y, size_t n, unsigned exponents, double* sums);

  // As add_plane_points for a surface of grade g, side = 2 g - 1: (py[b] px[a]) w to sum side b + a, for a and b below
  // side; and (py[j] px[i]) z to moment g j + i, for i and j below g. Without weights w is not there, and sum 0 is of
  // no use. Where a block is not full, px, py, w and z are 0 from the end on, but for the powers 0, which are 1.
  void (*add_products)(const surface_blocks& blocks, bool weighted, unsigned g, double* sums, double* moments);

  // Like add_products for the grade 2, straight from n space points, each four doubles, n a multiple of partial_sums. A point's terms are
  // (py[b] px[a]) (w w) and (py[j] px[i]) ((w z) w) where there are weights.
  void (*add_points)(const double* points, const double* w, size_t n, double* sums, double* moments);

  // y[i] = p(x[i]) by a running power for a block of abscissas; y may be x.
  void (*values)(const double* cof, size_t count, const double* x, double* y);

  // y[i] = the sum over e of (x[i]^e factor[e]) cof[e] ascending for e below count, and a block of abscissas for which
  // the chain of powers is safe. Merged: where e + 1 is a power of two there is no factor.
  void (*power_series)(const double* cof, const double* factor, size_t count, const double* x, double* y);

  // The first three derivatives of a polynomial of count coefficients at a block of abscissas, for which the chain is
  // safe; factors[k * stride + i] is the factor of coefficient i in derivative k + 1, d[k * point_block + i] the
  // result.
  void (*derivatives)(const double* cof, const double* factors, size_t stride, size_t count, const double* x,
                      double* d);

  // The curvature, and its derivative, of a block from the three derivatives.
  void (*curvature)(const double* d, double* y);
  void (*curvature_derivative)(const double* d, double* y);

  // The first i below point_block - 1 where a scan of the samples f(x) stops: x[i] is past the end (at it, where
  // at_end is set), f[i] and f[i + 1] have opposite signs, f[i] is exactly 0, or x[i + 1] is not above x[i].
  // point_block - 1 where there is none.
  size_t (*first_event)(const double* x, const double* f, double end, bool at_end);

  // True when the values at first + i step for all i below long_block, which are exact sums, are all above 0 or all
  // below.
  bool (*one_sign)(const double* cof, size_t count, double first, double step);

  // z[i] = p(x[i], y[i]) by running products for a table of g x g coefficients; z may be x or y.
  void (*surface_values)(const double* cof, size_t g, const double* x, const double* y, double* z, size_t n);

  // r[k] = the sum of c[k - j] q[j] over j ascending from +0.0, for the n + nq - 1 coefficients of a product. c and q
  // have 8 and 24 zeros before and behind them, products with which change nothing as long as all are finite: false,
  // and no result, where one is not. r has room for 32 more entries.
  bool (*convolve)(const double* c, size_t n, const double* q, size_t nq, double* r);
};

#define TESSARN_TABLE(set) \
  namespace set {          \
  extern const poly_kernels poly_table; \
  }
TESSARN_FOR_EACH_SET(TESSARN_TABLE)
#undef TESSARN_TABLE

// The table of the instruction set in use.
const poly_kernels& poly_kernels_in_use() noexcept;

}  // namespace tessarn::detail
