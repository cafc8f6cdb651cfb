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

// Groups of points whose chains of powers run side by side, to hide the latency of the steps: as many as there are
// registers for. With 32 registers two gain 6 ... 14 %, with 16 they lose up to 12 %.
constexpr size_t groups_at_once = register_count < 32 ? 1 : 2;

// n points in groups of partial_sums, point i of a group for lane i. GROUPS of them are taken at once, the last ones
// filled up with zeros, which change no sum: sums begin with +0.0, and so are never -0.0.
template <size_t GROUPS>
class point_groups {
 public:
  TESSARN_MEMBER point_groups(const double* points, size_t n) : points_(points), whole_(n - n % partial_sums) {
    if (GROUPS == 1 && n == whole_) return;
    for (size_t k = 0; k < GROUPS * partial_sums; ++k) {
      rest_[3 * k + 1] = whole_ + k < n ? points[3 * (whole_ + k) + 1] : 0;
      rest_[3 * k + 2] = whole_ + k < n ? points[3 * (whole_ + k) + 2] : 0;
    }
  }
  // The group that begins with point i.
  TESSARN_MEMBER const double* at(size_t i) const {
    return i < whole_ ? points_ + 3 * i : rest_ + (GROUPS > 1 ? 3 * (i - whole_) : 0);
  }

 private:
  const double* points_;
  size_t whole_;
  double rest_[GROUPS * partial_sums * 3];
};

// The sums of a line: of x and x^2, and behind them of y and x y.
struct line_sums {
  static constexpr size_t rows = 5;
  vec sum[rows][sum_vectors];

  TESSARN_MEMBER void load_from(const double* sums) {
    for (size_t v = 0; v < sum_vectors; ++v)
      for (size_t k = 1; k < rows; ++k) sum[k][v] = load(sums + k * partial_sums + v * width);
  }
  TESSARN_MEMBER void store_to(double* sums) const {
    for (size_t v = 0; v < sum_vectors; ++v)
      for (size_t k = 1; k < rows; ++k) store(sums + k * partial_sums + v * width, sum[k][v]);
  }
  // The points in lanes v * width to (v + 1) * width - 1.
  TESSARN_MEMBER void add(size_t v, vec x, vec y) {
    sum[3][v] += y;
    sum[1][v] += x;
    sum[4][v] += x * y;
    sum[2][v] += x * x;
  }
};

// The sums of a line, exponents 0 to 2. Squares need no chain, so only the marker and what is not finite is in the way.
// That is looked for in whole stretches of points, afterwards: a stretch in which there is something is not counted,
// and left to the caller. A test a point would take as long as the sums. With 10000 points this gains 16 ... 62 % over
// a pass by chains.
TESSARN_INLINE size_t add_line_points(const double* points, size_t n, double marker, double* sums) {
  // With two lanes, one vector of each sum at a time: the 16 registers of baseline x86-64 hold no more.
  constexpr size_t stretch = 128, vectors = width < 4 ? 1 : sum_vectors;
  const point_groups<1> groups(points, n);
  line_sums counted;
  counted.load_from(sums);
  size_t i = 0;
  while (i < n) {
    const size_t end = n - i < stretch ? n : i + stretch;
    line_sums next = counted;
    mask bad = {};
    for (size_t first = 0; first < sum_vectors; first += vectors)
      for (size_t k = i; k < end; k += partial_sums)
        for (size_t v = first; v < first + vectors; ++v) {
          vec x, y;
          load_plane_points(groups.at(k) + 3 * v * width, x, y);
          bad |= x == broadcast(marker);
          next.add(v, x, y);
        }
    for (size_t v = 0; v < sum_vectors; ++v) bad |= not_finite(next.sum[2][v]);
    if (!none(bad)) break;
    counted = next;
    i = end;
  }
  counted.store_to(sums);
  return i;
}

// Adds the powers of points, one vector from each of the groups side by side, to their partial sums, and the powers
// times y. The sums stay in memory: where they are in registers, the chains are not, which takes up to a tenth longer.
template <size_t EXPONENTS>
struct add_to_sums {
  double* sums;
  const vec* y;

