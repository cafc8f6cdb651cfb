// The sums of the fits of surfaces through space points, in lanes.
#pragma once

#include "poly/kernels/fit_sums.inl"
#include "poly/kernels/kernels.h"
#include "poly/kernels/power_chains.inl"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// The sums that power b of y enters, for a surface whose grade is a compile-time constant: with the powers of x, and
// for b < G the moments. Powers 0 are not multiplied with.
template <size_t G, bool WEIGHTED>
struct surface_row {
  static constexpr size_t side = 2 * G - 1;
  vec sum[side], moment[G];

  TESSARN_MEMBER void load_from(const double* sums, const double* moments, size_t b) {
    TESSARN_UNROLL
    for (size_t a = 0; a < side; ++a) sum[a] = load(sums + (side * b + a) * partial_sums);
    if (b >= G) return;
    TESSARN_UNROLL
    for (size_t a = 0; a < G; ++a) moment[a] = load(moments + (G * b + a) * partial_sums);
  }
  TESSARN_MEMBER void store_to(double* sums, double* moments, size_t b) const {
    TESSARN_UNROLL
    for (size_t a = 0; a < side; ++a) store(sums + (side * b + a) * partial_sums, sum[a]);
    if (b >= G) return;
    TESSARN_UNROLL
    for (size_t a = 0; a < G; ++a) store(moments + (G * b + a) * partial_sums, moment[a]);
  }
  // A vector of points: y is their power b of y, x their powers of x, w and z their weights and ordinates as
  // apply_weights makes them.
  TESSARN_MEMBER void add(size_t b, vec y, const vec* x, vec w, vec z) {
    TESSARN_UNROLL
    for (size_t a = 0; a < side; ++a) {
      const bool is_one = a == 0 && b == 0;
      const vec basis = a == 0 ? y : b == 0 ? x[a] : y * x[a];
      if (WEIGHTED)
        sum[a] += is_one ? w : basis * w;
      else if (!is_one)
        sum[a] += basis;
      if (a < G && b < G) moment[a] += is_one ? z : basis * z;
    }
  }
};

// Stores the powers from 2 on of a vector of x and of one of y in their rows.
struct store_two_powers {
  double *px, *py;
  TESSARN_MEMBER void operator()(size_t e, const vec* power) const {
    if (e < 2) return;
    store(px + e * point_block, power[0]);
    store(py + e * point_block, power[1]);
  }
};

// Unpacks a block of space points and forms the powers below 5, for the grade 3, in one pass: a vector of x and one of
// y are a group of two chains. The coordinates of the next points are taken apart before the powers of these are made,
// which hides the latency of the shuffles. Gains 10 ... 25 % over a pass for each.
TESSARN_INLINE bool unpack_with_powers(const double* points, double* px, double* py, double* z) {
  constexpr size_t count = 5;
  half_exponent_chains<2, count> chain;
  bool safe = true;
  vec next[2], next_z;
  load_space_points(points, next[0], next[1], next_z);
  for (size_t i = 0; i < point_block; i += width) {
    const vec at[2] = {next[0], next[1]};
    store(px + point_block + i, at[0]);
    store(py + point_block + i, at[1]);
    store(z + i, next_z);
    load_space_points(points + 4 * (i + width < point_block ? i + width : i), next[0], next[1], next_z);
    TESSARN_UNROLL_MORE
    for (size_t k = i; k < i + width; ++k)
      if (!chain_takes<count>(points + 4 * k + 1) || !chain_takes<count>(points + 4 * k + 2)) safe = false;
    chain.run(at, count, store_two_powers{px + i, py + i});
  }
  return safe && none(chain.doubt);
}

bool unpack_space(const double* points, size_t exponents, double* px, double* py, double* z) {
  if (exponents == 5) return unpack_with_powers(points, px, py, z);
  for (size_t i = 0; i < point_block; i += width) {
    vec x, y, pz;
    load_space_points(points + 4 * i, x, y, pz);
    store(px + point_block + i, x);
    store(py + point_block + i, y);
    store(z + i, pz);
  }
  return false;
}

