// Chains of correctly rounded powers in lanes, for the kernels of the polynomials; each build has its own.
#pragma once

#include "simd/lanes.h"

namespace tessarn::detail::TESSARN_ISA {

// v with the lower 27 bits of its significand cleared: 26 are left.
TESSARN_INLINE vec leading_bits(vec v) {
#if TESSARN_VECTOR_LANES
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
#if TESSARN_VECTOR_LANES
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

  template <class Use>
  TESSARN_MEMBER void run(const vec* x, size_t count, const Use& use) {
    pair halves[GROUP], p[GROUP];
    for (size_t v = 0; v < GROUP; ++v) {
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
  }
};

TESSARN_INLINE uint64_t bits_at(const double* p) {
#if TESSARN_VECTOR_LANES
  typedef uint64_t aliasing_uint64 __attribute__((may_alias));
  return *reinterpret_cast<const aliasing_uint64*>(p);
#else
  union {
    double v;
    uint64_t bits;
  } both = {*p};
  return both.bits;
#endif
}

// Whether the chains of powers below EXPONENTS are safe for v (core/power.h), or v is 0, and all higher powers.
// On numbers one by one, since the units of the vectors have enough to do.
template <size_t EXPONENTS>
TESSARN_INLINE bool chain_takes(const double* v) {
  constexpr uint64_t limit = 960 / EXPONENTS, least = (1023 - limit) << 53, extent = 2 * limit << 53;
  // The second comparison is one of doubles, or GCC does both where the first would do. Told that it is seldom reached,
  // GCC puts it out of the way, where it costs no jump.
  if (2 * bits_at(v) - least <= extent) [[likely]] return true;
  return *v == 0;
}

// Quick chains have at most this many powers, from the power 0 on.
constexpr size_t most_quick = 25;

// The powers of GROUP vectors of abscissas in less than half of the operations, where the chain is safe and nearly all
// powers are far enough from the middle between two numbers to be rounded with 20 bits to spare; doubts are collected.
// COUNT is the number of powers where that is a compile-time constant.
//
// A power is kept as head + rest, the head of 26 bits, and made of two others, a and b, of nearly half of its exponent:
//     s = head_a head_b, which is exact, and t = head_b rest_a + rest_b power_a
// with power_a for head_a + rest_a. The head of x is made so small that its rest lies between 2^-25 |x| and 2^-24 |x|,
// and then taken a margin m = 2^-48 of itself too small; later heads are those of s, so that rests have the sign of
// their power. All that is added is of one sign, and relative errors only pass on: with the rounding of a product, a
// power and a sum t is off by 3 more roundings than the rests, and a rest by 1 more than its t. The exponents up to 16
// are halved at most four times, which makes less than 15 roundings of 2^-53 in t. With r = rest_x / x the rest of
// power e is below (2 e - 1) r of it, since cutting s adds less than r, and so t is below 2 e r of the power; it is
// above (1 - 2^-18) e r of it, since the heads are not above the powers of that of x. What t lacks by the smaller rest
// of x is m e r of the power, that is more than m t / 2 and more than those roundings, but with them less than 1.5 m t.
// So the power lies between s + t and s + (1 + 2 m) t, and where both round to the same number so does it. Exponents up
// to 24 are halved five times, in less than 19 roundings, and have twice the margin.
template <size_t GROUP, size_t COUNT = 0>
struct quick_chains {
  vec power[most_quick / 2 + 1][GROUP], head[most_quick / 2 + 1][GROUP], rest[most_quick / 2 + 1][GROUP];
  vec last[GROUP];
  mask doubt = {};

  template <class Use>
  TESSARN_MEMBER void run(const vec* x, size_t count, const Use& use) {
    if (COUNT > 0) count = COUNT;
    if (count > 2) {
      begin(x, count);
    } else {
      for (size_t v = 0; v < GROUP; ++v) power[1][v] = x[v];
    }
    finish(count, use);
  }
  // The first part, up to what the power 3 is made of, for more than two powers.
  TESSARN_MEMBER void begin(const vec* x, size_t count) {
    const double margin = margin_of(count);
    for (size_t v = 0; v < GROUP; ++v) {
      power[1][v] = x[v];
      power[2][v] = x[v] * x[v];
      if (count < 4) continue;
      head[1][v] = leading_bits(x[v] * broadcast(1 - 0x1p-25));
      rest[1][v] = (x[v] - head[1][v]) * broadcast(1 - margin);
    }
    if (count < 4) return;
    // A square is rounded once as it is.
    for (size_t v = 0; v < GROUP; ++v) keep(2, v, head[1][v] * head[1][v], rest[1][v] * (head[1][v] + x[v]));
  }
  // The rest.
  template <class Use>
  TESSARN_MEMBER void finish(size_t count, const Use& use) {
    if (COUNT > 0) count = COUNT;
    for (size_t v = 0; v < GROUP; ++v) last[v] = broadcast(1);
    if (count > 0) use(0, last);
    if (count > 1) use(1, power[1]);
    if (count > 2) use(2, power[2]);
    if (count < 4) return;
    if constexpr (COUNT > 3)
      known_steps<3>(use);
    else
      for (size_t e = 3; e < count; ++e) step(e, count, use);
  }

 private:
  TESSARN_MEMBER static double margin_of(size_t count) { return count > 17 ? 0x1p-47 : 0x1p-48; }
  template <size_t E, class Use>
  TESSARN_MEMBER void known_steps(const Use& use) {
    step(E, COUNT, use);
    if constexpr (E + 1 < COUNT) known_steps<E + 1>(use);
  }
  template <class Use>
  TESSARN_MEMBER void step(size_t e, size_t count, const Use& use) {
    const size_t a = e / 2, b = e - a;
    const double margin = margin_of(count);
    for (size_t v = 0; v < GROUP; ++v) {
      const vec s = head[a][v] * head[b][v];
      const vec t = a == b ? rest[a][v] * (head[a][v] + power[a][v])
                           : head[b][v] * rest[a][v] + rest[b][v] * power[a][v];
      last[v] = s + t;
      doubt = with_difference(doubt, last[v], s + t * broadcast(1 + 2 * margin));
      if (2 * e > count) continue;
      power[e][v] = last[v];
      keep(e, v, s, t);
    }
    use(e, last);
  }
  TESSARN_MEMBER void keep(size_t e, size_t v, vec s, vec t) {
    head[e][v] = leading_bits(s);
    rest[e][v] = (s - head[e][v]) + t;
  }
};

}  // namespace tessarn::detail::TESSARN_ISA
