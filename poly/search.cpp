// The searches of the curve analysis: zeros and extreme points of the curvature.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "core/binary_form.h"
#include "core/power_chain.h"
#include "poly/curve.h"
#include "tessarn/detail/rounding.h"
#include "tessarn/poly.h"

using tessarn::real;
using tessarn::detail::block_curvature;
using tessarn::detail::block_values;
using tessarn::detail::coefficients;
using tessarn::detail::exponent_of;
using tessarn::detail::long_block;
using tessarn::detail::point_block;
using tessarn::detail::poly_kernels_in_use;
using tessarn::detail::scaled;

namespace {

constexpr real not_found = -1;
constexpr real half = static_cast<real>(0.5);
constexpr real refinement = static_cast<real>(0.01);

// Makes the step a hundredth. False for an infinite step, which would find its bracket again for ever.
bool refine(real& step) {
  const real coarse = step;
  step *= refinement;
  return step < coarse;
}

bool opposite_signs(real u, real v) { return (u > 0 && v < 0) || (u < 0 && v > 0); }

// A bound on the magnitude of the roots of a polynomial, at least four times the terms of M. Fujiwara (Ueber
// die obere Schranke des absoluten Betrages der Wurzeln einer algebraischen Gleichung, 1916), from exponents
// alone: beyond it the leading term is at least three times the sum of the others, so rounding cannot
// change the sign. Coefficients that are not finite keep their sign from 1 on.
real root_bound(const std::vector<real>& c) {
  std::size_t n = c.size();
  while (n > 0 && c[n - 1] == 0) --n;
  real bound = 1;
  if (n == 0 || !std::isfinite(c[n - 1])) return bound;
  for (std::size_t i = 0; i + 1 < n; ++i) {
    if (c[i] == 0 || !std::isfinite(c[i])) continue;
    const int difference = exponent_of(c[i]) - exponent_of(c[n - 1]) + 1;
    const real degree = static_cast<real>(n - 1 - i);
    const auto exponent = static_cast<int>(tessarn::detail::ceil_of(static_cast<real>(difference) / degree));
    bound = std::max(bound, scaled(static_cast<real>(4), exponent));
  }
  return bound;
}

// The product of two polynomials, for the numerator below alone: its bits decide nothing but a bound.
std::vector<real> product(const std::vector<real>& a, const std::vector<real>& b) {
  if (a.empty() || b.empty()) return {};
  std::vector<real> c(a.size() + b.size() - 1);
  for (std::size_t i = 0; i < a.size(); ++i)
    for (std::size_t j = 0; j < b.size(); ++j) c[i + j] += a[i] * b[j];
  return c;
}

std::vector<real> derived(const std::vector<real>& c) {
  std::vector<real> d;
  for (std::size_t i = 1; i < c.size(); ++i) d.push_back(static_cast<real>(i) * c[i]);
  return d;
}

// The numerator p''' (1 + p'^2) - 3 p' p''^2 of the curvature's derivative, as a polynomial.
std::vector<real> curvature_derivative_numerator(coefficients p) {
  const std::vector<real> d1 = derived(std::vector<real>(p.cof, p.cof + p.n));
  const std::vector<real> d2 = derived(d1);
  const std::vector<real> d3 = derived(d2);
  std::vector<real> s = product(d1, d1);
  if (s.empty()) s.push_back(0);
  s[0] += 1;
  std::vector<real> first = product(d3, s);
  const std::vector<real> second = product(d1, product(d2, d2));
  first.resize(std::max(first.size(), second.size()));
  for (std::size_t i = 0; i < second.size(); ++i) first[i] -= 3 * second[i];
  return first;
}

// The function that a scan samples:
//   f           its values at a block of abscissas,
//   last_root   a magnitude beyond which its sign does not change, so that a scan to infinity ends,
//   one_sign    whether it is known to have one sign in a whole long block.
struct value_scan {
  coefficients p;
  block_values f{p};
  real last_root() const { return root_bound(std::vector<real>(p.cof, p.cof + std::max<tessarn::slong>(p.n, 0))); }
  bool one_sign(double first, double step) const {
    if (p.n < 1) return false;
    const auto count = static_cast<std::size_t>(p.n);
    return poly_kernels_in_use().one_sign(tessarn::detail::as_doubles(p.cof), count, first, step);
  }
};

struct curvature_scan {
  coefficients p;
  block_curvature f{p, true};
  real last_root() const { return p.n < 1 ? 1 : root_bound(curvature_derivative_numerator(p)); }
  bool one_sign(double, double) const { return false; }
};

// How a scan ends: at its end, where a step no longer moves x, between two samples of opposite signs, at a zero.
enum class outcome { nothing, stalled, bracket, exact };

// Whether a scan includes its end.
enum class interval { closed, half_open };

// The exponent of a normal number as it is stored, 1023 too large.
int biased_exponent(double v) noexcept {
  std::uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  return static_cast<int>((bits >> 52) & 0x7FF);
}

// True when count additions first + step, + step, ... all add the same multiple of the unit of first.
// With first = k units and step = moved + rest, moved a multiple of the unit and |rest| below half of it, each sum of
// the chain rounds to the exact first + i moved, as long as it stays among the numbers with this unit: the
// abscissas are then independent. A rest of exactly half a unit would be rounded to even, now up and now down.
bool steps_are_equal(double first, double step, std::size_t count, double& moved) {
  moved = (first + step) - first;
  const double last = first + static_cast<double>(count) * moved;
  if (!(std::fabs(first) >= 1e-290 && std::fabs(first) < 1e290 && std::fabs(last) < 1e290)) return false;
  const int exponent = biased_exponent(first);
  if (biased_exponent(last) != exponent || (first < 0) != (last < 0)) return false;
  return std::fabs(step - moved) != tessarn::detail::power_of_two(exponent - 1023 - 53);
}

// The abscissas x, x + step, ... are a chain of additions; the samples are independent and evaluated a block at a
// time. The last sample of a block is the first of the next.
struct samples {
  double x[point_block];
  double f[point_block];