void apply_weights(const double* w, double* z) {
  for (size_t i = 0; i < point_block; i += width) {
    const vec weight = load(w + i);
    store(z + i, (weight * load(z + i)) * weight);
    store(z + point_block + i, weight * weight);
  }
}

// So many powers of y side by side have registers for their sums.
template <size_t G>
constexpr size_t max_rows = width < 8 ? 1
                            : G < 4   ? 3
                                      : 2;

// All sums of a grade that is a compile-time constant: the powers of y from FIRST on, a few at a time, whose sums stay
// in registers while the points of all blocks pass. Gains 13 ... 36 % for the grades 3 and 4 over accumulate_products.
template <size_t G, bool WEIGHTED, size_t FIRST = 0>
TESSARN_INLINE void accumulate_surface(const surface_blocks& blocks, double* sums, double* moments) {
  constexpr size_t side = 2 * G - 1;
  constexpr size_t rows = side - FIRST < max_rows<G> ? side - FIRST : max_rows<G>;
  for (size_t v = 0; v < partial_sums; v += width) {
    surface_row<G, WEIGHTED> row[rows];
    TESSARN_UNROLL
    for (size_t r = 0; r < rows; ++r) row[r].load_from(sums + v, moments + v, FIRST + r);
    for (size_t at = v; at < blocks.count * point_block; at += partial_sums) {
      const double* px = blocks.first + at / point_block * blocks.stride;
      const double* py = px + blocks.rows * point_block;
      const double* z = py + blocks.rows * point_block;
      const size_t i = at % point_block;
      vec x[side];
      TESSARN_UNROLL
      for (size_t a = 1; a < side; ++a) x[a] = load(px + a * point_block + i);
      const vec weight = WEIGHTED ? load(z + point_block + i) : vec{}, ordinate = FIRST < G ? load(z + i) : vec{};
      TESSARN_UNROLL
      for (size_t r = 0; r < rows; ++r) {
        const size_t b = FIRST + r;
        row[r].add(b, b == 0 ? vec{} : load(py + b * point_block + i), x, weight, ordinate);
      }
    }
    TESSARN_UNROLL
    for (size_t r = 0; r < rows; ++r) row[r].store_to(sums + v, moments + v, FIRST + r);
  }
  if constexpr (FIRST + rows < side) accumulate_surface<G, WEIGHTED, FIRST + rows>(blocks, sums, moments);
}

// Adds the products of ROWS powers of x with one power of y, of a block of points, to their partial sums; with MOMENTS
// also the products times z.
template <bool WEIGHTED, bool MOMENTS, size_t ROWS>
TESSARN_INLINE void accumulate_product_rows(const double* px, const double* y, const double* w, const double* z,
                                            double* sums, double* moments) {
  vec s[ROWS][sum_vectors], m[ROWS][sum_vectors];
  for (size_t r = 0; r < ROWS; ++r)
    for (size_t v = 0; v < sum_vectors; ++v) {
      s[r][v] = load(sums + r * partial_sums + v * width);
      m[r][v] = MOMENTS ? load(moments + r * partial_sums + v * width) : vec{};
    }
  for (size_t i = 0; i < point_block; i += partial_sums)
    for (size_t v = 0; v < sum_vectors; ++v)
      for (size_t r = 0; r < ROWS; ++r) {
        const size_t at = i + v * width;
        const vec basis = load(y + at) * load(px + r * point_block + at);
        s[r][v] += WEIGHTED ? basis * load(w + at) : basis;
        if (MOMENTS) m[r][v] += basis * load(z + at);
      }
  for (size_t r = 0; r < ROWS; ++r)
    for (size_t v = 0; v < sum_vectors; ++v) {
      store(sums + r * partial_sums + v * width, s[r][v]);
      if (MOMENTS) store(moments + r * partial_sums + v * width, m[r][v]);
    }
}

