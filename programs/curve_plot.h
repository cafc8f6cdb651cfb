// The picture of `tessarn curve`.
#pragma once

#include <string>
#include <vector>

#include "curve_analysis.h"
#include "support/plot.h"

namespace program {

inline constexpr int canvas_width = 1000, canvas_height = 900;

// The abscissas of what is marked.
struct curve_marks {
  std::vector<double> zeros, extremes, inflections;
  std::vector<double> curvature_extremes;  // without the sharpest bend
  std::vector<double> sharpest;            // one, or none
};

// Above the points, the curve in [a, b] and the marks with the circle of curvature, below the residuals. With `equal`
// both axes have the same scale, so that the circle is round. Returns what of many points is drawn, in words; nothing
// when every one is.
std::vector<std::string> draw_curve(plot& out, const table& t, const fitted_curve& c, double a, double b,
                                    const curve_marks& marks, bool equal);

}  // namespace program
