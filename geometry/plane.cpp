// The frame of a plane, comparisons, rotations and intersections.
#include "tessarn/geometry.h"

#include <cmath>

using tessarn::real;

namespace {

// The triple product a . (b x c).
real determinant(const vector3d& a, const vector3d& b, const vector3d& c) { return a * b.cross(c); }

}  // namespace

plane::plane(vector3d& p, vector3d& n) noexcept : origin(p), normal(n / n.lenld()) { derive_axes(); }

// Only the exact upward normal is special; a normal straight down leads to NaN axes.
void plane::derive_axes() noexcept {
  const real x = normal.x, y = normal.y, z = normal.z;
  if (x == 0 && y == 0 && z == 1) {
    axis1 = vector3d(1, 0, 0);
    axis2 = vector3d(0, 1, 0);
    return;
  }
  const real r = 1 / std::sqrt(x * x + y * y);
  axis1 = vector3d(y * r, -x * r, 0);
  const vector3d upward(-x * z, -y * z, x * x + y * y);
  axis2 = upward / upward.lenld();
}

bool plane::operator==(plane& o) noexcept {
  if (!(normal == o.normal)) return false;
  return (o.origin - origin) * normal == 0;
}

void plane::rotate(real a, real b, real c) noexcept {
  axis1 = axis1.rotate(axis2, a);
  normal = normal.rotate(axis2, a);
  axis2 = axis2.rotate(axis1, b);
  normal = normal.rotate(axis1, b);
  axis2 = axis2.rotate(normal, c);
  axis1 = axis1.rotate(normal, c);
}

// Points of this plane with coordinates (s, t) lie on the other one when h + s e1 + t e2 = 0.
bool plane::cross(plane& o, vector& p, vector& q) noexcept {
  vector3d m = o.axis1.cross(o.axis2);
  m = m / m.lenld();
  const real h = m * origin - m * o.origin;
  const real e1 = m * axis1;
  const real e2 = m * axis2;
  if (e1 == 0 && e2 == 0) return false;
  if (e1 == 0) {
    p = vector(0, -h / e2);
    q = vector(1, 0);
  } else if (e2 == 0) {
    p = vector(-h / e1, 0);
    q = vector(0, 1);
  } else {
    const real r = 1 / e2;
    const real k = -e1 * r;
    p = vector(0, -h * r);
    q = vector(1, k) / std::sqrt(k * k + 1);
  }
  return true;
}

// Cramer's rule on origin + s axis1 + t axis2 = lambda d.
vector3d plane::cross(vector3d& d, vector& st) noexcept {
  const real D = determinant(axis1, axis2, d);
  if (D == 0) {
    st = vector(0, 0);
    return {};
  }
  const real r = 1 / D;
  const real lambda = determinant(axis1, axis2, origin) * r;
  st = vector(-determinant(origin, axis2, d) * r, -determinant(axis1, origin, d) * r);
  return d * lambda;
}

vector3d plane::cross(vector3d& d) noexcept {
  const real e = normal * d;
  if (e == 0) return d;
  return d * ((normal * origin) / e);
}
