// Product and elimination of complex matrices. Every product is rounded, (re re' - im im', re im' + im re'), and every
// sum runs in the stated order. Kernel sources only.
#pragma once

#include "simd/lanes.h"

namespace tessarn::detail::TESSARN_ISA {

#if TESSARN_VECTOR_LANES
// A complex entry in memory is (*, re, im), like a plane point; * is the virtual table pointer, which is neither used
// as a number nor written. p points at the first real part.
typedef double unaligned_pair __attribute__((vector_size(16), aligned(8), may_alias));
TESSARN_INLINE unaligned_pair load_pair(const double* p) { return *reinterpret_cast<const unaligned_pair*>(p); }
TESSARN_INLINE void store_pair(double* p, unaligned_pair v) { *reinterpret_cast<unaligned_pair*>(p) = v; }
// load_pairs: width / 2 complex entries in one vector, real and imaginary parts alternating. Below, as many entries as
// there are lanes with their real parts in one vector and their imaginary parts in another.
#if TESSARN_LANES == 8
TESSARN_INLINE vec load_pairs(const double* p) {
  return __builtin_shufflevector(load(p), load(p + 3), 0, 1, 3, 4, 6, 7, 14, 15);
}
TESSARN_INLINE void store_pairs(double* p, vec v) {
  const auto low = __builtin_shufflevector(v, v, 0, 1, 2, 3), high = __builtin_shufflevector(v, v, 4, 5, 6, 7);
  store_pair(p, __builtin_shufflevector(low, low, 0, 1));
  store_pair(p + 3, __builtin_shufflevector(low, low, 2, 3));
  store_pair(p + 6, __builtin_shufflevector(high, high, 0, 1));
  store_pair(p + 9, __builtin_shufflevector(high, high, 2, 3));
}
TESSARN_INLINE vec swap_pairs(vec v) { return __builtin_shufflevector(v, v, 1, 0, 3, 2, 5, 4, 7, 6); }
TESSARN_INLINE void store_parts(double* p, vec re, vec im) {
  store_pairs(p, __builtin_shufflevector(re, im, 0, 8, 1, 9, 2, 10, 3, 11));
  store_pairs(p + 12, __builtin_shufflevector(re, im, 4, 12, 5, 13, 6, 14, 7, 15));
}
#elif TESSARN_LANES == 4
TESSARN_INLINE vec load_pairs(const double* p) {
  return __builtin_shufflevector(load_pair(p), load_pair(p + 3), 0, 1, 2, 3);
}
TESSARN_INLINE void store_pairs(double* p, vec v) {
  store_pair(p, __builtin_shufflevector(v, v, 0, 1));
  store_pair(p + 3, __builtin_shufflevector(v, v, 2, 3));
}
TESSARN_INLINE vec swap_pairs(vec v) { return __builtin_shufflevector(v, v, 1, 0, 3, 2); }
TESSARN_INLINE void store_parts(double* p, vec re, vec im) {
  store_pairs(p, __builtin_shufflevector(re, im, 0, 4, 1, 5));
  store_pairs(p + 6, __builtin_shufflevector(re, im, 2, 6, 3, 7));
}
#else
TESSARN_INLINE vec load_pairs(const double* p) { return load(p); }
TESSARN_INLINE void store_pairs(double* p, vec v) { store(p, v); }
TESSARN_INLINE vec swap_pairs(vec v) { return __builtin_shufflevector(v, v, 1, 0); }
TESSARN_INLINE void store_parts(double* p, vec re, vec im) {
  store_pairs(p, __builtin_shufflevector(re, im, 0, 2));
  store_pairs(p + 3, __builtin_shufflevector(re, im, 1, 3));
}
#endif
#else
TESSARN_INLINE void store_parts(double* p, vec re, vec im) {
  p[0] = re;
  p[1] = im;
}
#endif

// A tile of the complex product: rows by vectors of columns, the real and the imaginary parts of its sums in registers.
static constexpr size_t complex_rows = register_count < 32 ? 2 : 4, complex_vectors = register_count < 32 ? 1 : 2;
static constexpr size_t complex_panel = complex_vectors * width;
static constexpr size_t complex_block = 32;  // rows of the left factor that are packed at a time

static constexpr size_t entry_step = 3;  // doubles from entry to entry: the virtual table pointer, then the two parts

// The columns of a panel that begins at column x of n: whole vectors.
TESSARN_INLINE size_t panel_columns(size_t n, size_t x) { return n - x > width ? complex_panel : width; }

// Loads count <= width entries, of which the first real part is at from, and stores their real and their imaginary
// parts apart, with zeros behind the last.
TESSARN_INLINE void load_parts(const double* from, size_t count, double* re, double* im) {
  if (count == width) {
    vec whole_re, whole_im;
    load_plane_points(from - 1, whole_re, whole_im);
    store(re, whole_re);
    store(im, whole_im);
    return;
  }
  for (size_t x = 0; x < width; ++x) {
    re[x] = x < count ? from[x * entry_step] : 0;
    im[x] = x < count ? from[x * entry_step + 1] : 0;
  }
}

// Where the rows of the left factor are: the distances from row to row and from column to column; an imaginary part
// follows its real part.
struct left_rows {
  const double* a;
  size_t row, column;
};

// ROWS rows of the product, in the columns of one panel. The last panel may have fewer columns than its vectors have
// lanes: its sums go to a buffer first.
template <size_t ROWS, size_t VECTORS>
TESSARN_INLINE void complex_tile(left_rows left, const double* panel, size_t n, double* c, size_t columns) {
  vec re[ROWS][VECTORS], im[ROWS][VECTORS];
  TESSARN_UNROLL for (size_t r = 0; r < ROWS; ++r) TESSARN_UNROLL for (size_t v = 0; v < VECTORS; ++v) re[r][v] =
      im[r][v] = vec{};
  for (size_t k = 0; k < n; ++k) {
    TESSARN_UNROLL for (size_t v = 0; v < VECTORS; ++v) {
      const vec b_re = load(panel + 2 * v * width);
      const vec b_im = load(panel + (2 * v + 1) * width);
      TESSARN_UNROLL for (size_t r = 0; r < ROWS; ++r) {
        const vec f_re = broadcast_from(left.a + r * left.row);
        const vec f_im = broadcast_from(left.a + r * left.row + 1);
        re[r][v] += f_re * b_re - f_im * b_im;
        im[r][v] += f_re * b_im + f_im * b_re;
      }
    }
    left.a += left.column;
    panel += 2 * VECTORS * width;
  }
  if (columns == VECTORS * width) {
    TESSARN_UNROLL for (size_t r = 0; r < ROWS; ++r) TESSARN_UNROLL for (size_t v = 0; v < VECTORS; ++v)
        store_parts(c + (r * n + v * width) * entry_step, re[r][v], im[r][v]);
    return;
  }
  double sums[ROWS][2][VECTORS * width];
  TESSARN_UNROLL for (size_t r = 0; r < ROWS; ++r) {
    TESSARN_UNROLL for (size_t v = 0; v < VECTORS; ++v) {
      store(sums[r][0] + v * width, re[r][v]);
      store(sums[r][1] + v * width, im[r][v]);
    }
  }
  for (size_t r = 0; r < ROWS; ++r) {
    for (size_t x = 0; x < columns; ++x) {
      c[(r * n + x) * entry_step] = sums[r][0][x];
      c[(r * n + x) * entry_step + 1] = sums[r][1][x];
    }
  }
}

template <size_t ROWS>
TESSARN_INLINE void complex_strip(left_rows left, const double* panel, size_t n, double* c, size_t columns) {
  if (columns > width)
    complex_tile<ROWS, complex_vectors>(left, panel, n, c, columns);
  else
    complex_tile<ROWS, 1>(left, panel, n, c, columns);
}

static size_t complex_workspace(size_t n) {
  const size_t columns = (n + complex_panel - 1) / complex_panel * complex_panel;
  return 2 * n * (columns + (n < complex_block ? n : complex_block));
}

// Packs b once, in panels of columns with the parts apart, and a in blocks of rows, since c may be a. Each panel then
// meets each strip of rows.
static void complex_multiply(const double* a, const double* b, double* c, size_t n, double* workspace) {
  double* packed = workspace;
  for (size_t x = 0; x < n; x += complex_panel) {
    const size_t columns = panel_columns(n, x);
    for (size_t k = 0; k < n; ++k)
      for (size_t v = x; v < x + columns; v += width, packed += 2 * width)
        load_parts(b + (k * n + v) * entry_step, n - v < width ? n - v : width, packed, packed + width);
  }
  // With one panel a row is read to its end before it is overwritten where c is a.
  const bool copied = n > complex_panel;
  double* strips = packed;
  for (size_t first = 0; first < n; first += complex_block) {
    const size_t rows = n - first < complex_block ? n - first : complex_block;
    left_rows left = {a + first * n * entry_step, n * entry_step, entry_step};
    if (copied) {
      for (size_t i = 0; i < rows * n; ++i) {
        strips[2 * i] = left.a[i * entry_step];
        strips[2 * i + 1] = left.a[i * entry_step + 1];
      }
      left = {strips, 2 * n, 2};
    }
    const double* panel = workspace;
    for (size_t x = 0; x < n; x += complex_panel) {
      const size_t columns = n - x < complex_panel ? n - x : complex_panel;
      size_t r = 0;
      for (; r + complex_rows <= rows; r += complex_rows)
        complex_strip<complex_rows>({left.a + r * left.row, left.row, left.column}, panel, n,
                                    c + ((first + r) * n + x) * entry_step, columns);
      for (; r < rows; ++r)
        complex_strip<1>({left.a + r * left.row, left.row, left.column}, panel, n,
                         c + ((first + r) * n + x) * entry_step, columns);
      panel += 2 * n * panel_columns(n, x);
    }
  }
}

#if TESSARN_VECTOR_LANES
// The product for n = 4, with real and imaginary parts alternating in the vectors, so that a row of entries fills one
// vector or more. x y = Re x (Re y, Im y) + Im x (-Im y, Re y): adding the product with a negated number rounds as
// subtracting the product does. complex_multiply takes 1.3 times as long.
static void complex_multiply_four(const double* a, const double* b, double* c) {
  constexpr size_t vectors = 8 / width, step = width / 2 * entry_step;
  mask signs;
  TESSARN_UNROLL for (size_t l = 0; l < width; ++l) signs[l] = l % 2 == 0 ? INT64_MIN : 0;
  vec upright[4][vectors], turned[4][vectors];
  TESSARN_UNROLL for (size_t k = 0; k < 4; ++k) {
    TESSARN_UNROLL for (size_t v = 0; v < vectors; ++v) {
      upright[k][v] = load_pairs(b + k * 4 * entry_step + v * step);
      turned[k][v] = (vec)((mask)swap_pairs(upright[k][v]) ^ signs);
    }
  }
  TESSARN_UNROLL for (size_t r = 0; r < 4; ++r) {
    vec sum[vectors] = {};
    TESSARN_UNROLL for (size_t k = 0; k < 4; ++k) {
      const vec f_re = broadcast_from(a + (r * 4 + k) * entry_step);
      const vec f_im = broadcast_from(a + (r * 4 + k) * entry_step + 1);
      TESSARN_UNROLL for (size_t v = 0; v < vectors; ++v) sum[v] += f_re * upright[k][v] + f_im * turned[k][v];
    }
    TESSARN_UNROLL for (size_t v = 0; v < vectors; ++v) store_pairs(c + r * 4 * entry_step + v * step, sum[v]);
  }
}
#else
static void complex_multiply_four(const double* a, const double* b, double* c) {
  double workspace[2 * 4 * (4 + 4)];
  complex_multiply(a, b, c, 4, workspace);
}
#endif

// Row p with -pivot = (q_re, q_im), |pivot|^2 and its reciprocal.
struct complex_pivot {
  const double *re, *im;  // row p
  double q_re, q_im, square, reciprocal;
};
// ROWS rows: each becomes f * row p + row, f = entry / -pivot, from the column of the pivot on.
template <size_t ROWS>
TESSARN_INLINE void complex_rows_step(const complex_pivot& pivot, double* re, double* im, size_t p, size_t columns,
                                      size_t stride) {
  vec f_re[ROWS], f_im[ROWS];
  for (size_t r = 0; r < ROWS; ++r) {
    const double entry_re = re[r * stride + p], entry_im = im[r * stride + p];
    const bool zero = pivot.square == 0;
    f_re[r] = broadcast(zero ? 0 : (entry_im * pivot.q_im + entry_re * pivot.q_re) * pivot.reciprocal);
    f_im[r] = broadcast(zero ? 0 : (entry_im * pivot.q_re - entry_re * pivot.q_im) * pivot.reciprocal);
  }
  for (size_t c = p; c < columns; c += width) {
    const vec u_re = load(pivot.re + c);
    const vec u_im = load(pivot.im + c);
    for (size_t r = 0; r < ROWS; ++r) {
      double* to_re = re + r * stride + c;
      double* to_im = im + r * stride + c;
      store(to_re, (f_re[r] * u_re - f_im[r] * u_im) + load(to_re));
      store(to_im, (f_re[r] * u_im + f_im[r] * u_re) + load(to_im));
    }
  }
}

// Two rows at a time share the loads of row p.
static void complex_eliminate(double* re, double* im, size_t rows, size_t columns, size_t stride) {
  for (size_t p = 0; p + 1 < rows; ++p) {
    complex_pivot pivot = {re + p * stride, im + p * stride, 0, 0, 0, 0};
    pivot.q_re = -pivot.re[p];
    pivot.q_im = -pivot.im[p];
    pivot.square = pivot.q_im * pivot.q_im + pivot.q_re * pivot.q_re;
    pivot.reciprocal = 1 / pivot.square;
    size_t r = p + 1;
    for (; r + 2 <= rows; r += 2) complex_rows_step<2>(pivot, re + r * stride, im + r * stride, p, columns, stride);
    if (r < rows) complex_rows_step<1>(pivot, re + r * stride, im + r * stride, p, columns, stride);
  }
}

}  // namespace tessarn::detail::TESSARN_ISA
