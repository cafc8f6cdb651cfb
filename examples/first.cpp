// Fits a parabola through measured points and finds its sharpest bend.
#include <tessarn/io.h>

#include <iostream>

int main() {
  const vector points[] = {{-2.0, 4.1}, {-1.5, 2.2}, {-0.5, 0.3}, {0.5, 0.2}, {1.5, 2.3}, {2.0, 3.9}};
  binom curve;
  curve.create(points, 6, 3);  // three coefficients through six points
  std::cout << "p(x) = " << curve << '\n' << "p(1) = " << curve.func(1.0) << '\n';

  const double x = curve.find_high_hpoint_arc(-2.0, 2.0, 0.01, 1e-9);
  std::cout << "sharpest at x = " << x << ", radius of curvature " << curve.normale(x).lenld() << '\n';
}
