// What curve_report finds out about a fitted polynomial.
#pragma once

#include <tessarn/tessarn.h>

#include <cstddef>
#include <vector>

#include "support/csv.h"

namespace example {

struct fit_options {
  unsigned coefficients = 3;
  bool odd = false;     // constant and odd powers only
  bool scaled = false;  // fit over abscissas shifted and scaled to [-0.5, 0.5]
};

// A fitted curve with the points that took part.
struct fitted_curve {
  binom p;
  std::vector<vector> points;
  std::vector<std::size_t> lines;  // in the file
  std::size_t left_out = 0;        // by the marker x = -1.0
  std::size_t unknowns = 0;
};

fitted_curve fit(const table& t, const fit_options& options);

struct residuals {
  std::vector<double> values;  // ordinate minus curve
  double square_sum = 0;
  double rms = 0;
  std::size_t largest = 0;  // index
};

residuals residuals_of(const fitted_curve& c);

// False when the coefficients are no least-squares solution: a singular system leaves its
// right-hand side in them. Recognised by evaluating the curve, which must not lie farther from the
// points than their mean.
bool fit_succeeded(const fitted_curve& c, const residuals& r);
std::size_t distinct_abscissas(const fitted_curve& c);

// The scan of a search: the interval, the first step and the width at which refining ends.
struct scan {
  double a, b, step, eps;
};

scan scan_of(double a, double b);

// All zeros of p that the scan separates, ascending; empty and `everywhere` when p vanishes
// throughout.
std::vector<double> zeros(const binom& p, const scan& s, bool& everywhere);
// The abscissas where the curvature has an extremum; empty for a straight line.
std::vector<double> curvature_extremes(const binom& p, const scan& s);
// The one of largest curvature among the extremes found.
double sharpest_bend(const binom& p, const scan& s);
bool is_straight(const binom& p);
// False where the curvature vanishes or is so small that the radius is beyond double precision.
bool has_circle(const binom& p, double x);

}  // namespace example
