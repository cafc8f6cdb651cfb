// The reduction of a matrix to bidiagonal form by Householder reflections, and their accumulation into U and V. Kernel
// sources only.
#pragma once

#include "matrix/kernels/decomposition.inl"

namespace tessarn::detail::TESSARN_ISA::svd {

// Sums of squares in this range come from entries whose squares neither overflow nor lose digits that count, so the
// columns need no scaling.
static constexpr double smallest_square = 1e-200;
static constexpr double largest_square = 1e200;

// Makes column i zero below the diagonal, scaled by its sum of magnitudes, for squares that might overflow or vanish.
// The later columns are reflected at once; returns the diagonal entry.
static double scaled_column_step(decomposition& d, size_t i) {
  double* h = d.u + i * d.u_stride;
  double scale = 0;
  for (size_t k = i; k < d.m; ++k) scale += magnitude(h[k]);
  if (scale == 0) return 0;
  double s = 0;
  for (size_t k = i; k < d.m; ++k) {
    h[k] /= scale;
    s += h[k] * h[k];
  }
  const reflection p = reflect_away(h[i], s);
  h[i] -= p.g;
  for (size_t j = i + 1; j < d.n; ++j) {
    double* c = d.u + j * d.u_stride;
    double product = 0;
    for (size_t k = i; k < d.m; ++k) product += h[k] * c[k];
    const double f = product / p.denominator;
    for (size_t k = i; k < d.m; ++k) c[k] += f * h[k];
  }
  for (size_t k = i; k < d.m; ++k) h[k] *= scale;
  return scale * p.g;
}

// Makes column i zero below the diagonal by a Householder reflection, which it stores there; returns the diagonal
// entry. Deviates from the publication: the column is not scaled where its squares are safe, and the later columns only
// get their factors here. They are reflected together with the reflection of the row, in one pass (reflect_block).
static double column_step(decomposition& d, size_t i, bool scaled) {
  double* h = d.u + i * d.u_stride;
  const double s = tree_sum(d.sums + i * block_rows);
  if (scaled || !(s >= smallest_square)) {
    for (size_t j = i + 1; j < d.n; ++j) d.factor[j] = 0;
    return scaled_column_step(d, i);
  }
  const reflection p = reflect_away(h[i], s);
  for (size_t j = i + 1; j < d.n; ++j) {
    const double product = tree_sum(d.sums + j * block_rows) - p.g * d.u[j * d.u_stride + i];
    d.factor[j] = product / p.denominator;
  }
  h[i] -= p.g;
  return p.g;
}

// Makes row i zero right of the superdiagonal. Leaves the reflection in d.row and d.ratio, whose entry 0 belongs to
// column i + 1; returns the superdiagonal entry, and in scale the factor of the stored row. The row is scaled in a
// second attempt, where its squares are not safe.
static double row_step(decomposition& d, size_t i, bool scaled, double& scale) {
  const size_t l = i + 1;
  const size_t length = d.n - l;
  const double* columns = d.u + l * d.u_stride + i;
  const double h = d.u[i * d.u_stride + i];
  double* r = d.row;
  for (size_t k = 0; k < length; ++k) r[k] = columns[k * d.u_stride] + d.factor[l + k] * h;
  for (size_t k = length; k < whole_blocks(length); ++k) r[k] = 0;
  scale = 1;
  double s = 0;
  for (int attempt = 0; attempt < 2; ++attempt) {
    block squares = {};
    for (size_t k = 0; k < length; k += block_rows) {
      const block b = load_block(r + k);
      add_product(squares, b, b);
    }
    s = tree_sum(squares);
    if (attempt == 1 || (!scaled && s >= smallest_square)) break;
    scale = 0;
    for (size_t k = 0; k < length; ++k) scale += magnitude(r[k]);
    if (scale == 0) {
      for (size_t k = 0; k < length; ++k) d.ratio[k] = 0;
      return 0;
    }
    for (size_t k = 0; k < length; ++k) r[k] /= scale;
  }
  const reflection p = reflect_away(r[0], s);
  r[0] -= p.g;
  for (size_t k = 0; k < length; ++k) d.ratio[k] = r[k] / p.denominator;
  return scale * p.g;
}

// Applies both reflections of step i to one block of rows, and adds the products of the next column with the later ones
// to their sums, while the block is in registers. The first block has rows that the reflections leave alone.
template <bool FIRST>
TESSARN_INLINE void reflect_block(decomposition& d, size_t i, size_t k) {
  const size_t l = i + 1;
  const size_t length = d.n - l;
  double* columns = d.u + l * d.u_stride + k;
  block h = load_block(d.u + i * d.u_stride + k);
  if (FIRST) h = from_row(h, i - k);
  block product = {};
  for (size_t j = 0; j < length; ++j) {
    double* column = columns + j * d.u_stride;
    block c = load_block(column);
    add_multiple(c, d.factor[l + j], h);
    store_block(column, c);
    add_multiple(product, d.row[j], c);
  }
  if (FIRST) product = from_row(product, l - k);
  block next = {};
  for (size_t j = 0; j < length; ++j) {
    double* column = columns + j * d.u_stride;
    block c = load_block(column);
    add_multiple(c, d.ratio[j], product);
    store_block(column, c);
    if (j == 0) next = FIRST ? from_row(c, l - k) : c;
    double* partial = d.sums + (l + j) * block_rows;
    block sum = FIRST ? block{} : load_block(partial);
    add_product(sum, next, c);
    store_block(partial, sum);
  }
}

// All columns and rows in turn: w becomes the diagonal and rv1 the superdiagonal, the reflections stay in u.
static void bidiagonalise(decomposition& d, bool scaled) {
  double super = 0;
  for (size_t i = 0; i < d.n; ++i) {
    d.rv1[i] = super;
    super = 0;
    d.w[i] = i < d.m ? column_step(d, i, scaled) : 0;
    if (i < d.m && i + 1 < d.n) {
      double scale;
      super = row_step(d, i, scaled, scale);
      size_t k = i / block_rows * block_rows;
      reflect_block<true>(d, i, k);
      for (k += block_rows; k < d.m; k += block_rows) reflect_block<false>(d, i, k);
      for (size_t j = i + 1; j < d.n; ++j) d.u[j * d.u_stride + i] = d.row[j - i - 1] * scale;
    }
    raise_norm(d, i);
  }
}

// Multiplies the reflections of the rows into the columns of V, from the last to the first.
static void accumulate_right(decomposition& d) {
  for (size_t i = d.n; i-- > 0;) {
    const size_t l = i + 1;
    double* vi = d.v + i * d.v_stride;
    const double g = l < d.n ? d.rv1[l] : 0;
    if (g != 0) {
      const size_t start = l / block_rows * block_rows;
      for (size_t k = start; k < l; ++k) d.row[k] = 0;
      for (size_t k = l; k < d.n; ++k) d.row[k] = d.u[k * d.u_stride + i];
      for (size_t k = d.n; k < whole_blocks(d.n); ++k) d.row[k] = 0;
      // Two divisions, as published: their product could underflow.
      const double r = d.row[l];
      for (size_t k = l; k < d.n; ++k) vi[k] = (d.row[k] / r) / g;
      // Each later column of V becomes column + (row . column) vi.
      reflect(d.row + start, vi + start, whole_blocks(d.n) - start, 1, 1, d.v + l * d.v_stride + start, d.v_stride,
              d.n - l);
      for (size_t k = l; k < d.n; ++k) vi[k] = 0;
    }
    vi[i] = 1;
  }
}

// Multiplies the reflections of the columns into the columns of U, in their place, from the last to the first.
static void accumulate_left(decomposition& d) {
  for (size_t j = 1; j < d.n; ++j)
    for (size_t k = 0; k < j && k < d.m; ++k) d.u[j * d.u_stride + k] = 0;
  for (size_t i = d.m < d.n ? d.m : d.n; i-- > 0;) {
    const size_t start = i / block_rows * block_rows;
    const size_t rows = whole_blocks(d.m) - start;
    double* ui = d.u + i * d.u_stride;
    double g = 0;
    if (d.w[i] != 0) {
      g = 1 / d.w[i];
      double* first = ui + start;
      reflect(first, first, rows, ui[i], g, first + d.u_stride, d.u_stride, d.n - i - 1);
      const vec factor = broadcast(g);
      for (size_t k = 0; k < rows; k += width) store(first + k, load(first + k) * factor);
    } else {
      for (size_t k = i; k < d.m; ++k) ui[k] = 0;
    }
    ui[i] += 1;
  }
}

}  // namespace tessarn::detail::TESSARN_ISA::svd
