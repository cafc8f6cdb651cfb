// Rows of doubled numbers, residuals, and the sums of which error bounds are made.
#pragma once

#include "analysis/kernels/doubled_lanes.inl"
#include "analysis/kernels/systems.h"

namespace tessarn::detail::TESSARN_ISA {
namespace {

TESSARN_INLINE doubled sum_of(doubled a, doubled b) {
  const doubled s = exact_sum(a.high, b.high), t = exact_sum(a.low, b.low);
  const doubled v = ordered_sum(s.high, s.low + t.high);
  return ordered_sum(v.high, t.low + v.low);
}

// A factor in all lanes, with the parts of its high number.
struct row_factor {
  doubled value, parts;
};

// One vector of entries.
TESSARN_INLINE void add_entries(double* high, double* low, const row_factor& f, const double* other_high,
                                const double* other_low) {
  const doubled other = {load(other_high), load(other_low)};
  const doubled p = loose_product(f.value, f.parts, other, split(other.high));
  const doubled v = sum_of({load(high), load(low)}, ordered_sum(p.high, p.low));
  store(high, v.high);
  store(low, v.low);
}

// The entries behind the last whole vector are added in a copy that is filled up.
void add_row(double* high, double* low, double factor_high, double factor_low, const double* other_high,
             const double* other_low, size_t n) {
  const vec factor = broadcast(factor_high);
  const row_factor f = {{factor, broadcast(factor_low)}, split(factor)};
  size_t i = 0;
  for (; i + width <= n; i += width) add_entries(high + i, low + i, f, other_high + i, other_low + i);
  if (i == n) return;
  double copy[4][width] = {};
  for (size_t k = i; k < n; ++k) {
    copy[0][k - i] = high[k];
    copy[1][k - i] = low[k];
    copy[2][k - i] = other_high[k];
    copy[3][k - i] = other_low[k];
  }
  add_entries(copy[0], copy[1], f, copy[2], copy[3]);
  for (size_t k = i; k < n; ++k) {
    high[k] = copy[0][k - i];
    low[k] = copy[1][k - i];
  }
}

// The sum of partial sums as a tree, for any kind of number.
template <class T, class Add>
TESSARN_INLINE T tree(const T* p, Add&& add) {
  return add(add(add(p[0], p[1]), add(p[2], p[3])), add(add(p[4], p[5]), add(p[6], p[7])));
}
TESSARN_INLINE double tree(const double* p) {
  return tree(p, [](double a, double b) { return a + b; });
}

// The partial sums of a row: the rounded sums of its products, what the roundings lost and the products with x_low, and
// the magnitudes.
TESSARN_INLINE void row_of_residual(const double* a, size_t columns, const double* x_high, const double* x_low,
                                    const double* x_parts, size_t stride, double* high, double* low,
                                    double* magnitude) {
  for (size_t l = 0; l < row_partial_sums; l += width) {
    vec sum = broadcast(0), lost = broadcast(0), size = broadcast(0);
    for (size_t c = l; c < columns; c += row_partial_sums) {
      const vec entry = load(a + c);
      const doubled p =
          exact_product(entry, split(entry), load(x_high + c), {load(x_parts + c), load(x_parts + stride + c)});
      const doubled s = exact_sum(sum, p.high);
      sum = s.high;
      lost += s.low + (p.low + entry * load(x_low + c));
      size += absolute(p.high);
    }
    store(high + l, sum);
    store(low + l, lost);
    store(magnitude + l, size);
  }
}

// Eight rows at a time: their partial sums are turned, so that the lanes of the tree are rows.
void residual(const square_rows& a, const double* b, const double* x_high, const double* x_low,
              const residual_column& r, double* workspace) {
  constexpr size_t eight = row_partial_sums, block = eight * eight;
  const size_t columns = (a.size + 7) / 8 * 8;
  double *x_parts = workspace, *sums = workspace + 2 * a.stride, *turned = sums + 3 * block;
  for (size_t c = 0; c < columns; c += width) {
    const doubled parts = split(load(x_high + c));
    store(x_parts + c, parts.high);
    store(x_parts + a.stride + c, parts.low);
  }
  for (size_t first = 0; first < a.size; first += eight) {
    const size_t rows = a.size - first < eight ? a.size - first : eight;
    for (size_t i = 0; i < 3 * block; i += width) store(sums + i, broadcast(0));
    for (size_t i = 0; i < rows; ++i)
      row_of_residual(a.entries + (first + i) * a.stride, columns, x_high, x_low, x_parts, a.stride, sums + i * eight,
                      sums + block + i * eight, sums + 2 * block + i * eight);
    for (size_t part = 0; part < 3 * block; part += block)
      for (size_t i = 0; i < eight; ++i)
        for (size_t l = 0; l < eight; ++l) turned[part + l * eight + i] = sums[part + i * eight + l];
    for (size_t i = 0; i < eight; i += width) {
      doubled partial[eight];
      vec magnitudes[eight];
      TESSARN_UNROLL
      for (size_t l = 0; l < eight; ++l) {
        partial[l] = exact_sum(load(turned + l * eight + i), load(turned + block + l * eight + i));
        magnitudes[l] = load(turned + 2 * block + l * eight + i);
      }
      const doubled sum = tree(partial, [](doubled p, doubled q) { return sum_of(p, q); });
      const vec right = load(b + first + i);
      const doubled v = sum_of({right, broadcast(0)}, {-sum.high, -sum.low});
      store(r.high + first + i, v.high);
      store(r.low + first + i, v.low);
      store(r.magnitude + first + i, tree(magnitudes, [](vec p, vec q) { return p + q; }) + absolute(right));
    }
  }
}

// VECTORS vectors of columns.
template <size_t VECTORS, bool MAGNITUDES>
TESSARN_INLINE void sums_of_columns(const double* y, size_t stride, const double* v, size_t first, size_t last,
                                    double* sums) {
  vec sum[VECTORS];
  TESSARN_UNROLL
  for (size_t i = 0; i < VECTORS; ++i) sum[i] = broadcast(0);
  for (size_t k = first; k < last; ++k) {
    const vec factor = broadcast_from(v + k);
    TESSARN_UNROLL
    for (size_t i = 0; i < VECTORS; ++i) {
      const vec entry = load(y + k * stride + i * width);
      sum[i] += (MAGNITUDES ? absolute(entry) : entry) * factor;
    }
  }
  TESSARN_UNROLL
  for (size_t i = 0; i < VECTORS; ++i) store(sums + i * width, sum[i]);
}

// In columns x to `next` of an upper triangle the rows from `next` on are 0, of a lower one those before x.
template <bool MAGNITUDES>
void sums_of_columns(const square_rows& y, matrix_shape shape, const double* v, double* sums) {
  const size_t end = (y.size + 7) / 8 * 8;
  for (size_t x = 0; x < end;) {
    const size_t vectors = x + 4 * width <= end ? 4 : 1, next = x + vectors * width;
    const size_t first = shape == matrix_shape::lower ? x : 0;
    const size_t last = shape == matrix_shape::upper && next < y.size ? next : y.size;
    if (vectors == 4)
      sums_of_columns<4, MAGNITUDES>(y.entries + x, y.stride, v, first, last, sums + x);
    else
      sums_of_columns<1, MAGNITUDES>(y.entries + x, y.stride, v, first, last, sums + x);
    x = next;
  }
}

void column_sums(const square_rows& y, matrix_shape shape, bool magnitudes, const double* v, double* sums) {
  (magnitudes ? sums_of_columns<true> : sums_of_columns<false>)(y, shape, v, sums);
}

// The sum over the columns from first to below last: single numbers up to whole groups of eight, and behind them.
template <bool MAGNITUDES>
TESSARN_INLINE double sum_of_row(const double* row, const double* v, size_t first, size_t last) {
  double partial[row_partial_sums] = {};
  const auto one = [&](size_t c) {
    partial[c % row_partial_sums] += (MAGNITUDES && row[c] < 0 ? -row[c] : row[c]) * v[c];
  };
  size_t c = first, end = last / 8 * 8;
  for (; c < last && c % 8 != 0; ++c) one(c);
  if (c < end) {
    for (size_t l = 0; l < row_partial_sums; l += width) {
      vec sum = load(partial + l);
      for (size_t i = c + l; i < end; i += row_partial_sums) {
        const vec entry = load(row + i);
        sum += (MAGNITUDES ? absolute(entry) : entry) * load(v + i);
      }
      store(partial + l, sum);
    }
    c = end;
  }
  for (; c < last; ++c) one(c);
  return tree(partial);
}

void row_sums(const square_rows& y, bool upper, bool magnitudes, const double* v, double* sums) {
  for (size_t r = 0; r < y.size; ++r) {
    const double* row = y.entries + r * y.stride;
    const size_t first = upper ? r : 0, last = upper ? y.size : r;
    sums[r] = magnitudes ? sum_of_row<true>(row, v, first, last) : sum_of_row<false>(row, v, first, last);
  }
}

TESSARN_INLINE double larger(double a, double b) { return b > a ? b : a; }
TESSARN_INLINE double size_of(double v) { return v < 0 ? -v : v; }

double row_largest(const double* rows, size_t count, size_t columns, size_t stride, double* largest) {
  double finite = 0;
  for (size_t r = 0; r < count; ++r) {
    const double* row = rows + r * stride;
    vec most = broadcast(0), differences = broadcast(0);
    size_t c = 0;
    for (; c + width <= columns; c += width) {
      const vec v = load(row + c), m = absolute(v);
      most = select(m > most, m, most);
      differences += v - v;
    }
    double lanes[2 * width];
    store(lanes, most);
    store(lanes + width, differences);
    double found = 0;
    for (size_t i = 0; i < width; ++i) {
      found = larger(found, lanes[i]);
      finite += lanes[width + i];
    }
    for (; c < columns; ++c) {
      found = larger(found, size_of(row[c]));
      finite += row[c] - row[c];
    }
    largest[r] = found;
  }
  return finite;
}

void column_largest(const double* rows, size_t count, size_t columns, size_t stride, const double* factors,
                    double* largest) {
  for (size_t c = 0; c < columns; ++c) largest[c] = 0;
  for (size_t r = 0; r < count; ++r) {
    const double* row = rows + r * stride;
    size_t c = 0;
    for (; c + width <= columns; c += width) {
      const vec m = absolute(load(row + c)) * broadcast(factors[r]), most = load(largest + c);
      store(largest + c, select(m > most, m, most));
    }
    for (; c < columns; ++c) largest[c] = larger(largest[c], size_of(row[c]) * factors[r]);
  }
}

void scale(const double* rows, size_t count, size_t columns, size_t stride, const double* row_factors,
           const double* column_factors, double* to, size_t to_stride) {
  for (size_t r = 0; r < count; ++r) {
    const double* row = rows + r * stride;
    double* out = to + r * to_stride;
    size_t c = 0;
    for (; c + width <= columns; c += width)
      store(out + c, load(row + c) * (broadcast(row_factors[r]) * load(column_factors + c)));
    for (; c < columns; ++c) out[c] = row[c] * (row_factors[r] * column_factors[c]);
    for (; c < to_stride; ++c) out[c] = 0;
  }
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
