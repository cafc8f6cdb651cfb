// Fits a surface through heights on a grid and finds where it misses them most.
#include <tessarn/tessarn.h>

#include <cstdio>
#include <vector>

#include "picture.h"

int main(int argc, char** argv) {
  std::vector<vector3d> heights;
  for (int i = 0; i <= 8; ++i)
    for (int j = 0; j <= 8; ++j) {
      const double x = i - 4, y = j - 4;
      heights.push_back(
          {x, y,
           0.02 * x * x - 0.03 * x * y + 0.1 * y + (i == 6 && j == 2 ? 0.05 : 0.0)});
    }

  tessarn::surface_options options;
  options.total_degree = true;  // 1, x, y, x^2, x y, y^2
  const auto fit = tessarn::fit_surface(heights, 3, options);
  if (fit.state != tessarn::status::ok)
    return std::puts(tessarn::to_string(fit.state)), 1;
  std::printf("x^2: %.5f +- %.5f\n", fit.of_powers.get(0, 2),
              fit.of_powers_errors.get(0, 2));
  std::printf("x y: %.5f +- %.5f\n", fit.of_powers.get(0, 4),
              fit.of_powers_errors.get(0, 4));
  const vector3d& worst = heights[fit.largest_at];
  std::printf("largest residual %.4f at (%g, %g)\n", fit.largest_residual, worst.x,
              worst.y);

  picture drawing(argc, argv);
  for (int level = -2; level <= 2; ++level)
    drawing.curve(
        "y = " + std::to_string(2 * level),
        [&](double x) { return fit.value(x, 2 * level); }, -4, 4);
  drawing.point("largest residual", worst.x, worst.z);
}
