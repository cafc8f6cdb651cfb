// Four lanes in every build: a row of a small matrix, or a space point as it lies in memory. Included by simd/lanes.h.
#pragma once

namespace tessarn::detail::TESSARN_ISA {

#if TESSARN_VECTOR_LANES && TESSARN_LANES >= 4

typedef double quad __attribute__((vector_size(32), may_alias));
typedef double unaligned_quad __attribute__((vector_size(32), aligned(8), may_alias));
typedef int64_t quad_mask __attribute__((vector_size(32), may_alias));

TESSARN_INLINE quad quad_of(double a, double b, double c, double d) { return quad{a, b, c, d}; }
TESSARN_INLINE quad load_quad(const double* p) { return *reinterpret_cast<const unaligned_quad*>(p); }
TESSARN_INLINE void store_quad(double* p, quad v) { *reinterpret_cast<unaligned_quad*>(p) = v; }
// v with every NaN replaced by +0.0.
TESSARN_INLINE quad quad_without_nan(quad v) { return (quad)((quad_mask)v & (v == v)); }
// The four doubles at p, the first of them, which may be no number, replaced by +0.0.
TESSARN_INLINE quad quad_without_first(const double* p) {
  return (quad)((quad_mask)load_quad(p) & quad_mask{0, -1, -1, -1});
}

#elif TESSARN_VECTOR_LANES

// Two vectors of two lanes. The compiler would take one vector of four lanes apart by way of memory, which makes sums
// of four rows 20 times as slow.
struct quad {
  vec low, high;
};
TESSARN_INLINE quad quad_of(double a, double b, double c, double d) { return {vec{a, b}, vec{c, d}}; }
TESSARN_INLINE quad load_quad(const double* p) { return {load(p), load(p + 2)}; }
TESSARN_INLINE void store_quad(double* p, quad v) {
  store(p, v.low);
  store(p + 2, v.high);
}
TESSARN_INLINE quad quad_without_nan(quad v) { return {without_nan(v.low), without_nan(v.high)}; }
TESSARN_INLINE quad quad_without_first(const double* p) { return {vec{0, p[1]}, load(p + 2)}; }
TESSARN_INLINE quad operator+(quad a, quad b) { return {a.low + b.low, a.high + b.high}; }
TESSARN_INLINE quad operator-(quad a, quad b) { return {a.low - b.low, a.high - b.high}; }
TESSARN_INLINE quad operator*(quad a, quad b) { return {a.low * b.low, a.high * b.high}; }

#else

struct quad {
  double lane[4];
};
TESSARN_INLINE quad quad_of(double a, double b, double c, double d) { return {{a, b, c, d}}; }
TESSARN_INLINE quad load_quad(const double* p) { return {{p[0], p[1], p[2], p[3]}}; }
TESSARN_INLINE void store_quad(double* p, quad v) {
  for (size_t i = 0; i < 4; ++i) p[i] = v.lane[i];
}
TESSARN_INLINE quad quad_without_nan(quad v) {
  for (size_t i = 0; i < 4; ++i) v.lane[i] = v.lane[i] == v.lane[i] ? v.lane[i] : 0;
  return v;
}
TESSARN_INLINE quad quad_without_first(const double* p) { return {{0, p[1], p[2], p[3]}}; }
TESSARN_INLINE quad operator+(quad a, quad b) {
  for (size_t i = 0; i < 4; ++i) a.lane[i] = a.lane[i] + b.lane[i];
  return a;
}
TESSARN_INLINE quad operator-(quad a, quad b) {
  for (size_t i = 0; i < 4; ++i) a.lane[i] = a.lane[i] - b.lane[i];
  return a;
}
TESSARN_INLINE quad operator*(quad a, quad b) {
  for (size_t i = 0; i < 4; ++i) a.lane[i] = a.lane[i] * b.lane[i];
  return a;
}

#endif

TESSARN_INLINE quad all_lanes(double v) { return quad_of(v, v, v, v); }

}  // namespace tessarn::detail::TESSARN_ISA
