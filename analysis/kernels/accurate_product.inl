// Products of matrices whose entries are sums as good as in doubled precision.
#pragma once

#include "analysis/kernels/systems.inl"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// ROWS rows and a vector of columns. A factor of b is split once for all rows; those of a come split.
template <size_t ROWS>
TESSARN_INLINE void subtract_tile(const accurate_product& p, size_t row, size_t x, size_t count) {
  vec sum[ROWS], lost[ROWS];
  TESSARN_UNROLL
  for (size_t i = 0; i < ROWS; ++i) {
    sum[i] = load(p.c + (row + i) * p.stride + x);
    lost[i] = broadcast(0);
  }
  for (size_t first = 0; first < count; first += columns_between_sums) {
    const size_t last = count - first < columns_between_sums ? count : first + columns_between_sums;
    for (size_t k = first; k < last; ++k) {
      const vec b = load(p.b + k * p.stride + x);
      const doubled b_parts = split(b);
      TESSARN_UNROLL
      for (size_t i = 0; i < ROWS; ++i) {
        const size_t at = (row + i) * p.row_stride + k * p.k_stride;
        const doubled product = exact_product(
            broadcast_from(p.a + at), {broadcast_from(p.a_high + at), broadcast_from(p.a_low + at)}, b, b_parts);
        const doubled s = exact_sum(sum[i], -product.high);
        sum[i] = s.high;
        lost[i] += s.low - product.low;
      }
    }
    TESSARN_UNROLL
    for (size_t i = 0; i < ROWS; ++i) {
      const doubled s = exact_sum(sum[i], lost[i]);
      sum[i] = s.high;
      lost[i] = s.low;
    }
  }
  TESSARN_UNROLL
  for (size_t i = 0; i < ROWS; ++i) store(p.c + (row + i) * p.stride + x, sum[i]);
}

// Of triangles, the products behind the diagonals are 0, which no sum notices.
void subtract_accurately(const accurate_product& p) {
  constexpr size_t together = 4;
  for (size_t x = 0; x < p.size; x += width) {
    const size_t whole = p.triangles && x + width < p.size ? x + width : p.size;
    size_t row = 0;
    for (; row + together <= p.size; row += together)
      subtract_tile<together>(p, row, x, p.triangles && row + together < whole ? row + together : whole);
    for (; row < p.size; ++row) subtract_tile<1>(p, row, x, p.triangles && row + 1 < whole ? row + 1 : whole);
  }
}

void split_all(const double* v, size_t n, double* high, double* low) {
  for (size_t i = 0; i < n; i += width) {
    const doubled parts = split(load(v + i));
    store(high + i, parts.high);
    store(low + i, parts.low);
  }
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
