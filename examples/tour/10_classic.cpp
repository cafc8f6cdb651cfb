// The classic classes, for inner loops: a list of points, a plane, a segment, and the
// library's own check.
#include <tessarn/io.h>
#include <tessarn/tessarn.h>

#include <iostream>

int main() {
  vectormat scan;
  for (int i = 0; i < 40; ++i) scan.add(vector(i, i == 25 ? 9.0 : 2.0 + 0.1 * (i % 3)));
  scan.DeleteErrors(
      1.0);  // removes points that are more than 1 off the mean of their neighbours
  std::cout << scan.size() << " points are left, with the average " << scan.average()
            << '\n';

  const vector3d corner[] = {{0, 0, 1}, {4, 0, 1}, {4, 4, 1}, {0, 4, 1}};
  const plane lid(corner, 4);
  const line3d beam(vector3d(1, 1, 0), vector3d(1, 1, 3));
  vector3d hit;
  if (beam.cut(lid, hit)) std::cout << "the beam meets the lid at " << hit << '\n';

  const cplx turn(
      tessarn::half_pi);  // one real is an angle: the unit number at a right angle
  std::cout << turn * cplx(3.0, 0.0) << '\n';

  std::cout << (tessarn::selfcheck().passed() ? "this library gives the right bits"
                                              : "it does not")
            << '\n';
}
