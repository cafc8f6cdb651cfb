// Doubled precision in lanes: the operations of analysis/doubled.h, and products that are normalised later.
#pragma once

#include "analysis/kernels/kernels.h"
#include "simd/lanes.h"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// high + low. Normalised: high is the sum rounded to a double. The product of two such pairs may have a low part of
// some ulps of high; it is a factor as good as a normalised one.
struct doubled {
  vec high, low;
};

TESSARN_INLINE doubled ordered_sum(vec a, vec b) {
  const vec s = a + b;
  return {s, b - (s - a)};
}

TESSARN_INLINE doubled exact_sum(vec a, vec b) {
  const vec s = a + b;
  const vec t = s - a;
  return {s, (a - (s - t)) + (b - t)};
}

// a as the sum of two numbers of 26 bits.
TESSARN_INLINE doubled split(vec a) {
  const vec t = broadcast(134217729.0) * a;  // 2^27 + 1
  const vec high = t - (t - a);
  return {high, a - high};
}

// The product of the numbers whose parts are given, and its error.
TESSARN_INLINE doubled exact_product(vec a, doubled a_parts, vec b, doubled b_parts) {
  const vec p = a * b;
  const vec e = ((a_parts.high * b_parts.high - p) + a_parts.high * b_parts.low + a_parts.low * b_parts.high) +
                a_parts.low * b_parts.low;
  return {p, e};
}

// a b without the last step of normalising, with the parts of both high numbers.
TESSARN_INLINE doubled loose_product(doubled a, doubled a_parts, doubled b, doubled b_parts) {
  const doubled p = exact_product(a.high, a_parts, b.high, b_parts);
  return {p.high, p.low + (a.high * b.low + a.low * b.high)};
}

// The operations of analysis/doubled.h: their results are normalised.
TESSARN_INLINE doubled operator+(doubled a, doubled b) {
  const doubled s = exact_sum(a.high, b.high), t = exact_sum(a.low, b.low);
  const doubled v = ordered_sum(s.high, s.low + t.high);
  return ordered_sum(v.high, t.low + v.low);
}
TESSARN_INLINE doubled operator-(doubled a) { return {-a.high, -a.low}; }
TESSARN_INLINE doubled operator-(doubled a, doubled b) { return a + -b; }
TESSARN_INLINE doubled operator*(doubled a, doubled b) {
  const doubled p = loose_product(a, split(a.high), b, split(b.high));
  return ordered_sum(p.high, p.low);
}
TESSARN_INLINE doubled operator/(doubled a, doubled b) {
  const vec q = a.high / b.high;
  const doubled r = a - b * doubled{q, broadcast(0)};
  return ordered_sum(q, r.high / b.high);
}
// 0 for what is not positive.
TESSARN_INLINE doubled root_of(doubled a) {
  const vec zero = broadcast(0), r = square_root(a.high);
  const doubled parts = split(r), rest = a - exact_product(r, parts, r, parts);
  const doubled v = ordered_sum(r, rest.high / (r + r));
  return {select(a.high > zero, v.high, zero), select(a.high > zero, v.low, zero)};
}

// Each product without normalising adds some 2^-53 to the low part beside the high one; so every fourth power is
// normalised.
TESSARN_INLINE doubled next_power(doubled power, doubled power_parts, doubled x, doubled x_parts, size_t exponent) {
  const doubled p = loose_product(power, power_parts, x, x_parts);
  return exponent % 4 == 0 ? ordered_sum(p.high, p.low) : p;
}

// Adds the doubled numbers, one after the other, to the partial sums from p on.
template <size_t G>
TESSARN_INLINE void add(double* p, const doubled (&v)[G]) {
  vec high = load(p), low = load(p + fit_partial_sums);
  TESSARN_UNROLL
  for (size_t g = 0; g < G; ++g) {
    const doubled s = exact_sum(high, v[g].high);
    high = s.high;
    low += s.low + v[g].low;
  }
  store(p, high);
  store(p + fit_partial_sums, low);
}
template <size_t G>
TESSARN_INLINE void add(double* p, const vec (&v)[G]) {
  vec high = load(p), low = load(p + fit_partial_sums);
  TESSARN_UNROLL
  for (size_t g = 0; g < G; ++g) {
    const doubled s = exact_sum(high, v[g]);
    high = s.high;
    low += s.low;
  }
  store(p, high);
  store(p + fit_partial_sums, low);
}

TESSARN_INLINE doubled scaled_abscissa(const double* x, double factor, double shift) {
  return exact_sum(load(x) * broadcast(factor), broadcast(-shift));
}
TESSARN_INLINE vec scaled_number(const double* v, const double* factors) {
  return load(v) * broadcast(factors[0]) * broadcast(factors[1]);
}
TESSARN_INLINE doubled first_abscissa(const fit_columns& p, size_t i) {
  return scaled_abscissa(p.x + i, p.scales->x_factor, p.scales->x_shift);
}
TESSARN_INLINE doubled second_abscissa(const fit_columns& p, size_t i) {
  return scaled_abscissa(p.second + i, p.scales->second_factor, p.scales->second_shift);
}
TESSARN_INLINE vec ordinate(const fit_columns& p, size_t i) { return scaled_number(p.y + i, p.scales->y_factors); }
// The square of the weight.
template <bool Weighted>
TESSARN_INLINE doubled squared_weight(const fit_columns& p, size_t i) {
  if (!Weighted) return {broadcast(1), broadcast(0)};
  const vec w = scaled_number(p.weight + i, p.scales->weight_factors);
  const doubled parts = split(w);
  return exact_product(w, parts, w, parts);
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
