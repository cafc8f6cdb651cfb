// LU factorisation with partial pivoting together with the forward substitution. Panels of columns are factorised in a
// transposed copy, where a step is arithmetic on contiguous columns; what is right of a panel sees its steps in one
// block product. Every entry still sees its updates in ascending order, and every sum of the substitution its terms,
// so the bits are those of the step-by-step form. Kernel sources only.
#pragma once

#include "matrix/kernels/product.inl"
#include "simd/lanes.h"

namespace tessarn::detail::TESSARN_ISA {

// Columns that are factorised one by one before the other columns of their panel are updated; columns of a panel, up to
// the size and beyond it.
static constexpr size_t lu_strip = 8, lu_panel_small = 8, lu_panel_large = 32, lu_small = 160;

static size_t lu_panel(size_t n) { return n <= lu_small ? lu_panel_small : lu_panel_large; }

// Rows begin at whole cache lines, and not all at the same place of a memory page.
static size_t lu_stride(size_t n) {
  const size_t whole = (n + 7) / 8 * 8;
  return whole % 64 == 0 ? whole + 8 : whole;
}

// A panel's columns have room for vectors that begin at their last row.
static size_t lu_column(size_t n) { return lu_stride(n) + 8; }

// The transposed panel, the sums of the substitution, the packed rows right of the panel.
static size_t lu_workspace(size_t n) {
  const size_t panel = lu_panel(n);
  return panel * lu_column(n) + lu_column(n) + panel * tile_vectors * width;
}

// A panel of the matrix: columns one after the other, rows counted from the panel's first pivot.
struct lu_panel_view {
  double* column;
  size_t stride, rows, columns;
  double* at(size_t c) const { return column + c * stride; }
};

struct lu_pivot {
  double magnitude;
  size_t row;
};

// v minus or plus factor[0] * column 0, then factor[1] * column 1, ..., of COUNT columns.
template <size_t COUNT, tile_mode MODE>
TESSARN_INLINE vec with_columns(vec v, const double* factor, const double* columns, size_t stride) {
  for (size_t c = 0; c < COUNT; ++c) {
    const vec product = broadcast_from(factor + c) * load(columns + c * stride);
    v = MODE == subtract_products ? v - product : v + product;
  }
  return v;
}

// Applies COUNT earlier steps to a column from row on and finds the largest magnitude there, the upper of equals; a NaN
// never is, and rows when all are 0. Rows behind the last hold 0 or a NaN.
template <size_t COUNT>
TESSARN_INLINE lu_pivot update_column(double* column, const double* earlier, size_t stride, size_t first, size_t row,
                                      size_t rows) {
  const double none = (double)rows;
  vec best = {}, where = broadcast(none);
  vec here = lane_numbers() + broadcast((double)row);
  for (size_t r = row; r < rows; r += width) {
    const vec v = with_columns<COUNT, subtract_products>(load(column + r), column + first, earlier + r, stride);
    if (COUNT > 0) store(column + r, v);
    const vec m = absolute(v);
    const mask larger = m > best;
    best = select(larger, m, best);
    where = select(larger, here, where);
    here += broadcast((double)width);
  }
  double magnitudes[width], places[width];
  store(magnitudes, best);
  store(places, where);
  double largest = 0, place = none;
  for (size_t i = 0; i < width; ++i)
    if (magnitudes[i] > largest || (magnitudes[i] == largest && places[i] < place)) {
      largest = magnitudes[i];
      place = places[i];
    }
  return {largest, (size_t)place};
}

// Applies the steps of the strip before column c to it, first to the rows of these steps, and finds its pivot. The
// number of steps is a compile-time constant in the loop over the other rows.
static lu_pivot update_column(const lu_panel_view& p, size_t first, size_t c) {
  double* column = p.at(c);
  const double* earlier = p.at(first);
  for (size_t r = first + 1; r < c; ++r)
    for (size_t k = first; k < r; ++k) column[r] -= p.at(k)[r] * column[k];
  switch (c - first) {
    case 0: return update_column<0>(column, earlier, p.stride, first, c, p.rows);
    case 1: return update_column<1>(column, earlier, p.stride, first, c, p.rows);
    case 2: return update_column<2>(column, earlier, p.stride, first, c, p.rows);
    case 3: return update_column<3>(column, earlier, p.stride, first, c, p.rows);
    case 4: return update_column<4>(column, earlier, p.stride, first, c, p.rows);
    case 5: return update_column<5>(column, earlier, p.stride, first, c, p.rows);
    case 6: return update_column<6>(column, earlier, p.stride, first, c, p.rows);
    default: return update_column<7>(column, earlier, p.stride, first, c, p.rows);
  }
}

// Columns first .. last - 1, the steps before first already applied. exchanged[c] is the row that came to row c.
static bool factorise_strip(const lu_panel_view& p, size_t first, size_t last, size_t* exchanged) {
  for (size_t c = first; c < last; ++c) {
    const lu_pivot pivot = update_column(p, first, c);
    if (pivot.row >= p.rows) return false;
    exchanged[c] = pivot.row;
    if (pivot.row != c)
      for (size_t k = 0; k < p.columns; ++k) {
        double* column = p.at(k);
        const double t = column[c];
        column[c] = column[pivot.row];
        column[pivot.row] = t;
      }
    double* column = p.at(c);
    const vec divisor = broadcast(column[c]);
    for (size_t r = c + 1; r < p.rows; r += width) store(column + r, load(column + r) / divisor);
  }
  return true;
}

// Strip by strip: a strip is factorised, its steps are applied to its rows in the later columns one by one, and to the
// rows below in one product. False where a column of candidate pivots is 0.
static bool factorise_panel(const lu_panel_view& p, size_t* exchanged) {
  for (size_t first = 0; first < p.columns; first += lu_strip) {
    const size_t last = p.columns - first < lu_strip ? p.columns : first + lu_strip;
    if (!factorise_strip(p, first, last, exchanged)) return false;
    if (last == p.columns) return true;
    for (size_t c = last; c < p.columns; ++c)
      for (size_t r = first + 1; r < last; ++r)
        for (size_t k = first; k < r; ++k) p.at(c)[r] -= p.at(k)[r] * p.at(c)[k];
    multiply_unpacked<from_stored, subtract_products>(p.at(last) + first, p.stride, p.at(first) + last, p.stride,
                                                      p.at(last) + last, p.stride, p.columns - last, last - first,
                                                      (p.rows - last + width - 1) / width * width, false);
  }
  return true;
}

// b becomes the intermediate column in the panel's rows, the NaN rule applied; sums, of the terms before, receive those
// of the panel's columns.
static void substitute_panel(const lu_panel_view& p, double* b, double* sums) {
  for (size_t first = 0; first < p.columns; first += lu_strip) {
    const size_t last = p.columns - first < lu_strip ? p.columns : first + lu_strip;
    for (size_t r = first; r < last; ++r) {
      for (size_t k = first; k < r; ++k) sums[r] += p.at(k)[r] * b[k];
      const double v = b[r] - sums[r];
      b[r] = v == v ? v : 0.0;
    }
    if (last - first == lu_strip) {
      for (size_t r = last; r < p.rows; r += width)
        store(sums + r, with_columns<lu_strip, add_products>(load(sums + r), b + first, p.at(first) + r, p.stride));
    } else {
      for (size_t k = first; k < last; ++k)
        for (size_t r = last; r < p.rows; r += width)
          store(sums + r, with_columns<1, add_products>(load(sums + r), b + k, p.at(k) + r, p.stride));
    }
  }
}

// VECTORS vectors of columns right of the panel: the panel's rows see the steps above them, in a packed copy.
template <size_t VECTORS>
TESSARN_INLINE void update_packed(const lu_panel_view& p, double* rows, size_t stride, double* packed) {
  for (size_t r = 0; r < p.columns; ++r) {
    vec x[VECTORS];
    for (size_t v = 0; v < VECTORS; ++v) x[v] = load(rows + r * stride + v * width);
    for (size_t k = 0; k < r; ++k) {
      const vec factor = broadcast_from(p.at(k) + r);
      for (size_t v = 0; v < VECTORS; ++v) x[v] -= factor * load(packed + (k * VECTORS + v) * width);
    }
    for (size_t v = 0; v < VECTORS; ++v) {
      store(packed + (r * VECTORS + v) * width, x[v]);
      store(rows + r * stride + v * width, x[v]);
    }
  }
}

// The columns right of the panel, whole vectors from its first row on.
static void update_right(const lu_panel_view& p, double* rows, size_t stride, size_t columns, double* packed) {
  for (size_t x = 0; x < columns;) {
    size_t vectors = (columns - x) / width;
    if (vectors > tile_vectors) vectors = tile_vectors;
    switch (vectors) {
      case 1: update_packed<1>(p, rows + x, stride, packed); break;
      case 2: update_packed<2>(p, rows + x, stride, packed); break;
      default: update_packed<tile_vectors>(p, rows + x, stride, packed);
    }
    tile_columns<from_stored, subtract_products>(vectors, p.column + p.columns, 1, p.stride, packed, vectors * width,
                                                 p.columns, rows + p.columns * stride + x, stride, p.rows - p.columns,
                                                 false);
    x += vectors * width;
  }
}

TESSARN_INLINE void exchange(double* a, double* b, size_t n) {
  for (size_t c = 0; c < n; c += width) {
    const vec t = load(a + c);
    store(a + c, load(b + c));
    store(b + c, t);
  }
}

// The panel's columns back into the matrix: down to the diagonal, or with KEEP the multipliers below it, too.
template <bool KEEP>
TESSARN_INLINE void return_panel(const lu_panel_view& p, double* corner, size_t stride) {
  for (size_t r = 0; r < (KEEP ? p.rows : p.columns); ++r)
    for (size_t c = KEEP ? 0 : r; c < p.columns; ++c) corner[r * stride + c] = p.at(c)[r];
}

// Panel by panel: the panel is copied transposed and factorised, its exchanges are made in the columns right of it and
// in b, its upper triangle goes back to w, and then the columns right of it see its steps. Columns left of a panel are
// not read again, so their rows are exchanged only where the multipliers are kept. Then order takes the exchanges, and
// there is no b.
template <bool KEEP>
static bool factorise_all(double* w, size_t n, double* b, size_t* order, double* workspace) {
  const size_t stride = lu_stride(n), room = lu_column(n);
  double* sums = workspace + lu_panel(n) * room;
  double* packed = sums + room;
  if (!KEEP)
    for (size_t r = 0; r < room; ++r) sums[r] = 0;
  for (size_t first = 0; first < n; first += lu_panel(n)) {
    const size_t columns = n - first < lu_panel(n) ? n - first : lu_panel(n);
    const lu_panel_view p = {workspace, room, n - first, columns};
    double* corner = w + first * stride + first;
    const size_t right = p.rows > columns ? stride - first - columns : 0;  // whole vectors
    for (size_t c = 0; c < columns; ++c) {
      for (size_t r = 0; r < p.rows; ++r) p.at(c)[r] = corner[r * stride + c];
      for (size_t r = p.rows; r < p.rows + 8; ++r) p.at(c)[r] = 0;
    }
    size_t exchanged[lu_panel_large];
    if (!factorise_panel(p, exchanged)) return false;
    for (size_t c = 0; c < columns; ++c) {
      const size_t r = exchanged[c];
      if (r == c) continue;
      exchange(corner + c * stride + columns, corner + r * stride + columns, right);
      if (KEEP) {
        exchange(corner + c * stride - first, corner + r * stride - first, first);
        const size_t t = order[first + c];
        order[first + c] = order[first + r];
        order[first + r] = t;
      } else {
        const double t = b[first + c], s = sums[first + c];
        b[first + c] = b[first + r];
        b[first + r] = t;
        sums[first + c] = sums[first + r];
        sums[first + r] = s;
      }
    }
    return_panel<KEEP>(p, corner, stride);
    if (!KEEP) substitute_panel(p, b + first, sums + first);
    update_right(p, corner + columns, stride, right, packed);
  }
  return true;
}

static bool factorise(double* w, size_t n, double* b, double* workspace) {
  return factorise_all<false>(w, n, b, nullptr, workspace);
}

static bool factorise_kept(double* w, size_t n, size_t* order, double* workspace) {
  for (size_t r = 0; r < n; ++r) order[r] = r;
  return factorise_all<true>(w, n, nullptr, order, workspace);
}

}  // namespace tessarn::detail::TESSARN_ISA
