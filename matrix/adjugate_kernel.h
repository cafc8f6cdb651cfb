// The minors of a matrix share their leading elimination steps: those of the rows and columns before the removed
// ones. Removing row p or column p leaves the first p steps those of the whole matrix; then, with row p gone, the
// steps before column q are shared by all minors that remove a later column, and likewise with the roles
// exchanged. Each entry sees the same operations in the same order as in an elimination of its own, at
// about a tenth of the work. Kernel sources only.
#pragma once

#include "core/lanes.h"

namespace tessarn::detail::TESSARN_ISA {

// Rows are padded to whole vectors. A step works on whole vectors from the one that holds the pivot's column on:
// what it makes of eliminated columns and of the padding is never read.
struct padded_matrix {
  double* w;
  size_t stride;
  size_t rows;
};

static constexpr size_t padded(size_t n) { return (n + width - 1) / width * width; }

// Rows below r: row += ((-1 / pivot) * entry) * row r, the pivot in row r and column c.
TESSARN_INLINE void eliminate_below(const padded_matrix& t, size_t r, size_t c) {
  const double* upper = t.w + r * t.stride;
  const double reciprocal = -1 / upper[c];
  const size_t first = (c + 1) / width * width;
  for (size_t below = r + 1; below < t.rows; ++below) {
    double* row = t.w + below * t.stride;
    const vec f = broadcast(reciprocal * row[c]);
    for (size_t x = first; x < t.stride; x += width) store(row + x, f * load(upper + x) + load(row + x));
  }
}

// The rows and columns of t from the given ones on, size x size, copied into w.
TESSARN_INLINE padded_matrix copied(const padded_matrix& t, size_t row, size_t column, size_t rows, size_t columns,
                                    double* w) {
  const padded_matrix copy = {w, padded(columns), rows};
  for (size_t r = 0; r < rows; ++r) {
    const double* from = t.w + (row + r) * t.stride + column;
    for (size_t x = 0; x < copy.stride; x += width) store(w + r * copy.stride + x, load(from + x));
  }
  return copy;
}

// The determinant of what is left of t from the given row and column on, times the product of the pivots before.
TESSARN_INLINE double finished(const padded_matrix& t, size_t row, size_t column, size_t size, double product,
                               double* w) {
  if (size == 0) return product;
  if (size == 1) return product * t.w[row * t.stride + column];
  if (size == 2) {
    const double* upper = t.w + row * t.stride + column;
    const double* lower = upper + t.stride;
    const double f = (-1 / upper[0]) * lower[0];
    return product * upper[0] * (f * upper[1] + lower[1]);
  }
  const padded_matrix own = copied(t, row, column, size, size, w);
  for (size_t k = 0; k < size; ++k) {
    product *= w[k * own.stride + k];
    if (k + 1 < size) eliminate_below(own, k, k);
  }
  return product;
}

// The number of doubles that adjugate() works on: the whole matrix, a shared copy, a minor's own copy, each with a
// vector of room behind it for loads that begin late in the last row.
static size_t adjugate_workspace(size_t n) { return 3 * ((n + 1) * (padded(n) + width)); }

static void adjugate(const double* m, size_t n, double q, double* dst, double* workspace) {
  const size_t area = (n + 1) * (padded(n) + width);
  for (size_t i = 0; i < 3 * area; ++i) workspace[i] = 0;
  const padded_matrix whole = {workspace, padded(n), n};
  double* shared = workspace + area;
  double* own = shared + area;
  for (size_t r = 0; r < n; ++r)
    for (size_t c = 0; c < n; ++c) whole.w[r * whole.stride + c] = m[r * n + c];
  double before = 1;
  for (size_t p = 0; p < n; ++p) {
    const auto put = [&](size_t row, size_t column, double minor) {
      dst[column * n + row] = minor * ((row + column) % 2 == 0 ? 1.0 : -1.0) * q;
    };
    double product = before;
    padded_matrix t = copied(whole, p + 1, p, n - 1 - p, n - p, shared);
    for (size_t k = 0; p + k < n; ++k) {  // row p and column p + k removed
      put(p, p + k, finished(t, k, k + 1, n - 1 - p - k, product, own));
      if (k == t.rows) break;
      product *= shared[k * t.stride + k];
      eliminate_below(t, k, k);
    }
    product = before;
    t = copied(whole, p, p + 1, n - p, n - 1 - p, shared);
    for (size_t k = 0; p + 1 + k < n; ++k) {  // column p and row p + 1 + k removed
      product *= shared[k * t.stride + k];
      eliminate_below(t, k, k);
      put(p + 1 + k, p, finished(t, k + 2, k + 1, n - 2 - p - k, product, own));
    }
    before *= whole.w[p * whole.stride + p];
    eliminate_below(whole, p, p);
  }
}

}  // namespace tessarn::detail::TESSARN_ISA
