// The hash values of points, and the lists of those that may occur more than once. Kernel sources only.
#pragma once

#include "geometry/kernels/point_lanes.inl"

namespace tessarn::detail::TESSARN_ISA {
namespace {

#if TESSARN_VECTOR_LANES
typedef uint64_t bits __attribute__((vector_size(width * 8), may_alias));
TESSARN_INLINE bits bits_of(vec v) { return (bits)v; }
TESSARN_INLINE void store_upper_halves(uint32_t* p, bits b) {
  typedef uint32_t halves __attribute__((vector_size(width * 4)));
  typedef uint32_t unaligned_halves __attribute__((vector_size(width * 4), aligned(4), may_alias));
  *reinterpret_cast<unaligned_halves*>(p) = __builtin_convertvector(b >> 32, halves);
}
#else
typedef uint64_t bits;
TESSARN_INLINE bits bits_of(vec v) {
  union {
    double v;
    uint64_t bits;
  } number = {v};
  return number.bits;
}
TESSARN_INLINE void store_upper_halves(uint32_t* p, bits b) { *p = (uint32_t)(b >> 32); }
#endif

// Adding 0.0 turns -0.0 into 0.0, so that equal coordinates have equal hash values. Coordinates such as small integers
// have all their bits in the upper half: it is folded into the lower one.
TESSARN_INLINE bits folded_bits_of(vec v) {
  const bits b = bits_of(v + 0.0);
  return b ^ b >> 32;
}

// The hash values of points, in the upper halves: a linear combination of the bits of their coordinates.
TESSARN_INLINE bits hash_of(const point_lanes& p) {
  return folded_bits_of(p.x) * 0x9E3779B97F4A7C15u + folded_bits_of(p.y) * 0xBF58476D1CE4E5B9u +
         folded_bits_of(p.z) * 0x94D049BB133111EBu;
}

// Both lists are written without branches, which no processor could predict: the number of the point is stored always,
// and the length of the list grows where it belongs there.
size_t list_repeated(const hash_words& table, const uint32_t* hash, size_t n, uint32_t* listed) {
  constexpr size_t ahead = 32;
  const hash_words own = table;  // stays in registers
  size_t found = 0;
  TESSARN_UNROLL_LONG
  for (size_t k = 0; k < n; ++k) {
    prefetch(&own.words[hash[k + ahead] >> own.shift]);
    const uint32_t h = hash[k];
    uint64_t& word = own.words[h >> own.shift];
    const uint64_t two = (uint64_t)1 << h % 64 | (uint64_t)1 << h / 64 % 64;
    listed[found] = (uint32_t)k;
    found += (word & two) == two;
    word |= two;
  }
  return found;
}

size_t list_suspects(const hash_words& table, const uint32_t* hash, size_t n, uint32_t* listed) {
  const hash_words own = table;
  size_t found = 0;
  TESSARN_UNROLL_LONG
  for (size_t k = 0; k < n; ++k) {
    const uint32_t h = hash[k];
    listed[found] = (uint32_t)k;
    found += own.words[h >> own.shift] >> h % 64 & 1;
  }
  return found;
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
