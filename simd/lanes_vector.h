// Lanes of the vector types of GCC and clang; included by simd/lanes.h.
#pragma once

namespace tessarn::detail::TESSARN_ISA {

// The number of lanes. A kernel source that gains nothing by the widest vectors defines TESSARN_AT_MOST_FOUR_LANES
// before it includes this. Kernels ask for width, or in an #if for TESSARN_LANES, not for the name of a set.
#if defined(TESSARN_ISA_avx512) && !defined(TESSARN_AT_MOST_FOUR_LANES)
#define TESSARN_LANES 8
#elif defined(TESSARN_ISA_avx512) || defined(TESSARN_ISA_avx2)
#define TESSARN_LANES 4
#else
#define TESSARN_LANES 2
#endif
static constexpr size_t width = TESSARN_LANES;

// Vector registers that the set has: a tile of sums must fit into them.
#if defined(TESSARN_ISA_avx512) || defined(__aarch64__)
static constexpr int register_count = 32;
#else
static constexpr int register_count = 16;
#endif

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
// Each lane holds its number: 0, 1, 2, ...
TESSARN_INLINE vec lane_numbers() {
  const double numbers[] = {0, 1, 2, 3, 4, 5, 6, 7};
  return load(numbers);
}
TESSARN_INLINE vec absolute(vec v) { return (vec)((mask)v & (mask{} + INT64_MAX)); }
// a where m is set, else b.
TESSARN_INLINE vec select(mask m, vec a, vec b) { return (vec)(((mask)a & m) | ((mask)b & ~m)); }
// v with every NaN replaced by +0.0.
TESSARN_INLINE vec without_nan(vec v) { return (vec)((mask)v & (v == v)); }
// The mask of the lanes that m does not have.
TESSARN_INLINE mask complement(mask m) { return ~m; }
// Whether m is set in no lane. Each width has its shortest way from a vector to a condition.
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

// Lane by lane, since vector types have no operator for it. Compilers may make vector instructions of it, with the same
// bits.
TESSARN_INLINE vec square_root(vec v) {
  vec root = v;
  for (size_t i = 0; i < width; ++i) root[i] = __builtin_sqrt(v[i]);
  return root;
}

}  // namespace tessarn::detail::TESSARN_ISA
