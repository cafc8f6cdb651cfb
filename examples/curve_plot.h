// The picture of curve_report.
#pragma once

#include <string>
#include <vector>

#include "curve_analysis.h"
#include "support/plot.h"

namespace example {

inline constexpr int canvas_width = 1000, canvas_height = 900;

struct curve_marks {
  std::vector<double> zeros;
  std::vector<double> extremes;            // of the curve
  std::vector<double> curvature_extremes;  // without the sharpest bend
  std::vector<double> sharpest;            // its abscissa, or nothing
};

// Above the points, the curve and the marks with the circle of curvature, below the residuals.
// With `equal` both axes have the same scale, so that the circle is round. Returns what of many
// points is drawn, in words; nothing when every one is.
std::vector<std::string> draw_curve(plot& out, const table& t, const fitted_curve& c, const residuals& r, const scan& s,
                                    const curve_marks& marks, bool equal);

}  // namespace example
