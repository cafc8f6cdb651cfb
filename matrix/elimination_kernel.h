// LU factorisation and elimination on arrays. Several steps are applied to a block at once; every entry still
// sees its updates in ascending order, so the bits are those of the step-by-step form. Kernel sources only.
#pragma once

#include "core/lanes.h"
#include "matrix/product_kernel.h"

namespace tessarn::detail::TESSARN_ISA {

// Matrices up to this size are factorised step by step; larger ones in panels of this many columns.
static constexpr size_t stepwise_limit = 96, panel_width = 32;

// row -= f * upper for the entries from first to last.
TESSARN_INLINE void subtract_multiple(double* row, double f, const double* upper, size_t first, size_t last) {
  const vec factor = broadcast(f);
  size_t c = first;
  for (; c + width <= last; c += width) store(row + c, load(row + c) - factor * load(upper + c));
  for (; c < last; ++c) row[c] -= f * upper[c];
}

TESSARN_INLINE void add_multiple(double* row, double f, const double* upper, size_t first, size_t last) {
  const vec factor = broadcast(f);
  size_t c = first;
  for (; c + width <= last; c += width) store(row + c, factor * load(upper + c) + load(row + c));
  for (; c < last; ++c) row[c] = f * upper[c] + row[c];
}

TESSARN_INLINE double magnitude(double v) { return v < 0 ? -v : v; }

// The row of the largest magnitude in column k from row k on; n when all are 0. The upper of equals wins, a NaN
// never does.
TESSARN_INLINE size_t pivot_row(const double* w, size_t n, size_t k) {
  double best = 0;
  size_t row = n;
  for (size_t r = k; r < n; ++r) {
    const double m = magnitude(w[r * n + k]);
    if (m > best) {
      best = m;
      row = r;
    }
  }
  return row;
}

TESSARN_INLINE void exchange(double* a, double* b, size_t n) {
  size_t c = 0;
  for (; c + width <= n; c += width) {
    const vec t = load(a + c);
    store(a + c, load(b + c));
    store(b + c, t);
  }
  for (; c < n; ++c) {
    const double t = a[c];
    a[c] = b[c];
    b[c] = t;
  }
}

// Steps first .. last - 1 of the factorisation, the updates confined to the columns before last.
static bool factorise_steps(double* w, size_t n, size_t first, size_t last, unsigned* order) {
  for (size_t k = first; k < last; ++k) {
    const size_t p = pivot_row(w, n, k);
    if (p == n) return false;
    if (p != k) {
      const unsigned t = order[k];
      order[k] = order[p];
      order[p] = t;
      exchange(w + k * n, w + p * n, n);
    }
    const double* upper = w + k * n;
    const double pivot = upper[k];
    for (size_t r = k + 1; r < n; ++r) {
      double* row = w + r * n;
      const double multiplier = row[k] / pivot;
      row[k] = multiplier;
      subtract_multiple(row, multiplier, upper, k + 1, last);
    }
  }
  return true;
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
template <tile_mode MODE>
static void update_behind(double* w, size_t n, size_t first, size_t last, double* workspace) {
  for (size_t r = first + 1; r < last; ++r)
    for (size_t k = first; k < r; ++k) {
      if (MODE == subtract_products)
        subtract_multiple(w + r * n, w[r * n + k], w + k * n, last, n);
      else
        add_multiple(w + r * n, w[r * n + k], w + k * n, last, n);
    }
  const double* factors = w + last * n + first;
  const double* upper = w + first * n + last;
  double* rest = w + last * n + last;
  if (n - last <= unpacked_limit)
    multiply_unpacked<from_stored, MODE>(factors, n, upper, n, rest, n, n - last, last - first, n - last, false);
  else
    multiply_packed<MODE>(factors, n, upper, n, rest, n, n - last, last - first, n - last, false, false, workspace);
}

static size_t elimination_workspace(size_t n) {
  return n <= stepwise_limit ? 0 : row_block * depth + panel_width * n;
}

static bool factorise(double* w, size_t n, unsigned* order, double* workspace) {
  for (size_t i = 0; i < n; ++i) order[i] = (unsigned)i;
  if (n <= stepwise_limit) return factorise_steps(w, n, 0, n, order);
  for (size_t k = 0; k < n; k += panel_width) {
    const size_t last = n - k < panel_width ? n : k + panel_width;
    if (!factorise_steps(w, n, k, last, order)) return false;
    if (last < n) update_behind<subtract_products>(w, n, k, last, workspace);
  }
  return true;
}

static void eliminate(double* w, size_t n, double* workspace) {
  if (n <= stepwise_limit) return eliminate_steps(w, n, 0, n);
  for (size_t k = 0; k < n; k += panel_width) {
    const size_t last = n - k < panel_width ? n : k + panel_width;
    eliminate_steps(w, n, k, last);
    if (last < n) update_behind<add_products>(w, n, k, last, workspace);
  }
}

}  // namespace tessarn::detail::TESSARN_ISA
