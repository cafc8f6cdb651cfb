// The sums of the fits through plane points, in lanes. docs/powers.md says which points come which way.
#pragma once

#include "poly/kernels/kernels.h"
#include "poly/kernels/power_chains.inl"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// The partial sums of one sum are this many vectors.
constexpr size_t sum_vectors = partial_sums / width;

// Rows of a block that are summed side by side: with their partial sums they fill half of the vector registers.
constexpr size_t rows_at_once = width == 1 ? 1 : width / 2;

// v - v is 0 for finite lanes and NaN for others.
TESSARN_INLINE mask not_finite(vec v) { return v - v != vec{}; }

// n points in groups of partial_sums, point i of a group for lane i. The last group is filled up with zeros, which
// change no sum: sums begin with +0.0, and so are never -0.0.
class point_groups {
 public:
  TESSARN_MEMBER point_groups(const double* points, size_t n) : points_(points), whole_(n - n % partial_sums) {
    if (n == whole_) return;
    for (size_t k = 0; k < partial_sums; ++k) {
      rest_[3 * k + 1] = whole_ + k < n ? points[3 * (whole_ + k) + 1] : 0;
      rest_[3 * k + 2] = whole_ + k < n ? points[3 * (whole_ + k) + 2] : 0;
    }
  }
  // The group that begins with point i.
  TESSARN_MEMBER const double* at(size_t i) const { return i < whole_ ? points_ + 3 * i : rest_; }

 private:
  const double* points_;
  size_t whole_;
  double rest_[3 * partial_sums];
};

// Whether a chain takes all abscissas of a group: none is the marker, which is not 0, and none outside the safe range.
template <size_t EXPONENTS>
TESSARN_INLINE bool chains_take_group(const double* group, uint64_t marker) {
  TESSARN_UNROLL
  for (size_t k = 0; k < partial_sums; ++k) {
    const double* x = group + 3 * k + 1;
    if (bits_at(x) == marker || !chain_takes<EXPONENTS>(x)) return false;
  }
  return true;
}

// The sums of the powers 1 .. EXPONENTS - 1, and behind them those of the powers times y, EXPONENTS a compile-time
// constant.
template <size_t EXPONENTS>
struct plane_sums {
  static constexpr size_t rows = EXPONENTS + (EXPONENTS + 1) / 2;
  vec sum[rows][sum_vectors];

  TESSARN_MEMBER void load_from(const double* sums) {
    for (size_t v = 0; v < sum_vectors; ++v) {
      TESSARN_UNROLL_MORE
      for (size_t k = 1; k < rows; ++k) sum[k][v] = load(sums + k * partial_sums + v * width);
    }
  }
  TESSARN_MEMBER void store_to(double* sums) const {
    for (size_t v = 0; v < sum_vectors; ++v) {
      TESSARN_UNROLL_MORE
      for (size_t k = 1; k < rows; ++k) store(sums + k * partial_sums + v * width, sum[k][v]);
    }
  }
  // Power e of the points in lanes v * width to (v + 1) * width - 1.
  TESSARN_MEMBER void add(size_t e, size_t v, vec power, vec y) {
    if (e > 0) sum[e][v] += power;
    if (2 * e < EXPONENTS) sum[EXPONENTS + e][v] += e > 0 ? power * y : y;
  }
};

// The sums of a line, exponents 0 to 2. Squares need no chain, so only the marker and what is not finite is in the way.
// That is looked for in whole stretches of points, afterwards: a stretch in which there is something is not counted,
// and left to the caller. A test a point would take as long as the sums. With 10000 points this gains 16 ... 62 % over
// a pass by chains.
TESSARN_INLINE size_t add_line_points(const double* points, size_t n, double marker, double* sums) {
  // With two lanes, one vector of each sum at a time: the 16 registers of baseline x86-64 hold no more.
  constexpr size_t stretch = 128, vectors = width < 4 ? 1 : sum_vectors;
  const point_groups groups(points, n);
  plane_sums<3> counted;
  counted.load_from(sums);
  size_t i = 0;
  while (i < n) {
    const size_t end = n - i < stretch ? n : i + stretch;
    plane_sums<3> next = counted;
    mask bad = {};
    for (size_t first = 0; first < sum_vectors; first += vectors)
      for (size_t k = i; k < end; k += partial_sums)
        for (size_t v = first; v < first + vectors; ++v) {
          vec x, y;
          load_plane_points(groups.at(k) + 3 * v * width, x, y);
          bad |= x == broadcast(marker);
          next.add(0, v, x, y);
          next.add(1, v, x, y);
          next.add(2, v, x * x, y);
        }
    for (size_t v = 0; v < sum_vectors; ++v) bad |= not_finite(next.sum[2][v]);
    if (!none(bad)) break;
    counted = next;
    i = end;
  }
  counted.store_to(sums);
  return i;
}

// The powers of a vector of points.
template <size_t EXPONENTS>
struct keep_powers {
  vec* to;
  TESSARN_MEMBER void operator()(size_t e, const vec* power) const { to[e] = power[0]; }
};

