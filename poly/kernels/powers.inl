// The powers of a block of abscissas, in lanes.
#pragma once

#include "poly/kernels/kernels.h"
#include "poly/kernels/power_chains.inl"

namespace tessarn::detail::TESSARN_ISA {
namespace {

bool in_range(const double* x, double low, double high) {
#if TESSARN_VECTOR_LANES
  // Magnitudes are ordered as their bits are. A difference of bits is below 0 where one is out of range; the last
  // factor is below 0 but for zeros, which are in range.
  const mask least = (mask)broadcast(low), end = (mask)broadcast(high) - 1;
  mask outside = {};
  for (size_t i = 0; i < point_block; i += width) {
    const mask magnitude = (mask)absolute(load(x + i));
    outside |= (end - magnitude) | ((magnitude - least) & (mask{} - magnitude));
  }
  return none(outside & (mask{} + INT64_MIN));
#else
  bool all = true;
  for (size_t i = 0; i < point_block; ++i) {
    const double magnitude = x[i] < 0 ? -x[i] : x[i];
    all &= magnitude < high && (magnitude >= low || magnitude == 0);
  }
  return all;
#endif
}

// Gives the powers of GROUP vectors of abscissas to use(e, powers), which must bear to get them twice: a group in which
// a power is in doubt is run again by double-doubles.
template <size_t GROUP, size_t COUNT = 0, class Use>
TESSARN_INLINE void run_chains(const double* from, size_t count, const Use& use) {
  vec x[GROUP];
  for (size_t v = 0; v < GROUP; ++v) x[v] = load(from + v * width);
  if (count <= max_half_count) {
    half_exponent_chains<GROUP, COUNT> halves;
    halves.run(x, count, use);
    if (none(halves.doubt)) return;
  }
  double_double_chains<GROUP> doubles;
  doubles.run(x, count, use);
}

// Stores the powers from 2 on in their rows.
template <size_t GROUP>
struct store_powers {
  double* to;
  TESSARN_MEMBER void operator()(size_t e, const vec* power) const {
    for (size_t v = 0; e > 1 && v < GROUP; ++v) store(to + e * point_block + v * width, power[v]);
  }
};

void double_double_powers(size_t exponents, double* powers) {
  double_double_chains<1> chain;
  const vec x = load(powers + point_block);
  chain.run(&x, exponents, store_powers<1>{powers});
}

// A vector in doubt is run again alone, out of line: the double-doubles of a whole group would take the registers of
// the chains by half exponents, too.
template <size_t GROUP, size_t COUNT>
TESSARN_INLINE void half_exponent_powers(double* powers, size_t count = COUNT) {
  for (double* to = powers; to < powers + point_block; to += GROUP * width) {
    vec x[GROUP];
    for (size_t v = 0; v < GROUP; ++v) x[v] = load(to + point_block + v * width);
    half_exponent_chains<GROUP, COUNT> halves;
    halves.run(x, count, store_powers<GROUP>{to});
    if (none(halves.doubt)) continue;
    for (size_t v = 0; v < GROUP; ++v) double_double_powers(count, to + v * width);
  }
}

// Fits and surfaces need odd numbers of powers. As many vectors go side by side as there are registers for them.
// A number that is a compile-time constant gains 17 ... 50 % over one that is an argument.
void powers(unsigned exponents, double* powers) {
  switch (exponents) {
    case 3: return half_exponent_powers<4, 3>(powers);
    case 5: return half_exponent_powers<4, 5>(powers);
    case 7: return half_exponent_powers<2, 7>(powers);
    case 9: return half_exponent_powers<2, 9>(powers);
    case 11: return half_exponent_powers<1, 11>(powers);
    case 13: return half_exponent_powers<1, 13>(powers);
    case 15: return half_exponent_powers<1, 15>(powers);
    case 17: return half_exponent_powers<1, 17>(powers);
    default: break;
  }
  if (exponents <= max_half_count) return half_exponent_powers<2, 0>(powers, exponents);
  for (size_t i = 0; i < point_block; i += width) double_double_powers(exponents, powers + i);
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
