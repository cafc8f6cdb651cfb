// A polynomial through measured points, as `tessarn curve` looks at it.
#pragma once

#include <tessarn/tessarn.h>

#include <cstddef>
#include <vector>

#include "support/table.h"

namespace program {

struct curve_options {
  unsigned coefficients = 3;
  bool odd = false;         // constant and odd powers only
  bool weighted = false;    // the third column of the table holds weights
  bool deviations = false;  // it holds standard deviations of the ordinates
};

struct fitted_curve {
  tessarn::polynomial_fit fit;
  binom p;                         // the curve over u = x - fit.centre, which keeps the digits of points far from 0
  std::vector<vector> points;      // that took part
  std::vector<double> weights;     // theirs; none when all are 1
  std::vector<std::size_t> lines;  // in the file
  std::size_t left_out = 0;        // by the marker x = -1.0
  std::size_t unknowns = 0;
  std::vector<double> residuals;  // ordinate minus curve; of a fit that failed none
  double square_sum = 0;          // of the residuals, each times its weight

  double u(double x) const { return x - fit.centre; }
};

// Throws input_error for too few points and for a weight or a deviation that is none. Whether the fit holds, fit.state
// says.
fitted_curve fit(const table& t, const curve_options& options);

std::size_t distinct_abscissas(const fitted_curve& c);

// Polynomials of the options' degree fitted by binom::create, whose digits the report prints beside those of
// fit_polynomial: over the abscissas as given, and over abscissas shifted and scaled to [-0.5, 0.5].
binom classic_fit(const std::vector<vector>& points, const curve_options& options);
binom classic_scaled_fit(const std::vector<vector>& points, const curve_options& options);

}  // namespace program
