// The points farthest from one point, or from two. Kernel sources only.
#pragma once

#include "geometry/kernels/point_lanes.inl"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// Distances are compared, but most points are excluded without a root, by the squares p and q of their distances from
// the two points. Two facts are used, with l the square of the distance to reach:
// - sqrt(p) + sqrt(q) is less than sqrt(l) where l - p - q is positive and its square above 4 p q;
// - sqrt(p) + sqrt(q) is sqrt(p + q + 2 min(p, q)) or more.
//
// The limit l that excludes no point of the given squared distance or more; -1, which excludes none at all, where the
// squares or their products are not accurate. The factor covers the roundings of l - p - q: it makes this smaller by
// 1e-13 l, and thereby its square by more than the rounding errors of p q.
TESSARN_INLINE double exclusion_limit(double square) {
  return square > 1e-100 && square < 1e100 ? square * (1 - 1e-13) : -1;
}

struct farthest_so_far {
  double least;  // a point must be farther than this
  size_t found;
};

// The squares of the distances of a block of points from one or from two others.
template <bool TWO>
struct squares_block {
  vec a[block_vectors], b[TWO ? block_vectors : 1];
  size_t vectors;
  vec low;  // not above the greatest square

  // The points of vector v that the limit does not exclude.
  TESSARN_MEMBER mask not_excluded(size_t v, double limit) const {
    if (!TWO) return a[v] >= broadcast(limit);
    const vec rest = limit - (a[v] + b[v]);
    return (rest <= vec{}) | (rest * rest <= 4.0 * (a[v] * b[v]));
  }
  TESSARN_MEMBER void begin() {
    vectors = 0;
    low = vec{};
  }
  TESSARN_MEMBER void add(vec from_a, vec from_b) {
    a[vectors] = from_a;
    if (TWO) b[vectors] = from_b;
    low = greater(TWO ? from_a + from_b + 2.0 * lesser(from_a, from_b) : from_a, low);
    ++vectors;
  }
  // Compares the points of the block, the first of which is point i, with the farthest so far. Few blocks have a point
  // that is not excluded, and in these few vectors have one: only their distances are formed.
  TESSARN_MEMBER void compare(size_t i, farthest_so_far& far) const {
    const double limit = exclusion_limit(far.least * far.least);
    mask open = {};
    for (size_t v = 0; v < vectors; ++v) open |= not_excluded(v, limit);
    if (none(open)) return;
    const double own_limit = exclusion_limit(greatest_lane(low));
    const double both = own_limit > limit ? own_limit : limit;
    for (size_t v = 0; v < vectors; ++v) {
      if (none(not_excluded(v, both))) continue;
      double distance[width];
      store(distance, TWO ? square_root(a[v]) + square_root(b[v]) : square_root(a[v]));
      for (size_t k = 0; k < width; ++k) {
        if (!(distance[k] > far.least)) continue;
        far.least = distance[k];
        far.found = i + v * width + k;
      }
    }
  }
};

template <bool TWO>
TESSARN_INLINE size_t farthest_point(const point_arrays& points, const double* from_a, const double* from_b,
                                     double least) {
  const point_lanes a = lanes_of(from_a), b = lanes_of(from_b);
  farthest_so_far far = {least, points.n};
  squares_block<TWO> block;
  for (size_t i = 0; i < points.n;) {
    const size_t first = i;
    block.begin();
    for (; block.vectors < block_vectors && i + width <= points.n; i += width) {
      const point_lanes p = load_points(points, i);
      block.add(squared_length(difference(p, a)), TWO ? squared_length(difference(p, b)) : vec{});
    }
    if (block.vectors < block_vectors && i < points.n) {
      const mask inside = lanes_below(points.n - i);
      const point_lanes p = load_points(points, i);
      block.add(select(inside, squared_length(difference(p, a)), vec{}),
                TWO ? select(inside, squared_length(difference(p, b)), vec{}) : vec{});
      i = points.n;
    }
    block.compare(first, far);
  }
  return far.found;
}

size_t farthest(const point_arrays& points, const double* a, double least) {
  return farthest_point<false>(points, a, a, least);
}

size_t farthest_from_two(const point_arrays& points, const double* a, const double* b, double least) {
  return farthest_point<true>(points, a, b, least);
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
