// Calls every member of line3d and plane through the module.
#include <tessarn/geometry.h>

#include <cmath>

#include "check.h"

namespace {

using tessarn::real;

bool near(real a, real b) { return std::fabs(a - b) < real(1e-5); }

template <class Vector, class Line, class Plane>
void members() {
  Vector origin(0, 0, 1), x(1, 0, 0), y(0, 1, 0), z(0, 0, 1), low(0, 0, 0), high(0, 0, 3);
  Plane level(origin, z), framed(origin, x, y), upright(low, x, z);
  CHECK(level.normal.z == 1 && framed.normal.z == -1);
  CHECK(level == level && !(level == framed));

  Line segment(low, high);
  vector3d hit;
  CHECK(segment.cut(level, hit) && hit.z == 1);
  line3d clipped(low, high);
  CHECK(clipped.cut_off(level) && clipped.start.z == 1);
  line3d line;
  line = segment;
  CHECK(line.end.z == 3);

  vector p, q;
  CHECK(level.cross(upright, p, q));
  Vector d(1, 1, 1);
  vector st;
  CHECK(near(level.cross(d, st).x, 1) && near(level.cross(d).y, 1));
  plane other;
  other = level;
  other.rotate(real(0.1), real(0.2), real(0.3));
  CHECK(near(other.normal.lenld(), 1));
}

}  // namespace

int main() {
  members<vector3d, line3d, plane>();
  members<const vector3d, const line3d, const plane>();
  CHECK(line3d().end.z == 0 && plane().normal.z == 0);
  vector3d points[5] = {{0, 0, 1}, {1, 0, 1}, {0, 1, 1}, {1, 1, 1}, {2, 3, 1}};
  plane fitted(points, 5);
  CHECK(near(fitted.normal.z, 1) && near(fitted.origin.z, 1));
  plane copied(fitted);
  line3d line(points[0], points[1]), twin(line);
  CHECK(copied == fitted && twin.end == line.end);
  vector3d normal, along[2] = {{1, 0, 0}, {0, 1, 0}};
  CHECK(plane::CalcNormale(normal, nullptr, 0, along, 2) && near(std::fabs(normal.z), 1));
  return check::finish();
}
