// The kernels of the fits in doubled precision, one table for each instruction set. Lanes run across points.
#pragma once

#include <stddef.h>

#include "simd/sets.h"

namespace tessarn::detail {

// Each sum over the points is kept as this many partial sums, point k in partial sum k mod 8, each of them a pair: the
// rounded sum, and the sum of what its roundings lost and of the low parts of the terms.
inline constexpr size_t fit_partial_sums = 8;

// The points of a fit, in arrays whose length is a multiple of fit_partial_sums; behind the last point stand points
// with a weight of 0.
struct fit_columns {
  const double *high, *low;                // the abscissas, doubled numbers
  const double* y;                         // the ordinates
  const double *weight_high, *weight_low;  // the squares of the weights, doubled numbers
  size_t size;
};

// The points of a surface: the second abscissas besides, and the heights of the points in y.
struct surface_columns {
  fit_columns plane;
  const double *second_high, *second_low;
};

struct fit_kernels {
  // Sum e, for e < exponents, takes w x^e; sum exponents + e, for e < products, takes w x^e y, all in doubled
  // precision. sums has 2 fit_partial_sums numbers for each sum: the rounded ones, then what they lost.
  void (*add_moments)(const fit_columns& points, size_t exponents, size_t products, double* sums);

  // residuals[i] = y - p(x), p(x) and the difference in doubled precision, by Horner's rule from the highest of the
  // coefficients on. Sum 0 takes w residual^2, sum 1 takes w (y - mean)^2.
  void (*residuals)(const fit_columns& points, const double* high, const double* low, size_t coefficients, double mean,
                    double* residuals, double* sums);

  // Sum e b + a, for a, b < e = 2 grade - 1, takes w x^a v^b with the second abscissas v; sum e e + grade b + a, for a,
  // b < grade, takes w x^a v^b y. Where total_degree is set, the sums with a + b >= e, or grade, are left out and stay
  // 0.
  void (*add_surface_moments)(const surface_columns& points, size_t grade, bool total_degree, double* sums);

  // As residuals, for p(x, v) with the coefficient of x^a v^b at grade b + a.
  void (*surface_residuals)(const surface_columns& points, const double* high, const double* low, size_t grade,
                            double mean, double* residuals, double* sums);
};

#define TESSARN_TABLE(set)            \
  namespace set {                     \
  extern const fit_kernels fit_table; \
  }
TESSARN_FOR_EACH_SET(TESSARN_TABLE)
#undef TESSARN_TABLE

// The table of the instruction set in use.
const fit_kernels& fit_kernels_in_use() noexcept;

}  // namespace tessarn::detail
