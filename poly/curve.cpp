#include "poly/curve.h"

#include "core/access.h"
#include "core/power.h"
#include "tessarn/poly.h"

namespace tessarn::detail {
namespace {

// The powers 1, x, x^2, ... one after the other, each correctly rounded. Short chains are the quick ones of
// poly/chains.h; a power in doubt is formed for itself.
class power_chain {
 public:
  power_chain(real x, slong highest) noexcept
      : x_(x),
        safe_(chain_is_safe(x, static_cast<unsigned>(highest))),
        quick_(highest < 24),
        halves_(quick_ ? cut(product(x, 1 - static_cast<real>(0x1p-25)), x) : split(x)) {}

  real operator()(unsigned k) noexcept {
    if (k == 0) return 1;
    if (k == 1) {
      w_ = quick_ ? halves_ : double_double{x_, 0};
      return x_;
    }
    if (!safe_) return power(x_, k);
    if (quick_) return quick_step(k);
    w_ = times(w_, x_, halves_);
    return w_.high;
  }

 private:
  // v as the leading bits of approximation and the rest.
  static double_double cut(real approximation, real v) noexcept {
    const real high = split(approximation).high;
    return {high, v - high};
  }
  real quick_step(unsigned k) noexcept {
    const real s = product(w_.high, halves_.high);
    const real t = product(w_.high, halves_.low) + product(w_.low, x_);
    real rounded = product(x_, x_);
    if (k > 2) {
      const real margin = static_cast<real>(k) * static_cast<real>(0x1p-49);
      rounded = s + product(t, 1 + margin);
      if (rounded != s + product(t, 1 - margin)) rounded = power(x_, k);
    }
    w_ = cut(rounded, s);
    w_.low += t;
    return rounded;
  }

  real x_;
  bool safe_, quick_;
  double_double halves_;
  double_double w_{1, 0};
};

}  // namespace

slong falling_factorial(slong i, unsigned k) noexcept {
  std::uint32_t f = 1;
  for (unsigned j = 0; j < k; ++j) f *= static_cast<std::uint32_t>(i) - j;
  return static_cast<slong>(f);
}

real derivative_at(coefficients p, unsigned k, real x) noexcept {
  const auto first = static_cast<slong>(k);
  if (p.n <= first) return 0;
  power_chain powers(x, p.n - 1 - first);
  real s = 0;
  for (slong i = first; i < p.n; ++i)
    s += powers(static_cast<unsigned>(i - first)) * static_cast<real>(falling_factorial(i, k)) * p.cof[i];
  return s;
}

derivatives derivatives_at(coefficients p, real x) noexcept {
  derivatives d{0, 0, 0};
  if (p.n < 2) return d;
  power_chain powers(x, p.n - 2);
  for (slong e = 0; e + 1 < p.n; ++e) {
    const real power = powers(static_cast<unsigned>(e));
    d.first += power * static_cast<real>(falling_factorial(e + 1, 1)) * p.cof[e + 1];
    if (e + 2 < p.n) d.second += power * static_cast<real>(falling_factorial(e + 2, 2)) * p.cof[e + 2];
    if (e + 3 < p.n) d.third += power * static_cast<real>(falling_factorial(e + 3, 3)) * p.cof[e + 3];
  }
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
