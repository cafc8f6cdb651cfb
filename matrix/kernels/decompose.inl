// The singular value decomposition by G. Golub and C. Reinsch (Singular value decomposition and least squares
// solutions, Numerische Mathematik 14, 1970): Householder bidiagonalisation, accumulation of the transformations,
// implicit-shift QR sweeps. The matrices are worked on as columns. Kernel sources only.
#pragma once

#include "matrix/kernels/columns.inl"
#include "matrix/kernels/decompose_small.inl"

namespace tessarn::detail::TESSARN_ISA::svd {

static constexpr int sweep_limit = 30;  // a value that takes more is left as it stands

// Sums of squares in this range come from entries whose squares neither overflow nor lose digits that count, so the
// columns need no scaling.
static constexpr double smallest_square = 1e-200;
static constexpr double largest_square = 1e200;
// Up to this many rows of U and V together the rotations of a sweep are applied while it runs: they hide behind its own
// chain of roots and quotients. More rows than that leave the cache, and are better served one group after the other.
static constexpr size_t direct_rows = 512;

struct decomposition {
  size_t m, n;                // rows and columns
  size_t u_stride, v_stride;  // of the columns
  bool tall;                  // the left rotations are collected in a matrix of their own
  bool written;               // the sweeps in the order of the published algorithm, which for few columns costs nothing
  double* u;                  // the columns of U
  double* v;                  // and of V
  double* x;                  // what the left rotations work on: u, or for tall matrices n columns like those of V
  size_t x_rows, x_stride;
  double* w;       // diagonal of the bidiagonal form
  double* rv1;     // its superdiagonal
  double* factor;  // of the reflected column in each later one
  double* row;     // the reflection of a row, and later which sign a column has after the sort
  double* ratio;   // row over its denominator, and later which column stands where after the sort
  double* right;   // the rotations of a sweep, of the columns of V
  double* left;    // and of U
  double* sums;    // eight partial sums for each column
  double norm;
};

// Many rows a column: rotating n columns of n rows and one product cost less than rotating those of U. One or two
// columns are rotated in the written order.
TESSARN_INLINE bool is_tall(size_t m, size_t n) { return n > 2 && m >= 2 * n && m > block_rows; }

static size_t workspace(size_t m, size_t n) {
  const size_t columns = whole_blocks(n);
  return block_rows + n * (column_stride(m) + column_stride(n) * (is_tall(m, n) ? 2 : 1)) + 9 * columns +
         block_rows * n;
}

static void set_up(decomposition& d, size_t m, size_t n, double* memory) {
  const size_t misaligned = reinterpret_cast<uintptr_t>(memory) / sizeof(double) % block_rows;
  const size_t columns = whole_blocks(n);
  d.m = m;
  d.n = n;
  d.u_stride = column_stride(m);
  d.v_stride = column_stride(n);
  d.tall = is_tall(m, n);
  d.written = n <= 4;
  d.u = memory + (block_rows - misaligned);
  d.v = d.u + n * d.u_stride;
  d.x = d.tall ? d.v + n * d.v_stride : d.u;
  d.x_rows = whole_blocks(d.tall ? n : m);
  d.x_stride = d.tall ? d.v_stride : d.u_stride;
  d.w = d.v + n * d.v_stride * (d.tall ? 2 : 1);
  d.rv1 = d.w + columns;
  d.factor = d.rv1 + columns;
  d.row = d.factor + columns;
  d.ratio = d.row + columns;
  d.right = d.ratio + columns;
  d.left = d.right + 2 * columns;
  d.sums = d.left + 2 * columns;
  d.norm = 0;
  for (double* p = d.v; p < d.w; ++p) *p = 0;
}

// The rows of a into columns, and the products of the first column with each; returns the sum of all squares. By
// chunks of rows, so that no vector is read right behind the entries that make it up.
static double take(decomposition& d, const double* a) {
  constexpr size_t chunk = 8 * block_rows;
  block total = {};
  for (size_t j = 0; j < block_rows * d.n; ++j) d.sums[j] = 0;
  for (size_t j = 0; j < d.n; ++j)
    for (size_t k = d.m; k < whole_blocks(d.m); ++k) d.u[j * d.u_stride + k] = 0;
  for (size_t start = 0; start < d.m; start += chunk) {
    const size_t end = d.m - start < chunk ? d.m : start + chunk;
    for (size_t k = start; k < end; k += block_rows)
      for (size_t j = 0; j < d.n; ++j)
        for (size_t r = k; r < k + block_rows && r < end; ++r) d.u[j * d.u_stride + r] = a[r * d.n + j];
    for (size_t j = 0; j < d.n; ++j) {
      block sum = load_block(d.sums + j * block_rows);
      for (size_t k = start; k < end; k += block_rows) {
        const block c = load_block(d.u + j * d.u_stride + k);
        add_product(sum, load_block(d.u + k), c);
        add_product(total, c, c);
      }
      store_block(d.sums + j * block_rows, sum);
    }
  }
  return tree_sum(total);
}

TESSARN_INLINE void raise_norm(decomposition& d, size_t i) {
  const double sum = magnitude(d.w[i]) + magnitude(d.rv1[i]);
  if (d.norm < sum) d.norm = sum;
}

// Column i scaled by its sum of magnitudes, for squares that might overflow or vanish; the later columns
// are reflected at once.
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

// Makes column i zero below the diagonal by a Householder reflection, which it stores there, with its factors for
// the later columns; returns the diagonal entry.
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

// Makes row i zero right of the superdiagonal: the reflection in row and ratio, from column i + 1 on at 0. Returns
// the superdiagonal entry, and by what the stored row is to be multiplied.
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

// Both reflections of step i on the rows of one block, and the products of the next column with the later ones. The
// first block has rows that the reflections leave alone.
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
      // Two divisions, which guard against underflow.
      const double r = d.row[l];
      for (size_t k = l; k < d.n; ++k) vi[k] = (d.row[k] / r) / g;
      // V's columns receive (row . column) vi: the product is with the row, the sum with vi.
      reflect(d.row + start, vi + start, whole_blocks(d.n) - start, 1, 1, d.v + l * d.v_stride + start, d.v_stride,
              d.n - l);
      for (size_t k = l; k < d.n; ++k) vi[k] = 0;
    }
    vi[i] = 1;
  }
}

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

