// The unit vector that is as parallel as possible to one set of directions and as perpendicular as possible
// to another: a grid search over two of its components.
#include <cmath>
#include <limits>

#include "tessarn/geometry.h"

using tessarn::real;

namespace {

constexpr real infinity = std::numeric_limits<real>::infinity();
constexpr real last_step = static_cast<real>(1e-6);

struct directions {
  const vector3d* par;
  tessarn::ulong npar;
  const vector3d* perp;
  tessarn::ulong nperp;
};

// The sum of 1 - (v . par)^2, then of (v . perp)^2, in order from +0.0.
real cost_of(const vector3d& v, const directions& d) {
  real cost = 0;
  for (tessarn::ulong i = 0; i < d.npar; ++i) {
    const real c = v * d.par[i];
    cost += 1 - c * c;
  }
  for (tessarn::ulong i = 0; i < d.nperp; ++i) {
    const real c = v * d.perp[i];
    cost += c * c;
  }
  return cost;
}

real dependent(real outer, real inner) { return std::sqrt(1 - inner * inner - outer * outer); }

// Moves (outer, inner) over the 3 x 3 grid of its neighbours to ever smaller costs, halving the step where
// the centre is best. make(outer, inner) builds the candidate; cells outside the unit circle are skipped.
template <class Make>
void grid_search(real& outer, real& inner, const directions& d, Make make) {
  real best = infinity;
  for (real step = 1; step > last_step;) {
    int best_i = 0, best_j = 0;
    for (int j = -1; j <= 1; ++j)
      for (int i = -1; i <= 1; ++i) {
        const real a = outer + static_cast<real>(j) * step;
        const real b = inner + static_cast<real>(i) * step;
        if (b * b + a * a > 1) continue;
        const real cost = cost_of(make(a, b), d);
        if (!(cost < best)) continue;
        best = cost;
        best_i = i;
        best_j = j;
      }
    outer += static_cast<real>(best_j) * step;
    inner += static_cast<real>(best_i) * step;
    if (best_i == 0 && best_j == 0) step *= static_cast<real>(0.5);
  }
}

}  // namespace

bool plane::CalcNormale(vector3d& n, vector3d* par, tessarn::ulong npar, vector3d* perp, tessarn::ulong nperp) {
  if (par == nullptr && perp == nullptr) return false;
  const directions d{par, par ? npar : 0, perp, perp ? nperp : 0};
  real x = 0, y = 0;
  grid_search(y, x, d, [](real a, real b) { return vector3d(b, a, dependent(a, b)); });
  real z = dependent(y, x);
  if (!(z >= std::fabs(x) && z >= std::fabs(y))) {
    if (std::fabs(x) > std::fabs(y)) {
      grid_search(y, z, d, [](real a, real b) { return vector3d(dependent(b, a), a, b); });
      x = dependent(z, y);
    } else {
      grid_search(x, z, d, [](real a, real b) { return vector3d(a, dependent(b, a), b); });
      y = dependent(z, x);
    }
  }
  n = vector3d(x, y, z);
  return true;
}
