// The matrix product on arrays: register tiles over the entries of the result. Every entry is one sum over k
// ascending; products and sums are rounded separately. Kernel sources only.
#pragma once

#include "matrix/kernels/kernels.h"
#include "simd/lanes.h"

namespace tessarn::detail::TESSARN_ISA {

// A tile has tile_rows rows and up to tile_vectors vectors of columns. Its sums, a row of b and a factor are all in
// registers. Sums over k longer than depth are continued from the stored part, so that the panels stay in the caches.
static constexpr size_t tile_rows = register_count < 32 ? 4 : 8, tile_vectors = register_count < 32 ? 2 : 3;
static constexpr size_t depth = 256, row_block = 96;

enum start_mode { from_zero, from_stored };
enum tile_mode { add_products, subtract_products };

// c = start +- a b for ROWS x (VECTORS * width) entries; a at a[r * row_stride + k * k_stride], b in rows of
// b_stride. The NaN rule is applied where rule is set.
template <size_t ROWS, size_t VECTORS, start_mode START, tile_mode MODE>
TESSARN_INLINE void tile(const double* a, size_t row_stride, size_t k_stride, const double* b, size_t b_stride,
                         size_t count, double* c, size_t c_stride, bool rule) {
  vec sum[ROWS][VECTORS];
  for (size_t r = 0; r < ROWS; ++r)
    for (size_t v = 0; v < VECTORS; ++v) sum[r][v] = START == from_zero ? vec{} : load(c + r * c_stride + v * width);
  for (size_t k = 0; k < count; ++k) {
    vec row[VECTORS];
    for (size_t v = 0; v < VECTORS; ++v) row[v] = load(b + v * width);
    for (size_t r = 0; r < ROWS; ++r) {
      const vec factor = broadcast_from(a + r * row_stride);
      for (size_t v = 0; v < VECTORS; ++v) {
        if (MODE == add_products)
          sum[r][v] += factor * row[v];
        else
          sum[r][v] -= factor * row[v];
      }
    }
    a += k_stride;
    b += b_stride;
  }
  for (size_t r = 0; r < ROWS; ++r)
    for (size_t v = 0; v < VECTORS; ++v) store(c + r * c_stride + v * width, rule ? without_nan(sum[r][v]) : sum[r][v]);
}

// VECTORS vectors of columns and any number of rows, in tiles of tile_rows, 4, 2 and 1 rows.
template <size_t VECTORS, start_mode START, tile_mode MODE>
TESSARN_INLINE void tile_column(const double* a, size_t row_stride, size_t k_stride, const double* b, size_t b_stride,
                                size_t count, double* c, size_t c_stride, size_t rows, bool rule) {
  size_t r = 0;
  for (; r + tile_rows <= rows; r += tile_rows)
    tile<tile_rows, VECTORS, START, MODE>(a + r * row_stride, row_stride, k_stride, b, b_stride, count,
                                          c + r * c_stride, c_stride, rule);
  if (tile_rows > 4 && r + 4 <= rows) {
    tile<4, VECTORS, START, MODE>(a + r * row_stride, row_stride, k_stride, b, b_stride, count, c + r * c_stride,
                                  c_stride, rule);
    r += 4;
  }
  if (r + 2 <= rows) {
    tile<2, VECTORS, START, MODE>(a + r * row_stride, row_stride, k_stride, b, b_stride, count, c + r * c_stride,
                                  c_stride, rule);
    r += 2;
  }
  if (r < rows)
    tile<1, VECTORS, START, MODE>(a + r * row_stride, row_stride, k_stride, b, b_stride, count, c + r * c_stride,
                                  c_stride, rule);
}

template <start_mode START, tile_mode MODE>
static void tile_columns(size_t vectors, const double* a, size_t row_stride, size_t k_stride, const double* b,
                         size_t b_stride, size_t count, double* c, size_t c_stride, size_t rows, bool rule) {
  switch (vectors) {
    case 1: return tile_column<1, START, MODE>(a, row_stride, k_stride, b, b_stride, count, c, c_stride, rows, rule);
    case 2: return tile_column<2, START, MODE>(a, row_stride, k_stride, b, b_stride, count, c, c_stride, rows, rule);
    default:
      return tile_column<tile_vectors, START, MODE>(a, row_stride, k_stride, b, b_stride, count, c, c_stride, rows,
                                                    rule);
  }
}

#if TESSARN_VECTOR_LANES
// Four columns by ROWS rows: for 4 x 4 matrices, and for columns that are left beside wider vectors.
template <size_t ROWS, start_mode START, tile_mode MODE>
TESSARN_INLINE void four_columns(const double* a, size_t a_stride, const double* b, size_t b_stride, size_t count,
                                 double* c, size_t c_stride, bool rule) {
  quad sum[ROWS];
  for (size_t r = 0; r < ROWS; ++r) sum[r] = START == from_zero ? all_lanes(0) : load_quad(c + r * c_stride);
  for (size_t k = 0; k < count; ++k) {
    const quad row = load_quad(b + k * b_stride);
    for (size_t r = 0; r < ROWS; ++r) {
      const quad p = all_lanes(a[r * a_stride + k]) * row;
      sum[r] = MODE == add_products ? sum[r] + p : sum[r] - p;
    }
  }
  for (size_t r = 0; r < ROWS; ++r) store_quad(c + r * c_stride, rule ? quad_without_nan(sum[r]) : sum[r]);
}
#endif

// The last columns of a result, fewer than a vector: four together, the rest one by one.
template <start_mode START, tile_mode MODE>
static void narrow_columns(const double* a, size_t a_stride, const double* b, size_t b_stride, size_t count, double* c,
                           size_t c_stride, size_t rows, size_t columns, bool rule) {
  size_t first = 0;
#if TESSARN_VECTOR_LANES
  if (columns >= 4) {
    size_t r = 0;
    for (; r + 4 <= rows; r += 4)
      four_columns<4, START, MODE>(a + r * a_stride, a_stride, b, b_stride, count, c + r * c_stride, c_stride, rule);
    for (; r < rows; ++r)
      four_columns<1, START, MODE>(a + r * a_stride, a_stride, b, b_stride, count, c + r * c_stride, c_stride, rule);
    first = 4;
  }
#endif
  for (size_t r = 0; r < rows; ++r)
    for (size_t x = first; x < columns; ++x) {
      double sum = START == from_zero ? 0.0 : c[r * c_stride + x];
      for (size_t k = 0; k < count; ++k) {
        const double p = a[r * a_stride + k] * b[k * b_stride + x];
        if (MODE == add_products)
          sum += p;
        else
          sum -= p;
      }
      c[r * c_stride + x] = rule && !(sum == sum) ? 0.0 : sum;
    }
}

// The product without packed copies, for operands that the nearest cache holds.
template <start_mode START, tile_mode MODE>
static void multiply_unpacked(const double* a, size_t a_stride, const double* b, size_t b_stride, double* c,
                              size_t c_stride, size_t rows, size_t count, size_t columns, bool rule) {
  size_t x = 0;
  while (columns - x >= width) {
    size_t vectors = (columns - x) / width;
    if (vectors > tile_vectors) vectors = tile_vectors;
    tile_columns<START, MODE>(vectors, a, a_stride, 1, b + x, b_stride, count, c + x, c_stride, rows, rule);
    x += vectors * width;
  }
  if (x < columns)
    narrow_columns<START, MODE>(a, a_stride, b + x, b_stride, count, c + x, c_stride, rows, columns - x, rule);
}

// Packs b in panels of up to tile_vectors vectors of columns, row by row in each panel.
TESSARN_INLINE void pack_columns(const double* b, size_t b_stride, size_t count, size_t columns, double* to) {
  for (size_t x = 0; x + width <= columns;) {
    size_t vectors = (columns - x) / width;
    if (vectors > tile_vectors) vectors = tile_vectors;
    for (size_t k = 0; k < count; ++k)
      for (size_t v = 0; v < vectors; ++v, to += width) store(to, load(b + k * b_stride + x + v * width));
    x += vectors * width;
  }
}

// Packs a in strips of tile_rows rows, column by column in each strip.
TESSARN_INLINE void pack_rows(const double* a, size_t a_stride, size_t rows, size_t count, double* to) {
  for (size_t r = 0; r + tile_rows <= rows; r += tile_rows)
    for (size_t k = 0; k < count; ++k)
      for (size_t i = 0; i < tile_rows; ++i) *to++ = a[(r + i) * a_stride + k];
}

// The doubles that a block of packed rows takes, which the packed columns follow in the workspace; and those of both.
TESSARN_INLINE size_t packed_rows(size_t rows, size_t inner) {
  return (rows < row_block ? rows : row_block) * (inner < depth ? inner : depth);
}
TESSARN_INLINE size_t packed_size(size_t rows, size_t inner, size_t columns) {
  return packed_rows(rows, inner) + (inner < depth ? inner : depth) * columns;
}

// c = c +- a b, or a b from zero, with packed copies in the workspace: panels of b, `depth` rows high, and strips of a,
// so that a tile reads both from first to last. Packing costs a pass over each operand; it pays where the operands are
// too large for the nearest cache.
template <tile_mode MODE>
static void multiply_packed(const double* a, size_t a_stride, const double* b, size_t b_stride, double* c,
                            size_t c_stride, size_t rows, size_t inner, size_t columns, bool zero, bool rule,
                            double* workspace) {
  double* packed_a = workspace;
  double* packed_b = workspace + packed_rows(rows, inner);
  const size_t whole = columns - columns % width;
  for (size_t k0 = 0; k0 < inner; k0 += depth) {
    const size_t count = inner - k0 < depth ? inner - k0 : depth;
    const bool start = zero && k0 == 0;
    const bool last = rule && k0 + count == inner;
    pack_columns(b + k0 * b_stride, b_stride, count, columns, packed_b);
    for (size_t r0 = 0; r0 < rows; r0 += row_block) {
      const size_t block = rows - r0 < row_block ? rows - r0 : row_block;
      const size_t strips = block - block % tile_rows;
      const double* block_a = a + r0 * a_stride + k0;
      pack_rows(block_a, a_stride, block, count, packed_a);
      const double* panel = packed_b;
      for (size_t x = 0; x < whole;) {
        size_t vectors = (whole - x) / width;
        if (vectors > tile_vectors) vectors = tile_vectors;
        const size_t b_step = vectors * width;
        for (size_t r = 0; r < strips; r += tile_rows) {
          double* entry = c + (r0 + r) * c_stride + x;
          if (start)
            tile_columns<from_zero, MODE>(vectors, packed_a + r * count, 1, tile_rows, panel, b_step, count, entry,
                                          c_stride, tile_rows, last);
          else
            tile_columns<from_stored, MODE>(vectors, packed_a + r * count, 1, tile_rows, panel, b_step, count, entry,
                                            c_stride, tile_rows, last);
        }
        double* entry = c + (r0 + strips) * c_stride + x;
        const double* rest = block_a + strips * a_stride;
        if (start)
          tile_columns<from_zero, MODE>(vectors, rest, a_stride, 1, panel, b_step, count, entry, c_stride,
                                        block - strips, last);
        else
          tile_columns<from_stored, MODE>(vectors, rest, a_stride, 1, panel, b_step, count, entry, c_stride,
                                          block - strips, last);
        panel += b_step * count;
        x += b_step;
      }
      if (whole < columns) {
        const double* narrow_b = b + k0 * b_stride + whole;
        double* narrow_c = c + r0 * c_stride + whole;
        if (start)
          narrow_columns<from_zero, MODE>(block_a, a_stride, narrow_b, b_stride, count, narrow_c, c_stride, block,
                                          columns - whole, last);
        else
          narrow_columns<from_stored, MODE>(block_a, a_stride, narrow_b, b_stride, count, narrow_c, c_stride, block,
                                            columns - whole, last);
      }
    }
  }
}

}  // namespace tessarn::detail::TESSARN_ISA
