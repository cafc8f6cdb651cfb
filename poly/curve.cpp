#include "poly/curve.h"

#include "core/access.h"
#include "core/power.h"
#include "tessarn/poly.h"

namespace tessarn::detail {

slong falling_factorial(slong i, unsigned k) noexcept {
  std::uint32_t f = 1;
  for (unsigned j = 0; j < k; ++j) f *= static_cast<std::uint32_t>(i) - j;
  return static_cast<slong>(f);
}

namespace {

// v as the leading bits of approximation and the rest.
inline double_double cut(real approximation, real v) noexcept {
  const real high = leading_bits(approximation);
  return {high, v - high};
}

// Gives the powers e = 0 .. highest of x to use(e, power), in this order, each correctly rounded. Short chains are the
// quick ones of poly/chains.h; a power in doubt is formed for itself.
template <class Use>
inline void each_power(real x, slong highest, Use use) noexcept {
  use(0, static_cast<real>(1));
  if (highest < 1) return;
  use(1, x);
  if (highest < 2) return;
  if (!chain_is_safe(x, static_cast<unsigned>(highest))) {
    for (slong e = 2; e <= highest; ++e) use(e, power(x, static_cast<unsigned>(e)));
    return;
  }
  if (highest >= 24) {
    const double_double halves = split(x);
    double_double w{x, 0};
    for (slong e = 2; e <= highest; ++e) {
      w = times(w, x, halves);
      use(e, w.high);
    }
    return;
  }
  const double_double halves = cut(product(x, 1 - static_cast<real>(0x1p-25)), x);
  const real square = product(x, x);
  use(2, square);
  double_double w = cut(square, product(halves.high, halves.high));
  w.low += product(halves.high, halves.low) + product(halves.low, x);
  real margin = static_cast<real>(0x1p-48);
  for (slong e = 3; e <= highest; ++e) {
    margin += static_cast<real>(0x1p-49);
    const real s = product(w.high, halves.high);
    const real t = product(w.high, halves.low) + product(w.low, x);
    real rounded = s + product(t, 1 + margin);
    if (rounded != s + product(t, 1 - margin)) rounded = power(x, static_cast<unsigned>(e));
    use(e, rounded);
    w = cut(rounded, s);
    w.low += t;
  }
}

template <unsigned K>
real derivative(coefficients p, real x) noexcept {
  real s = 0;
  each_power(x, p.n - 1 - static_cast<slong>(K), [&](slong e, real power) {
    const slong i = e + static_cast<slong>(K);
    s += power * static_cast<real>(falling_factorial(i, K)) * p.cof[i];
  });
  return s;
}

}  // namespace

real derivative_at(coefficients p, unsigned k, real x) noexcept {
  if (p.n <= static_cast<slong>(k)) return 0;
  switch (k) {
    case 1: return derivative<1>(p, x);
    case 2: return derivative<2>(p, x);
    case 3: return derivative<3>(p, x);
    default: return derivative<4>(p, x);
  }
}

derivatives derivatives_at(coefficients p, real x) noexcept {
  derivatives d{0, 0, 0};
  if (p.n < 2) return d;
  each_power(x, p.n - 2, [&](slong e, real power) {
    d.first += power * static_cast<real>(falling_factorial(e + 1, 1)) * p.cof[e + 1];
    if (e + 2 < p.n) d.second += power * static_cast<real>(falling_factorial(e + 2, 2)) * p.cof[e + 2];
    if (e + 3 < p.n) d.third += power * static_cast<real>(falling_factorial(e + 3, 3)) * p.cof[e + 3];
  });
  return d;
}

real curvature(const derivatives& d) noexcept {
  const real s = 1 + d.first * d.first;
  return d.second / (std::sqrt(s) * s);
}

real curvature_derivative(const derivatives& d) noexcept {
  const real square = d.first * d.first;
  const real fourth = square * square;
  const real s = 1 + square;
  const real root = std::sqrt(s);
  const real numerator = d.third * (root * s) - (3 * d.first * d.second) * (root * d.second);
  const real denominator = (fourth + square) * 3 + 1 + fourth * square;
  return numerator / denominator;
}

}  // namespace tessarn::detail

using tessarn::real;
using tessarn::detail::coefficients;
using tessarn::detail::derivatives;

real binom::func_1(real x) { return tessarn::detail::derivative_at({cof, cofcnt}, 1, x); }
real binom::func_2(real x) { return tessarn::detail::derivative_at({cof, cofcnt}, 2, x); }
real binom::func_3(real x) { return tessarn::detail::derivative_at({cof, cofcnt}, 3, x); }
real binom::func_4(real x) { return tessarn::detail::derivative_at({cof, cofcnt}, 4, x); }

real binom::arc(real x) { return tessarn::detail::curvature(tessarn::detail::derivatives_at({cof, cofcnt}, x)); }

real binom::arc_1(real x) {
  return tessarn::detail::curvature_derivative(tessarn::detail::derivatives_at({cof, cofcnt}, x));
}

vector binom::normale(real x) {
  const derivatives d = tessarn::detail::derivatives_at({cof, cofcnt}, x);
  const real s = 1 + d.first * d.first;
  return {-(d.first * s) / d.second, s / d.second};
}
