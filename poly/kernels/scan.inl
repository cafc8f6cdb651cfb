// The tests of a scan for a change of sign, in lanes.
#pragma once

#include "poly/kernels/curves.inl"
#include "poly/kernels/kernels.h"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// The abscissas first + i step are exact, so each is computed on its own, without a chain of additions. Values that are
// NaN or 0 are neither above nor below.
bool one_sign(const double* cof, size_t count, double first, double step) {
  double lane[value_vectors * width];
  for (size_t k = 0; k < value_vectors * width; ++k) lane[k] = (double)(int)k * step;
  mask not_above = {}, not_below = {};
  for (size_t i = 0; i < long_block; i += value_vectors * width) {
    const vec start = broadcast(first + (double)(int)i * step);
    vec at[value_vectors];
    for (size_t v = 0; v < value_vectors; ++v) at[v] = start + load(lane + v * width);
    value_group(cof, count, at);
    for (size_t v = 0; v < value_vectors; ++v) {
      not_above |= complement(at[v] > vec{});
      not_below |= complement(at[v] < vec{});
    }
  }
  return none(not_above) || none(not_below);
}

// Whether a scan stops between x[0] and x[1].
TESSARN_INLINE bool is_event(const double* x, const double* f, double end, bool at_end) {
  if (x[0] > end || (at_end && x[0] == end)) return true;
  if ((f[0] > 0 && f[1] < 0) || (f[0] < 0 && f[1] > 0) || f[0] == 0) return true;
  return !(x[1] > x[0]);
}

#if TESSARN_VECTOR_LANES
// Lanes where a scan may stop: is_event, but for x[0] == end, which counts always.
TESSARN_INLINE mask events(const double* x, const double* f, vec last) {
  const vec zero = {};
  const vec x0 = load(x);
  const vec f0 = load(f);
  const vec f1 = load(f + 1);
  const mask change = ((f0 > zero) & (f1 < zero)) | ((f0 < zero) & (f1 > zero));
  return (x0 >= last) | (f0 == zero) | change | ~(load(x + 1) > x0);
}
#endif

// Nearly all blocks are without an event, which the lanes find out; only a block with one is searched pair by pair. The
// last vector overlaps the one before, since a block has one pair less than samples.
size_t first_event(const double* x, const double* f, double end, bool at_end) {
  constexpr size_t pairs = point_block - 1;
#if TESSARN_VECTOR_LANES
  const vec last = broadcast(end);
  mask event = events(x + pairs - width, f + pairs - width, last);
  for (size_t i = 0; i + width < pairs; i += width) event |= events(x + i, f + i, last);
  int64_t any = 0;
  for (size_t k = 0; k < width; ++k) any |= event[k];
  if (any == 0) return pairs;
#endif
  for (size_t i = 0; i < pairs; ++i)
    if (is_event(x + i, f + i, end, at_end)) return i;
  return pairs;
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