// The sums of 5, 7, ..., 15 exponents, in one pass: the powers of a group of points go into the sums as they are made,
// and the sums stay in registers as far as there are enough. Ends before a group that the chains do not take, or where
// a power is in doubt. A group must be whole before it is added, therefore its powers wait in an array. With 10000
// points this gains 9 ... 88 % over the way through a block, most for few exponents.
template <size_t EXPONENTS>
TESSARN_INLINE size_t add_by_chains(const double* points, size_t n, double marker, double* sums) {
  const point_groups groups(points, n);
  const uint64_t marker_bits = bits_at(&marker);
  plane_sums<EXPONENTS> sum;
  sum.load_from(sums);
  size_t i = 0;
  for (; i < n; i += partial_sums) {
    const double* group = groups.at(i);
    if (!chains_take_group<EXPONENTS>(group, marker_bits)) break;
    vec power[sum_vectors][EXPONENTS], y[sum_vectors];
    half_exponent_chains<1, EXPONENTS> chain;
    TESSARN_KEEP_LOOP  // side by side, the chains of several vectors need more registers than there are
    for (size_t v = 0; v < sum_vectors; ++v) {
      vec x;
      load_plane_points(group + 3 * v * width, x, y[v]);
      chain.run(&x, EXPONENTS, keep_powers<EXPONENTS>{power[v]});
    }
    if (!none(chain.doubt)) break;
    TESSARN_UNROLL_MORE
    for (size_t e = 0; e < EXPONENTS; ++e)
      for (size_t v = 0; v < sum_vectors; ++v) sum.add(e, v, power[v][e], y[v]);
  }
  sum.store_to(sums);
  return i < n ? i : n;
}

size_t add_plane_points(const double* points, size_t n, double marker, unsigned exponents, double* sums) {
  switch (exponents) {
    case 3: return add_line_points(points, n, marker, sums);
    case 5: return add_by_chains<5>(points, n, marker, sums);
    case 7: return add_by_chains<7>(points, n, marker, sums);
    case 9: return add_by_chains<9>(points, n, marker, sums);
    case 11: return add_by_chains<11>(points, n, marker, sums);
    case 13: return add_by_chains<13>(points, n, marker, sums);
    case 15: return add_by_chains<15>(points, n, marker, sums);
    default: return 0;
  }
}

bool unpack_plane(const double* points, double marker, double* x, double* y) {
  mask marked = {};
  for (size_t i = 0; i < point_block; i += width) {
    vec px, py;
    load_plane_points(points + 3 * i, px, py);
    marked |= (px == broadcast(marker)) | (px != px);
    store(x + i, px);
    store(y + i, py);
  }
  return none(marked);
}

// Adds ROWS rows of a block, powers of the first n points, to their partial sums; with MOMENTS also the rows times y.
// The sums of all these rows stay in registers while the points pass.
template <size_t ROWS, bool MOMENTS>
TESSARN_INLINE void accumulate_rows(const double* row, const double* y, size_t n, double* sums, double* moments) {
  vec s[ROWS][sum_vectors], m[ROWS][sum_vectors];
  for (size_t r = 0; r < ROWS; ++r)
    for (size_t v = 0; v < sum_vectors; ++v) {
      s[r][v] = load(sums + r * partial_sums + v * width);
      m[r][v] = MOMENTS ? load(moments + r * partial_sums + v * width) : vec{};
    }
  for (size_t i = 0; i < n; i += partial_sums)
    for (size_t v = 0; v < sum_vectors; ++v) {
      const vec ordinate = MOMENTS ? load(y + i + v * width) : vec{};
      for (size_t r = 0; r < ROWS; ++r) {
        const vec p = load(row + r * point_block + i + v * width);
        s[r][v] += p;
        if (MOMENTS) m[r][v] += p * ordinate;
      }
    }
  for (size_t r = 0; r < ROWS; ++r)
    for (size_t v = 0; v < sum_vectors; ++v) {
      store(sums + r * partial_sums + v * width, s[r][v]);
      if (MOMENTS) store(moments + r * partial_sums + v * width, m[r][v]);
    }
}

// Any number of rows: ROWS at a time, then what is left in smaller numbers.
template <bool MOMENTS, size_t ROWS = rows_at_once>
TESSARN_INLINE void accumulate(const double* row, size_t rows, const double* y, size_t n, double* sums,
                               double* moments) {
  for (; rows >= ROWS; rows -= ROWS) {
    accumulate_rows<ROWS, MOMENTS>(row, y, n, sums, moments);
    row += ROWS * point_block;
    sums += ROWS * partial_sums;
    if (MOMENTS) moments += ROWS * partial_sums;
  }
  if constexpr (ROWS > 1) accumulate<MOMENTS, ROWS - 1>(row, rows, y, n, sums, moments);
}

void add_powers(const double* powers, const double* y, size_t n, unsigned exponents, double* sums) {
  const size_t with_moment = (exponents + 1) / 2;
  accumulate<true>(powers, with_moment, y, n, sums, sums + exponents * partial_sums);
  accumulate<false>(powers + with_moment * point_block, exponents - with_moment, y, n,
                    sums + with_moment * partial_sums, nullptr);
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
