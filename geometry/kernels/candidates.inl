// The sums by which the searches compare normals, for eight candidates at a time: each candidate is a lane, so that
// every sum runs over the points in their order, whatever the width of the vectors. Kernel sources only.
#pragma once

#include "geometry/kernels/kernels.h"
#include "simd/lanes.h"

namespace tessarn::detail::TESSARN_ISA {
namespace {

constexpr size_t candidate_vectors = candidate_lanes / width;

struct candidates {
  vec x[candidate_vectors], y[candidate_vectors], z[candidate_vectors];
};

TESSARN_INLINE candidates load_candidates(const double* x, const double* y, const double* z) {
  candidates c;
  for (size_t v = 0; v < candidate_vectors; ++v) {
    c.x[v] = load(x + v * width);
    c.y[v] = load(y + v * width);
    c.z[v] = load(z + v * width);
  }
  return c;
}

// The products of point i with the candidates of vector v.
TESSARN_INLINE vec height(const candidates& c, size_t v, const point_arrays& points, size_t i) {
  return (c.y[v] * broadcast(points.y[i]) + c.x[v] * broadcast(points.x[i])) + c.z[v] * broadcast(points.z[i]);
}

TESSARN_INLINE void mean_heights(const candidates& c, const point_arrays& points, vec* mean) {
  vec sum[candidate_vectors] = {};
  for (size_t i = 0; i < points.n; ++i)
    for (size_t v = 0; v < candidate_vectors; ++v) sum[v] += height(c, v, points, i);
  for (size_t v = 0; v < candidate_vectors; ++v) mean[v] = sum[v] / broadcast((double)points.n);
}

void means(const point_arrays& points, const double* x, const double* y, const double* z, double* mean) {
  vec offset[candidate_vectors];
  mean_heights(load_candidates(x, y, z), points, offset);
  for (size_t v = 0; v < candidate_vectors; ++v) store(mean + v * width, offset[v]);
}

// Two passes over the points: the residuals need the mean first.
void residuals(const point_arrays& points, const double* x, const double* y, const double* z, double* mean,
               double* cost) {
  const candidates c = load_candidates(x, y, z);
  vec offset[candidate_vectors];
  mean_heights(c, points, offset);
  vec squares[candidate_vectors] = {};
  for (size_t i = 0; i < points.n; ++i)
    for (size_t v = 0; v < candidate_vectors; ++v) {
      const vec r = height(c, v, points, i) - offset[v];
      squares[v] += r * r;
    }
  for (size_t v = 0; v < candidate_vectors; ++v) {
    store(mean + v * width, offset[v]);
    store(cost + v * width, squares[v]);
  }
}

template <bool SINES>
TESSARN_INLINE void add_squares(const point_arrays& points, const double* x, const double* y, const double* z,
                                double* cost) {
  const candidates c = load_candidates(x, y, z);
  vec sum[candidate_vectors];
  for (size_t v = 0; v < candidate_vectors; ++v) sum[v] = load(cost + v * width);
  for (size_t i = 0; i < points.n; ++i)
    for (size_t v = 0; v < candidate_vectors; ++v) {
      const vec p = height(c, v, points, i);
      sum[v] += SINES ? 1.0 - p * p : p * p;
    }
  for (size_t v = 0; v < candidate_vectors; ++v) store(cost + v * width, sum[v]);
}

void add_sines(const point_arrays& points, const double* x, const double* y, const double* z, double* cost) {
  add_squares<true>(points, x, y, z, cost);
}

void add_cosines(const point_arrays& points, const double* x, const double* y, const double* z, double* cost) {
  add_squares<false>(points, x, y, z, cost);
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
