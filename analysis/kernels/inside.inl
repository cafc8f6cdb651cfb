// Points that are proved to lie inside a polytope, and points that are extreme in given directions.
#pragma once

#include "analysis/kernels/residuals.inl"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// A coordinate as a lattice_point has it, less the origin, rounded.
TESSARN_INLINE vec lattice_offset(const local_columns& p, size_t k, size_t i) {
  const vec v = load(p.c[k] + i) * broadcast(p.factors[k][0]) * broadcast(p.factors[k][1]);
  return select(absolute(v) < broadcast(0x1p-270), broadcast(0), v) - broadcast(p.origin[k]);
}

void find_extremes(const local_columns& p, const double (*directions)[3], size_t count, size_t n, double begin,
                   double* values, double* places) {
  for (size_t d = 0; d < count; ++d) {
    const vec u = broadcast(directions[d][0]), v = broadcast(directions[d][1]), w = broadcast(directions[d][2]);
    double *const greatest = values + 16 * d, *const least = greatest + 8;
    double *const at_greatest = places + 16 * d, *const at_least = at_greatest + 8;
    for (size_t l = 0; l < 8; l += width) {
      vec most = load(greatest + l), fewest = load(least + l), at = load(at_greatest + l), low_at = load(at_least + l);
      for (size_t i = l; i < n; i += 8) {  // points behind the last one are copies of the first
        const vec h = (u * lattice_offset(p, 0, i) + v * lattice_offset(p, 1, i)) + w * lattice_offset(p, 2, i);
        const vec number = lane_numbers() + broadcast(begin + static_cast<double>(i));
        const auto higher = h > most, lower = h < fewest;
        most = select(higher, h, most);
        at = select(higher, number, at);
        fewest = select(lower, h, fewest);
        low_at = select(lower, number, low_at);
      }
      store(greatest + l, most);
      store(least + l, fewest);
      store(at_greatest + l, at);
      store(at_least + l, low_at);
    }
  }
}

size_t keep_outside(const local_columns& p, const double (*facets)[4], size_t count, size_t n, size_t* kept) {
  size_t found = 0;
  for (size_t i = 0; i < n; i += width) {
    const vec x = lattice_offset(p, 0, i), y = lattice_offset(p, 1, i), z = lattice_offset(p, 2, i);
    vec highest = broadcast(-1);
    for (size_t f = 0; f < count; ++f) {
      const double* const s = facets[f];
      const vec h = (broadcast(s[0]) * x + broadcast(s[1]) * y) + (broadcast(s[2]) * z - broadcast(s[3]));
      highest = select(h > highest, h, highest);
    }
    const auto outside = highest >= broadcast(0);
    if (none(outside)) continue;
    double lanes[width];
    store(lanes, highest);
    for (size_t l = 0; l < width && i + l < n; ++l)
      if (lanes[l] >= 0) kept[found++] = i + l;
  }
  return found;
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
