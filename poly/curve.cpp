// Derivatives and curvature of a polynomial at one abscissa.
#include "poly/curve.h"

#include "matrix/names.h"
#include "core/power.h"
#include "tessarn/poly.h"

namespace tessarn::detail {

slong falling_factorial(slong i, unsigned k) noexcept {
  std::uint32_t f = 1;
  for (unsigned j = 0; j < k; ++j) f *= static_cast<std::uint32_t>(i) - j;
  return static_cast<slong>(f);
}

namespace {

// A power with what the quick chains of poly/kernels/power_chains.inl make of it.
struct chained {
  real power, head, rest;
};

// Such a chain of a single abscissa. A power in doubt is formed for itself.
class chain {
 public:
  static constexpr slong most = 24;

  chain(real x, slong highest) noexcept
      : x_(x), margin_(static_cast<real>(highest > 16 ? 0x1p-47 : 0x1p-48)) {}
  chained first() const noexcept {
    const real head = leading_bits(product(x_, 1 - static_cast<real>(0x1p-25)));
    return {x_, head, product(x_ - head, 1 - margin_)};
  }
  // A square is rounded once as it is.
  chained second(const chained& a) const noexcept {
    const real s = product(a.head, a.head), head = leading_bits(s);
    return {product(x_, x_), head, (s - head) + product(a.rest, a.head + x_)};
  }
  // The product of a and b, power e.
  chained made(slong e, const chained& a, const chained& b) const noexcept {
    return rounded(e, product(a.head, b.head), product(b.head, a.rest) + product(b.rest, a.power));
  }
  chained square(slong e, const chained& a) const noexcept {
    return rounded(e, product(a.head, a.head), product(a.rest, a.head + a.power));
  }

 private:
  chained rounded(slong e, real s, real t) const noexcept {
    const real head = leading_bits(s);
    real power = s + t;
    if (power != s + product(t, 1 + 2 * margin_)) power = detail::power(x_, static_cast<unsigned>(e));
    return {power, head, (s - head) + t};
  }

  const real x_, margin_;
};

// The powers from 2 on.
template <class Use>
inline Use each_high_power(real x, slong highest, Use use) noexcept {
  if (!chain_is_safe(x, static_cast<unsigned>(highest))) {
    for (slong e = 2; e <= highest; ++e) use(e, power(x, static_cast<unsigned>(e)));
    return use;
  }
  if (highest > chain::most) {
    const double_double halves = split(x);
    double_double w{x, 0};
    for (slong e = 2; e <= highest; ++e) {
      w = times(w, x, halves);
      use(e, w.high);
    }
    return use;
  }
  const chain c(x, highest);
  chained p[chain::most / 2 + 1];
  p[1] = c.first();
  p[2] = c.second(p[1]);
  use(2, p[2].power);
  const chained third = c.made(3, p[1], p[2]);
  use(3, third.power);
  if (highest < 4) return use;
  const chained fourth = c.square(4, p[2]);
  use(4, fourth.power);
  p[3] = third;
  p[4] = fourth;
  for (slong e = 5; e <= highest; ++e) {
    const slong a = e / 2;
    const chained next = e % 2 == 0 ? c.square(e, p[a]) : c.made(e, p[a], p[a + 1]);
    use(e, next.power);
    if (2 * e <= highest + 1) p[e] = next;
  }
  return use;
}

// The powers 0 .. highest, which is 2 at most. A square is rounded once as it is.
template <class Use>
inline Use each_low_power(real x, slong highest, Use use) noexcept {
  use(0, static_cast<real>(1));
  if (highest < 1) return use;
  use(1, x);
  if (highest < 2) return use;
  use(2, product(x, x));
  return use;
}

// The powers 0 .. highest, which is 3 or 4, where the chain is safe: few enough to need no storage.
template <class Use>
inline Use each_of_few_powers(real x, slong highest, Use use) noexcept {
  use = each_low_power(x, 1, use);
  const chain c(x, highest);
  const chained first = c.first(), second = c.second(first);
  use(2, second.power);
  use(3, c.made(3, first, second).power);
  if (highest > 3) use(4, c.square(4, second).power);
  return use;
}

// Gives the powers e = 0 .. highest of x to use(e, power), in this order, each correctly rounded, and gives use back:
// as a value of its own it stays in registers.
template <class Use>
inline Use each_power(real x, slong highest, Use use) noexcept {
  if (highest < 3) return each_low_power(x, highest, use);
  return each_high_power(x, highest, each_low_power(x, 1, use));
}

template <unsigned K>
struct add_to_derivative {
  const real* cof;
  real sum = 0;
  void operator()(slong e, real power) noexcept {
    const slong i = e + static_cast<slong>(K);
    sum += power * static_cast<real>(falling_factorial(i, K)) * cof[i];
  }
};

template <unsigned K>
real derivative(coefficients p, real x) noexcept {
  const slong highest = p.n - 1 - static_cast<slong>(K);
  const add_to_derivative<K> use{p.cof};
  // [[likely]] keeps this short path first, before the prologue that saves registers.
  if (highest < 3) [[likely]] return each_low_power(x, highest, use).sum;
  if (highest < 5 && chain_is_safe<4>(x)) return each_of_few_powers(x, highest, use).sum;
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
