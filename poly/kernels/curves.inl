// Values, derivatives and curvature of a polynomial at a block of abscissas, and the values of a surface, in lanes.
#pragma once

#include "poly/kernels/kernels.h"
#include "poly/kernels/powers.inl"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// Vectors of abscissas side by side, to hide the latency of the running powers and of the chains: as many as there are
// registers for their sums.
constexpr size_t value_vectors = 4, series_vectors = width == 1 ? 8 : 4, derivative_vectors = width == 1 ? 1 : 2;

// Values by a running power, in place of the abscissas. The product that would follow the last power is left out.
TESSARN_INLINE void value_group(const double* cof, size_t count, vec* x) {
  vec power[value_vectors], sum[value_vectors];
  for (size_t v = 0; v < value_vectors; ++v) {
    power[v] = x[v];
    sum[v] = broadcast(cof[0]);
  }
  for (size_t i = 1; i < count; ++i) {
    const vec c = broadcast(cof[i]);
    for (size_t v = 0; v < value_vectors; ++v) sum[v] += power[v] * c;
    if (i + 1 == count) break;
    for (size_t v = 0; v < value_vectors; ++v) power[v] *= x[v];
  }
  for (size_t v = 0; v < value_vectors; ++v) x[v] = sum[v];
}

void values(const double* cof, size_t count, const double* x, double* y) {
  static_assert(point_block % (value_vectors * width) == 0);
  for (size_t i = 0; i < point_block; i += value_vectors * width) {
    vec at[value_vectors];
    for (size_t v = 0; v < value_vectors; ++v) at[v] = load(x + i + v * width);
    value_group(cof, count, at);
    for (size_t v = 0; v < value_vectors; ++v) store(y + i + v * width, at[v]);
  }
}

// The terms of a derivative: power e times its factor, a falling factorial, times its coefficient.
struct add_to_series {
  const double* cof;
  const double* factor;
  vec* sum;
  TESSARN_MEMBER void operator()(size_t e, const vec* power) const {
    const vec f = broadcast(factor[e]);
    const vec c = broadcast(cof[e]);
    for (size_t v = 0; v < series_vectors; ++v) sum[v] = (e == 0 ? vec{} : sum[v]) + (power[v] * f) * c;
  }
};

// A series of count terms; COUNT is the count where that is a compile-time constant, else 0.
template <size_t COUNT>
TESSARN_INLINE void series(const double* cof, const double* factor, size_t count, const double* x, double* y) {
  for (size_t i = 0; i < point_block; i += series_vectors * width) {
    vec sum[series_vectors] = {};
    run_chains<series_vectors, COUNT>(x + i, count, add_to_series{cof, factor, sum});
    for (size_t v = 0; v < series_vectors; ++v) store(y + i + v * width, sum[v]);
  }
}

// Up to three terms need no chain; as compile-time constants these numbers take 28 ... 66 % less time,
// and larger ones hardly less.
void power_series(const double* cof, const double* factor, size_t count, const double* x, double* y) {
  switch (count) {
    case 1: return series<1>(cof, factor, count, x, y);
    case 2: return series<2>(cof, factor, count, x, y);
    case 3: return series<3>(cof, factor, count, x, y);
    default: return series<0>(cof, factor, count, x, y);
  }
}

// The terms of the first three derivatives, which share their powers.
struct add_to_derivatives {
  const double* cof;
  const double* factors;
  size_t stride, count;
  vec (*sum)[derivative_vectors];
  TESSARN_MEMBER void operator()(size_t e, const vec* power) const {
    for (size_t k = 0; k < 3; ++k) {
      if (e == 0)
        for (size_t v = 0; v < derivative_vectors; ++v) sum[k][v] = vec{};
      if (e + k + 1 >= count) continue;
      const vec f = broadcast(factors[k * stride + e + k + 1]);
      const vec c = broadcast(cof[e + k + 1]);
      for (size_t v = 0; v < derivative_vectors; ++v) sum[k][v] += power[v] * f * c;
    }
  }
};

void derivatives(const double* cof, const double* factors, size_t stride, size_t count, const double* x, double* d) {
  for (size_t i = 0; i < point_block; i += derivative_vectors * width) {
    vec sum[3][derivative_vectors] = {};
    run_chains<derivative_vectors>(x + i, count == 0 ? 0 : count - 1,
                                   add_to_derivatives{cof, factors, stride, count, sum});
    for (size_t k = 0; k < 3; ++k)
      for (size_t v = 0; v < derivative_vectors; ++v) store(d + k * point_block + i + v * width, sum[k][v]);
  }
}

// p'' / (1 + p'^2)^(3/2)
void curvature(const double* d, double* y) {
  for (size_t i = 0; i < point_block; i += width) {
    const vec first = load(d + i);
    const vec second = load(d + point_block + i);
    const vec s = 1.0 + first * first;
    store(y + i, second / (square_root(s) * s));
  }
}

// (p''' (1 + p'^2)^(3/2) - 3 p' p''^2 (1 + p'^2)^(1/2)) / (1 + p'^2)^3, in the order of curvature_derivative of
// poly/curve.cpp
void curvature_derivative(const double* d, double* y) {
  for (size_t i = 0; i < point_block; i += width) {
    const vec first = load(d + i);
    const vec second = load(d + point_block + i);
    const vec third = load(d + 2 * point_block + i);
    const vec square = first * first;
    const vec fourth = square * square;
    const vec s = 1.0 + square;
    const vec root = square_root(s);
    const vec numerator = third * (root * s) - (3.0 * first * second) * (root * second);
    store(y + i, numerator / ((fourth + square) * 3.0 + 1.0 + fourth * square));
  }
}

// A vector of places: row by row of the table, by running products.
TESSARN_INLINE void surface_group(const double* cof, size_t g, const double* x, const double* y, double* z) {
  const vec px = load(x);
  const vec py = load(y);
  vec sum = vec{};
  vec row = broadcast(1);
  for (size_t j = 0; j < g; ++j) {
    vec t = row;
    sum += t * broadcast(*cof++);
    for (size_t i = 1; i < g; ++i) {
      t *= px;
      sum += t * broadcast(*cof++);
    }
    row *= py;
  }
  store(z, sum);
}

void surface_values(const double* cof, size_t g, const double* x, const double* y, double* z, size_t n) {
  size_t i = 0;
  for (; i + width <= n; i += width) surface_group(cof, g, x + i, y + i, z + i);
  if (i == n) return;
  double rest[3][width] = {};
  for (size_t k = i; k < n; ++k) {
    rest[0][k - i] = x[k];
    rest[1][k - i] = y[k];
  }
  surface_group(cof, g, rest[0], rest[1], rest[2]);
  for (size_t k = i; k < n; ++k) z[k] = rest[2][k - i];
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
