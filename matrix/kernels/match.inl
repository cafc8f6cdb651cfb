// The passes of point-set matching. Kernel sources only.
#pragma once

#include "simd/lanes.h"

namespace tessarn::detail::TESSARN_ISA {

static constexpr size_t point_stride = 4;

static void sum_points(const double* a, const double* b, size_t n, double* sums) {
  quad sum_a = all_lanes(0), sum_b = all_lanes(0);
  for (size_t i = 0; i < n; ++i) {
    sum_a = sum_a + load_point(a + i * point_stride);
    sum_b = sum_b + load_point(b + i * point_stride);
  }
  store_point(sums, sum_a);
  store_point(sums + 3, sum_b);
}

static void sum_products(const double* a, const double* b, size_t n, const double* ca, const double* cb, double* h) {
  const quad centre = quad_of(0, ca[0], ca[1], ca[2]);
  quad row[3] = {all_lanes(0), all_lanes(0), all_lanes(0)};
  for (size_t i = 0; i < n; ++i) {
    const quad q = load_point(a + i * point_stride) - centre;
    for (size_t r = 0; r < 3; ++r) row[r] = row[r] + all_lanes(b[i * point_stride + r] - cb[r]) * q;
  }
  for (size_t r = 0; r < 3; ++r) store_point(h + 3 * r, row[r]);
}

static void sum_residuals(const double* a, const double* b, size_t n, const double* R, double* t) {
  const quad zero = all_lanes(0);
  const quad column[3] = {quad_of(0, R[0], R[3], R[6]), quad_of(0, R[1], R[4], R[7]), quad_of(0, R[2], R[5], R[8])};
  quad sum = zero;
  for (size_t i = 0; i < n; ++i) {
    const double* p = a + i * point_stride;
    quad turned = zero + column[0] * all_lanes(p[0]);
    turned = turned + column[1] * all_lanes(p[1]);
    turned = turned + column[2] * all_lanes(p[2]);
    sum = sum + (load_point(b + i * point_stride) - turned);
  }
  store_point(t, sum);
}

}  // namespace tessarn::detail::TESSARN_ISA
