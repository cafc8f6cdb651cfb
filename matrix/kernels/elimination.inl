// Elimination for the determinant on arrays. Several steps are applied to a block at once; every entry still
// sees its updates in ascending order, so the bits are those of the step-by-step form. Kernel sources only.
#pragma once

#include "matrix/kernels/product.inl"
#include "simd/lanes.h"

namespace tessarn::detail::TESSARN_ISA {

// Matrices up to this size are eliminated step by step; larger ones in panels of this many columns.
static constexpr size_t stepwise_limit = 24, panel_width = 16;

TESSARN_INLINE void add_multiple(double* row, double f, const double* upper, size_t first, size_t last) {
  const vec factor = broadcast(f);
  size_t c = first;
  for (; c + width <= last; c += width) store(row + c, factor * load(upper + c) + load(row + c));
  for (; c < last; ++c) row[c] = f * upper[c] + row[c];
}

// Steps first .. last - 1 of the elimination without pivoting, confined to the columns before last.
static void eliminate_steps(double* w, size_t n, size_t first, size_t last) {
  for (size_t p = first; p < last; ++p) {
    const double* upper = w + p * n;
    const double reciprocal = -1 / upper[p];
    for (size_t r = p + 1; r < n; ++r) {
      double* row = w + r * n;
      const double f = reciprocal * row[p];
      row[p] = f;
      add_multiple(row, f, upper, p + 1, last);
    }
  }
}

// The columns behind a panel: the rows of the panel see the steps above them, then all rows below see the steps
// of the panel in one block product.
static void update_behind(double* w, size_t n, size_t first, size_t last, double* workspace) {
  for (size_t r = first + 1; r < last; ++r)
    for (size_t k = first; k < r; ++k) add_multiple(w + r * n, w[r * n + k], w + k * n, last, n);
  const double* factors = w + last * n + first;
  const double* upper = w + first * n + last;
  double* rest = w + last * n + last;
  if (n - last <= unpacked_limit)
    multiply_unpacked<from_stored, add_products>(factors, n, upper, n, rest, n, n - last, last - first, n - last,
                                                 false);
  else
    multiply_packed<add_products>(factors, n, upper, n, rest, n, n - last, last - first, n - last, false, false,
                                  workspace);
}

static size_t elimination_workspace(size_t n) {
  return n <= unpacked_limit + panel_width ? 0 : packed_size(n, panel_width, n);
}

static void eliminate(double* w, size_t n, double* workspace) {
  if (n <= stepwise_limit) return eliminate_steps(w, n, 0, n);
  for (size_t k = 0; k < n; k += panel_width) {
    const size_t last = n - k < panel_width ? n : k + panel_width;
    eliminate_steps(w, n, k, last);
    if (last < n) update_behind(w, n, k, last, workspace);
  }
}

}  // namespace tessarn::detail::TESSARN_ISA
