// Calls every member of cplx through the module.
#include <tessarn/cplx.h>

#include <cmath>
#include <utility>

#include "check.h"

namespace {

using tessarn::real;

// Reaches the protected members.
struct opened : cplx {
  using cplx::rndi;
  using cplx::rndu;
};

bool is(const cplx& z, real re, real im) { return z.re == re && z.im == im; }

// The same for constants and for variables.
template <class Number>
void arithmetic() {
  Number a(3, 4), b(1, 2);
  CHECK(is(a + b, 4, 6));
  CHECK(is(a - b, 2, 2));
  CHECK(is(a * b, -5, 10));
  CHECK(is(a * real(2), 6, 8));
  CHECK(is(a / real(2), real(1.5), 2));
  Number c(-5, 10);
  CHECK(is(c / b, 3, 4));
  CHECK(a == a && !(a == b));
  CHECK(a != b && !(a != a));
  CHECK(b < a && !(a < b));
  CHECK(a > b && !(b > a));
  CHECK(a.lenld() == 5 && a.lenul() == 5);
  Number i(0, 1);
  CHECK(std::fabs(i.phi() - tessarn::half_pi) < real(1e-15));
  Number w(3, 4);
  CHECK(std::fabs(w.sqrt().re - 2) < real(1e-15) && std::fabs(w.sqrt().im - 1) < real(1e-15));
}

template <class Number>
void assignment() {
  Number b(1, 2);
  cplx a(3, 4);
  a += b;
  CHECK(is(a, 4, 6));
  a -= b;
  CHECK(is(a, 3, 4));
  a *= b;
  CHECK(is(a, -5, 10));
  a /= b;
  CHECK(is(a, 3, 4));
  a = b;
  CHECK(is(a, 1, 2));
  Number zero(0, 0);
  cplx q = a / zero;
  CHECK(is(q, 0, 0) && is(a, 0, 0));
}

}  // namespace

int main() {
  CHECK(is(cplx(), 0, 0));
  cplx unit(real(0.5));
  CHECK(unit.re == std::cos(real(0.5)) && unit.im == std::sin(real(0.5)));
  cplx copied(unit);
  CHECK(is(copied, unit.re, unit.im));
  arithmetic<cplx>();
  arithmetic<const cplx>();
  assignment<cplx>();
  assignment<const cplx>();
  cplx a(3, 4);
  a *= real(2);
  CHECK(is(a, 6, 8));
  a /= real(2);
  CHECK(is(a, 3, 4));
  const cplx moved = std::move(a);
  CHECK(is(moved, 3, 4));
  CHECK(opened::rndi(real(-0.2)) == -1 && opened::rndu(real(-2.5)) == 3);
  cplx* on_heap = new cplx(1, 2);
  delete on_heap;
  return check::finish();
}
