// Vectors of doubles for the kernels, as wide as the instruction set that the file is compiled for. Included by
// kernel sources only: each is compiled once for every instruction set, in the namespace TESSARN_ISA, so that
// no two builds share a symbol. Kernels use no standard containers and no shared inline functions.
//
// Lanes hold independent results, so the width never shows in the bits.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "core/unroll.h"

#if defined(__GNUC__) || defined(__clang__)
#define TESSARN_INLINE static inline __attribute__((always_inline))
#define TESSARN_MEMBER inline __attribute__((always_inline))
#else
#include <math.h>
#define TESSARN_INLINE static __forceinline
#define TESSARN_MEMBER __forceinline
#endif

namespace tessarn::detail::TESSARN_ISA {

#if defined(__GNUC__) || defined(__clang__)

// A kernel source that gains nothing by the widest vectors defines TESSARN_AT_MOST_FOUR_LANES before it includes this.
#if defined(TESSARN_ISA_avx512) && !defined(TESSARN_AT_MOST_FOUR_LANES)
#define TESSARN_LANES 8
#elif defined(TESSARN_ISA_avx512) || defined(TESSARN_ISA_avx2)
#define TESSARN_LANES 4
#else
#define TESSARN_LANES 2
#endif
static constexpr size_t width = TESSARN_LANES;

typedef double vec __attribute__((vector_size(width * 8), may_alias));
typedef double unaligned_vec __attribute__((vector_size(width * 8), aligned(8), may_alias));
typedef int64_t mask __attribute__((vector_size(width * 8), may_alias));

TESSARN_INLINE vec load(const double* p) { return *reinterpret_cast<const unaligned_vec*>(p); }
TESSARN_INLINE void store(double* p, vec v) { *reinterpret_cast<unaligned_vec*>(p) = v; }
TESSARN_INLINE mask load_mask(const int64_t* p) {
  typedef int64_t unaligned_mask __attribute__((vector_size(width * 8), aligned(8), may_alias));
  return *reinterpret_cast<const unaligned_mask*>(p);
}
TESSARN_INLINE vec broadcast(double v) { return v - vec{}; }
// The number at p in every lane. On 512 bits it travels as an integer: the broadcast of a double from memory takes a
// slot of the floating-point units on processors that halve such vectors, that of an integer none.
TESSARN_INLINE vec broadcast_from(const double* p) {
#if TESSARN_LANES == 8
  typedef int64_t aliasing_int64 __attribute__((may_alias));
  return (vec)(*reinterpret_cast<const aliasing_int64*>(p) - mask{});
#else
  return *p - vec{};
#endif
}
// 0, 1, 2, ...
TESSARN_INLINE vec lane_numbers() {
  const double numbers[] = {0, 1, 2, 3, 4, 5, 6, 7};
  return load(numbers);
}
TESSARN_INLINE vec absolute(vec v) { return (vec)((mask)v & (mask{} + INT64_MAX)); }
// a where m is set, else b.
TESSARN_INLINE vec select(mask m, vec a, vec b) {
  return (vec)(((mask)a & m) | ((mask)b & ~m));
}
// v with every NaN replaced by +0.0.
TESSARN_INLINE vec without_nan(vec v) { return (vec)((mask)v & (v == v)); }
// Whether m is nowhere set.
TESSARN_INLINE bool none(mask m) {
#if TESSARN_LANES == 8
  typedef long long quadwords __attribute__((vector_size(64)));
  constexpr int not_equal = 4;
  return __builtin_ia32_cmpq512_mask((quadwords)m, quadwords{}, not_equal, -1) == 0;
#elif TESSARN_LANES == 4
  typedef int64_t two __attribute__((vector_size(16)));
  const two any = __builtin_shufflevector(m, m, 0, 1) | __builtin_shufflevector(m, m, 2, 3);
  return (any[0] | any[1]) == 0;
#else
  return (m[0] | m[1]) == 0;
#endif
}

TESSARN_INLINE vec square_root(vec v) {
  vec root = v;
  for (size_t i = 0; i < width; ++i) root[i] = __builtin_sqrt(v[i]);
  return root;
}

// The coordinates of as many points as there are lanes, from an array in which a point is three doubles, plane points
// (*, x, y), or four, space points (*, x, y, z). What stands before x is not a number to compute with.
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
TESSARN_INLINE void load_plane_points(const double* p, vec& x, vec& y) {
  const vec a = load(p), b = load(p + 4), c = load(p + 8);
  x = __builtin_shufflevector(__builtin_shufflevector(a, b, 1, 4, 7, 0), c, 0, 1, 2, 6);
  y = __builtin_shufflevector(__builtin_shufflevector(a, b, 2, 5, 0, 0), c, 0, 1, 4, 7);
}
TESSARN_INLINE void load_space_points(const double* p, vec& x, vec& y, vec& z) {
  const vec a = load(p), b = load(p + 4), c = load(p + 8), d = load(p + 12);
  const vec ab = __builtin_shufflevector(a, b, 1, 5, 3, 7), cd = __builtin_shufflevector(c, d, 1, 5, 3, 7);
  x = __builtin_shufflevector(ab, cd, 0, 1, 4, 5);
  y = __builtin_shufflevector(__builtin_shufflevector(a, b, 2, 6, 0, 0), __builtin_shufflevector(c, d, 2, 6, 0, 0), 0,
                              1, 4, 5);
  z = __builtin_shufflevector(ab, cd, 2, 3, 6, 7);
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

// Four lanes in every build: a space point as it lies in memory.
typedef double quad __attribute__((vector_size(32), may_alias));
typedef double unaligned_quad __attribute__((vector_size(32), aligned(8), may_alias));
typedef int64_t quad_mask __attribute__((vector_size(32), may_alias));

TESSARN_INLINE quad all_lanes(double v) { return quad{v, v, v, v}; }
// (0, x, y, z) of the point whose first coordinate is at p; what stands before it is not a number to compute with.
TESSARN_INLINE quad load_point(const double* p) {
  const quad v = *reinterpret_cast<const unaligned_quad*>(p - 1);
  return (quad)((quad_mask)v & quad_mask{0, -1, -1, -1});
}
TESSARN_INLINE void store_point(double* p, quad v) {
  p[0] = v[1];
  p[1] = v[2];
  p[2] = v[3];
}

#else

static constexpr size_t width = 1;
typedef double vec;
typedef int64_t mask;
TESSARN_INLINE vec load(const double* p) { return *p; }
TESSARN_INLINE void store(double* p, vec v) { *p = v; }
TESSARN_INLINE mask load_mask(const int64_t* p) { return *p; }
TESSARN_INLINE vec broadcast(double v) { return v; }
TESSARN_INLINE vec broadcast_from(const double* p) { return *p; }
TESSARN_INLINE vec lane_numbers() { return 0; }
TESSARN_INLINE vec absolute(vec v) { return fabs(v); }
TESSARN_INLINE vec select(mask m, vec a, vec b) { return m ? a : b; }
TESSARN_INLINE vec without_nan(vec v) { return v == v ? v : 0.0; }
TESSARN_INLINE bool none(mask m) { return m == 0; }
TESSARN_INLINE vec square_root(vec v) { return sqrt(v); }
TESSARN_INLINE void load_plane_points(const double* p, vec& x, vec& y) {
  x = p[1];
  y = p[2];
}
TESSARN_INLINE void load_space_points(const double* p, vec& x, vec& y, vec& z) {
  x = p[1];
  y = p[2];
  z = p[3];
}

struct quad {
  double lane[4];
  double operator[](size_t i) const { return lane[i]; }
};
TESSARN_INLINE quad operator+(quad a, quad b) {
  return {{a[0] + b[0], a[1] + b[1], a[2] + b[2], a[3] + b[3]}};
}
TESSARN_INLINE quad operator-(quad a, quad b) {
  return {{a[0] - b[0], a[1] - b[1], a[2] - b[2], a[3] - b[3]}};
}
TESSARN_INLINE quad operator*(quad a, quad b) {
  return {{a[0] * b[0], a[1] * b[1], a[2] * b[2], a[3] * b[3]}};
}
TESSARN_INLINE quad all_lanes(double v) { return {{v, v, v, v}}; }
TESSARN_INLINE quad load_point(const double* p) { return {{0, p[0], p[1], p[2]}}; }
TESSARN_INLINE void store_point(double* p, quad v) {
  p[0] = v[1];
  p[1] = v[2];
  p[2] = v[3];
}

#endif

}  // namespace tessarn::detail::TESSARN_ISA
