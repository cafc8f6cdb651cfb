// Sums over points: means, and products of coordinates.
#pragma once

#include "analysis/kernels/doubled_lanes.inl"
#include "analysis/kernels/shape_kernels.h"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// Points whose terms share one number for their lost parts.
constexpr size_t shape_block = 256;

TESSARN_INLINE doubled pair_of(number_pair v) { return {broadcast(v.high), broadcast(v.low)}; }

// Which lanes belong to points, at point i of n.
TESSARN_INLINE auto lanes_in_use(size_t i, size_t n) { return lane_numbers() < broadcast(static_cast<double>(n - i)); }

// v where the lane belongs to a point, else 0.
template <bool Tail, class Mask>
TESSARN_INLINE vec kept(Mask m, vec v) {
  return Tail ? select(m, v, broadcast(0)) : v;
}

TESSARN_INLINE doubled local(const local_columns& p, size_t k, size_t i) {
  const vec v = load(p.c[k] + i) * broadcast(p.factors[k][0]) * broadcast(p.factors[k][1]);
  return exact_sum(v, broadcast(-p.origin[k]));
}
template <bool Tail>
TESSARN_INLINE doubled local(const local_columns& p, size_t k, size_t i, size_t n) {
  const doubled v = local(p, k, i);
  if (!Tail) return v;
  const auto m = lanes_in_use(i, n);
  return {kept<Tail>(m, v.high), kept<Tail>(m, v.low)};
}

// The square of the weight; 0 behind the last point.
template <bool Tail>
TESSARN_INLINE doubled squared_weight_of(const double* weights, size_t i, size_t n) {
  const vec v = load(weights + i), w = Tail ? kept<Tail>(lanes_in_use(i, n), v) : v;
  const doubled parts = split(w);
  return exact_product(w, parts, w, parts);
}

// Adds the sums of a block, high and low parts, to the totals in doubled precision.
TESSARN_INLINE void add_block(const double* block, size_t sums, double* totals) {
  for (size_t s = 0; s < sums; ++s)
    for (size_t l = 0; l < shape_partial_sums; l += width) {
      const double* from = block + 2 * shape_partial_sums * s + l;
      double* to = totals + 2 * shape_partial_sums * s + l;
      const doubled sum =
          doubled{load(to), load(to + shape_partial_sums)} + ordered_sum(load(from), load(from + shape_partial_sums));
      store(to, sum.high);
      store(to + shape_partial_sums, sum.low);
    }
}

// Runs over n points, block by block. `terms.add<Tail>(i, lane)` adds the terms of the points from i on to the partial
// sums from `lane` on. Tail: some lanes are behind the last point.
template <class Terms>
TESSARN_INLINE void add_in_blocks(const Terms& terms, size_t sums, size_t n, double* totals) {
  constexpr size_t most = Terms::most_sums * 2 * shape_partial_sums;
  for (size_t begin = 0; begin < n; begin += shape_block) {
    const size_t end = n - begin < shape_block ? n : begin + shape_block;
    double block[most];
    for (size_t k = 0; k < 2 * shape_partial_sums * sums; ++k) block[k] = 0;
    size_t i = begin;
    for (; i + shape_partial_sums <= end; i += shape_partial_sums)
      for (size_t l = 0; l < shape_partial_sums; l += width) terms.template add<false>(i + l, block + l);
    for (size_t l = 0; i + l < end; l += width) terms.template add<true>(i + l, block + l);
    add_block(block, sums, totals);
  }
}

TESSARN_INLINE void add_one(double* lane, doubled v) {
  const doubled one[1] = {v};
  add(lane, one);
}

template <size_t D, bool Weighted>
struct mean_terms {
  static constexpr size_t most_sums = D + 1;
  const local_columns& p;
  const double* weights;
  size_t n;

  template <bool Tail>
  TESSARN_MEMBER void add(size_t i, double* lane) const {
    doubled w, w_parts;
    if (Weighted) {
      w = squared_weight_of<Tail>(weights, i, n);
      w_parts = split(w.high);
      add_one(lane + 2 * shape_partial_sums * D, w);
    }
    TESSARN_UNROLL
    for (size_t k = 0; k < D; ++k) {
      const doubled v = local<Tail>(p, k, i, n);
      add_one(lane + 2 * shape_partial_sums * k, Weighted ? loose_product(w, w_parts, v, split(v.high)) : v);
    }
  }
};

// A point with the parts of its coordinates.
template <size_t D>
struct split_point {
  doubled v[D], parts[D];
};
template <size_t D, bool Tail>
TESSARN_INLINE split_point<D> point_at(const local_columns& p, size_t i, size_t n) {
  split_point<D> x;
  TESSARN_UNROLL
  for (size_t k = 0; k < D; ++k) {
    x.v[k] = local<Tail>(p, k, i, n);
    x.parts[k] = split(x.v[k].high);
  }
  return x;
}

