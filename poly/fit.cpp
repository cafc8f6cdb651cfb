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

// The points that take part in create(), and in createtan().
struct unmarked {
  static constexpr real marker = -1;  // the abscissa of a point that takes no part
  bool operator()(real x) const { return (x != marker) & (x == x); }
};
struct every {
  static constexpr real marker = std::numeric_limits<real>::quiet_NaN();
  bool operator()(real) const { return true; }
};

constexpr auto full_power = [](tessarn::ulong r) { return static_cast<unsigned>(r); };
constexpr auto odd_power = [](tessarn::ulong r) { return r == 0 ? 0u : static_cast<unsigned>(2 * r - 1); };

// Solves for the q unknowns whose powers are exponent_of(0), exponent_of(1), ... The sum in row r and column
// c depends on the sum of their exponents only, so each exponent is summed once. Every sum that is a NaN
// becomes 0. The solution stands in the returned column.
template <class ExponentOf, class Accept>
real_mat fitted(const vector* pts, tessarn::ulong n, tessarn::ulong q, ExponentOf exponent_of, Accept accept) {
  real_mat b;
  b.create(1, q);
  real_sqmat a;
  a.create(q);
  if (q == 0) return b;
  const unsigned highest = exponent_of(q - 1);
  tessarn::detail::power_sums sums(2 * highest + 1, highest + 1);
  for (std::size_t i = 0; i < n;) {
    const std::size_t end = std::min<std::size_t>(n, i + tessarn::detail::point_block);
    if (end - i == tessarn::detail::point_block && sums.add_block(pts + i, Accept::marker)) i = end;
    for (; i < end; ++i) sums.add(pts[i].x, pts[i].y, accept(pts[i].x));
  }
  sums.flush();
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
  const real_mat solution =
      fitted(pts, n, m, full_power, unmarked{});
  for (ulong r = 0; r < m; ++r) set(static_cast<slong>(r), solution.getData()[r]);
}

void binom::createtan(vector* pts, ulong n, ulong m) {
  const ulong q = m / 2 + 1;
  tessarn::detail::require_countable(q, q);
  create(static_cast<slong>(m));
  const real_mat solution = fitted(pts, n, q, odd_power, every{});
  for (ulong r = 0; r < q; ++r) set(static_cast<slong>(odd_power(r)), solution.getData()[r]);
}
