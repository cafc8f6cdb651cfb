// The sums of the surface fits in lanes, for the kernels of the polynomials; each build has its own.
#pragma once

#include "poly/kernels/power_chains.inl"
#include "poly/kernels/fit_sums.inl"
#include "poly/kernels/kernels.h"

namespace tessarn::detail::TESSARN_ISA {

// Eight space points in the order of surface_lanes, for which seven shuffles of one step each do, and numbers that
// belong to them. Other widths take the points as they come.
#if defined(TESSARN_ISA_avx512)
static constexpr unsigned char surface_lanes[partial_sums] = {0, 2, 1, 3, 4, 6, 5, 7};
TESSARN_INLINE void load_surface_points(const double* p, vec& x, vec& y, vec& z) {
  const vec a = load(p), b = load(p + 8), c = load(p + 16), d = load(p + 24);
  const vec ab_xz = __builtin_shufflevector(a, b, 1, 9, 3, 11, 5, 13, 7, 15);
  const vec cd_xz = __builtin_shufflevector(c, d, 1, 9, 3, 11, 5, 13, 7, 15);
  const vec ab_y = __builtin_shufflevector(a, b, 0, 8, 2, 10, 4, 12, 6, 14);
  const vec cd_y = __builtin_shufflevector(c, d, 0, 8, 2, 10, 4, 12, 6, 14);
  x = __builtin_shufflevector(ab_xz, cd_xz, 0, 1, 4, 5, 8, 9, 12, 13);
  y = __builtin_shufflevector(ab_y, cd_y, 2, 3, 6, 7, 10, 11, 14, 15);
  z = __builtin_shufflevector(ab_xz, cd_xz, 2, 3, 6, 7, 10, 11, 14, 15);
}
TESSARN_INLINE vec load_for_surface(const double* p) {
  const vec v = load(p);
  return __builtin_shufflevector(v, v, 0, 2, 1, 3, 4, 6, 5, 7);
}
#else
static constexpr unsigned char surface_lanes[partial_sums] = {0, 1, 2, 3, 4, 5, 6, 7};
TESSARN_INLINE void load_surface_points(const double* p, vec& x, vec& y, vec& z) { load_space_points(p, x, y, z); }
TESSARN_INLINE vec load_for_surface(const double* p) { return load(p); }
#endif

// One power of y times the powers of x, for surfaces whose grade is a compile-time constant. Powers 0 are not multiplied with.
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

// Powers of a vector of x and of one of y, in rows from 2 on.
struct store_two_powers {
  double *px, *py;
  TESSARN_MEMBER void operator()(size_t e, const vec* power) const {
    if (e < 2) return;
    store(px + e * point_block, power[0]);
    store(py + e * point_block, power[1]);
  }
};

// Unpacks a block of space points with powers of a vector of x and one of y side by side. The next points are taken
// apart before these, to hide how long it takes.
template <size_t COUNT>
TESSARN_INLINE bool unpack_with_powers(const double* points, double* px, double* py, double* z) {
  half_exponent_chains<2, COUNT> chain;
  bool safe = true;
  vec next[2], next_z;
  load_surface_points(points, next[0], next[1], next_z);
  for (size_t i = 0; i < point_block; i += width) {
    const vec at[2] = {next[0], next[1]};
    store(px + point_block + i, at[0]);
    store(py + point_block + i, at[1]);
    store(z + i, next_z);
    load_surface_points(points + 4 * (i + width < point_block ? i + width : i), next[0], next[1], next_z);
    TESSARN_UNROLL_MORE
    for (size_t k = i; k < i + width; ++k)
      if (!chain_takes<COUNT>(points + 4 * k + 1) || !chain_takes<COUNT>(points + 4 * k + 2)) safe = false;
    chain.run(at, COUNT, store_two_powers{px + i, py + i});
  }
  return safe && none(chain.doubt);
}

// As many powers of y side by side as there are registers for their sums.
template <size_t G>
constexpr size_t most_rows = width < 8 ? 1 : G < 4 ? 3 : 2;

template <size_t G, bool WEIGHTED, size_t FIRST>
TESSARN_INLINE void add_surface_rows(const surface_blocks& blocks, double* sums, double* moments) {
  constexpr size_t side = 2 * G - 1;
  constexpr size_t rows = side - FIRST < most_rows<G> ? side - FIRST : most_rows<G>;
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
  if constexpr (FIRST + rows < side) add_surface_rows<G, WEIGHTED, FIRST + rows>(blocks, sums, moments);
}

// Sums of products that run side by side, with one y, w and z for all.
template <bool WEIGHTED, bool MOMENTS, size_t ROWS>
TESSARN_INLINE void add_product_rows(const double* px, const double* y, const double* w, const double* z, double* sums,
                                     double* moments) {
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

template <bool WEIGHTED, bool MOMENTS, size_t ROWS>
TESSARN_INLINE void add_at_most(size_t rows, const double* px, const double* y, const double* w, const double* z,
                                double* sums, double* moments) {
  if (rows == ROWS) return add_product_rows<WEIGHTED, MOMENTS, ROWS>(px, y, w, z, sums, moments);
  if constexpr (ROWS > 1) add_at_most<WEIGHTED, MOMENTS, ROWS - 1>(rows, px, y, w, z, sums, moments);
}

// The powers first .. last - 1 of x with one of y.
template <bool WEIGHTED, bool MOMENTS>
TESSARN_INLINE void add_product_range(size_t first, size_t last, const double* px, const double* y, const double* w,
                                      const double* z, double* sums, double* moments) {
  for (size_t rows; first < last; first += rows) {
    rows = last - first < product_rows ? last - first : product_rows;
    add_at_most<WEIGHTED, MOMENTS, product_rows>(rows, px + first * point_block, y, w, z, sums + first * partial_sums,
                                                 MOMENTS ? moments + first * partial_sums : nullptr);
  }
}

template <bool WEIGHTED>
TESSARN_INLINE void add_all_products(const double* px, const double* py, const double* w, const double* z, size_t g,
                                     double* sums, double* moments) {
  const size_t side = 2 * g - 1;
  for (size_t b = 0; b < side; ++b) {
    const double* y = py + b * point_block;
    double* row = sums + b * side * partial_sums;
    if (b < g) add_product_range<WEIGHTED, true>(0, g, px, y, w, z, row, moments + b * g * partial_sums);
    add_product_range<WEIGHTED, false>(b < g ? g : 0, side, px, y, w, z, row, nullptr);
  }
}

// For the grade 2, which needs no chains of powers, the sums stay in registers from the first point to the last.
template <bool WEIGHTED>
TESSARN_INLINE void add_points_of(const double* points, const double* w, size_t n, double* sums, double* moments) {
  for (size_t v = 0; v < partial_sums; v += width) {
    surface_row<2, WEIGHTED> row[3];
    TESSARN_UNROLL
    for (size_t b = 0; b < 3; ++b) row[b].load_from(sums + v, moments + v, b);
    for (size_t i = v; i < n; i += partial_sums) {
      vec x[3], y[3], z, weight = {};
      load_surface_points(points + 4 * i, x[1], y[1], z);
      x[2] = x[1] * x[1];
      y[2] = y[1] * y[1];
      if (WEIGHTED) {
        const vec factor = load_for_surface(w + i);
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

template <bool WEIGHTED>
TESSARN_INLINE void add_products_of(const surface_blocks& blocks, size_t g, double* sums, double* moments) {
  if (g == 2) return add_surface_rows<2, WEIGHTED, 0>(blocks, sums, moments);
  if (g == 3) return add_surface_rows<3, WEIGHTED, 0>(blocks, sums, moments);
  if (g == 4) return add_surface_rows<4, WEIGHTED, 0>(blocks, sums, moments);
  for (size_t k = 0; k < blocks.count; ++k) {
    const double* px = blocks.first + k * blocks.stride;
    const double* z = px + 2 * blocks.rows * point_block;
    add_all_products<WEIGHTED>(px, px + blocks.rows * point_block, z + point_block, z, g, sums, moments);
  }
}

}  // namespace tessarn::detail::TESSARN_ISA
