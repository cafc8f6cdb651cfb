// The polynomial fits: normal equations from power sums, solved by the square solver.
#include <algorithm>
#include <limits>

#include "core/access.h"
#include "core/nan_rule.h"
#include "core/storage.h"
#include "poly/power_sums.h"
#include "tessarn/poly.h"

using tessarn::real;
using tessarn::slong;
using tessarn::detail::computed;
using tessarn::detail::real_mat;
using tessarn::detail::real_sqmat;

namespace {

constexpr auto full_power = [](tessarn::ulong r) { return static_cast<unsigned>(r); };
constexpr auto odd_power = [](tessarn::ulong r) { return r == 0 ? 0u : static_cast<unsigned>(2 * r - 1); };

// Solves for the q unknowns whose powers are exponent_of(0), exponent_of(1), ... The sum in row r and column
// c depends on the sum of their exponents only, so each exponent is summed once. Every sum that is a NaN
// becomes 0. The solution stands in the returned column.
template <class ExponentOf>
real_mat fitted(const vector* pts, tessarn::ulong n, tessarn::ulong q, ExponentOf exponent_of, real marker) {
  real_mat b;
  b.create(1, q);
  real_sqmat a;
  a.create(q);
  if (q == 0) return b;
  tessarn::detail::power_sums sums(2 * exponent_of(q - 1) + 1);
  sums.add(pts, n, marker);
  for (tessarn::ulong r = 0; r < q; ++r) {
    for (tessarn::ulong c = 0; c < q; ++c)
      a.getData()[static_cast<std::size_t>(r) * q + c] = computed(sums.power(exponent_of(r) + exponent_of(c)));
    b.getData()[r] = computed(sums.moment(exponent_of(r)));
  }
  a.solve(b);
  return b;
}

}  // namespace

void binom::create(vector* pts, ulong n, ulong m) {
  tessarn::detail::require_countable(m, m);
  create(static_cast<slong>(m));
  constexpr real marker = -1;
  const real_mat solution = fitted(pts, n, m, full_power, marker);
  for (ulong r = 0; r < m; ++r) set(static_cast<slong>(r), solution.getData()[r]);
}

void binom::createtan(vector* pts, ulong n, ulong m) {
  const ulong q = m / 2 + 1;
  tessarn::detail::require_countable(q, q);
  create(static_cast<slong>(m));
  const real_mat solution = fitted(pts, n, q, odd_power, std::numeric_limits<real>::quiet_NaN());
  for (ulong r = 0; r < q; ++r) set(static_cast<slong>(odd_power(r)), solution.getData()[r]);
}
