// Moments and residuals of a fitted polynomial.
#pragma once

#include "analysis/kernels/doubled_lanes.inl"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// G vectors of points whose chains run side by side; vector g belongs to the points from i + 8 g on, and to the same
// partial sums. A chain alone would wait for each of its steps.
template <size_t G, bool Weighted>
TESSARN_INLINE void moments_of(const fit_columns& points, size_t i, size_t exponents, size_t products, double* lane) {
  constexpr size_t pair = 2 * fit_partial_sums;
  doubled x[G], x_parts[G], power[G], y_parts[G];
  vec y[G];
  TESSARN_UNROLL
  for (size_t g = 0; g < G; ++g) {
    const size_t at = i + fit_partial_sums * g;
    x[g] = first_abscissa(points, at);
    x_parts[g] = split(x[g].high);
    y[g] = ordinate(points, at);
    y_parts[g] = split(y[g]);
    power[g] = squared_weight<Weighted>(points, at);
  }
  size_t e = 0;
  if (!Weighted) {  // of the power 0 only the ordinates are left to add, and the power 1 is x itself
    if (products > 0) add(lane + pair * exponents, y);
    if (exponents < 2) return;
    TESSARN_UNROLL
    for (size_t g = 0; g < G; ++g) power[g] = x[g];
    e = 1;
  }
  for (;; ++e) {
    add(lane + pair * e, power);
    doubled parts[G];
    TESSARN_UNROLL
    for (size_t g = 0; g < G; ++g) parts[g] = split(power[g].high);
    if (e < products) {
      doubled term[G];
      TESSARN_UNROLL
      for (size_t g = 0; g < G; ++g) {
        term[g] = exact_product(power[g].high, parts[g], y[g], y_parts[g]);
        term[g].low += power[g].low * y[g];
      }
      add(lane + pair * (exponents + e), term);
    }
    if (e + 1 == exponents) return;
    TESSARN_UNROLL
    for (size_t g = 0; g < G; ++g) power[g] = next_power(power[g], parts[g], x[g], x_parts[g], e + 1);
  }
}

template <bool Weighted>
void add_moments_of(const fit_columns& points, size_t exponents, size_t products, double* sums) {
  constexpr size_t together = 2 * fit_partial_sums;
  size_t i = 0;
  for (; i + together <= points.size; i += together)
    for (size_t l = 0; l < fit_partial_sums; l += width)
      moments_of<2, Weighted>(points, i + l, exponents, products, sums + l);
  for (; i < points.size; i += width)
    moments_of<1, Weighted>(points, i, exponents, products, sums + i % fit_partial_sums);
}

void add_moments(const fit_columns& points, size_t exponents, size_t products, double* sums) {
  (points.weighted ? add_moments_of<true> : add_moments_of<false>)(points, exponents, products, sums);
}

struct fitted {
  const double *high, *low;
  size_t coefficients;
  double mean;
};

// The value of Horner's rule so far and its error: the error of each product and sum, the low parts of the coefficient
// and the abscissa, carried along by Horner's rule in doubles (S. Graillat, P. Langlois, N. Louvet, Compensated Horner
// scheme, 2005). The two together are as good as doubled precision.
struct compensated {
  vec value, error;
};
TESSARN_INLINE compensated horner_step(compensated v, doubled x, doubled x_parts, doubled c) {
  const doubled p = exact_product(v.value, split(v.value), x.high, x_parts);
  const doubled s = exact_sum(p.high, c.high);
  return {s.high, (v.error * x.high + v.value * x.low) + ((p.low + s.low) + c.low)};
}

TESSARN_INLINE vec sum(const vec (&v)[1]) { return v[0]; }
TESSARN_INLINE vec sum(const vec (&v)[4]) { return (v[0] + v[1]) + (v[2] + v[3]); }

// Stores the residual of each point from its fitted value, adds the two squares, and gives the larger of `largest` and
// the residuals. The sums of squares are wanted as doubles: each term, and the sum of G terms, may be rounded.
template <size_t G, bool Weighted>
TESSARN_INLINE vec judge(const fit_columns& points, size_t i, const compensated (&v)[G], double mean, double* residuals,
                         double* lane, vec largest) {
  vec squares[G], all[G];
  TESSARN_UNROLL
  for (size_t g = 0; g < G; ++g) {
    const size_t at = i + fit_partial_sums * g;
    const vec y = ordinate(points, at);
    const doubled d = exact_sum(y, -v[g].value);
    const vec r = d.high + (d.low - v[g].error), from_mean = y - broadcast(mean);
    store(residuals + at, r);
    squares[g] = r * r;
    all[g] = from_mean * from_mean;
    if (Weighted) {
      const vec weight = squared_weight<true>(points, at).high;
      squares[g] = squares[g] * weight;
      all[g] = all[g] * weight;
    }
    const vec magnitude = absolute(r);
    largest = select(magnitude > largest, magnitude, largest);
  }
  const vec sums[2][1] = {{sum(squares)}, {sum(all)}};
  add(lane, sums[0]);
  add(lane + 2 * fit_partial_sums, sums[1]);
  return largest;
}

// As moments_of: G vectors of points, Horner's rule for each of them side by side.
template <size_t G, bool Weighted>
TESSARN_INLINE vec residuals_of(const fit_columns& points, size_t i, const fitted& f, double* residuals, double* lane,
                                vec largest) {
  doubled x[G], x_parts[G];
  compensated v[G];
  const size_t last = f.coefficients - 1;
  TESSARN_UNROLL
  for (size_t g = 0; g < G; ++g) {
    x[g] = first_abscissa(points, i + fit_partial_sums * g);
    x_parts[g] = split(x[g].high);
    v[g] = {broadcast(f.high[last]), broadcast(f.low[last])};
  }
  for (size_t k = last; k-- > 0;) {
    const doubled c = {broadcast(f.high[k]), broadcast(f.low[k])};
    TESSARN_UNROLL
    for (size_t g = 0; g < G; ++g) v[g] = horner_step(v[g], x[g], x_parts[g], c);
  }
  return judge<G, Weighted>(points, i, v, f.mean, residuals, lane, largest);
}

TESSARN_INLINE double largest_lane(vec v) {
  double lanes[width], largest = 0;
  store(lanes, v);
  for (size_t k = 0; k < width; ++k) largest = lanes[k] > largest ? lanes[k] : largest;
  return largest;
}

template <bool Weighted>
double all_residuals(const fit_columns& points, const fitted& f, double* residuals, double* sums) {
  constexpr size_t together = 4 * fit_partial_sums;
  // Points that fill up are not taken together with others, so that weights of 1 change no bit.
  const size_t whole = points.used / fit_partial_sums * fit_partial_sums, end = Weighted ? points.size : whole;
  vec largest = broadcast(0);
  size_t i = 0;
  for (; i + together <= whole; i += together)
    for (size_t l = 0; l < fit_partial_sums; l += width)
      largest = residuals_of<4, Weighted>(points, i + l, f, residuals, sums + l, largest);
  for (; i < end; i += width)
    largest = residuals_of<1, Weighted>(points, i, f, residuals, sums + i % fit_partial_sums, largest);
  for (; i < points.size; i += width)
    largest = residuals_of<1, true>(points, i, f, residuals, sums + i % fit_partial_sums, largest);
  return largest_lane(largest);
}

double residuals(const fit_columns& points, const double* high, const double* low, size_t coefficients, double mean,
                 double* residuals, double* sums) {
  return (points.weighted ? all_residuals<true> : all_residuals<false>)(points, {high, low, coefficients, mean},
                                                                        residuals, sums);
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
