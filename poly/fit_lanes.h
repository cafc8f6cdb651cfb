// The sums of the polynomial fits in lanes, for the kernels of the polynomials; each build has its own.
#pragma once

#include "poly/chains.h"
#include "poly/kernels.h"

namespace tessarn::detail::TESSARN_ISA {

constexpr size_t sum_vectors = partial_sums / width;

// Sums that run side by side.
constexpr size_t product_rows = width == 1 ? 1 : width / 2;

// Eight plane points with point k in lane 3 k + 1 mod 8, which takes no shuffles but one; mixed() brings a vector into
// this order, in_order() back. Other widths take the points as they come.
#if defined(TESSARN_ISA_avx512)
TESSARN_INLINE void load_mixed_points(const double* p, vec& x, vec& y) {
  const vec a = load(p), b = load(p + 8), c = load(p + 16);
  x = __builtin_shufflevector(__builtin_shufflevector(c, a, 0, 9, 2, 3, 12, 5, 6, 15), b, 0, 1, 10, 3, 4, 13, 6, 7);
  const vec after =
      __builtin_shufflevector(__builtin_shufflevector(c, a, 0, 1, 10, 3, 4, 13, 6, 7), b, 8, 1, 2, 11, 4, 5, 14, 7);
  y = __builtin_shufflevector(after, after, 1, 2, 3, 4, 5, 6, 7, 0);
}
TESSARN_INLINE vec mixed(vec v) { return __builtin_shufflevector(v, v, 5, 0, 3, 6, 1, 4, 7, 2); }
TESSARN_INLINE vec in_order(vec v) { return __builtin_shufflevector(v, v, 1, 4, 7, 2, 5, 0, 3, 6); }
#else
TESSARN_INLINE void load_mixed_points(const double* p, vec& x, vec& y) { load_plane_points(p, x, y); }
TESSARN_INLINE vec mixed(vec v) { return v; }
TESSARN_INLINE vec in_order(vec v) { return v; }
#endif

TESSARN_INLINE mask not_finite(vec v) { return v - v != vec{}; }

// The sums of a block of at most block_points points for a number of exponents that is known here.
template <size_t EXPONENTS>
struct plane_sums {
  static constexpr size_t rows = EXPONENTS + (EXPONENTS + 1) / 2;
  vec sum[sum_vectors][rows];

  TESSARN_MEMBER void load_from(const double* sums) {
    for (size_t v = 0; v < sum_vectors; ++v) {
      TESSARN_UNROLL
      for (size_t k = 1; k < rows; ++k) sum[v][k] = mixed(load(sums + k * partial_sums + v * width));
    }
  }
  TESSARN_MEMBER void store_to(double* sums) const {
    for (size_t v = 0; v < sum_vectors; ++v) {
      TESSARN_UNROLL
      for (size_t k = 1; k < rows; ++k) store(sums + k * partial_sums + v * width, in_order(sum[v][k]));
    }
  }
  // False where a point is marked, a power is in doubt or the range is left.
  TESSARN_MEMBER bool add(const double* points, size_t n, double marker) {
    mask bad = {};
    range_check range(EXPONENTS);
    quick_chains<1, EXPONENTS> chain;
    const size_t whole = n - n % partial_sums;
    double rest[3 * partial_sums];
    if (n > whole) fill_up(points + 3 * whole, n - whole, rest);
    for (size_t v = 0; v < sum_vectors; ++v) {
      for (size_t i = v * width; i < n; i += partial_sums) {
        vec x, y;
        load_mixed_points(i < whole ? points + 3 * i : rest + 3 * v * width, x, y);
        bad |= x == broadcast(marker);
        if (EXPONENTS > 3) range.add_small(x * x);
        chain.run(&x, EXPONENTS, add_power{sum[v], y});
      }
      // Infinities and NaN have come as far as the highest power.
      bad |= not_finite(sum[v][EXPONENTS - 1]);
    }
    return none(bad | chain.doubt | range.found());
  }

 private:
  // Zeros behind the last point change no sum.
  TESSARN_MEMBER static void fill_up(const double* points, size_t n, double* to) {
    for (size_t k = 0; k < partial_sums; ++k) {
      to[3 * k + 1] = k < n ? points[3 * k + 1] : 0;
      to[3 * k + 2] = k < n ? points[3 * k + 2] : 0;
    }
  }
  struct add_power {
    vec* sum;
    vec y;
    TESSARN_MEMBER void operator()(size_t e, const vec* power) const {
      if (e > 0) sum[e] += *power;
      if (2 * e < EXPONENTS) sum[EXPONENTS + e] += e > 0 ? *power * y : y;
    }
  };
};

// Blocks are undone as a whole.
constexpr size_t plane_block = 128;

template <size_t EXPONENTS>
TESSARN_INLINE size_t add_plane_blocks(const double* points, size_t n, double marker, double* sums) {
  plane_sums<EXPONENTS> good;
  good.load_from(sums);
  size_t i = 0;
  while (i < n) {
    const size_t count = n - i < plane_block ? n - i : plane_block;
    plane_sums<EXPONENTS> next = good;
    if (!next.add(points + 3 * i, count, marker)) break;
    good = next;
    i += count;
  }
  good.store_to(sums);
  return i;
}

}  // namespace tessarn::detail::TESSARN_ISA
