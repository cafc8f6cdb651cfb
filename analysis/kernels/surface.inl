// Moments and residuals of a fitted surface.
#pragma once

#include "analysis/kernels/curve.inl"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// The powers of t, and the parts of each.
struct power_row {
  doubled power[2 * largest_grade - 1], parts[2 * largest_grade - 1];
};

TESSARN_INLINE void fill(power_row& r, doubled x, size_t count) {
  const doubled x_parts = split(x.high);
  r.power[0] = {broadcast(1), broadcast(0)};
  r.parts[0] = {broadcast(1), broadcast(0)};
  for (size_t a = 1; a < count; ++a) {
    r.power[a] = a == 1 ? x : next_power(r.power[a - 1], r.parts[a - 1], x, x_parts, a);
    r.parts[a] = split(r.power[a].high);
  }
}

// Adds factor t^a to sum a, for a < count. The products do not depend on each other.
TESSARN_INLINE void add_row(const power_row& r, doubled factor, size_t count, double* lane) {
  const doubled factor_parts = split(factor.high);
  for (size_t a = 0; a < count; ++a) {
    const doubled term[1] = {loose_product(factor, factor_parts, r.power[a], r.parts[a])};
    add(lane + 2 * fit_partial_sums * a, term);
  }
}

// Adds t^a to sum a, for 0 < a < count.
TESSARN_INLINE void add_row(const power_row& r, size_t count, double* lane) {
  for (size_t a = 1; a < count; ++a) {
    const doubled term[1] = {r.power[a]};
    add(lane + 2 * fit_partial_sums * a, term);
  }
}

// Row by row: w v^b, and that times y, times each power of t.
template <bool Weighted>
void add_surface_moments_of(const fit_columns& p, size_t grade, bool total_degree, double* sums) {
  const size_t side = 2 * grade - 1;
  power_row powers;
  for (size_t i = 0; i < p.size; i += width) {
    double* lane = sums + i % fit_partial_sums;
    fill(powers, first_abscissa(p, i), side);
    const doubled v = second_abscissa(p, i), v_parts = split(v.high);
    const vec y = ordinate(p, i);
    const doubled y_parts = split(y);
    doubled row = squared_weight<Weighted>(p, i);
    for (size_t b = 0; b < side; ++b) {
      if (b > 0) row = next_power(row, split(row.high), v, v_parts, b);
      if (b == 0 && !Weighted)
        add_row(powers, side, lane);
      else
        add_row(powers, row, total_degree ? side - b : side, lane + 2 * fit_partial_sums * side * b);
      if (b >= grade) continue;
      doubled with_y = exact_product(row.high, split(row.high), y, y_parts);
      with_y.low += row.low * y;
      add_row(powers, with_y, total_degree ? grade - b : grade,
              lane + 2 * fit_partial_sums * (side * side + grade * b));
    }
  }
}

void add_surface_moments(const fit_columns& points, size_t grade, bool total_degree, double* sums) {
  (points.weighted ? add_surface_moments_of<true> : add_surface_moments_of<false>)(points, grade, total_degree, sums);
}

struct fitted_surface {
  const double *high, *low;
  size_t grade;
  double mean;
};

// Horner's rule over the rows, and in each row over the powers of t; the value of a row is the coefficient of v^b, and
// its error goes into the low part.
template <bool Weighted>
TESSARN_INLINE vec surface_residuals_of(const fit_columns& p, size_t i, const fitted_surface& f, double* residuals,
                                        double* sums, vec largest) {
  const doubled x = first_abscissa(p, i), v = second_abscissa(p, i);
  const doubled x_parts = split(x.high), v_parts = split(v.high);
  compensated value[1] = {{broadcast(0), broadcast(0)}};
  for (size_t b = f.grade; b-- > 0;) {
    const double *high = f.high + f.grade * b, *low = f.low + f.grade * b;
    compensated row = {broadcast(high[f.grade - 1]), broadcast(low[f.grade - 1])};
    for (size_t a = f.grade - 1; a-- > 0;) row = horner_step(row, x, x_parts, {broadcast(high[a]), broadcast(low[a])});
    value[0] = horner_step(value[0], v, v_parts, {row.value, row.error});
  }
  return judge<1, Weighted>(p, i, value, f.mean, residuals, sums + i % fit_partial_sums, largest);
}

template <bool Weighted>
double all_surface_residuals(const fit_columns& p, const fitted_surface& f, double* residuals, double* sums) {
  const size_t end = Weighted ? p.size : p.used / fit_partial_sums * fit_partial_sums;
  vec largest = broadcast(0);
  size_t i = 0;
  for (; i < end; i += width) largest = surface_residuals_of<Weighted>(p, i, f, residuals, sums, largest);
  for (; i < p.size; i += width) largest = surface_residuals_of<true>(p, i, f, residuals, sums, largest);
  return largest_lane(largest);
}

double surface_residuals(const fit_columns& points, const double* high, const double* low, size_t grade, double mean,
                         double* residuals, double* sums) {
  return (points.weighted ? all_surface_residuals<true>
                          : all_surface_residuals<false>)(points, {high, low, grade, mean}, residuals, sums);
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
