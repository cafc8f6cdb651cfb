// Bounds on the sums of squares that the searches for a normal compare. A sum is a quadratic form in the normal, so
// the second moments give it in constant time, within a margin for the roundings of the moments and of the sum itself.
// Where the bounds of two candidates do not overlap, they decide as the sums would.
#pragma once

#include "geometry/cloud.h"

namespace tessarn::detail {

struct interval {
  double low;
  double high;
};

// For the sum over the points of (n . p - d)^2 with d the mean of n . p, both summed in order, n of unit length.
//
// With u = 2^-53, exact deviations s from the mean, T the sum of the squared distances from the cloud's reference point
// and P the sum of the squared points:
// - the moments carry at most 24 roundings a term, the mean's square 46, the form 10: |s|^2 is known within 128 u T;
// - the computed mean is off by at most b = (m + 5) u sqrt(P / m), which is orthogonal to s:
//   |s - b|^2 = |s|^2 + m b^2;
// - the computed residuals differ from s - b by at most A = 3 u sqrt(P) + u (|s| + sqrt(m) b) in norm;
// - their squares and the sum are off by at most a factor 1 + (m + 2) u; or, closer, the squares by 1 + 2 u and the
//   sum by u times the partial sums, W together. A residual is (n, p - c), c the mean by the moments, and a rest, with
//   the sum of all squared rests R no more than 3 ((25 u)^2 T + m b^2 + A^2), so that W <= 65/64 (the form of the
//   weighted products about c) + 65 m R; these products carry m + 200 roundings of m T or less.
// Each constant is taken a little larger.
class residual_bounds {
 public:
  explicit residual_bounds(const cloud& points);
  // False where magnitudes are so extreme, or not finite, that the bounds say nothing.
  bool usable() const { return usable_; }
  const residual_form& form() const { return form_; }
  // For the neighbours of a normal in a grid, whose coordinates are given back; infinite where there is no z.
  void operator()(double centre_x, double centre_y, double step, double* x, double* y, double* z, double* low,
                  double* high) const {
    geometry_kernels_in_use().bound_residuals(form_, centre_x, centre_y, step, x, y, z, low, high);
  }

 private:
  void translate_weighted(const double* weighted, double count);

  bool usable_;
  residual_form form_;  // of the points less the reference point
};

// For the sum of 1 - (v . p)^2 over the first set and of (v . q)^2 over the second, in order, v of unit length.
class direction_bounds {
 public:
  direction_bounds(const point_arrays& par, const point_arrays& perp);
  bool usable() const { return usable_; }
  interval operator()(double x, double y, double z) const;

 private:
  bool usable_;
  double constant_;
  double second_[6];
  double margin_;
};

}  // namespace tessarn::detail
