// The ranges of numbers, and whether all are finite.
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

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
