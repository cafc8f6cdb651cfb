// Gram-Schmidt on the columns of a matrix, and its triangular form. Lanes run across sums and entries that do not
// depend on each other, so each is formed in its stated order. Kernel sources only.
#pragma once

#include "simd/lanes.h"

namespace tessarn::detail::TESSARN_ISA {

TESSARN_INLINE double kept(double v) { return v == v ? v : 0; }

// The rows of a are the terms of sums side by side: dots[i] = sum over k, ascending from +0.0, of a[k][i] column[k] for
// i < count. VECTORS of sums at a time keep the adders busy.
template <size_t VECTORS>
TESSARN_INLINE void dot_products(const double* a, size_t n, const double* column, double* dots) {
  vec sum[VECTORS] = {};
  for (size_t k = 0; k < n; ++k) {
    const vec factor = broadcast(column[k]);
    TESSARN_UNROLL
    for (size_t v = 0; v < VECTORS; ++v) sum[v] += load(a + k * n + v * width) * factor;
  }
  TESSARN_UNROLL
  for (size_t v = 0; v < VECTORS; ++v) store(dots + v * width, sum[v]);
}

static double dot_product(const double* a, size_t stride, const double* column, size_t n) {
  double sum = 0;
  for (size_t k = 0; k < n; ++k) sum += a[k * stride] * column[k];
  return sum;
}

static void dot_with_columns(const double* a, size_t n, size_t count, const double* column, double* dots) {
  size_t i = 0;
  for (; i < count && i + 4 * width <= n; i += 4 * width) dot_products<4>(a + i, n, column, dots + i);
  for (; i < count && i + width <= n; i += width) dot_products<1>(a + i, n, column, dots + i);
  for (; i < count; ++i) dots[i] = dot_product(a + i, n, column, n);
}

// VECTORS of entries of a column, less the multiples of the earlier ones, whose entries stand n apart.
template <size_t VECTORS>
TESSARN_INLINE void take_away(const double* earlier, size_t n, const double* factors, size_t count, double* column) {
  vec rest[VECTORS];
  TESSARN_UNROLL
  for (size_t v = 0; v < VECTORS; ++v) rest[v] = load(column + v * width);
  for (size_t i = 0; i < count; ++i) {
    const vec factor = broadcast(factors[i]);
    TESSARN_UNROLL
    for (size_t v = 0; v < VECTORS; ++v) rest[v] -= factor * load(earlier + i * n + v * width);
  }
  TESSARN_UNROLL
  for (size_t v = 0; v < VECTORS; ++v) store(column + v * width, without_nan(rest[v]));
}

static void take_away_all(const double* earlier, size_t n, const double* factors, size_t count, double* column) {
  size_t k = 0;
  for (; k + 4 * width <= n; k += 4 * width) take_away<4>(earlier + k, n, factors, count, column + k);
  for (; k + width <= n; k += width) take_away<1>(earlier + k, n, factors, count, column + k);
  for (; k < n; ++k) {
    double rest = column[k];
    for (size_t i = 0; i < count; ++i) rest -= factors[i] * earlier[i * n + k];
    column[k] = kept(rest);
  }
}

static size_t orthogonalize_workspace(size_t n) { return n * n + 2 * n + 4 * width; }

static void orthogonalize(double* a, size_t n, double* workspace) {
  double *columns = workspace, *squares = columns + n * n, *factors = squares + n;
  for (size_t j = 0; j < n; ++j) {
    double* column = columns + j * n;
    for (size_t k = 0; k < n; ++k) column[k] = a[k * n + j];
    if (j > 0) {
      dot_with_columns(a, n, j, column, factors);
      for (size_t i = 0; i < j; ++i) factors[i] /= squares[i];
      take_away_all(columns, n, factors, j, column);
      for (size_t k = 0; k < n; ++k) a[k * n + j] = column[k];
    }
    squares[j] = dot_product(column, 1, column, n);
  }
}

// The quiet-NaN rule, or nothing.
template <bool Rule>
TESSARN_INLINE vec by_rule(vec v) {
  return Rule ? without_nan(v) : v;
}
template <bool Rule>
TESSARN_INLINE double entry_by_rule(double v) {
  return Rule ? kept(v) : v;
}

// Row r -= f * row p from column p on, for one step.
template <bool Rule>
TESSARN_INLINE void eliminate_below(double* row, const double* upper, size_t p, size_t n) {
  const double f = row[p] / upper[p];
  const vec factor = broadcast(f);
  size_t c = p;
  for (; c + width <= n; c += width) store(row + c, by_rule<Rule>(load(row + c) - factor * load(upper + c)));
  for (; c < n; ++c) row[c] = entry_by_rule<Rule>(row[c] - f * upper[c]);
}

// Four steps in one pass over the row; `upper` is the row of the first pivot, p its column.
template <bool Rule>
TESSARN_INLINE void eliminate_four(double* row, const double* upper, size_t p, size_t n) {
  double factors[4];
  vec factor[4];
  TESSARN_UNROLL
  for (size_t s = 0; s < 4; ++s) {
    const double* u = upper + s * n;
    factors[s] = row[p + s] / u[p + s];
    factor[s] = broadcast(factors[s]);
    for (size_t c = p + s; c < p + 4; ++c) row[c] = entry_by_rule<Rule>(row[c] - factors[s] * u[c]);
  }
  size_t c = p + 4;
  for (; c + width <= n; c += width) {
    vec v = load(row + c);
    TESSARN_UNROLL
    for (size_t s = 0; s < 4; ++s) v = by_rule<Rule>(v - factor[s] * load(upper + s * n + c));
    store(row + c, v);
  }
  for (; c < n; ++c) {
    double v = row[c];
    for (size_t s = 0; s < 4; ++s) v = entry_by_rule<Rule>(v - factors[s] * upper[s * n + c]);
    row[c] = v;
  }
}

// Four pivots at a time, so that the matrix is read and written a quarter as often.
template <bool Rule>
static void triangular_form(double* a, size_t n) {
  size_t p = 0;
  for (; p + 4 < n; p += 4) {
    const double* upper = a + p * n;
    for (size_t r = p + 1; r < p + 4; ++r)
      for (size_t s = p; s < r; ++s) eliminate_below<Rule>(a + r * n, a + s * n, s, n);
    for (size_t r = p + 4; r < n; ++r) eliminate_four<Rule>(a + r * n, upper, p, n);
  }
  for (; p + 1 < n; ++p)
    for (size_t r = p + 1; r < n; ++r) eliminate_below<Rule>(a + r * n, a + p * n, p, n);
}

static void triangularise(double* a, size_t n, bool rule) {
  (rule ? triangular_form<true> : triangular_form<false>)(a, n);
}

}  // namespace tessarn::detail::TESSARN_ISA
