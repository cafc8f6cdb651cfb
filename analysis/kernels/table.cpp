// The kernels of the fits; compiled once for each instruction set. The operations are those of analysis/doubled.h, in lanes.
#include "analysis/kernels/kernels.h"
#include "simd/lanes.h"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// high + low, where high is the sum rounded to a double.
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

TESSARN_INLINE doubled sum(doubled a, doubled b) {
  const doubled s = exact_sum(a.high, b.high);
  const doubled t = exact_sum(a.low, b.low);
  const doubled v = ordered_sum(s.high, s.low + t.high);
  return ordered_sum(v.high, t.low + v.low);
}

TESSARN_INLINE doubled product(doubled a, doubled b, doubled b_parts) {
  const doubled p = exact_product(a.high, split(a.high), b.high, b_parts);
  return ordered_sum(p.high, p.low + (a.high * b.low + a.low * b.high));
}

// Adds a doubled number to the partial sums from p on.
TESSARN_INLINE void add(double* p, doubled v) {
  const doubled s = exact_sum(load(p), v.high);
  store(p, s.high);
  store(p + fit_partial_sums, load(p + fit_partial_sums) + (s.low + v.low));
}

// A running power w x^e for each point of a vector, added to its sums.
void add_moments(const fit_columns& points, size_t exponents, size_t products, double* sums) {
  for (size_t i = 0; i < points.size; i += width) {
    double* lane = sums + i % fit_partial_sums;
    const doubled x = {load(points.high + i), load(points.low + i)};
    const vec y = load(points.y + i);
    const doubled x_parts = split(x.high), y_parts = split(y);
    doubled power = {load(points.weight_high + i), load(points.weight_low + i)};
    for (size_t e = 0; e < exponents; ++e) {
      if (e > 0) power = product(power, x, x_parts);
      add(lane + 2 * fit_partial_sums * e, power);
      if (e < products) {
        const doubled p = exact_product(power.high, split(power.high), y, y_parts);
        add(lane + 2 * fit_partial_sums * (exponents + e), {p.high, p.low + power.low * y});
      }
    }
  }
}

// w v^2 for a difference v, whose square is doubled; the low part of the weight is too small to matter.
TESSARN_INLINE doubled weighted_square(vec v, vec weight) {
  const doubled parts = split(v);
  const doubled square = exact_product(v, parts, v, parts);
  const doubled p = exact_product(square.high, split(square.high), weight, split(weight));
  return {p.high, p.low + square.low * weight};
}

void residuals(const fit_columns& points, const double* high, const double* low, size_t coefficients, double mean,
               double* residuals, double* sums) {
  for (size_t i = 0; i < points.size; i += width) {
    double* lane = sums + i % fit_partial_sums;
    const doubled x = {load(points.high + i), load(points.low + i)};
    const doubled x_parts = split(x.high);
    const vec y = load(points.y + i), weight = load(points.weight_high + i);
    doubled value = {broadcast(high[coefficients - 1]), broadcast(low[coefficients - 1])};
    for (size_t k = coefficients - 1; k-- > 0;)
      value = sum(product(value, x, x_parts), {broadcast(high[k]), broadcast(low[k])});
    const doubled r = sum({y, broadcast(0)}, {-value.high, -value.low});
    store(residuals + i, r.high);
    add(lane, weighted_square(r.high, weight));
    add(lane + 2 * fit_partial_sums, weighted_square(y - broadcast(mean), weight));
  }
}

}  // namespace

const fit_kernels fit_table = {.add_moments = add_moments, .residuals = residuals};

}  // namespace tessarn::detail::TESSARN_ISA
