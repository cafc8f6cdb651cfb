// Product and elimination of complex matrices. Every product is rounded, (re re' - im im', re im' + im re'), and every
// sum runs in the stated order. Kernel sources only.
#pragma once

#include "core/lanes.h"

namespace tessarn::detail::TESSARN_ISA {

// A tile of the complex product: rows by vectors of columns, both parts in registers.
#if defined(TESSARN_ISA_avx512)
static constexpr size_t complex_rows = 4, complex_vectors = 2;
#else
static constexpr size_t complex_rows = 2, complex_vectors = 1;
#endif
static constexpr size_t complex_panel = complex_vectors * width;
static constexpr size_t complex_block = 32;  // rows of the left factor that are packed at a time

// The columns of a panel that begins at column x of n: whole vectors.
TESSARN_INLINE size_t panel_columns(size_t n, size_t x) {
  return n - x > width ? complex_panel : width;
}

// count entries of which the imaginary part follows the real one, step doubles apart; the real parts to re and the
// imaginary ones to im, room doubles each, zero behind the last entry.
TESSARN_INLINE void part(const double* entries, size_t step, size_t count, size_t room, double* re, double* im) {
  for (size_t x = 0; x < count; ++x) {
    re[x] = entries[x * step];
    im[x] = entries[x * step + 1];
  }
  for (size_t x = count; x < room; ++x) re[x] = im[x] = 0;
}

// Where the rows of the left factor are: the distance from row to row, from a real part to its imaginary part, and
// from column to column.
struct left_rows {
  const double* a;
  size_t row, imaginary, column;
};

// ROWS rows of the product's columns of one panel.
template <size_t ROWS, size_t VECTORS>
TESSARN_INLINE void complex_tile(left_rows left, const double* panel, size_t n, double* c, size_t step,
                                 size_t columns) {
  vec re[ROWS][VECTORS] = {};
  vec im[ROWS][VECTORS] = {};
  for (size_t k = 0; k < n; ++k) {
    for (size_t v = 0; v < VECTORS; ++v) {
      const vec b_re = load(panel + v * width);
      const vec b_im = load(panel + (VECTORS + v) * width);
      for (size_t r = 0; r < ROWS; ++r) {
        const vec f_re = broadcast_from(left.a + r * left.row);
        const vec f_im = broadcast_from(left.a + r * left.row + left.imaginary);
        re[r][v] += f_re * b_re - f_im * b_im;
        im[r][v] += f_re * b_im + f_im * b_re;
      }
    }
    left.a += left.column;
    panel += 2 * VECTORS * width;
  }
  for (size_t r = 0; r < ROWS; ++r) {
    double parts[2][VECTORS * width];
    for (size_t v = 0; v < VECTORS; ++v) {
      store(parts[0] + v * width, re[r][v]);
      store(parts[1] + v * width, im[r][v]);
    }
    double* row = c + r * n * step;
    for (size_t x = 0; x < columns; ++x) {
      row[x * step] = parts[0][x];
      row[x * step + 1] = parts[1][x];
    }
  }
}

template <size_t ROWS>
TESSARN_INLINE void complex_strip(left_rows left, const double* panel, size_t n, double* c, size_t step,
                                  size_t columns) {
  if (columns > width)
    complex_tile<ROWS, complex_vectors>(left, panel, n, c, step, columns);
  else
    complex_tile<ROWS, 1>(left, panel, n, c, step, columns);
}

// Strips of complex_rows rows, then of one, each k by k.
TESSARN_INLINE void pack_strips(const double* a, size_t step, size_t n, size_t rows, double* to) {
  for (size_t r = 0; r < rows;) {
    const size_t count = rows - r < complex_rows ? 1 : complex_rows;
    for (size_t k = 0; k < n; ++k, to += 2 * count) part(a + (r * n + k) * step, n * step, count, count, to, to + count);
    r += count;
  }
}

// Up to four columns: a row of the result is one vector for each part.
TESSARN_INLINE void complex_multiply_four(double* a, const double* b, size_t n, size_t step) {
  quad b_re[4], b_im[4];
  const auto row_of = [&](const double* p) {
    return quad{p[0], n > 1 ? p[step] : 0, n > 2 ? p[2 * step] : 0, n > 3 ? p[3 * step] : 0};
  };
  for (size_t k = 0; k < n; ++k) {
    b_re[k] = row_of(b + k * n * step);
    b_im[k] = row_of(b + k * n * step + 1);
  }
  for (size_t r = 0; r < n; ++r) {
    double* row = a + r * n * step;
    quad re = all_lanes(0), im = all_lanes(0);
    for (size_t k = 0; k < n; ++k) {
      const quad f_re = all_lanes(row[k * step]);
      const quad f_im = all_lanes(row[k * step + 1]);
      re = re + (f_re * b_re[k] - f_im * b_im[k]);
      im = im + (f_re * b_im[k] + f_im * b_re[k]);
    }
    for (size_t x = 0; x < n; ++x) {
      row[x * step] = re[x];
      row[x * step + 1] = im[x];
    }
  }
}

static size_t complex_workspace(size_t n) {
  const size_t columns = (n + complex_panel - 1) / complex_panel * complex_panel;
  return 2 * n * (columns + (n < complex_block ? n : complex_block));
}

static void complex_multiply(double* a, const double* b, size_t n, size_t step, double* workspace) {
  if (n <= 4) return complex_multiply_four(a, b, n, step);
  double* packed = workspace;
  for (size_t x = 0; x < n; x += complex_panel) {
    const size_t columns = panel_columns(n, x);
    for (size_t k = 0; k < n; ++k, packed += 2 * columns)
      part(b + (k * n + x) * step, step, n - x < columns ? n - x : columns, columns, packed, packed + columns);
  }
  // With one panel a row is read to its end before it is overwritten.
  const bool copied = n > complex_panel;
  double* strips = packed;
  for (size_t first = 0; first < n; first += complex_block) {
    const size_t rows = n - first < complex_block ? n - first : complex_block;
    if (copied) pack_strips(a + first * n * step, step, n, rows, strips);
    const double* panel = workspace;
    for (size_t x = 0; x < n; x += complex_panel) {
      const size_t columns = n - x < complex_panel ? n - x : complex_panel;
      double* c = a + (first * n + x) * step;
      for (size_t r = 0; r < rows;) {
        const size_t count = rows - r < complex_rows ? 1 : complex_rows;
        const left_rows left = copied ? left_rows{strips + 2 * r * n, 1, count, 2 * count}
                                      : left_rows{c + r * n * step, n * step, 1, step};
        if (count == 1)
          complex_strip<1>(left, panel, n, c + r * n * step, step, columns);
        else
          complex_strip<complex_rows>(left, panel, n, c + r * n * step, step, columns);
        r += count;
      }
      panel += 2 * n * panel_columns(n, x);
    }
  }
}

// ROWS rows from row on: row r becomes f row p + row r, f = entry / -pivot by the reciprocal of |pivot|^2.
struct complex_pivot {
  const double *re, *im;  // row p
  double q_re, q_im, square, reciprocal;
};
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

// Forward elimination without pivoting of rows x columns entries in rows of stride, columns <= stride - width, from the
// pivot's column on; the factor is 0 where |pivot|^2 is exactly 0. The padding behind the columns is overwritten.
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
