// The polynomial fits: normal equations from power sums, solved by the square solver.
#include <limits>

#include "core/storage.h"
#include "matrix/linear_system.h"
#include "poly/power_sums.h"
#include "tessarn/poly.h"

using tessarn::real;
using tessarn::slong;
using tessarn::detail::linear_system;

namespace {

// The exponent of unknown r: of all powers for a full fit; of the constant and the odd powers for a tangent fit.
constexpr auto full_power = [](tessarn::ulong r) { return static_cast<unsigned>(r); };
constexpr auto odd_power = [](tessarn::ulong r) { return r == 0 ? 0u : static_cast<unsigned>(2 * r - 1); };

// Solves for the unknowns whose powers are exponent_of(0), exponent_of(1), ... by the normal equations: entry (r, c) is
// the sum of x^(e_r + e_c), the right-hand side the sum of x^(e_r) y. An entry depends on the sum of the exponents
// only, so each exponent is summed once.
template <class ExponentOf>
void fit(const vector* pts, tessarn::ulong n, ExponentOf exponent_of, real marker, linear_system& system) {
  const auto q = static_cast<tessarn::ulong>(system.size());
  if (q == 0) return;
  tessarn::detail::power_sums sums(2 * exponent_of(q - 1) + 1);
  sums.add(pts, n, marker);
  sums.close();
  for (tessarn::ulong r = 0; r < q; ++r) {
    for (tessarn::ulong c = 0; c < q; ++c) system.row(r)[c] = sums.power(exponent_of(r) + exponent_of(c));
    system.right()[r] = sums.moment(exponent_of(r));
  }
  system.solve();
}

}  // namespace

void binom::create(vector* pts, tessarn::ulong n, tessarn::ulong m) {
  tessarn::detail::require_countable(m, m);
  create(static_cast<slong>(m));
  constexpr real marker = -1;
  linear_system system(m);
  fit(pts, n, full_power, marker, system);
  for (tessarn::ulong r = 0; r < m; ++r) set(static_cast<slong>(r), system.right()[r]);
}

void binom::createtan(vector* pts, tessarn::ulong n, tessarn::ulong m) {
  const tessarn::ulong q = m / 2 + 1;
  tessarn::detail::require_countable(q, q);
  create(static_cast<slong>(m));
  linear_system system(q);
  fit(pts, n, odd_power, std::numeric_limits<real>::quiet_NaN(), system);
  for (tessarn::ulong r = 0; r < q; ++r) set(static_cast<slong>(odd_power(r)), system.right()[r]);
}
