// Chains of correctly rounded powers in lanes. docs/powers.md has the notation and the proofs.
#pragma once

#include "core/power_range.h"
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

#define TESSARN_NUMBER vec
#define TESSARN_FUNCTION TESSARN_INLINE
#include "core/double_double.inl"
#include "core/half_exponents.inl"
#undef TESSARN_NUMBER
#undef TESSARN_FUNCTION

// doubt, and a bit set in each lane where a and b differ.
TESSARN_INLINE mask with_difference(mask doubt, vec a, vec b) {
#if TESSARN_VECTOR_LANES
  return doubt | ((mask)a ^ (mask)b);
#else
  return doubt | (a != b);
#endif
}

// Chains by double-doubles, for any number of exponents. They give the powers e = 0 .. count - 1 of GROUP vectors of
// abscissas to use(e, powers), ascending. The vectors take their steps side by side: a step is a chain of dependent
// operations, whose latency one vector alone would wait for.
template <size_t GROUP>
struct double_double_chains {
  vec power[GROUP];

  template <class Use>
  TESSARN_MEMBER void run(const vec* x, size_t count, const Use& use) {
    double_double parts[GROUP], w[GROUP];
    for (size_t v = 0; v < GROUP; ++v) {
      parts[v] = split(x[v]);
      power[v] = broadcast(1);
      w[v] = {x[v], vec{}};
    }
    if (count > 0) use(0, power);
    for (size_t e = 1; e < count; ++e) {
      for (size_t v = 0; v < GROUP; ++v) power[v] = w[v].high;
      use(e, power);
      for (size_t v = 0; v < GROUP; ++v) w[v] = next_power(w[v], x[v], parts[v]);
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

// Whether the chain of powers below EXPONENTS is safe for *v, or *v is 0, as are all its powers then. Abscissas are
// tested as integers, one by one: the vector units have enough to do.
template <size_t EXPONENTS>
TESSARN_INLINE bool chain_takes(const double* v) {
  // The second comparison is one of doubles: GCC computes both at once where two integers are compared. [[likely]]
  // keeps it out of the way, where it costs no jump.
  if (2 * bits_at(v) - safe_range<EXPONENTS>::least <= safe_range<EXPONENTS>::extent) [[likely]]
    return true;
  return *v == 0;
}

// Chains by half exponents have at most this many powers, from the power 0 on.
constexpr size_t max_half_count = 25;

// Chains by half exponents (core/half_exponents.inl), for abscissas whose chain is safe. They give what
// double_double_chains gives in less than half of the operations, as long as no lane is in doubt: the callers run
// others where doubt is set. COUNT is the number of powers where that is a compile-time constant, else 0.
template <size_t GROUP, size_t COUNT = 0>
struct half_exponent_chains {
  half_power power[max_half_count / 2 + 1][GROUP];
  vec last[GROUP];
  mask doubt = {};

  template <class Use>
  TESSARN_MEMBER void run(const vec* x, size_t count, const Use& use) {
    if (COUNT > 0) count = COUNT;
    if (count > 2) {
      begin(x, count);
    } else {
      for (size_t v = 0; v < GROUP; ++v) power[1][v].rounded = x[v];
    }
    finish(count, use);
  }

  // The first part, up to the factors of power 3, for more than two powers. A caller can begin the next points before
  // it finishes these: the two chains hide each other's latency.
  TESSARN_MEMBER void begin(const vec* x, size_t count) {
    const double margin = margin_of(count);
    for (size_t v = 0; v < GROUP; ++v) {
      power[1][v].rounded = x[v];
      power[2][v].rounded = x[v] * x[v];  // a square is rounded once as it is
      if (count < 4) continue;
      power[1][v] = first_half_power(x[v], margin);
    }
    if (count < 4) return;
    for (size_t v = 0; v < GROUP; ++v) power[2][v] = as_factor(power[2][v].rounded, square_of(power[1][v]));
  }

  // The second part, which gives all powers to use.
  template <class Use>
  TESSARN_MEMBER void finish(size_t count, const Use& use) {
    if (COUNT > 0) count = COUNT;
    for (size_t v = 0; v < GROUP; ++v) last[v] = broadcast(1);
    if (count > 0) use(0, last);
    if (count > 1) use_stored(1, use);
    if (count > 2) use_stored(2, use);
    if (count < 4) return;
    if constexpr (COUNT > 3)
      known_steps<3>(use);
    else
      for (size_t e = 3; e < count; ++e) step(e, count, use);
  }

 private:
  TESSARN_MEMBER static double margin_of(size_t count) { return count > 17 ? 0x1p-47 : 0x1p-48; }
  template <class Use>
  TESSARN_MEMBER void use_stored(size_t e, const Use& use) {
    for (size_t v = 0; v < GROUP; ++v) last[v] = power[e][v].rounded;
    use(e, last);
  }
  // Steps with indices that are compile-time constants, so that all powers stay in registers.
  template <size_t E, class Use>
  TESSARN_MEMBER void known_steps(const Use& use) {
    step(E, COUNT, use);
    if constexpr (E + 1 < COUNT) known_steps<E + 1>(use);
  }
  // Power e of powers e / 2 and e - e / 2. It is kept only where a later power is made of it.
  template <class Use>
  TESSARN_MEMBER void step(size_t e, size_t count, const Use& use) {
    const size_t a = e / 2, b = e - a;
    const double margin = margin_of(count);
    for (size_t v = 0; v < GROUP; ++v) {
      const unrounded_power p = a == b ? square_of(power[a][v]) : product_of(power[a][v], power[b][v]);
      last[v] = p.s + p.t;
      doubt = with_difference(doubt, last[v], beyond_power(p, margin));
      if (2 * e > count) continue;
      power[e][v] = as_factor(last[v], p);
    }
    use(e, last);
  }
};

}  // namespace tessarn::detail::TESSARN_ISA
