// Fits a circle through a short arc, where algebraic fits give too small a radius.
#include <tessarn/tessarn.h>

#include <cstdio>

#include "picture.h"

int main(int argc, char** argv) {
  const vector arc[] = {{-10, 46.03},  {-7.5, 46.39}, {-5, 46.78},
                        {-2.5, 46.91}, {0, 47.02},    {2.5, 46.94},
                        {5, 46.73},    {7.5, 46.44},  {10, 45.97}};
  const auto f = tessarn::fit_circle({arc, 9});
  if (f.state != tessarn::status::ok) return std::puts(tessarn::to_string(f.state)), 1;
  std::printf("radius %.3f +- %.3f\n", f.radius, f.radius_error);
  std::printf("centre (%.3f +- %.3f, %.3f +- %.3f)\n", f.centre.x, f.centre_errors.x,
              f.centre.y, f.centre_errors.y);
  std::printf("residual deviation %.4f, largest %.4f at x = %g\n", f.residual_deviation,
              f.largest_residual, arc[f.largest_at].x);

  const vector line[] = {{0, 0}, {1, 1}, {2, 2}, {3, 3}};
  std::printf("%s\n", tessarn::to_string(tessarn::fit_circle({line, 4}).state));

  picture drawing(argc, argv);
  drawing.points("arc", {arc, 9});
  drawing.circle("fitted circle", f.centre, f.radius);
}