// One or two columns, and 3 x 3 matrices: everything scaled and in the order of the published algorithm, so that the
// bits are its bits. The signs of pairs of columns depend on the number of sweeps, and that on roundings.
static void bidiagonalise_narrow(decomposition& d) {
  d.rv1[0] = 0;
  d.w[0] = d.m > 0 ? scaled_column_step(d, 0) : 0;
  raise_norm(d, 0);
  if (d.n < 2) return;
  double* c = d.u + d.u_stride;
  const double scale = d.m > 0 ? magnitude(c[0]) : 0;
  d.rv1[1] = 0;
  if (scale != 0) {
    double r = c[0] / scale;
    const reflection p = reflect_away(r, r * r);
    r -= p.g;
    const double ratio = r / p.denominator;
    for (size_t k = 1; k < d.m; ++k) c[k] += (0.0 + c[k] * r) * ratio;
    c[0] = r * scale;
    d.rv1[1] = scale * p.g;
  }
  d.w[1] = d.m > 1 ? scaled_column_step(d, 1) : 0;
  raise_norm(d, 1);
}

static void accumulate_narrow(decomposition& d) {
  d.v[0] = 1;
  if (d.n > 1) {
    double& last = d.v[d.v_stride + 1];
    const double r = d.u[d.u_stride];
    last = 1;
    if (d.rv1[1] != 0) last += r * ((1 + flaw(r)) / d.rv1[1]);
  }
  for (size_t i = d.m < d.n ? d.m : d.n; i-- > 0;) {
    double* h = d.u + i * d.u_stride;
    double* c = h + d.u_stride;
    const bool later = i + 1 < d.n;
    if (later) c[i] = 0;
    if (d.w[i] != 0) {
      const double g = 1 / d.w[i];
      if (later) {
        double sum = 0;
        for (size_t k = i + 1; k < d.m; ++k) sum += h[k] * c[k];
        const double f = (sum / h[i]) * g;
        for (size_t k = i; k < d.m; ++k) c[k] += f * h[k];
      }
      for (size_t k = i; k < d.m; ++k) h[k] *= g;
    } else {
      for (size_t k = i; k < d.m; ++k) h[k] = 0;
    }
    h[i] += 1;
  }
}

static void bidiagonalise_3(decomposition& d, const double* a) {
  matrix_3 t;
  reflect_3(t, a);
  d.w[0] = t.w0;
  d.w[1] = t.w1;
  d.w[2] = t.w2;
  d.rv1[0] = 0;
  d.rv1[1] = t.e1;
  d.rv1[2] = t.e2;
  for (size_t i = 0; i < 3; ++i) raise_norm(d, i);
  accumulate_right_3(t, d.v, d.v_stride);
  accumulate_left_3(t, d.u, d.u_stride);
}