// Any number of powers of x: ROWS at a time, then what is left in smaller numbers.
template <bool WEIGHTED, bool MOMENTS, size_t ROWS = rows_at_once>
TESSARN_INLINE void accumulate_products(size_t rows, const double* px, const double* y, const double* w,
                                        const double* z, double* sums, double* moments) {
  for (; rows >= ROWS; rows -= ROWS) {
    accumulate_product_rows<WEIGHTED, MOMENTS, ROWS>(px, y, w, z, sums, moments);
    px += ROWS * point_block;
    sums += ROWS * partial_sums;
    if (MOMENTS) moments += ROWS * partial_sums;
  }
  if constexpr (ROWS > 1) accumulate_products<WEIGHTED, MOMENTS, ROWS - 1>(rows, px, y, w, z, sums, moments);
}

// All sums of any grade g, power of y by power of y. The moments are there for the first g powers of x and y.
template <bool WEIGHTED>
TESSARN_INLINE void accumulate_block(const double* px, const double* py, const double* w, const double* z, size_t g,
                                     double* sums, double* moments) {
  const size_t side = 2 * g - 1;
  for (size_t b = 0; b < side; ++b) {
    const double* y = py + b * point_block;
    double* row = sums + b * side * partial_sums;
    const size_t with_moment = b < g ? g : 0;
    accumulate_products<WEIGHTED, true>(with_moment, px, y, w, z, row, moments + b * g * partial_sums);
    accumulate_products<WEIGHTED, false>(side - with_moment, px + with_moment * point_block, y, w, z,
                                         row + with_moment * partial_sums, nullptr);
  }
}

template <bool WEIGHTED>
TESSARN_INLINE void accumulate_blocks(const surface_blocks& blocks, size_t g, double* sums, double* moments) {
  if (g == 3) return accumulate_surface<3, WEIGHTED>(blocks, sums, moments);
  if (g == 4) return accumulate_surface<4, WEIGHTED>(blocks, sums, moments);
  for (size_t k = 0; k < blocks.count; ++k) {
    const double* px = blocks.first + k * blocks.stride;
    const double* z = px + 2 * blocks.rows * point_block;
    accumulate_block<WEIGHTED>(px, px + blocks.rows * point_block, z + point_block, z, g, sums, moments);
  }
}

void add_products(const surface_blocks& blocks, bool weighted, unsigned g, double* sums, double* moments) {
  if (weighted)
    accumulate_blocks<true>(blocks, g, sums, moments);
  else
    accumulate_blocks<false>(blocks, g, sums, moments);
}

// For the grade 2, which needs no chains of powers, straight from the points: all sums of a vector of lanes stay in
// registers from the first point to the last. The next points are taken apart before these are added.
template <bool WEIGHTED>
TESSARN_INLINE void accumulate_points(const double* points, const double* w, size_t n, double* sums, double* moments) {
  for (size_t v = 0; v < partial_sums; v += width) {
    surface_row<2, WEIGHTED> row[3];
    TESSARN_UNROLL
    for (size_t b = 0; b < 3; ++b) row[b].load_from(sums + v, moments + v, b);
    vec next_x, next_y, next_z;
    load_space_points(points + 4 * v, next_x, next_y, next_z);
    for (size_t i = v; i < n; i += partial_sums) {
      vec x[3] = {vec{}, next_x}, y[3] = {vec{}, next_y}, z = next_z, weight = {};
      load_space_points(points + 4 * (i + partial_sums < n ? i + partial_sums : i), next_x, next_y, next_z);
      x[2] = x[1] * x[1];
      y[2] = y[1] * y[1];
      if (WEIGHTED) {
        const vec factor = load(w + i);
        z = (factor * z) * factor;
        weight = factor * factor;
      }
      row[0].add(0, vec{}, x, weight, z);
      row[1].add(1, y[1], x, weight, z);
      row[2].add(2, y[2], x, weight, z);
    }
    TESSARN_UNROLL
    for (size_t b = 0; b < 3; ++b) row[b].store_to(sums + v, moments + v, b);
  }
}

void add_points(const double* points, const double* w, size_t n, double* sums, double* moments) {
  if (w)
    accumulate_points<true>(points, w, n, sums, moments);
  else
    accumulate_points<false>(points, w, n, sums, moments);
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
