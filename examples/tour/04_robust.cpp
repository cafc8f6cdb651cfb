// Fits a line although two readings are wild, and shows which ones.
#include <tessarn/tessarn.h>

#include <cstdio>

#include "picture.h"

int main(int argc, char** argv) {
  const tessarn::real x[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
  const tessarn::real y[] = {1.02, 1.48, 2.03, 2.49, 9.70, 3.52, 3.97, 4.53, 0.10, 5.49};
  const tessarn::plane_points points({x, 10}, {y, 10});  // two columns: nothing is copied

  const auto plain = tessarn::fit_polynomial(points, 2);
  const auto robust = tessarn::fit_robust(points, 2);
  std::printf("least squares  %.4f + %.4f x\n", plain.of_powers.get(0, 0),
              plain.of_powers.get(0, 1));
  std::printf("robust         %.4f + %.4f x, deviation %.4f\n",
              robust.fit.of_powers.get(0, 0), robust.fit.of_powers.get(0, 1),
              robust.scale);
  for (tessarn::ulong i = 0; i < 10; ++i)
    if (robust.weights.get(0, i) == 0)
      std::printf("left out: x = %g, y = %g\n", x[i], y[i]);

  picture drawing(argc, argv);
  drawing.points("readings", points);
  drawing.curve(
      "least squares", [&](double at) { return plain.value(at); }, -0.5, 9.5);
  drawing.curve(
      "robust", [&](double at) { return robust.fit.value(at); }, -0.5, 9.5);
}
