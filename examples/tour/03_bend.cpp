// Finds the sharpest bend of a fitted curve and the circle that follows it there.
#include <tessarn/tessarn.h>

#include <cstdio>

#include "picture.h"

int main(int argc, char** argv) {
  const vector profile[] = {{0, 3.02}, {1, 1.49}, {2, 0.58}, {3, 0.27},
                            {4, 0.61}, {5, 1.52}, {6, 3.01}};  // millimetres
  const auto fit = tessarn::fit_polynomial({profile, 7}, 5);
  if (fit.state != tessarn::status::ok)
    return std::puts(tessarn::to_string(fit.state)), 1;

  const auto bends = tessarn::curvature_extremes(fit.of_powers, 0, 6);
  for (tessarn::ulong i = 0; i < bends.count; ++i)
    std::printf("x = %.6f  curvature %8.5f /mm  radius %9.5f mm  %s\n", bends[i].at,
                bends[i].curvature, bends[i].radius,
                bends[i].is_maximum() ? "sharpest" : "flattest");

  tessarn::ulong sharpest = 0;
  for (tessarn::ulong i = 1; i < bends.count; ++i)
    if (bends[i].radius < bends[sharpest].radius) sharpest = i;
  const double x = bends[sharpest].at;
  const binom curve = fit.expanded();
  const vector centre = vector(x, curve(x)) +
                        curve.normale(x);  // from the curve to the centre of its circle
  std::printf("circle about (%.4f, %.4f)\n", centre.x, centre.y);

  picture drawing(argc, argv);
  drawing.points("profile", {profile, 7});
  drawing.curve(
      "fit", [&](double at) { return fit.value(at); }, -0.2, 6.2);
  drawing.circle("circle of curvature", centre, bends[sharpest].radius);
  drawing.point("sharpest", x, fit.value(x));
}
