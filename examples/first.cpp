// Fits a parabola through measured points and finds its sharpest bend.
#include <tessarn/io.h>

#include <iostream>

int main() {
  const vector points[] = {{0.0, 6.1}, {1.0, 3.0}, {2.0, 1.1}, {3.0, 0.8}, {4.0, 2.1}, {5.0, 5.2}};
  binom curve;
  curve.create(points, 6, 3);  // three coefficients through six points
  std::cout << "p(x) = " << curve << '\n' << "p(1) = " << curve.func(1.0) << '\n';

  const double x = curve.find_high_hpoint_arc(0.0, 5.0, 0.01, 1e-9);
  std::cout << "sharpest at x = " << x << ", radius of curvature " << curve.normale(x).lenld() << '\n';
}
