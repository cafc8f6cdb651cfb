// Derivatives and curvature of a polynomial at one abscissa.
#include "poly/curve.h"

#include <cmath>

#include "core/power_chain.h"
#include "tessarn/poly.h"

namespace tessarn::detail {

slong falling_factorial(slong i, unsigned k) noexcept {
  std::uint32_t f = 1;
  for (unsigned j = 0; j < k; ++j) f *= static_cast<std::uint32_t>(i) - j;
  return static_cast<slong>(f);
}

namespace {

// The terms of the K-th derivative, given the powers of x ascending. A struct, not a lambda: each_power hands it on by
// value, which keeps the sum in a register.
template <unsigned K>
struct add_to_derivative {
  const real* cof;
  real sum = 0;
  void operator()(slong e, real power) noexcept {
    const slong i = e + static_cast<slong>(K);
    sum += power * static_cast<real>(falling_factorial(i, K)) * cof[i];
  }
};

// By the shortest way for the number of powers: none needs a chain, or up to four need no storage, or any.
template <unsigned K>
real derivative(coefficients p, real x) noexcept {
  const slong highest = p.n - 1 - static_cast<slong>(K);
  const add_to_derivative<K> use{p.cof};
  // [[likely]] keeps this short path first, before the prologue that saves registers.
  if (highest < 3) [[likely]]
    return each_power_to_2(x, highest, use).sum;
  if (highest < 5 && chain_is_safe<4>(x)) return each_power_to_4(x, highest, use).sum;
  return each_power(x, highest, use).sum;
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

// One chain of powers for all three sums, each ascending.
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

// (p''' (1 + p'^2)^(3/2) - 3 p' p''^2 (1 + p'^2)^(1/2)) / (1 + p'^2)^3, the denominator multiplied out.
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
