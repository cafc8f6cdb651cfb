// One pass over the points of a cloud: coordinates, hash values, moments, sums and radii. Kernel sources only.
#pragma once

#include "geometry/kernels/duplicates.inl"
#include "geometry/kernels/moments.inl"
#include "geometry/kernels/point_lanes.inl"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// Stores the coordinates and the hash values of a group of points; returns the coordinates.
TESSARN_INLINE point_lanes split_coordinates(const double* points, double* to, size_t stride, uint32_t* hash) {
  point_lanes p;
  load_space_points(points, p.x, p.y, p.z);
  store(to, p.x);
  store(to + stride, p.y);
  store(to + 2 * stride, p.z);
  store_upper_halves(hash, hash_of(p));
  return p;
}

// Stores the greatest squared length of a group, 0 where none is a number; returns the squared lengths.
TESSARN_INLINE vec store_radius(double* to, const point_lanes& d) {
  const vec square = greater(squared_length(d), vec{});
  *to = greatest_lane(square);
  return square;
}

// The loop is bound by memory, so the sums beside it are free. Points are asked for ahead of time, since processors do
// that only up to the end of a page. The last points, fewer than a vector, go through a copy with zeros behind them.
void ingest_points(const double* points, size_t n, const double* reference, const cloud_arrays& arrays,
                   moment_sums* result, double* sums) {
  constexpr size_t ahead = 128;
  const point_lanes r = lanes_of(reference);
  moment_totals totals;
  totals.begin();
  quad ordered = all_lanes(0);
  for (size_t i = 0; i < n;) {
    const size_t first = i, end = n - first < block_points ? n : first + block_points;
    vec sum[moment_count] = {}, radius = {};
    for (; i + width <= end; i += width) {
      const double* later = points + 4 * (i + ahead + width <= n ? i + ahead : i);
      for (size_t k = 0; k < 4 * width; k += 8) prefetch(later + k);
      const point_lanes d =
          difference(split_coordinates(points + 4 * i, arrays.to + i, arrays.stride, arrays.hash + i), r);
      add_moments(d, sum);
      if (arrays.group_radius) radius = greater(store_radius(arrays.group_radius + i / width, d), radius);
      for (size_t k = i; k < i + width; ++k) ordered = ordered + load_point(points + 4 * k + 1);
    }
    if (i < end) {
      double rest[4 * width] = {};
      for (size_t k = 0; k < 4 * (end - i); ++k) rest[k] = k % 4 == 0 ? 0 : points[4 * i + k];
      const point_lanes p = split_coordinates(rest, arrays.to + i, arrays.stride, arrays.hash + i);
      const point_lanes d = only(lanes_below(end - i), difference(p, r));
      add_moments(d, sum);
      if (arrays.group_radius) radius = greater(store_radius(arrays.group_radius + i / width, d), radius);
      for (; i < end; ++i) ordered = ordered + load_point(points + 4 * i + 1);
    }
    totals.add(sum, (double)(n - first));
    if (arrays.group_radius) arrays.block_radius[first / block_points] = greatest_lane(radius);
  }
  totals.finish(result);
  store_point(sums, ordered);
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
