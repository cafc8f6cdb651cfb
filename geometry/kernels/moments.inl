// Sums of the coordinates of points, and of their products, about a reference point. Kernel sources only.
#pragma once

#include "geometry/kernels/point_lanes.inl"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// A running sum with its rounding errors (D. Knuth, The Art of Computer Programming 2, 4.2.2).
struct accurate_sum {
  vec high, low;
  TESSARN_MEMBER void add(vec v) {
    const vec s = high + v;
    const vec part = s - high;
    low += (high - (s - part)) + (v - part);
    high = s;
  }
};

// Adds the coordinates of d and their products; d is a point less the reference point.
TESSARN_INLINE void add_moments(const point_lanes& d, vec* sum) {
  sum[0] += d.x;
  sum[1] += d.y;
  sum[2] += d.z;
  sum[3] += d.x * d.x;
  sum[4] += d.y * d.y;
  sum[5] += d.z * d.z;
  sum[6] += d.x * d.y;
  sum[7] += d.x * d.z;
  sum[8] += d.y * d.z;
}

// The moments over all blocks. Within a block plain sums do; the sums of the blocks are added accurately.
struct moment_totals {
  accurate_sum total[moment_count];
  vec weighted[moment_count];

  TESSARN_MEMBER void begin() {
    for (size_t s = 0; s < moment_count; ++s) total[s].high = total[s].low = weighted[s] = vec{};
  }
  TESSARN_MEMBER void add(const vec* sum, double weight) {
    for (size_t s = 0; s < moment_count; ++s) {
      total[s].add(sum[s]);
      weighted[s] += weight * sum[s];
    }
  }
  TESSARN_MEMBER void finish(moment_sums* result) const {
    for (size_t s = 0; s < moment_count; ++s) {
      result->sum[s] = sum_of_lanes(total[s].high + total[s].low);
      result->weighted[s] = sum_of_lanes(weighted[s]);
    }
  }
};

// A last vector that is not whole has zeros behind its points, which change no sum.
void moments(const point_arrays& points, const double* reference, moment_sums* result) {
  const point_lanes r = lanes_of(reference);
  moment_totals totals;
  totals.begin();
  for (size_t i = 0; i < points.n;) {
    const size_t first = i, end = points.n - first < block_points ? points.n : first + block_points;
    vec sum[moment_count] = {};
    for (; i + width <= end; i += width) add_moments(difference(load_points(points, i), r), sum);
    if (i < end) add_moments(only(lanes_below(end - i), difference(load_points(points, i), r)), sum);
    i = end;
    totals.add(sum, (double)(points.n - first));
  }
  totals.finish(result);
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
