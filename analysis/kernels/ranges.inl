// The ranges of numbers, and whether all are finite; the coordinates of points in arrays of their own.
#pragma once

#include "analysis/kernels/kernels.h"
#include "simd/lanes.h"

namespace tessarn::detail::TESSARN_ISA {
namespace {

void include(const double* v, size_t n, double* ranges) {
  for (size_t l = 0; l < fit_partial_sums; l += width) {
    vec least = load(ranges + l), greatest = load(ranges + fit_partial_sums + l),
        finite = load(ranges + 2 * fit_partial_sums + l);
    for (size_t i = l; i < n; i += fit_partial_sums) {
      const vec x = load(v + i);
      least = select(x < least, x, least);
      greatest = select(x > greatest, x, greatest);
      finite += x - x;
    }
    store(ranges + l, least);
    store(ranges + fit_partial_sums + l, greatest);
    store(ranges + 2 * fit_partial_sums + l, finite);
  }
}

// load_plane_points takes the number before x as the first of a point, which here belongs to the point before; so the
// first points are copied one by one.
void copy_points(const double* points, size_t n, double* x, double* y) {
  const auto one = [&](size_t i) {
    x[i] = points[3 * i];
    y[i] = points[3 * i + 1];
  };
  size_t i = 0;
  for (; i < width && i < n; ++i) one(i);
  for (; i + width <= n; i += width) {
    vec first, second;
    load_plane_points(points + 3 * i - 1, first, second);
    store(x + i, first);
    store(y + i, second);
  }
  for (; i < n; ++i) one(i);
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
