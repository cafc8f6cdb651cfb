// Calls every member of binom and hyperbinom through the module.
#include <tessarn/poly.h>

#include <cmath>
#include <new>
#include <utility>

#include "check.h"

namespace {

using tessarn::real;

struct opened : hyperbinom {
  using hyperbinom::getvec;
};

bool near(real a, real b) { return std::fabs(a - b) < real(1e-9); }

// 2 - 3 x + x^2, with the zeros 1 and 2.
void fill(binom& p) {
  p.create(3);
  p.set(0, 2);
  p.set(1, -3);
  p.set(2, 1);
}

// Polynomial is binom or const binom.
template <class Polynomial>
void one_variable(Polynomial& p) {
  CHECK(p.getcofcnt() == 3 && p.get(1) == -3 && p.func(0) == 2);
  binom d;
  p.func_1(d);
  CHECK(d.getcofcnt() == 2 && d.get(1) == 2);
  CHECK(p.func_1(real(3)) == 3 && p.func_2(0) == 2 && p.func_3(0) == 0 && p.func_4(0) == 0);
  CHECK(near(p.arc(real(1.5)), 2) && near(p.arc_1(real(1.5)), 0));
  CHECK(near(p.normale(real(1.5)).y, real(0.5)));
  CHECK(near(p.find_zero(0, real(1.55), real(0.3), real(1e-11)), 1));
  CHECK(near(p.find_extrpoint_arc(0, 3, real(0.7), real(1e-11)), real(1.5)));
  CHECK(near(p.find_high_hpoint_arc(0, 3, real(0.7), real(1e-11)), real(1.5)));
  CHECK(p.scalar(p, 3, 4, real(0.25)) == 1);
  CHECK(p.antifunction(2, 4, real(0.25)).getcofcnt() == 3);
  binom q;
  q.copy(p);
  q = p;
  q += p;
  CHECK(q.get(0) == 4);
  q -= p;
  q *= p;
  CHECK(q.getcofcnt() == 5 && q.get(0) == 4);
}

void arrays(const binom& p) {
  const real x[3] = {0, 1, 2};
  real y[3];
  p.func(x, y, 3);
  CHECK(y[0] == 2 && y[1] == 0);
  p.func_1(x, y, 3);
  CHECK(y[2] == 1);
  p.func_2(x, y, 3);
  CHECK(y[2] == 2);
  p.func_3(x, y, 3);
  p.func_4(x, y, 3);
  CHECK(y[2] == 0);
  p.arc(x, y, 3);
  CHECK(y[1] > 0);
  p.arc_1(x, y, 3);
  CHECK(y[0] > 0);
}

void changes(binom& p) {
  binom shared(p);  // shares the array
  shared.set(0, 2);
  CHECK(shared.getcofcnt() == 3);
  binom moved(std::move(shared)), cloned = p.clone();
  CHECK(moved.get(0) == 2 && cloned.get(0) == 2);

  p *= real(2);
  CHECK(p.get(0) == 4);
  p.shift_h(0);
  p.shift_v(1);
  CHECK(p.get(0) == 5);
  p.mirror_h();
  CHECK(p.get(1) == 6);
  p.mirror_v();
  CHECK(p.get(1) == -6);
  p.resize(2);
  CHECK(p.getcofcnt() == 2);
  vector points[4] = {{0, 1}, {1, 3}, {2, 5}, {3, 7}};
  p.create(points, 4, 2);
  CHECK(near(p.get(0), 1) && near(p.get(1), 2));
  p.createtan(points, 4, 4);
  CHECK(p.getcofcnt() == 4 && p.get(2) == 0);
  binom other;
  other = std::move(p);
  CHECK(other.getcofcnt() == 4);
  other.empty();
  CHECK(other.getcofcnt() == 0);
}

// Polynomial is hyperbinom or const hyperbinom.
template <class Polynomial>
void two_variables(Polynomial& p) {
  CHECK(p.getgrade() == 2 && p.get(1, 1) == 4 && p.func(1, 1) == 10);
  hyperbinom q;
  q.copy(p);
  q = p;
  q += p;
  CHECK(q.get(0, 0) == 2);
  q -= p;
  q *= p;
  CHECK(q.getgrade() == 3);
}

template <class Point, class Weight>
void weighted_fit(Point* points, Weight* weights) {
  hyperbinom p;
  p.create(points, weights, 4, 2);
  CHECK(near(p.func(1, 1), 10));
}

void surfaces() {
  hyperbinom p;
  p.create(2);
  p.set(0, 0, 1);
  p.set(1, 0, 2);
  p.set(0, 1, 3);
  p.set(1, 1, 4);
  two_variables(p);
  two_variables<const hyperbinom>(p);
  const real x[2] = {0, 1}, y[2] = {0, 1};
  real z[2];
  p.func(x, y, z, 2);
  CHECK(z[0] == 1 && z[1] == 10);
  p *= real(2);
  CHECK(p.get(0, 0) == 2);
  hyperbinom shared(p), cloned = p.clone();
  CHECK(shared.get(0, 0) == 2 && cloned.get(0, 0) == 2);
  p.resize(3);
  CHECK(p.getgrade() == 3);
  vector3d points[4] = {{0, 0, 1}, {1, 0, 3}, {0, 1, 4}, {1, 1, 10}};
  p.create(points, 4, 2);
  CHECK(near(p.func(1, 1), 10));
  real weights[4] = {1, 2, 1, 1};
  weighted_fit(points, weights);
  weighted_fit<const vector3d, const real>(points, weights);
  hyperbinom moved(std::move(p));
  p = std::move(moved);
  p.empty();
  CHECK(p.getgrade() == 0);
  opened o;
  o.create(2);
  CHECK(o.getvec(3, 2, 5) == 10);
}

}  // namespace

int main() {
  binom p;
  fill(p);
  one_variable(p);
  one_variable<const binom>(p);
  arrays(p);
  changes(p);
  surfaces();
  return check::finish();
}