  void continue_from(double first, double step) {
    double moved = 0;
    if (steps_are_equal(first, step, point_block, moved)) {
      for (std::size_t i = 0; i < point_block; ++i) x[i] = first + static_cast<double>(static_cast<int>(i)) * moved;
      return;
    }
    for (double& v : x) {
      v = first;
      first += step;
    }
  }
};

// Passes over long blocks in which the samples rise to below the end and have one sign; returns the sample to go on
// from. A block begins with the last sample of the one before.
template <class Function>
double skipped(const Function& function, double first, double step, double end) {
  for (double moved = 0; steps_are_equal(first, step, long_block, moved) && moved > 0;) {
    const double last = first + static_cast<double>(long_block - 1) * moved;
    if (!(last < end) || !function.one_sign(first, moved)) break;
    first = last;
  }
  return first;
}

// Walks x = a, a + step, ... up to b until the function changes sign between two neighbours or is exactly 0: the first
// decision that a walk sample by sample would take. A NaN among the abscissas stalls it, too.
template <class Function>
outcome scan(const Function& function, real a, real b, real step, interval kind, real& x, real& next) {
  const bool bounded = b < std::numeric_limits<real>::infinity();
  const auto end = static_cast<double>(bounded ? b : std::max(a, function.last_root()) + step);
  samples s;
  for (auto from = static_cast<double>(a);; from = s.x[point_block - 1]) {
    s.continue_from(skipped(function, from, static_cast<double>(step), end), static_cast<double>(step));
    function.f(s.x, s.f);
    const std::size_t i = poly_kernels_in_use().first_event(s.x, s.f, end, kind == interval::half_open);
    if (i == point_block - 1) continue;
    if (kind == interval::half_open ? s.x[i] >= end : s.x[i] > end) return outcome::nothing;
    x = s.x[i];
    next = s.x[i + 1];
    if (opposite_signs(s.f[i], s.f[i + 1])) return outcome::bracket;
    return s.f[i] == 0 ? outcome::exact : outcome::stalled;
  }
}

// Whether nothing but the first two coefficients is there.
bool is_straight(const real* cof, tessarn::slong n) {
  return std::all_of(cof + std::min<tessarn::slong>(n, 2), cof + n, [](real c) { return c == 0; });
}

}  // namespace

// Scans for a change of sign, then scans the bracket with a hundredth of the step, until the step is below eps.
real binom::find_zero(real a, real b, real step, real eps) {
  step = std::fabs(step);
  const value_scan f{{cof, cofcnt}};
  for (bool bracketed = false; !(step < eps); bracketed = true) {
    if (a > b) return not_found;
    real x = a, next = a;
    const outcome found = scan(f, a, b, step, interval::closed, x, next);
    if (found == outcome::exact) return x;
    if (found == outcome::stalled && bracketed) break;  // no finer bracket exists
    if (found != outcome::bracket) return not_found;
    a = x;
    b = next;
    if (!refine(step)) return not_found;
  }
  return (a + b) * half;
}

// Searches a zero of the derivative of the curvature as find_zero does, with the documented differences: the sign of
// the step counts, the end of the interval takes no part, and a NaN eps ends the search with the first bracket.
real binom::find_extrpoint_arc(real a, real b, real step, real eps) {
  const curvature_scan f{{cof, cofcnt}};
  for (bool bracketed = false; !(step < eps); bracketed = true) {
    real x = a, next = a;
    const outcome found = scan(f, a, b, step, interval::half_open, x, next);
    if (found == outcome::exact) return x;
    if (found == outcome::stalled && bracketed) break;
    if (found != outcome::bracket) return not_found;
    a = x;
    b = next;
    if (!refine(step)) return not_found;
    if (!(step >= eps)) break;
  }
  return (a + b) * half;
}

// Every search that starts at an extreme point finds the next one, so one walk along their chain visits all that nested
// searches would visit, and the first of largest magnitude is the same. Nested searches never end where the derivative
// of the curvature is exactly 0 at their start, which they find again: the walk goes on at the next point of the grid
// then, but not on a straight line, where there is nothing else.
real binom::find_high_hpoint_arc(real a, real b, real step, real eps) {
  real x = find_extrpoint_arc(a, b, step, eps);
  if (x == not_found) return not_found;
  const real end = b < std::numeric_limits<real>::infinity() ? b : curvature_scan{{cof, cofcnt}}.last_root();
  const bool scanned = !(step < eps) && !is_straight(cof, cofcnt);
  real best = x;
  real highest = arc(x);
  do {
    real next = find_extrpoint_arc(x, b, step, eps);
    const real behind = x + step;
    if (!(next > x) && next != not_found && scanned && behind < end) next = find_extrpoint_arc(behind, b, step, eps);
    if (next == not_found || !(next > x)) break;
    x = next;
    const real k = arc(x);
    if (std::fabs(k) > std::fabs(highest)) {
      best = x;
      highest = k;
    }
  } while (x < b);
  return best;
}
