// The polynomial fits: normal equations from power sums, solved by the square solver.
#include <memory>
#include <vector>

#include "core/access.h"
#include "core/nan_rule.h"
#include "core/storage.h"
#include "poly/power_sums.h"
#include "tessarn/poly.h"

using tessarn::real;
using tessarn::slong;
using tessarn::detail::access;
using tessarn::detail::computed;
using tessarn::detail::real_array;
using tessarn::detail::real_mat;
using tessarn::detail::real_sqmat;

namespace {

constexpr real left_out = -1;  // the abscissa of a point that takes no part in create()

struct samples {
  real_array x;
  real_array y;
  std::size_t n;
};

samples gather(const vector* pts, tessarn::ulong n, bool skip_marked) {
  samples s{tessarn::detail::allocate(n), tessarn::detail::allocate(n), 0};
  for (tessarn::ulong i = 0; i < n; ++i) {
    if (skip_marked && (pts[i].x == left_out || pts[i].x != pts[i].x)) continue;
    s.x[s.n] = pts[i].x;
    s.y[s.n] = pts[i].y;
    ++s.n;
  }
  return s;
}

// Solves for the q unknowns whose powers are exponent_of(0), exponent_of(1), ... The sum in row r and column
// c depends on the sum of their exponents only, so each exponent is summed once. Every sum that is a NaN
// becomes 0. The solution stands in the returned column.
template <class ExponentOf>
real_mat fitted(const samples& s, tessarn::ulong q, ExponentOf exponent_of) {
  real_mat b;
  b.create(1, q);
  real_sqmat a;
  a.create(q);
  if (q == 0) return b;
  const unsigned highest = exponent_of(q - 1);
  std::vector<real> sums(2 * static_cast<std::size_t>(highest) + 1);
  std::vector<real> moments(static_cast<std::size_t>(highest) + 1);
  tessarn::detail::power_sums(s.x.get(), s.y.get(), s.n, 2 * highest + 1, highest + 1, sums.data(),
                              moments.data());
  for (tessarn::ulong r = 0; r < q; ++r) {
    for (tessarn::ulong c = 0; c < q; ++c)
      a.getData()[static_cast<std::size_t>(r) * q + c] = computed(sums[exponent_of(r) + exponent_of(c)]);
    b.getData()[r] = computed(moments[exponent_of(r)]);
  }
  a.solve(b);
  return b;
}

}  // namespace

void binom::create(vector* pts, tessarn::ulong n, tessarn::ulong m) {
  const samples s = gather(pts, n, true);
  create(static_cast<slong>(m));
  const real_mat solution = fitted(s, m, [](tessarn::ulong r) { return static_cast<unsigned>(r); });
  for (tessarn::ulong r = 0; r < m; ++r) set(static_cast<slong>(r), solution.getData()[r]);
}

void binom::createtan(vector* pts, tessarn::ulong n, tessarn::ulong m) {
  const samples s = gather(pts, n, false);
  create(static_cast<slong>(m));
  const tessarn::ulong q = m / 2 + 1;
  const auto exponent_of = [](tessarn::ulong r) { return r == 0 ? 0u : static_cast<unsigned>(2 * r - 1); };
  const real_mat solution = fitted(s, q, exponent_of);
  for (tessarn::ulong r = 0; r < q; ++r) set(static_cast<slong>(exponent_of(r)), solution.getData()[r]);
}
