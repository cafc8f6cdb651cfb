// Fits a parabola through measured points and tells what its coefficients are worth.
#include <tessarn/tessarn.h>

#include <cstdio>

#include "picture.h"

int main(int argc, char** argv) {
  const vector points[] = {{0.0, 6.1}, {1.0, 3.0}, {2.0, 1.1},
                           {3.0, 0.8}, {4.0, 2.1}, {5.0, 5.2}};
  const auto fit = tessarn::fit_polynomial({points, 6}, 3);  // three coefficients
  if (fit.state != tessarn::status::ok)
    return std::puts(tessarn::to_string(fit.state)), 1;

  for (tessarn::ulong k = 0; k < 3; ++k)
    std::printf("x^%u  %9.6f +- %.6f\n", unsigned(k), fit.of_powers.get(0, k),
                fit.of_powers_errors.get(0, k));
  std::printf("residual deviation %.4f, R^2 %.6f\n", fit.residual_deviation,
              fit.r_squared);

  const auto at = fit.predict(2.5, 3.18);  // 95 % with three degrees of freedom
  std::printf("p(2.5) = %.4f +- %.4f, one more reading +- %.4f\n", at.value, at.mean,
              at.observation);

  picture drawing(argc, argv);
  drawing.points("measured", {points, 6});
  for (double side : {0.0, 1.0, -1.0}) {
    const auto line = [&](double x) {
      return fit.value(x) + side * fit.predict(x, 3.18).mean;
    };
    drawing.curve(side == 0 ? "fit" : "95 %", line, -0.3, 5.3);
  }
}
