// The surface fits: normal equations from sums of products of powers, solved by the square solver.
#include <memory>
#include <vector>

#include "core/access.h"
#include "core/nan_rule.h"
#include "core/power.h"
#include "tessarn/poly.h"

using tessarn::real;
using tessarn::slong;
using tessarn::detail::computed;
using tessarn::detail::power;
using tessarn::detail::real_mat;
using tessarn::detail::real_sqmat;

namespace {

// The distinct sums of the normal equations: side * side sums of y^b x^a, a, b < side = 2 g - 1, at
// side * b + a, and g * g moments of y^j x^i z at g * j + i.
struct surface_sums {
  tessarn::ulong side;
  std::vector<real> powers;
  std::vector<real> moments;
};

void powers_of(real x, tessarn::ulong n, real* p) {
  for (tessarn::ulong e = 0; e < n; ++e) p[e] = power(x, e);
}

// Each sum runs over the points in their order from +0.0. Without weights w is null; with them a point's
// terms are (y^b x^a)(w w) and (y^j x^i)((w z) w).
surface_sums summed(const vector3d* pts, const real* w, tessarn::ulong n, tessarn::ulong g) {
  const tessarn::ulong side = 2 * g - 1;
  surface_sums s{side, std::vector<real>(static_cast<std::size_t>(side) * side),
                 std::vector<real>(static_cast<std::size_t>(g) * g)};
  std::vector<real> px(side), py(side);
  for (tessarn::ulong k = 0; k < n; ++k) {
    powers_of(pts[k].x, side, px.data());
    powers_of(pts[k].y, side, py.data());
    const real square = w ? w[k] * w[k] : 1;
    const real ordinate = w ? (w[k] * pts[k].z) * w[k] : pts[k].z;
    for (tessarn::ulong b = 0; b < side; ++b)
      for (tessarn::ulong a = 0; a < side; ++a) {
        const real basis = py[b] * px[a];
        s.powers[static_cast<std::size_t>(side) * b + a] += w ? basis * square : basis;
        if (a < g && b < g) s.moments[static_cast<std::size_t>(g) * b + a] += basis * ordinate;
      }
  }
  return s;
}

// The sum in row r and column c depends on the exponents' sums only. Every sum that is a NaN becomes 0.
real_mat solved(const surface_sums& s, tessarn::ulong g) {
  const tessarn::ulong unknowns = g * g;
  real_mat b;
  b.create(1, unknowns);
  real_sqmat a;
  a.create(unknowns);
  for (tessarn::ulong r = 0; r < unknowns; ++r) {
    for (tessarn::ulong c = 0; c < unknowns; ++c) {
      const tessarn::ulong y = r / g + c / g;
      const tessarn::ulong x = r % g + c % g;
      a.getData()[static_cast<std::size_t>(r) * unknowns + c] =
          computed(s.powers[static_cast<std::size_t>(s.side) * y + x]);
    }
    b.getData()[r] = computed(s.moments[r]);
  }
  a.solve(b);
  return b;
}

}  // namespace

void hyperbinom::create(vector3d* pts, tessarn::ulong n, tessarn::ulong g) { create(pts, nullptr, n, g); }

void hyperbinom::create(vector3d* pts, real* w, tessarn::ulong n, tessarn::ulong g) {
  create(static_cast<slong>(g));
  if (grade < 1) return;
  const real_mat solution = solved(summed(pts, w, n, g), g);
  const tessarn::ulong unknowns = g * g;
  for (tessarn::ulong k = 0; k < unknowns; ++k) cof[k] = solution.getData()[k];
}
