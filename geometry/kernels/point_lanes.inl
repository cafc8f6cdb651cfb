// Points in lanes: the helpers that the kernels over clouds of points share. Kernel sources only.
#pragma once

#include "geometry/kernels/kernels.h"
#include "simd/lanes.h"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// A group of points is one vector, a block so many groups.
constexpr size_t block_vectors = 16, block_points = block_vectors * width;
static_assert(block_points <= block_limit, "the weights of the moments are bounded by the points of a block");

TESSARN_INLINE vec greater(vec a, vec b) { return a > b ? a : b; }  // b if a is not a number
TESSARN_INLINE vec lesser(vec a, vec b) { return a < b ? a : b; }

TESSARN_INLINE double greatest_lane(vec v) {
  double lanes[width];
  store(lanes, v);
  for (size_t half = width / 2; half > 0; half /= 2)
    for (size_t k = 0; k < half; ++k) lanes[k] = lanes[k] > lanes[k + half] ? lanes[k] : lanes[k + half];
  return lanes[0];
}

TESSARN_INLINE double sum_of_lanes(vec v) {
  double lanes[width];
  store(lanes, v);
  for (size_t half = width / 2; half > 0; half /= 2)
    for (size_t k = 0; k < half; ++k) lanes[k] += lanes[k + half];
  return lanes[0];
}

// Set in the first n lanes.
TESSARN_INLINE mask lanes_below(size_t n) { return lane_numbers() < broadcast((double)n); }

TESSARN_INLINE void prefetch(const void* p) {
#if TESSARN_VECTOR_LANES
  __builtin_prefetch(p);
#else
  (void)p;
#endif
}

// As many points as there are lanes, coordinate by coordinate.
struct point_lanes {
  vec x, y, z;
};

TESSARN_INLINE point_lanes load_points(const point_arrays& points, size_t i) {
  return {load(points.x + i), load(points.y + i), load(points.z + i)};
}

// The point a in every lane.
TESSARN_INLINE point_lanes lanes_of(const double* a) { return {broadcast(a[0]), broadcast(a[1]), broadcast(a[2])}; }

TESSARN_INLINE point_lanes difference(const point_lanes& p, const point_lanes& a) {
  return {p.x - a.x, p.y - a.y, p.z - a.z};
}

// p where m is set, else zeros.
TESSARN_INLINE point_lanes only(mask m, const point_lanes& p) {
  return {select(m, p.x, vec{}), select(m, p.y, vec{}), select(m, p.z, vec{})};
}

TESSARN_INLINE vec squared_length(const point_lanes& d) { return (d.x * d.x + d.y * d.y) + d.z * d.z; }

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
