// The kernels of the fits; compiled once for each instruction set. The operations are those of analysis/doubled.h, in
// lanes.
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

// G vectors of points whose chains run side by side; vector g belongs to the points from i + 8 g on, and to the same
// partial sums. A chain alone would wait for each of its steps.
template <size_t G>
TESSARN_INLINE void moments_of(const fit_columns& points, size_t i, size_t exponents, size_t products, double* lane) {
  doubled x[G], power[G];
  vec y[G];
  TESSARN_UNROLL
  for (size_t g = 0; g < G; ++g) {
    const size_t at = i + fit_partial_sums * g;
    x[g] = {load(points.high + at), load(points.low + at)};
    y[g] = load(points.y + at);
    power[g] = {load(points.weight_high + at), load(points.weight_low + at)};
  }
  for (size_t e = 0; e < exponents; ++e) {
    if (e > 0) {
      TESSARN_UNROLL
      for (size_t g = 0; g < G; ++g) power[g] = product(power[g], x[g], split(x[g].high));
    }
    add(lane + 2 * fit_partial_sums * e, power);
    if (e < products) {
      doubled term[G];
      TESSARN_UNROLL
      for (size_t g = 0; g < G; ++g) {
        term[g] = exact_product(power[g].high, split(power[g].high), y[g], split(y[g]));
        term[g].low += power[g].low * y[g];
      }
      add(lane + 2 * fit_partial_sums * (exponents + e), term);
    }
  }
}

void add_moments(const fit_columns& points, size_t exponents, size_t products, double* sums) {
  constexpr size_t together = 2 * fit_partial_sums;
  size_t i = 0;
  for (; i + together <= points.size; i += together)
    for (size_t l = 0; l < fit_partial_sums; l += width) moments_of<2>(points, i + l, exponents, products, sums + l);
  for (; i < points.size; i += width) moments_of<1>(points, i, exponents, products, sums + i % fit_partial_sums);
}

// w v^2 for a difference v, whose square is doubled; the low part of the weight is too small to matter.
TESSARN_INLINE doubled weighted_square(vec v, vec weight) {
  const doubled parts = split(v);
  const doubled square = exact_product(v, parts, v, parts);
  const doubled p = exact_product(square.high, split(square.high), weight, split(weight));
  return {p.high, p.low + square.low * weight};
}

struct fitted {
  const double *high, *low;
  size_t coefficients;
  double mean;
};

// As moments_of: G vectors of points, Horner's rule for each of them side by side.
template <size_t G>
TESSARN_INLINE void residuals_of(const fit_columns& points, size_t i, const fitted& f, double* residuals,
                                 double* lane) {
  doubled x[G], value[G], squares[G], all[G];
  const size_t last = f.coefficients - 1;
  TESSARN_UNROLL
  for (size_t g = 0; g < G; ++g) {
    x[g] = {load(points.high + i + fit_partial_sums * g), load(points.low + i + fit_partial_sums * g)};
    value[g] = {broadcast(f.high[last]), broadcast(f.low[last])};
  }
  for (size_t k = last; k-- > 0;) {
    const doubled c = {broadcast(f.high[k]), broadcast(f.low[k])};
    TESSARN_UNROLL
    for (size_t g = 0; g < G; ++g) value[g] = sum(product(value[g], x[g], split(x[g].high)), c);
  }
  TESSARN_UNROLL
  for (size_t g = 0; g < G; ++g) {
    const size_t at = i + fit_partial_sums * g;
    const vec y = load(points.y + at), weight = load(points.weight_high + at);
    const vec r = sum({y, broadcast(0)}, {-value[g].high, -value[g].low}).high;
    store(residuals + at, r);
    squares[g] = weighted_square(r, weight);
    all[g] = weighted_square(y - broadcast(f.mean), weight);
  }
  add(lane, squares);
  add(lane + 2 * fit_partial_sums, all);
}

void residuals(const fit_columns& points, const double* high, const double* low, size_t coefficients, double mean,
               double* residuals, double* sums) {
  constexpr size_t together = 4 * fit_partial_sums;
  const fitted f = {high, low, coefficients, mean};
  size_t i = 0;
  for (; i + together <= points.size; i += together)
    for (size_t l = 0; l < fit_partial_sums; l += width) residuals_of<4>(points, i + l, f, residuals, sums + l);
  for (; i < points.size; i += width) residuals_of<1>(points, i, f, residuals, sums + i % fit_partial_sums);
}

// Row by row: w v^b is the power of the row, and times powers of x each of its terms.
void add_surface_moments(const surface_columns& points, size_t grade, bool total_degree, double* sums) {
  const size_t side = 2 * grade - 1;
  const fit_columns& p = points.plane;
  for (size_t i = 0; i < p.size; i += width) {
    double* lane = sums + i % fit_partial_sums;
    const doubled x = {load(p.high + i), load(p.low + i)},
                  v = {load(points.second_high + i), load(points.second_low + i)};
    const doubled x_parts = split(x.high), v_parts = split(v.high);
    const vec y = load(p.y + i);
    doubled row = {load(p.weight_high + i), load(p.weight_low + i)};
    for (size_t b = 0; b < side; ++b) {
      if (b > 0) row = product(row, v, v_parts);
      doubled term[1] = {row};
      for (size_t a = 0; a < (total_degree ? side - b : side); ++a) {
        if (a > 0) term[0] = product(term[0], x, x_parts);
        add(lane + 2 * fit_partial_sums * (side * b + a), term);
        if (a >= grade || b >= grade || (total_degree && a + b >= grade)) continue;
        doubled with_y[1] = {exact_product(term[0].high, split(term[0].high), y, split(y))};
        with_y[0].low += term[0].low * y;
        add(lane + 2 * fit_partial_sums * (side * side + grade * b + a), with_y);
      }
    }
  }
}

// Horner's rule over the rows, and in each row over the powers of x.
void surface_residuals(const surface_columns& points, const double* high, const double* low, size_t grade, double mean,
                       double* residuals, double* sums) {
  const fit_columns& p = points.plane;
  for (size_t i = 0; i < p.size; i += width) {
    double* lane = sums + i % fit_partial_sums;
    const doubled x = {load(p.high + i), load(p.low + i)},
                  v = {load(points.second_high + i), load(points.second_low + i)};
    const doubled x_parts = split(x.high), v_parts = split(v.high);
    doubled value = {broadcast(0), broadcast(0)};
    for (size_t b = grade; b-- > 0;) {
      doubled row = {broadcast(0), broadcast(0)};
      for (size_t a = grade; a-- > 0;) {
        const size_t k = grade * b + a;
        row = sum(product(row, x, x_parts), {broadcast(high[k]), broadcast(low[k])});
      }
      value = sum(product(value, v, v_parts), row);
    }
    const vec y = load(p.y + i), weight = load(p.weight_high + i);
    const vec r = sum({y, broadcast(0)}, {-value.high, -value.low}).high;
    store(residuals + i, r);
    const doubled squares[1] = {weighted_square(r, weight)}, all[1] = {weighted_square(y - broadcast(mean), weight)};
    add(lane, squares);
    add(lane + 2 * fit_partial_sums, all);
  }
}

}  // namespace

const fit_kernels fit_table = {.add_moments = add_moments,
                               .residuals = residuals,
                               .add_surface_moments = add_surface_moments,
                               .surface_residuals = surface_residuals};

}  // namespace tessarn::detail::TESSARN_ISA
