// Arithmetic on columns for the decomposition: padded with zeros to whole blocks of eight rows. The order inside its
// sums is free; the one chosen here holds in every build: eight partial sums, row k in sum k mod 8, added as a balanced
// tree. Kernel sources only.
#pragma once

#include "simd/lanes.h"

namespace tessarn::detail::TESSARN_ISA::svd {

static constexpr size_t block_rows = 8;
static constexpr size_t block_vectors = block_rows / width;

struct block {
  vec s[block_vectors];
};

TESSARN_INLINE block load_block(const double* p) {
  block b;
  for (size_t i = 0; i < block_vectors; ++i) b.s[i] = load(p + i * width);
  return b;
}
TESSARN_INLINE void store_block(double* p, const block& b) {
  for (size_t i = 0; i < block_vectors; ++i) store(p + i * width, b.s[i]);
}
TESSARN_INLINE void add_product(block& sum, const block& a, const block& b) {
  for (size_t i = 0; i < block_vectors; ++i) sum.s[i] += a.s[i] * b.s[i];
}
TESSARN_INLINE void add_multiple(block& sum, double f, const block& b) {
  const vec factor = broadcast(f);
  for (size_t i = 0; i < block_vectors; ++i) sum.s[i] += factor * b.s[i];
}
// b from row count of the block on, and 0 before; count may be up to the rows of a block.
TESSARN_INLINE block from_row(const block& b, size_t count) {
  static const double window[2 * block_rows] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1};
  const block ones = load_block(window + block_rows - count);
  block kept;
  for (size_t i = 0; i < block_vectors; ++i) kept.s[i] = b.s[i] * ones.s[i];
  return kept;
}

TESSARN_INLINE double tree_sum(const double* s) {
  return ((s[0] + s[4]) + (s[2] + s[6])) + ((s[1] + s[5]) + (s[3] + s[7]));
}
TESSARN_INLINE double tree_sum(const block& b) {
  double s[block_rows];
  store_block(s, b);
  return tree_sum(s);
}

#if TESSARN_VECTOR_LANES
TESSARN_INLINE double root(double v) { return __builtin_sqrt(v); }
TESSARN_INLINE double magnitude(double v) { return __builtin_fabs(v); }
#else
TESSARN_INLINE double root(double v) { return sqrt(v); }
TESSARN_INLINE double magnitude(double v) { return fabs(v); }
#endif
TESSARN_INLINE double with_sign(double a, double b) { return b >= 0 ? magnitude(a) : -magnitude(a); }
TESSARN_INLINE double hypotenuse(double a, double b) { return root(a * a + b * b); }
// 0, or NaN where v is not finite.
TESSARN_INLINE double zero_unless_nonfinite(double v) { return v - v; }

// The reflection that turns a vector with the first entry f and the sum of squares s into (g, 0, 0, ...); its
// denominator is f g - s.
struct reflection {
  double g, denominator;
};
TESSARN_INLINE reflection reflect_away(double f, double s) {
  const double g = -with_sign(root(s), f);
  return {g, f * g - s};
}

TESSARN_INLINE size_t whole_blocks(size_t n) { return (n + block_rows - 1) / block_rows * block_rows; }
// The distance of two columns: an odd number of blocks for the longer ones, which would else share few cache lines.
TESSARN_INLINE size_t column_stride(size_t rows) {
  const size_t n = whole_blocks(rows);
  return n >= 8 * block_rows && n % (2 * block_rows) == 0 ? n + block_rows : n;
}

// reflect for COUNT columns side by side, so that p and q are loaded once for all of them.
template <size_t COUNT>
TESSARN_INLINE void reflect_group(const double* p, const double* q, size_t rows, double d, double g, double* columns,
                                  size_t stride) {
  block sum[COUNT] = {};
  for (size_t k = 0; k < rows; k += block_rows) {
    const block b = load_block(p + k);
    for (size_t j = 0; j < COUNT; ++j) add_product(sum[j], b, load_block(columns + j * stride + k));
  }
  double f[COUNT];
  for (size_t j = 0; j < COUNT; ++j) f[j] = (tree_sum(sum[j]) / d) * g;
  for (size_t k = 0; k < rows; k += block_rows) {
    const block b = load_block(q + k);
    for (size_t j = 0; j < COUNT; ++j) {
      block c = load_block(columns + j * stride + k);
      add_multiple(c, f[j], b);
      store_block(columns + j * stride + k, c);
    }
  }
}

// Each of count columns becomes column + ((p . column) / d) g q.
static void reflect(const double* p, const double* q, size_t rows, double d, double g, double* columns, size_t stride,
                    size_t count) {
  size_t j = 0;
  for (; j + 4 <= count; j += 4) reflect_group<4>(p, q, rows, d, g, columns + j * stride, stride);
  for (; j < count; ++j) reflect_group<1>(p, q, rows, d, g, columns + j * stride, stride);
}

// Rotates the column y and the column z = y + distance: (y, z) becomes (y c + z s, z c - y s).
TESSARN_INLINE void rotate(double* y, size_t distance, double c, double s, size_t rows) {
  double* z = y + distance;
  const vec cosine = broadcast(c);
  const vec sine = broadcast(s);
  for (size_t k = 0; k < rows; k += block_rows) {
    const block a = load_block(y + k);
    const block b = load_block(z + k);
    for (size_t i = 0; i < block_vectors; ++i) {
      store(y + k + i * width, a.s[i] * cosine + b.s[i] * sine);
      store(z + k + i * width, b.s[i] * cosine - a.s[i] * sine);
    }
  }
}

// Applies a sequence of rotations to VECTORS vectors of rows. The second column of one rotation is the first of the
// next, so it stays in registers.
template <size_t VECTORS>
TESSARN_INLINE void rotate_rows(double* columns, size_t stride, const double* rotations, size_t count) {
  vec y[VECTORS];
  for (size_t v = 0; v < VECTORS; ++v) y[v] = load(columns + v * width);
  for (size_t j = 0; j < count; ++j) {
    const vec c = broadcast(rotations[2 * j]);
    const vec s = broadcast(rotations[2 * j + 1]);
    double* next = columns + stride;
    for (size_t v = 0; v < VECTORS; ++v) {
      const vec z = load(next + v * width);
      store(columns + v * width, y[v] * c + z * s);
      y[v] = z * c - y[v] * s;
    }
    columns = next;
  }
  for (size_t v = 0; v < VECTORS; ++v) store(columns + v * width, y[v]);
}

// Applies count rotations (c, s): to the first and second column, the second and third, ...
static void rotate_columns(double* columns, size_t stride, size_t rows, const double* rotations, size_t count) {
  size_t k = 0;
  for (; k + 4 * width <= rows; k += 4 * width) rotate_rows<4>(columns + k, stride, rotations, count);
  for (; k < rows; k += width) rotate_rows<1>(columns + k, stride, rotations, count);
}

}  // namespace tessarn::detail::TESSARN_ISA::svd
