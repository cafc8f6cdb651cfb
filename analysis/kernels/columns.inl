// Sums over the rows of tall matrices, and residuals of their systems, as good as in doubled precision.
#pragma once

#include "analysis/kernels/systems.inl"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// The products of COUNT columns with v, lanes l to l + width of the partial sums: the rounded sums, what the roundings
// lost, and the sums of weighted magnitudes. WHOLE tells that v has low parts and that there are weights.
template <size_t COUNT, bool WHOLE>
TESSARN_INLINE void add_products(const double* const* columns, size_t rows, const column_of_products& v, size_t l,
                                 double (*high)[row_partial_sums], double (*low)[row_partial_sums],
                                 double (*weighted)[row_partial_sums]) {
  vec sum[COUNT], lost[COUNT], size[COUNT];
  TESSARN_UNROLL
  for (size_t k = 0; k < COUNT; ++k) sum[k] = lost[k] = size[k] = broadcast(0);
  for (size_t first = 0; first < rows; first += rows_between_sums) {
    const size_t last = rows - first < rows_between_sums ? rows : first + rows_between_sums;
    for (size_t r = first + l; r < last; r += row_partial_sums) {
      const vec factor = load(v.high + r);
      const doubled parts = split(factor);
      TESSARN_UNROLL
      for (size_t k = 0; k < COUNT; ++k) {
        const vec entry = load(columns[k] + r);
        const doubled p = exact_product(entry, split(entry), factor, parts);
        const doubled s = exact_sum(sum[k], p.high);
        sum[k] = s.high;
        if (WHOLE) {
          lost[k] += s.low + (p.low + entry * load(v.low + r));
          size[k] += absolute(entry) * load(v.weights + r);
        } else {
          lost[k] += s.low + p.low;
        }
      }
    }
    TESSARN_UNROLL
    for (size_t k = 0; k < COUNT; ++k) {
      const doubled s = exact_sum(sum[k], lost[k]);
      sum[k] = s.high;
      lost[k] = s.low;
    }
  }
  TESSARN_UNROLL
  for (size_t k = 0; k < COUNT; ++k) {
    store(high[k] + l, sum[k]);
    store(low[k] + l, lost[k]);
    store(weighted[k] + l, size[k]);
  }
}

// The partial sums of doubled numbers as a tree, one after the other.
TESSARN_INLINE void add_partial_sums(const double* high, const double* low, double& sum_high, double& sum_low) {
  doubled partial[row_partial_sums];
  for (size_t l = 0; l < row_partial_sums; ++l) partial[l] = {broadcast(high[l]), broadcast(low[l])};
  const doubled sum = tree(partial, [](doubled p, doubled q) { return sum_of(p, q); });
  double lanes[2][width];
  store(lanes[0], sum.high);
  store(lanes[1], sum.low);
  sum_high = lanes[0][0];
  sum_low = lanes[1][0];
}

template <size_t COUNT, bool WHOLE>
void products_of(const double* const* columns, size_t rows, const column_of_products& v, double* high, double* low,
                 double* weighted) {
  double sums[3][COUNT][row_partial_sums];
  for (size_t l = 0; l < row_partial_sums; l += width)
    add_products<COUNT, WHOLE>(columns, rows, v, l, sums[0], sums[1], sums[2]);
  for (size_t k = 0; k < COUNT; ++k) {
    add_partial_sums(sums[0][k], sums[1][k], high[k], low[k]);
    if (WHOLE) weighted[k] = tree(sums[2][k]);
  }
}

template <bool WHOLE>
void all_products(const double* const* columns, size_t count, size_t rows, const column_of_products& v, double* high,
                  double* low, double* weighted) {
  size_t k = 0;
  for (; k + 4 <= count; k += 4)
    products_of<4, WHOLE>(columns + k, rows, v, high + k, low + k, WHOLE ? weighted + k : nullptr);
  for (; k < count; ++k) products_of<1, WHOLE>(columns + k, rows, v, high + k, low + k, WHOLE ? weighted + k : nullptr);
}

void products(const double* const* columns, size_t count, size_t rows, const column_of_products& v, double* high,
              double* low, double* weighted) {
  (v.low ? all_products<true> : all_products<false>)(columns, count, rows, v, high, low, weighted);
}

void tall_residual(const double* const* columns, size_t count, size_t rows, const double* b, const double* x_high,
                   const double* x_low, const residual_column& r) {
  for (size_t i = 0; i < rows; i += width) {
    const vec right = load(b + i);
    vec sum = right, lost = broadcast(0), size = absolute(right);
    for (size_t k = 0; k < count; ++k) {
      const vec entry = load(columns[k] + i), x = broadcast_from(x_high + k);
      const doubled p = exact_product(entry, split(entry), x, split(x));
      const doubled s = exact_sum(sum, -p.high);
      sum = s.high;
      lost += s.low - (p.low + entry * broadcast_from(x_low + k));
      size += absolute(p.high);
      if (k % columns_between_sums + 1 < columns_between_sums) continue;
      const doubled t = exact_sum(sum, lost);
      sum = t.high;
      lost = t.low;
    }
    const doubled v = exact_sum(sum, lost);
    store(r.high + i, v.high);
    store(r.low + i, v.low);
    store(r.magnitude + i, size);
  }
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
