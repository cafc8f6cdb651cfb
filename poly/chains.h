// Chains of correctly rounded powers in lanes, for the kernels of the polynomials; each build has its own.
#pragma once

#include "core/lanes.h"

namespace tessarn::detail::TESSARN_ISA {

// v with the lower 27 bits of its significand cleared: 26 are left.
TESSARN_INLINE vec leading_bits(vec v) {
#if defined(__GNUC__) || defined(__clang__)
  return (vec)((mask)v & ~(mask{} + 0x7FFFFFF));
#else
  union {
    double v;
    uint64_t bits;
  } cut = {v};
  cut.bits &= ~uint64_t{0x7FFFFFF};
  return cut.v;
#endif
}

// doubt, and a bit set where a and b differ.
TESSARN_INLINE mask with_difference(mask doubt, vec a, vec b) {
#if defined(__GNUC__) || defined(__clang__)
  return doubt | ((mask)a ^ (mask)b);
#else
  return doubt | (a != b);
#endif
}

// The same steps as in core/power.h.
struct pair {
  vec high, low;
};

TESSARN_INLINE pair split(vec x) {
  const vec high = leading_bits(x);
  return {high, x - high};
}

TESSARN_INLINE pair exact_product(vec a, vec x, pair halves) {
  const vec p = a * x;
  const pair b = split(a);
  const vec e = ((b.high * halves.high - p) + b.high * halves.low + b.low * halves.high) + b.low * halves.low;
  return {p, e};
}

TESSARN_INLINE pair times(pair w, vec x, pair halves) {
  const pair p = exact_product(w.high, x, halves);
  const vec t = p.low + w.low * x;
  const vec high = p.high + t;
  return {high, t - (high - p.high)};
}

// The chains give the powers e = 0 .. count - 1 of GROUP vectors of abscissas to use(e, powers), in this order. The
// vectors stand side by side to hide the latency of the steps.
template <size_t GROUP>
struct certain_chains {
  vec power[GROUP];

  // True: there is no doubt about any of the powers.
  template <class Use>
  TESSARN_MEMBER bool run(const double* from, size_t count, const Use& use) {
    vec x[GROUP];
    pair halves[GROUP], p[GROUP];
    for (size_t v = 0; v < GROUP; ++v) {
      x[v] = load(from + v * width);
      halves[v] = split(x[v]);
      power[v] = broadcast(1);
      p[v] = {x[v], vec{}};
    }
    if (count > 0) use(0, power);
    for (size_t e = 1; e < count; ++e) {
      for (size_t v = 0; v < GROUP; ++v) power[v] = p[v].high;
      use(e, power);
      for (size_t v = 0; v < GROUP; ++v) p[v] = times(p[v], x[v], halves[v]);
    }
    return true;
  }
};

// The same in half of the operations, for powers of which nearly all are far enough from the middle between two
// numbers to be rounded with 20 bits to spare; run() is false when one was not.
//
// A power is kept as head + rest, with a head of 26 bits, and x as head and rest likewise, but with a head so much
// smaller than x that its rest lies between 2^-25 |x| and 2^-24 |x|. In a step the product of the heads is exact, and
//     t = power_head x_rest + power_rest x
// lies between 2^-25.01 and 2^-23 of the power. A step rounds the first product by at most 2^-77 of the power, the
// second by 2^-77 (2^-78 from the power 3 on), their sum by 2^-76 and the rest by 2^-78, so the power e is off by at
// most e 2^-75 of itself. That is less than what e 2^-49 of t is, with the rounding of that product: the power lies
// between the sums with t made larger and smaller by this, and where both round to the same number so does the power.
template <size_t GROUP>
struct quick_chains {
  vec power[GROUP];
  vec x[GROUP], x_head[GROUP], x_rest[GROUP], head[GROUP], rest[GROUP];

  template <class Use>
  TESSARN_MEMBER bool run(const double* from, size_t count, const Use& use) {
    return none(doubts(from, count, use));
  }
  // Bits are set where there was doubt.
  template <class Use>
  TESSARN_MEMBER mask doubts(const double* from, size_t count, const Use& use) {
    mask doubt = {};
    if (count == 0) return doubt;
    for (size_t v = 0; v < GROUP; ++v) power[v] = broadcast(1);
    use(0, power);
    if (count == 1) return doubt;
    for (size_t v = 0; v < GROUP; ++v) {
      power[v] = x[v] = load(from + v * width);
      head[v] = x_head[v] = leading_bits(x[v] * broadcast(1 - 0x1p-25));
      rest[v] = x_rest[v] = x[v] - x_head[v];
    }
    use(1, power);
    if (count == 2) return doubt;
    // A square is rounded once as it is.
    for (size_t v = 0; v < GROUP; ++v) keep(v, x[v] * x[v], head[v] * x_head[v], remainder(v));
    use(2, power);
    double margin = 2 * 0x1p-49;
    for (size_t e = 3; e < count; ++e) {
      margin += 0x1p-49;
      doubt |= step(margin, e + 1 < count);
      use(e, power);
    }
    return doubt;
  }

 private:
  TESSARN_MEMBER vec remainder(size_t v) const { return head[v] * x_rest[v] + rest[v] * x[v]; }
  TESSARN_MEMBER void keep(size_t v, vec rounded, vec s, vec t) {
    power[v] = rounded;
    head[v] = leading_bits(rounded);
    rest[v] = (s - head[v]) + t;
  }
  // To the next power, from which the chain goes on or not; bits are set where it is in doubt.
  TESSARN_MEMBER mask step(double margin, bool goes_on) {
    const vec more = broadcast(1 + margin), less = broadcast(1 - margin);
    mask doubt = {};
    for (size_t v = 0; v < GROUP; ++v) {
      const vec s = head[v] * x_head[v];
      const vec t = remainder(v);
      const vec rounded = s + t * more;
      doubt = with_difference(doubt, rounded, s + t * less);
      if (goes_on)
        keep(v, rounded, s, t);
      else
        power[v] = rounded;
    }
    return doubt;
  }
};

}  // namespace tessarn::detail::TESSARN_ISA
