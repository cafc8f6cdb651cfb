// Calls every member of vector, vector3d and polarvector3d, and the allocators, through the module.
#include <tessarn/vectors.h>

#include <cmath>

#include "check.h"

namespace {

using tessarn::real;

// Reach the protected members.
struct opened_vector3d : vector3d {
  using vector3d::rndi;
  using vector3d::rndu;
};
struct opened_polar : polarvector3d {
  using polarvector3d::rndi;
  using polarvector3d::rndu;
};

bool near(real a, real b) { return std::fabs(a - b) < real(1e-14); }
bool is(const vector& v, real x, real y) { return v.x == x && v.y == y; }
bool is(const vector3d& v, real x, real y, real z) { return v.x == x && v.y == y && v.z == z; }
bool near(const vector3d& v, real x, real y, real z) { return near(v.x, x) && near(v.y, y) && near(v.z, z); }
bool is(const polarvector3d& p, real a, real b, real l) { return p.alpha == a && p.beta == b && p.len == l; }
bool near(const polarvector3d& p, real a, real b, real l) {
  return near(p.alpha, a) && near(p.beta, b) && near(p.len, l);
}

// Each template runs for variables and for constants.
template <class Vector>
void plane_vector() {
  Vector a(3, 4), b(1, -2);
  CHECK(is(a + b, 4, 2));
  CHECK(is(a - b, 2, 6));
  CHECK(is(a * real(2), 6, 8));
  CHECK(is(a / real(2), real(1.5), 2));
  CHECK(near(a.resize(10).x, 6));
  CHECK(a == a && !(a == b));
  CHECK(a.lenld() == 5 && a.lenul() == 5);
  Vector r(real(2.5), real(-0.2));
  CHECK(r.rx() == 3 && r.ry() == -1);
  Vector up(0, 1), right(1, 0);
  CHECK(near(up.arc(), tessarn::half_pi) && near(up.arc(right), tessarn::half_pi));
  CHECK(near(up.dirarc(), tessarn::half_pi) && near(up.dirarc(right), -tessarn::half_pi));
  vector v;
  v = a;
  v += b;
  CHECK(is(v, 4, 2));
  v -= b;
  CHECK(is(v, 3, 4));
  v *= 2;
  v /= 4;
  CHECK(is(v, real(1.5), 2));
  v.flip();
  CHECK(is(v, 2, real(1.5)));
}

template <class List>
void centroid(List& list) {
  vector v;
  v = list;
  CHECK(is(v, 2, 3));
}

template <class Vector>
void space_vector() {
  Vector a(1, 2, 2), b(3, 0, 4);
  CHECK(is(a + b, 4, 2, 6));
  CHECK(is(a - b, -2, 2, -2));
  CHECK(a * b == 11);
  CHECK(is(a * real(2), 2, 4, 4));
  CHECK(is(a / real(2), real(0.5), 1, 1));
  CHECK(is(a.cross(b), 8, 2, -6));
  CHECK(near(a.resize(6), 2, 4, 4));
  CHECK(near(b.projection(a), real(33) / 25, 0, real(44) / 25));
  Vector x(1, 0, 0), z(0, 0, 1);
  CHECK(near(x.rotate(tessarn::half_pi, 0), 0, -1, 0));
  CHECK(near(x.rotate(z, tessarn::half_pi), 0, -1, 0));
  CHECK(near(x.arc(z), tessarn::half_pi));
  CHECK(a == a && !(a == b));
  CHECK(a.lenld() == 3 && a.lenul() == 3);
  Vector r(real(2.5), real(-0.2), real(0.4));
  CHECK(r.rx() == 3 && r.ry() == -1 && r.rz() == 0);
  vector3d v;
  v = a;
  v += b;
  v -= b;
  CHECK(is(v, 1, 2, 2));
  v *= real(2);
  v /= real(4);
  CHECK(is(v, real(0.5), 1, 1));
  v *= b;
  CHECK(is(v, 4, 1, -3));
}

template <class Polar, class Vector>
void polar_vector() {
  Polar p(0, 0, 2), q(tessarn::half_pi, 0, 3);
  CHECK(near(vector3d(p), 2, 0, 0) && near(vector3d(&q), 0, 3, 0));
  CHECK(near(p.operator vector3d(), 2, 0, 0));
  Vector v(0, 0, 5);
  CHECK(near(polarvector3d(v), 0, tessarn::half_pi, 5) && near(polarvector3d(&v), 0, tessarn::half_pi, 5));
  polarvector3d r;
  r = p;
  r = v;
  r = &v;
  CHECK(is(r, 0, 0, 2));
  r += q;
  r -= q;
  r *= q;
  CHECK(is(r, 0, 0, 2));
  CHECK(p.lenld() == 2 && p.lenul() == 2);
  Polar angles(real(2.5), real(-0.2), real(0.5));
  CHECK(angles.ralpha() == 3 && angles.rbeta() == -1 && angles.rlen() == 1);
  CHECK(is(p.resize(7), 0, 0, 7));
  CHECK(is(p.rotate(1, 2), 1, 2, 2));
  CHECK(is(p * real(2), 0, 0, 4) && is(p / real(2), 0, 0, 1));
  CHECK(near((p + q).len, std::sqrt(real(13))) && near((p - q).len, std::sqrt(real(13))));
  CHECK(near(p * q, 0));
  CHECK(near(p.cross(q).len, 6));
  CHECK(near(p.arc(q), tessarn::half_pi));
  CHECK(p == p && !(p == q));
}

void constructors() {
  vector v;
  CHECK(is(v, 0, 0) && is(vector(v), 0, 0));
  vector3d w;
  CHECK(is(w, 0, 0, 0) && is(vector3d(w), 0, 0, 0));
  polarvector3d p;
  CHECK(is(p, 0, 0, 0) && is(polarvector3d(p), 0, 0, 0));
  p *= real(2);
  p /= real(2);
  CHECK(vector::rndi(real(-0.2)) == -1 && vector::rndu(real(-2.5)) == 3);
  opened_vector3d ov;
  CHECK(ov.rndi(real(-0.2)) == -1 && ov.rndu(real(-2.5)) == 3);
  opened_polar op;
  CHECK(op.rndi(real(-0.2)) == -1 && op.rndu(real(-2.5)) == 3);
}

}  // namespace

int main() {
  constructors();
  plane_vector<vector>();
  plane_vector<const vector>();
  space_vector<vector3d>();
  space_vector<const vector3d>();
  polar_vector<polarvector3d, vector3d>();
  polar_vector<const polarvector3d, const vector3d>();
  vectormat list;
  list += vector(1, 2);
  list += vector(3, 4);
  centroid(list);
  centroid<const vectormat>(list);
  delete[] new_vector(2);
  delete[] new_vector3d(2);
  delete[] new_polarvector3d(2);
  return check::finish();
}