// Removes the superdiagonal entry l by rotations, since the diagonal entry before it is negligible.
static void cancel(decomposition& d, size_t l, size_t k) {
  double c = 0, s = 1;
  for (size_t i = l; i <= k; ++i) {
    const double f = s * d.rv1[i];
    d.rv1[i] = c * d.rv1[i];
    if (magnitude(f) + d.norm == d.norm) break;
    const double g = d.w[i];
    d.w[i] = hypotenuse(g, f);
    const double r = 1 / d.w[i];
    c = g * r;
    s = -(f * r);
    rotate(d.x + (l - 1) * d.x_stride, (i - l + 1) * d.x_stride, c, s, d.x_rows);
  }
}

// The first rotation of a sweep on the block l .. k acts on (f, rv1[l + 1]): the shift of the trailing 2 x 2 block.
static double shifted(const decomposition& d, size_t l, size_t k) {
  const double x = d.w[l];
  const double y = d.w[k - 1];
  const double z = d.w[k];
  const double g = d.rv1[k - 1];
  const double h = d.rv1[k];
  const double f = ((y - z) * (y + z) + (g - h) * (g + h)) / ((h + h) * y);
  return ((x - z) * (x + z) + h * (y / (f + with_sign(hypotenuse(f, 1), f)) - h)) / x;
}

// One implicit QR sweep on the block l .. k. The rotations of the columns do not feed back into it: they are collected
// and applied together, or each one step late, when it need not be waited for, in the shadow of the roots.
//
// Where the order is free, one reciprocal of a length takes the place of six quotients, and the numerators do not wait
// for it. Lengths are roots of sums of squares, 0 or far above the smallest numbers: no reciprocal overflows.
template <bool DIRECT>
static void sweep(decomposition& d, size_t l, size_t k) {
  double f = shifted(d, l, k);
  double h = d.rv1[l + 1];
  double x = d.w[l];
  double c = 1, s = 1;
  const size_t v_rows = whole_blocks(d.n);
  double* right = d.right;
  double* left = d.left;
  for (size_t j = l; j < k; ++j) {
    double g = c * d.rv1[j + 1];
    double y = d.w[j + 1];
    double length = hypotenuse(f, h);
    d.rv1[j] = length;
    if (d.written) {
      c = f / length;
      s = h / length;
      f = x * c + g * s;
      g = g * c - x * s;
      h = y * s;
    } else {
      const double r = 1 / length;
      c = f * r;
      s = h * r;
      const double turned_f = (x * f + g * h) * r;
      g = (g * f - x * h) * r;
      h = (y * h) * r;
      f = turned_f;
    }
    y = y * c;
    if (DIRECT && j > l) rotate(d.v + (j - 1) * d.v_stride, d.v_stride, right[0], right[1], v_rows);
    right[0] = c;
    right[1] = s;
    length = hypotenuse(f, h);
    d.w[j] = length;
    const double super = j + 1 < k ? d.rv1[j + 2] : 0;
    if (length != 0 && !d.written) {
      const double r = 1 / length;
      c = f * r;
      s = h * r;
      const double turned_f = (f * g + h * y) * r;
      x = (f * y - h * g) * r;
      h = (h * super) * r;
      f = turned_f;
    } else {
      if (length != 0) {
        c = f / length;
        s = h / length;
      }
      f = c * g + s * y;
      x = c * y - s * g;
      h = s * super;
    }
    if (DIRECT && j > l) rotate(d.x + (j - 1) * d.x_stride, d.x_stride, left[0], left[1], d.x_rows);
    left[0] = c;
    left[1] = s;
    if (!DIRECT) {
      right += 2;
      left += 2;
    }
  }
  d.rv1[l] = 0;
  d.rv1[k] = f;
  d.w[k] = x;
  if (DIRECT) {
    rotate(d.v + (k - 1) * d.v_stride, d.v_stride, right[0], right[1], v_rows);
    rotate(d.x + (k - 1) * d.x_stride, d.x_stride, left[0], left[1], d.x_rows);
  } else {
    rotate_columns(d.v + l * d.v_stride, d.v_stride, v_rows, d.right, k - l);
    rotate_columns(d.x + l * d.x_stride, d.x_stride, d.x_rows, d.left, k - l);
  }
}