// The coordinates times the squared weight.
template <size_t D>
TESSARN_INLINE split_point<D> weighted_point(const split_point<D>& x, doubled w) {
  const doubled w_parts = split(w.high);
  split_point<D> y;
  TESSARN_UNROLL
  for (size_t k = 0; k < D; ++k) {
    const doubled v = loose_product(w, w_parts, x.v[k], x.parts[k]);
    y.v[k] = ordered_sum(v.high, v.low);
    y.parts[k] = split(y.v[k].high);
  }
  return y;
}

// Adds x_k y_l for k <= l, and gives the place behind these sums.
template <size_t D>
TESSARN_INLINE double* add_own_products(const split_point<D>& x, const split_point<D>& y, double* lane) {
  TESSARN_UNROLL
  for (size_t k = 0; k < D; ++k) {
    TESSARN_UNROLL
    for (size_t l = k; l < D; ++l) {
      add_one(lane, loose_product(x.v[k], x.parts[k], y.v[l], y.parts[l]));
      lane += 2 * shape_partial_sums;
    }
  }
  return lane;
}

template <size_t D, bool Weighted>
struct product_terms {
  static constexpr size_t most_sums = D * (D + 1) / 2;
  const local_columns& p;
  const double* weights;
  size_t n;

  template <bool Tail>
  TESSARN_MEMBER void add(size_t i, double* lane) const {
    const split_point<D> x = point_at<D, Tail>(p, i, n);
    if (Weighted)
      add_own_products(weighted_point(x, squared_weight_of<Tail>(weights, i, n)), x, lane);
    else
      add_own_products(x, x, lane);
  }
};

// Adds x_k y_k, and in double precision x_k y_l for k < l, and gives the place behind these sums.
template <size_t D>
TESSARN_INLINE double* add_lengths(const split_point<D>& x, const split_point<D>& y, double* lane) {
  TESSARN_UNROLL
  for (size_t k = 0; k < D; ++k) {
    TESSARN_UNROLL
    for (size_t l = k; l < D; ++l) {
      if (k == l)
        add_one(lane, loose_product(x.v[k], x.parts[k], y.v[l], y.parts[l]));
      else
        store(lane, load(lane) + x.v[k].high * y.v[l].high);
      lane += 2 * shape_partial_sums;
    }
  }
  return lane;
}

template <size_t D, bool Weighted>
struct pair_terms {
  static constexpr size_t most_sums = D * D;
  const local_columns &a, &b;
  const double* weights;
  size_t n;
  double* lengths;

  template <bool Tail>
  TESSARN_MEMBER void add(size_t i, double* lane) const {
    const split_point<D> x = point_at<D, Tail>(a, i, n), y = point_at<D, Tail>(b, i, n);
    split_point<D> wx = x, wy = y;
    if (Weighted) {
      const doubled w = squared_weight_of<Tail>(weights, i, n);
      wx = weighted_point(x, w);
      wy = weighted_point(y, w);
    }
    add_lengths(wy, y, add_lengths(wx, x, lengths + i % shape_partial_sums));
    TESSARN_UNROLL
    for (size_t k = 0; k < D; ++k) {
      TESSARN_UNROLL
      for (size_t l = 0; l < D; ++l)
        add_one(lane + 2 * shape_partial_sums * (D * k + l), loose_product(wy.v[k], wy.parts[k], x.v[l], x.parts[l]));
    }
  }
};

template <size_t D>
void add_means_of(const local_columns& p, const double* weights, size_t n, double* sums) {
  if (weights)
    add_in_blocks(mean_terms<D, true>{p, weights, n}, D + 1, n, sums);
  else
    add_in_blocks(mean_terms<D, false>{p, weights, n}, D, n, sums);
}
void add_means(const local_columns& p, size_t dimension, const double* weights, size_t n, double* sums) {
  (dimension == 2 ? add_means_of<2> : add_means_of<3>)(p, weights, n, sums);
}

template <size_t D>
void add_products_of(const local_columns& p, const double* weights, size_t n, double* sums) {
  if (weights)
    add_in_blocks(product_terms<D, true>{p, weights, n}, D * (D + 1) / 2, n, sums);
  else
    add_in_blocks(product_terms<D, false>{p, weights, n}, D * (D + 1) / 2, n, sums);
}
void add_products(const local_columns& p, size_t dimension, const double* weights, size_t n, double* sums) {
  (dimension == 2 ? add_products_of<2> : add_products_of<3>)(p, weights, n, sums);
}

template <size_t D>
void add_pair_products_of(const local_columns& a, const local_columns& b, const double* weights, size_t n, double* sums,
                          double* lengths) {
  if (weights)
    add_in_blocks(pair_terms<D, true>{a, b, weights, n, lengths}, D * D, n, sums);
  else
    add_in_blocks(pair_terms<D, false>{a, b, weights, n, lengths}, D * D, n, sums);
}
void add_pair_products(const local_columns& a, const local_columns& b, size_t dimension, const double* weights,
                       size_t n, double* sums, double* lengths) {
  (dimension == 2 ? add_pair_products_of<2> : add_pair_products_of<3>)(a, b, weights, n, sums, lengths);
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
