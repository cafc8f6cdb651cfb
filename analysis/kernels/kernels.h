// The kernels of the fits in doubled precision, one table for each instruction set. Lanes run across points.
#pragma once

#include <stddef.h>

#include "simd/sets.h"

namespace tessarn::detail {

// Each sum over the points is kept as this many partial sums, point k in partial sum k mod 8, each of them a pair: the
// rounded sum, and the sum of what its roundings lost and of the low parts of the terms.
inline constexpr size_t fit_partial_sums = 8;

// How the numbers of the caller become those of the fit. Abscissas become t = x x_factor - x_shift, a doubled number;
// ordinates and weights are multiplied by a power of two, in two steps where one power would be out of range.
struct fit_scales {
  double x_factor, x_shift, second_factor, second_shift;
  double y_factors[2], weight_factors[2];
};

// The points of a fit, in arrays whose length is a multiple of fit_partial_sums; behind the last point stand points at
// t = 0 with y = 0 and a weight of 0. Where the points are not weighted each weight is 1, and of `weight` only the last
// fit_partial_sums numbers are read, when points are filled up: 1 for a point and 0 behind.
struct fit_columns {
  const double *x, *y, *weight;
  const double* second;  // the second abscissas of a surface
  size_t size, used;     // with the points that fill up, and without them
  bool weighted;
  const fit_scales* scales;
};

struct fit_kernels {
  // ranges[k], ranges[8 + k] and ranges[16 + k] take the least and the greatest of the numbers whose index is k modulo
  // 8, and a NaN if one of them is not finite. -0 and 0 count as alike. n is a multiple of 8.
  void (*include)(const double* v, size_t n, double* ranges);

  // Copies the coordinates of n points, each three doubles behind the one before, its y behind its x.
  void (*copy_points)(const double* points, size_t n, double* x, double* y);

  // Sum e, for e < exponents, takes w t^e; sum exponents + e, for e < products, takes w t^e y, all in doubled
  // precision. Sum 0 means nothing where the points are not weighted: it is their number. sums has 2 fit_partial_sums
  // numbers for each sum: the rounded ones, then what they lost.
  void (*add_moments)(const fit_columns& points, size_t exponents, size_t products, double* sums);

  // residuals[i] = y - p(t), as if p(t) and the difference were formed in doubled precision; gives the largest
  // magnitude, NaN apart, to which points that fill up the last partial sums count, too. Sum 0 takes w residual^2, sum
  // 1 takes w (y - mean)^2.
  double (*residuals)(const fit_columns& points, const double* high, const double* low, size_t coefficients,
                      double mean, double* residuals, double* sums);

  // Sum e b + a, for a, b < e = 2 grade - 1, takes w t^a v^b with the second abscissas v; sum e e + grade b + a, for a,
  // b < grade, takes w t^a v^b y. Where total_degree is set, the sums with a + b >= e, or grade, are left out and stay
  // 0. Sum 0 as in add_moments. The grade is at most largest_grade.
  void (*add_surface_moments)(const fit_columns& points, size_t grade, bool total_degree, double* sums);

  // As residuals, for p(t, v) with the coefficient of t^a v^b at grade b + a.
  double (*surface_residuals)(const fit_columns& points, const double* high, const double* low, size_t grade,
                              double mean, double* residuals, double* sums);
};

inline constexpr size_t largest_grade = 30;

#define TESSARN_TABLE(set)            \
  namespace set {                     \
  extern const fit_kernels fit_table; \
  }
TESSARN_FOR_EACH_SET(TESSARN_TABLE)
#undef TESSARN_TABLE

// The table of the instruction set in use.
const fit_kernels& fit_kernels_in_use() noexcept;

}  // namespace tessarn::detail