  TESSARN_MEMBER void operator()(size_t e, const vec* power) const {
    if (e > 0) add(e, power);
    if (2 * e >= EXPONENTS) return;
    vec moment[groups_at_once];
    TESSARN_UNROLL
    for (size_t g = 0; g < groups_at_once; ++g) moment[g] = e > 0 ? power[g] * y[g] : y[g];
    add(EXPONENTS + e, moment);
  }
  TESSARN_MEMBER void add(size_t row, const vec* terms) const {
    vec sum = load(sums + row * partial_sums);
    TESSARN_UNROLL
    for (size_t g = 0; g < groups_at_once; ++g) sum += terms[g];
    store(sums + row * partial_sums, sum);
  }
};

// Whether a chain takes the abscissas of a vector of points: none is the marker, which is not 0, and none outside the
// safe range.
template <size_t EXPONENTS>
TESSARN_INLINE bool chains_take(const double* points, uint64_t marker) {
  TESSARN_UNROLL
  for (size_t k = 0; k < width; ++k) {
    const double* x = points + 3 * k + 1;
    if (bits_at(x) == marker || !chain_takes<EXPONENTS>(x)) return false;
  }
  return true;
}

// Adds the points i to end - 1, vector by vector of the partial sums. The next points are loaded before the chains of
// these run, which hides the latency of the shuffles. False where there is a point that chains do not take, or a power
// in doubt; the sums are of no use then.
template <size_t EXPONENTS>
TESSARN_INLINE bool add_stretch(const point_groups<groups_at_once>& groups, size_t i, size_t end, uint64_t marker,
                                double* sums) {
  constexpr size_t step = groups_at_once * partial_sums;
  mask doubt = {};
  for (size_t v = 0; v < partial_sums; v += width) {
    half_exponent_chains<groups_at_once, EXPONENTS> chain;
    vec next_x[groups_at_once], next_y[groups_at_once];
    TESSARN_UNROLL
    for (size_t g = 0; g < groups_at_once; ++g)
      load_plane_points(groups.at(i + g * partial_sums) + 3 * v, next_x[g], next_y[g]);
    TESSARN_KEEP_LOOP
    for (size_t k = i; k < end; k += step) {
      const size_t next = k + step < end ? k + step : k;
      vec x[groups_at_once], y[groups_at_once];
      TESSARN_UNROLL
      for (size_t g = 0; g < groups_at_once; ++g) {
        if (!chains_take<EXPONENTS>(groups.at(k + g * partial_sums) + 3 * v, marker)) return false;
        x[g] = next_x[g];
        y[g] = next_y[g];
        load_plane_points(groups.at(next + g * partial_sums) + 3 * v, next_x[g], next_y[g]);
      }
      chain.run(x, EXPONENTS, add_to_sums<EXPONENTS>{sums + v, y});
    }
    doubt |= chain.doubt;
  }
  return none(doubt);
}

TESSARN_INLINE void copy_sums(const double* from, double* to, size_t length) {
  for (size_t k = 0; k < length; k += width) store(to + k, load(from + k));
}

// The sums of 5, 7, ..., 15 exponents, in one pass: the powers of a vector of points go into the sums as they are made.
// A stretch of point_block points is added to a copy of the sums, which takes their place where all went well. One with
// a point that the chains do not take, or a power in doubt, is not counted and ends the pass. With 10000 points this
// gains 19 ... 58 % over the way through a block.
template <size_t EXPONENTS>
TESSARN_INLINE size_t add_by_chains(const double* points, size_t n, double marker, double* sums) {
  constexpr size_t length = (EXPONENTS + (EXPONENTS + 1) / 2) * partial_sums;
  const point_groups<groups_at_once> groups(points, n);
  const uint64_t marker_bits = bits_at(&marker);
  alignas(64) double other[length];
  double *counted = sums, *next = other;
  size_t i = 0;
  while (i < n) {
    const size_t end = n - i < point_block ? n : i + point_block;
    copy_sums(counted, next, length);
    if (!add_stretch<EXPONENTS>(groups, i, end, marker_bits, next)) break;
    double* const old = counted;
    counted = next;
    next = old;
    i = end;
  }
  if (counted != sums) copy_sums(counted, sums, length);
  return i;
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