// Brings singular value k to convergence, or gives up after the last sweep without a further test.
static void diagonalise(decomposition& d, size_t k) {
  const bool direct = d.x_rows + whole_blocks(d.n) <= direct_rows;
  for (int sweeps = 0; sweeps < sweep_limit; ++sweeps) {
    size_t l = k;
    bool cancellation = false;
    for (; l > 0; --l) {
      if (magnitude(d.rv1[l]) + d.norm == d.norm) break;
      if (magnitude(d.w[l - 1]) + d.norm == d.norm) {
        cancellation = true;
        break;
      }
    }
    if (cancellation) cancel(d, l, k);
    if (l == k) {
      if (!(d.w[k] >= 0)) {
        d.w[k] = -d.w[k];
        double* v = d.v + k * d.v_stride;
        for (size_t r = 0; r < d.n; ++r) v[r] = -v[r];
      }
      return;
    }
    if (direct)
      sweep<true>(d, l, k);
    else
      sweep<false>(d, l, k);
  }
}

// Shell sort into descending order; every move negates the moved columns of U and V and the saved ones.
static void sort(decomposition& d) {
  double* sign = d.row;
  double* column = d.ratio;
  for (size_t i = 0; i < d.n; ++i) {
    column[i] = static_cast<double>(i);
    sign[i] = 1;
  }
  size_t gap = 1;
  do gap = 3 * gap + 1;
  while (gap <= d.n);
  do {
    gap /= 3;
    for (size_t i = gap; i < d.n; ++i) {
      const double saved_value = d.w[i];
      const double saved_column = column[i];
      double saved_sign = sign[i];
      size_t j = i;
      while (j >= gap && d.w[j - gap] < saved_value) {
        d.w[j] = d.w[j - gap];
        column[j] = column[j - gap];
        sign[j] = -sign[j - gap];
        saved_sign = -saved_sign;
        j -= gap;
      }
      d.w[j] = saved_value;
      column[j] = saved_column;
      sign[j] = saved_sign;
    }
  } while (gap > 1);
}

// Rows of the sorted columns, row by row.
static void write_rows(const decomposition& d, const double* columns, size_t stride, size_t rows, double* to) {
  for (size_t j = 0; j < d.n; ++j) {
    const double* from = columns + static_cast<size_t>(d.ratio[j]) * stride;
    const double sign = d.row[j];
    for (size_t r = 0; r < rows; ++r) to[r * d.n + j] = sign * from[r];
  }
}

// Eight rows of U times the collected rotations, as columns.
template <size_t COUNT>
TESSARN_INLINE void combine_group(const decomposition& d, const double* u, const double* x, double* result) {
  block sum[COUNT] = {};
  for (size_t k = 0; k < d.n; ++k) {
    const block b = load_block(u + k * d.u_stride);
    for (size_t j = 0; j < COUNT; ++j) add_multiple(sum[j], x[j * d.x_stride + k], b);
  }
  for (size_t j = 0; j < COUNT; ++j) store_block(result + j * block_rows, sum[j]);
}

static void write(decomposition& d, double* U, double* S, double* V) {
  for (size_t k = 0; k < d.m; k += block_rows) {
    const size_t rows = d.m - k < block_rows ? d.m - k : block_rows;
    if (d.tall) {
      size_t j = 0;
      for (; j + 4 <= d.n; j += 4) combine_group<4>(d, d.u + k, d.x + j * d.x_stride, d.sums + j * block_rows);
      for (; j < d.n; ++j) combine_group<1>(d, d.u + k, d.x + j * d.x_stride, d.sums + j * block_rows);
    }
    write_rows(d, d.tall ? d.sums : d.u + k, d.tall ? block_rows : d.u_stride, rows, U + k * d.n);
  }
  for (size_t k = 0; k < d.n; k += block_rows)
    write_rows(d, d.v + k, d.v_stride, d.n - k < block_rows ? d.n - k : block_rows, V + k * d.n);
  for (size_t i = 0; i < d.n; ++i) S[i * d.n + i] = d.w[i];
}

// a = U S V', of which S is zero before; n > 0.
static void decompose(const double* a, size_t m, size_t n, double* U, double* S, double* V, double* memory) {
  decomposition d;
  set_up(d, m, n, memory);
  if (m == 3 && n == 3) {
    bidiagonalise_3(d, a);
  } else {
    const double squares = take(d, a);
    if (n <= 2) {
      bidiagonalise_narrow(d);
      accumulate_narrow(d);
    } else {
      bidiagonalise(d, !(squares >= smallest_square && squares <= largest_square));
      accumulate_right(d);
      accumulate_left(d);
    }
  }
  if (d.tall)
    for (size_t i = 0; i < n; ++i) d.x[i * d.x_stride + i] = 1;
  for (size_t k = n; k-- > 0;) diagonalise(d, k);
  sort(d);
  write(d, U, S, V);
}

}  // namespace tessarn::detail::TESSARN_ISA::svd
