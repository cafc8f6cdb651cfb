// Chains of correctly rounded powers of one number: for x^k alone and for all powers up to x^k. The kernels have the
// same chains in lanes (poly/kernels/power_chains.inl). docs/powers.md explains both.
#pragma once

#include <cstdint>
#include <cstring>

#include "core/power.h"
#include "core/power_range.h"
#include "tessarn/scalar.h"

namespace tessarn::detail {

// x with the lower 27 bits of its significand cleared. Uses a two-lane vector so that the value stays in a
// floating-point register: a move to an integer register would add its latency to every step of a chain of powers.
inline real leading_bits(real x) noexcept {
#if defined(__GNUC__) || defined(__clang__)
  typedef double two __attribute__((vector_size(16)));
  typedef std::int64_t two_bits __attribute__((vector_size(16)));
  const two v = {static_cast<double>(x), 0};
  return ((two)((two_bits)v & ~(two_bits{} + 0x7FFFFFF)))[0];
#else
  std::uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  bits &= ~std::uint64_t{0x7FFFFFF};
  std::memcpy(&x, &bits, sizeof x);
  return x;
#endif
}

#define TESSARN_NUMBER real
#define TESSARN_FUNCTION inline
#include "core/double_double.inl"
#include "core/half_exponents.inl"
#undef TESSARN_NUMBER
#undef TESSARN_FUNCTION

// Whether x, x^2, ..., x^k are safe, for any k: judged by the exponent of x alone, which excludes some safe x near the
// ends of the range, zeros and NaN.
inline bool chain_is_safe(real x, unsigned k) noexcept {
  std::uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  const int exponent = static_cast<int>((bits >> 52) & 0x7FF) - 1023;
  const int magnitude = exponent >= 0 ? exponent + 1 : -exponent;
  return static_cast<std::uint64_t>(magnitude) * k <= safe_exponent_range;
}

// chain_is_safe in one comparison, for an exponent that is a compile-time constant.
template <unsigned K>
inline bool chain_is_safe(real x) noexcept {
  std::uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  return 2 * bits - safe_range<K>::least <= safe_range<K>::extent;
}

// A chain by half exponents for one x. A power in doubt is formed on its own.
class half_exponent_chain {
 public:
  static constexpr slong max_exponent = 24;

  half_exponent_chain(real x, slong highest) noexcept : x_(x), margin_(highest > 16 ? 0x1p-47 : 0x1p-48) {}
  half_power first() const noexcept { return first_half_power(x_, margin_); }
  // A square is rounded once as it is, and never in doubt.
  half_power second(const half_power& a) const noexcept { return as_factor(x_ * x_, square_of(a)); }
  half_power product(slong e, const half_power& a, const half_power& b) const noexcept {
    return rounded(e, product_of(a, b));
  }
  half_power square(slong e, const half_power& a) const noexcept { return rounded(e, square_of(a)); }

 private:
  half_power rounded(slong e, const unrounded_power& p) const noexcept {
    real v = p.s + p.t;
    if (v != beyond_power(p, margin_)) v = power(x_, static_cast<unsigned>(e));
    return as_factor(v, p);
  }

  const real x_;
  const double margin_;
};

// The functions below give powers of x to use(e, power), ascending in e and each correctly rounded, and give use back:
// as a value of its own it stays in registers, where a reference would be stored between the steps.

// The powers 0 .. highest, which is 2 at most, for any x. A square is rounded once as it is.
template <class Use>
inline Use each_power_to_2(real x, slong highest, Use use) noexcept {
  use(0, static_cast<real>(1));
  if (highest < 1) return use;
  use(1, x);
  if (highest < 2) return use;
  use(2, x * x);
  return use;
}

// The powers 0 .. highest, which is 3 or 4, for x whose chain is safe: few enough to need no storage.
template <class Use>
inline Use each_power_to_4(real x, slong highest, Use use) noexcept {
  use = each_power_to_2(x, 1, use);
  const half_exponent_chain chain(x, highest);
  const half_power first = chain.first(), second = chain.second(first);
  use(2, second.rounded);
  use(3, chain.product(3, first, second).rounded);
  if (highest > 3) use(4, chain.square(4, second).rounded);
  return use;
}

// The powers 2 .. highest, for any x and any highest from 3 on: one by one where the chain is not safe, by
// double-doubles where the margin of half exponents is not proved. One function that is too large to be inlined: in
// parts it makes the short paths of its callers save registers for it, which takes them a third longer.
template <class Use>
inline Use each_power_from_2(real x, slong highest, Use use) noexcept {
  if (!chain_is_safe(x, static_cast<unsigned>(highest))) {
    for (slong e = 2; e <= highest; ++e) use(e, power(x, static_cast<unsigned>(e)));
    return use;
  }
  if (highest > half_exponent_chain::max_exponent) {
    const double_double parts = split(x);
    double_double w{x, 0};
    for (slong e = 2; e <= highest; ++e) {
      w = next_power(w, x, parts);
      use(e, w.high);
    }
    return use;
  }
  const half_exponent_chain chain(x, highest);
  half_power p[half_exponent_chain::max_exponent / 2 + 1];
  p[1] = chain.first();
  p[2] = chain.second(p[1]);
  use(2, p[2].rounded);
  const half_power third = chain.product(3, p[1], p[2]);
  use(3, third.rounded);
  if (highest < 4) return use;
  const half_power fourth = chain.square(4, p[2]);
  use(4, fourth.rounded);
  p[3] = third;
  p[4] = fourth;
  for (slong e = 5; e <= highest; ++e) {
    const slong a = e / 2;
    const half_power next = e % 2 == 0 ? chain.square(e, p[a]) : chain.product(e, p[a], p[a + 1]);
    use(e, next.rounded);
    if (2 * e <= highest + 1) p[e] = next;  // a later power is made of it
  }
  return use;
}

// The powers 0 .. highest, for any x.
template <class Use>
inline Use each_power(real x, slong highest, Use use) noexcept {
  if (highest < 3) return each_power_to_2(x, highest, use);
  return each_power_from_2(x, highest, each_power_to_2(x, 1, use));
}

}  // namespace tessarn::detail
