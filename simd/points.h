// Points of the library's classes in lanes: their coordinates taken apart, or a whole point in four lanes. The first
// word of a point is its virtual table pointer, which is never used as a number.
#pragma once

#include "simd/quad.h"

namespace tessarn::detail::TESSARN_ISA {

#if TESSARN_VECTOR_LANES

// The coordinates of as many points as there are lanes, from an array in which a point is three doubles, plane points
// (*, x, y), or four, space points (*, x, y, z); * is the virtual table pointer. The shuffles of each width are those
// with the fewest steps; a two-source shuffle picks lanes 0, 1, ... of the first and width, width + 1, ... of the
// second vector.
#if TESSARN_LANES == 8
TESSARN_INLINE void load_plane_points(const double* p, vec& x, vec& y) {
  const vec a = load(p), b = load(p + 8), c = load(p + 16);
  x = __builtin_shufflevector(__builtin_shufflevector(a, b, 1, 4, 7, 10, 13, 0, 0, 0), c, 0, 1, 2, 3, 4, 8, 11, 14);
  y = __builtin_shufflevector(__builtin_shufflevector(a, b, 2, 5, 8, 11, 14, 0, 0, 0), c, 0, 1, 2, 3, 4, 9, 12, 15);
}
TESSARN_INLINE void load_space_points(const double* p, vec& x, vec& y, vec& z) {
  const vec a = load(p), b = load(p + 8), c = load(p + 16), d = load(p + 24);
  const vec ab = __builtin_shufflevector(a, b, 1, 5, 9, 13, 2, 6, 10, 14);
  const vec cd = __builtin_shufflevector(c, d, 1, 5, 9, 13, 2, 6, 10, 14);
  x = __builtin_shufflevector(ab, cd, 0, 1, 2, 3, 8, 9, 10, 11);
  y = __builtin_shufflevector(ab, cd, 4, 5, 6, 7, 12, 13, 14, 15);
  z = __builtin_shufflevector(__builtin_shufflevector(a, b, 3, 7, 11, 15, 0, 0, 0, 0),
                              __builtin_shufflevector(c, d, 3, 7, 11, 15, 0, 0, 0, 0), 0, 1, 2, 3, 8, 9, 10, 11);
}
#elif TESSARN_LANES == 4
// The first half of the vector at low and the second half of that at high: a blend, which any unit can do.
TESSARN_INLINE vec load_halves(const double* low, const double* high) {
  return __builtin_shufflevector(load(low), load(high), 0, 1, 6, 7);
}
TESSARN_INLINE void load_plane_points(const double* p, vec& x, vec& y) {
  const vec even = load_halves(p + 1, p + 5), odd = load_halves(p + 4, p + 8);  // (x, y) of points 0, 2 and 1, 3
  x = __builtin_shufflevector(even, odd, 0, 4, 2, 6);
  y = __builtin_shufflevector(even, odd, 1, 5, 3, 7);
}
TESSARN_INLINE void load_space_points(const double* p, vec& x, vec& y, vec& z) {
  x = __builtin_shufflevector(load_halves(p, p + 6), load_halves(p + 4, p + 10), 1, 5, 3, 7);
  const vec even = load_halves(p + 2, p + 8), odd = load_halves(p + 6, p + 12);  // (y, z) of points 0, 2 and 1, 3
  y = __builtin_shufflevector(even, odd, 0, 4, 2, 6);
  z = __builtin_shufflevector(even, odd, 1, 5, 3, 7);
}
#else
TESSARN_INLINE void load_plane_points(const double* p, vec& x, vec& y) {
  x = vec{p[1], p[4]};
  y = vec{p[2], p[5]};
}
TESSARN_INLINE void load_space_points(const double* p, vec& x, vec& y, vec& z) {
  x = vec{p[1], p[5]};
  y = vec{p[2], p[6]};
  z = vec{p[3], p[7]};
}
#endif

#else

TESSARN_INLINE void load_plane_points(const double* p, vec& x, vec& y) {
  x = p[1];
  y = p[2];
}
TESSARN_INLINE void load_space_points(const double* p, vec& x, vec& y, vec& z) {
  x = p[1];
  y = p[2];
  z = p[3];
}

#endif

// (0, x, y, z) of the point whose first coordinate is at p.
TESSARN_INLINE quad load_point(const double* p) { return quad_without_first(p - 1); }
TESSARN_INLINE void store_point(double* p, quad v) {
  double lanes[4];
  store_quad(lanes, v);
  p[0] = lanes[1];
  p[1] = lanes[2];
  p[2] = lanes[3];
}

}  // namespace tessarn::detail::TESSARN_ISA
