// Distances from circles, spheres and cylinders, and what a step of the search needs of them; in double and in doubled
// precision. The formulas are those of analysis/round_shape.h.
#pragma once

#include "analysis/kernels/residuals.inl"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// Numbers of either precision.
struct in_double {
  using number = vec;
  static constexpr size_t sum_size = shape_partial_sums;
  static TESSARN_MEMBER vec of_double(double v) { return broadcast(v); }
  static TESSARN_MEMBER vec of_lanes(vec v) { return v; }
  static TESSARN_MEMBER vec of(number_pair v) { return broadcast(v.high); }
  static TESSARN_MEMBER vec at(const double* high, const double*, size_t i) { return load(high + i); }
  static TESSARN_MEMBER vec kept_from(vec v, vec least, vec from) { return select(v > least, from, broadcast(0)); }
  static TESSARN_MEMBER vec root(vec v) { return select(v > broadcast(0), square_root(v), broadcast(0)); }
  static TESSARN_MEMBER vec twice(vec v) { return v + v; }
  static TESSARN_MEMBER void add(double* lane, vec v) { store(lane, load(lane) + v); }
};
struct in_doubled {
  using number = doubled;
  static constexpr size_t sum_size = 2 * shape_partial_sums;
  static TESSARN_MEMBER doubled of_double(double v) { return {broadcast(v), broadcast(0)}; }
  static TESSARN_MEMBER doubled of_lanes(vec v) { return {v, broadcast(0)}; }
  static TESSARN_MEMBER doubled of(number_pair v) { return pair_of(v); }
  static TESSARN_MEMBER doubled at(const double* high, const double* low, size_t i) {
    return {load(high + i), load(low + i)};
  }
  static TESSARN_MEMBER doubled kept_from(doubled v, vec least, doubled from) {
    return {select(v.high > least, from.high, broadcast(0)), select(v.high > least, from.low, broadcast(0))};
  }
  static TESSARN_MEMBER doubled root(doubled v) { return root_of(v); }
  static TESSARN_MEMBER doubled twice(doubled v) { return {v.high + v.high, v.low + v.low}; }
  static TESSARN_MEMBER void add(double* lane, doubled v) { add_one(lane, v); }
};

constexpr size_t round_entry(size_t r, size_t c) { return r * (r + 1) / 2 + c; }

// A shape with q of N coordinates, in every lane.
template <class Precision, size_t N, bool Axis>
struct round_lanes {
  static constexpr size_t count = N + 1, all = count + (Axis ? 2 : 0), entries = all * (all + 1) / 2;
  static constexpr size_t most_sums = 1 + all + 2 * entries;
  using is = Precision;
  using T = typename Precision::number;

  const centred_columns& p;
  const round_numbers& m;
  T a, b[N], d, axes[3][3], ratio[count], curvature[count], bend[count][count];

  round_lanes(const centred_columns& points, const round_numbers& numbers) : p(points), m(numbers) {
    a = is::of(m.v[0]);
    d = is::of(m.v[N + 1]);
    for (size_t k = 0; k < N; ++k) b[k] = is::of(m.v[k + 1]);
    for (size_t r = 0; r < 3; ++r)
      for (size_t k = 0; k < 3; ++k) axes[r][k] = is::of(m.axes[r][k]);
    for (size_t i = 0; i < count; ++i) {
      ratio[i] = is::of(m.ratio[i]);
      curvature[i] = is::of(m.curvature[i]);
      for (size_t j = 0; j < count; ++j) bend[i][j] = is::of(m.bend[i][j]);
    }
  }

  struct placed {
    T q[3], axial, square, distance, slope;
  };
  TESSARN_MEMBER placed place(size_t i) const {
    T v[3];
    TESSARN_UNROLL
    for (size_t k = 0; k < (Axis ? 3 : N); ++k) v[k] = is::at(p.high[k], p.low[k], i);
    placed x;
    TESSARN_UNROLL
    for (size_t k = 0; k < N; ++k) x.q[k] = Axis ? along(k, v) : v[k];
    if (Axis) x.axial = along(2, v);
    x.square = x.q[0] * x.q[0];
    T value = b[0] * x.q[0];
    TESSARN_UNROLL
    for (size_t k = 1; k < N; ++k) {
      x.square = x.square + x.q[k] * x.q[k];
      value = value + b[k] * x.q[k];
    }
    value = value + (a * x.square + d);
    const T one = is::of_double(1);
    x.slope = is::root(one + is::twice(is::twice(a * value)));
    x.distance = is::twice(value) / (one + x.slope);
    return x;
  }
  // The coordinates of q, and |q|^2.
  TESSARN_MEMBER T across(size_t i, T* q) const {
    T v[3];
    TESSARN_UNROLL
    for (size_t k = 0; k < (Axis ? 3 : N); ++k) v[k] = is::at(p.high[k], p.low[k], i);
    TESSARN_UNROLL
    for (size_t k = 0; k < N; ++k) q[k] = Axis ? along(k, v) : v[k];
    T square = q[0] * q[0];
    TESSARN_UNROLL
    for (size_t k = 1; k < N; ++k) square = square + q[k] * q[k];
    return square;
  }
  TESSARN_MEMBER T along(size_t k, const T* v) const {
    return axes[k][0] * v[0] + axes[k][1] * v[1] + axes[k][2] * v[2];
  }

  // Part k of direction j.
  TESSARN_MEMBER T component(size_t j, size_t k) const {
    return k == m.left_out ? -ratio[j] : is::of_double(k == m.part[j] ? 1 : 0);
  }

  TESSARN_MEMBER void derive(const placed& x, T* first, T* second) const {
    const T one = is::of_double(1), r = x.distance;
    const T inverse = is::kept_from(x.slope, broadcast(0x1p-25), one / x.slope);
    T direct[N + 2];
    direct[0] = (x.square - r * r) * inverse;
    TESSARN_UNROLL
    for (size_t k = 0; k < N; ++k) direct[k + 1] = x.q[k] * inverse;
    direct[count] = inverse;
    const T left = direct[m.left_out];
    TESSARN_UNROLL
    for (size_t i = 0; i < count; ++i) first[i] = direct[m.part[i]] - ratio[i] * left;
    const T two_r = is::twice(r), two_a = is::twice(a);
    if (Axis) {
      TESSARN_UNROLL
      for (size_t k = 0; k < 2; ++k) first[count + k] = -(x.axial * (two_a * x.q[k] + b[k]) * inverse);
    }
    TESSARN_UNROLL
    for (size_t i = 0; i < all; ++i) {
      TESSARN_UNROLL
      for (size_t j = 0; j <= i; ++j) {
        T sum = -(two_a * first[i] * first[j]);
        if (i < count) {
          sum = sum - (two_r * (curvature[i] * first[j] + curvature[j] * first[i]) + bend[i][j] * r);
        } else if (j < count) {
          const size_t k = i - count;
          sum = sum -
                (two_r * curvature[j] * first[i] + x.axial * (is::twice(curvature[j] * x.q[k]) + component(j, k + 1)));
        } else {
          const size_t k = i - count, l = j - count;
          sum = sum - (two_a * (x.q[k] * x.q[l]) + is::of_double(0.5) * (b[k] * x.q[l] + b[l] * x.q[k]));
          if (k == l) sum = sum + two_a * x.axial * x.axial;
        }
        second[round_entry(i, j)] = sum * inverse;
      }
    }
  }

  // The squares of the weights, 0 behind the last point.
  TESSARN_MEMBER T weight(size_t i) const {
    if (p.weight) return is::at(p.weight, p.weight_low, i);
    return is::of_lanes(select(lanes_in_use(i, p.size), broadcast(1), broadcast(0)));
  }

  template <bool Tail>
  TESSARN_MEMBER void add(size_t i, double* lane) const {
    add_points(i, lane);
  }
  // The call costs little beside the work, and a copy in each place would cost much room.
  void add_points(size_t i, double* lane) const {
    T first[all], second[entries];
    const placed x = place(i);
    derive(x, first, second);
    const bool plain = !p.weight && i + width <= p.size;
    const T w = weight(i), weighted = plain ? x.distance : w * x.distance;
    double* to = lane;
    is::add(to, weighted * x.distance);
    TESSARN_UNROLL
    for (size_t r = 0; r < all; ++r) is::add(to += is::sum_size, weighted * first[r]);
    double* to_hessian = to + is::sum_size * entries;
    TESSARN_UNROLL
    for (size_t r = 0; r < all; ++r) {
      const T row = plain ? first[r] : w * first[r];
      TESSARN_UNROLL
      for (size_t c = 0; c <= r; ++c) {
        const T product = row * first[c];
        is::add(to += is::sum_size, product);
        is::add(to_hessian += is::sum_size, product + weighted * second[round_entry(r, c)]);
      }
    }
  }
};

template <size_t N, bool Axis>
void round_sums_of(const centred_columns& p, const round_numbers& m, double* sums) {
  const round_lanes<in_double, N, Axis> terms(p, m);
  for (size_t i = 0; i < p.size; i += width) terms.add_points(i, sums + i % shape_partial_sums);
}
void round_sums(const centred_columns& p, const round_numbers& m, double* sums) {
  (m.has_axis         ? round_sums_of<2, true>
   : m.dimension == 2 ? round_sums_of<2, false>
                      : round_sums_of<3, false>)(p, m, sums);
}

template <size_t N, bool Axis>
void round_squares_of(const centred_columns& p, const round_numbers& m, double* sum) {
  const round_lanes<in_double, N, Axis> lanes(p, m);
  for (size_t i = 0; i < p.size; i += width) {
    const vec r = lanes.place(i).distance;
    in_double::add(sum + i % shape_partial_sums, lanes.weight(i) * r * r);
  }
}
void round_squares(const centred_columns& p, const round_numbers& m, double* sum) {
  (m.has_axis         ? round_squares_of<2, true>
   : m.dimension == 2 ? round_squares_of<2, false>
                      : round_squares_of<3, false>)(p, m, sum);
}

template <size_t N, bool Axis>
double square_sums_of(const centred_columns& p, const round_numbers& m, double* sums) {
  const round_lanes<in_double, N, Axis> lanes(p, m);
  vec farthest = broadcast(0);
  for (size_t i = 0; i < p.size; i += width) {
    vec q[N];
    const vec square = lanes.across(i, q), w = lanes.weight(i);
    farthest = select(square > farthest, square, farthest);
    in_double::add(sums + i % shape_partial_sums, w);
    in_double::add(sums + shape_partial_sums + i % shape_partial_sums, w * square);
  }
  double values[width], largest = 0;
  store(values, farthest);
  for (size_t k = 0; k < width; ++k) largest = values[k] > largest ? values[k] : largest;
  return largest;
}
double square_sums(const centred_columns& p, const round_numbers& m, double* sums) {
  return (m.has_axis         ? square_sums_of<2, true>
          : m.dimension == 2 ? square_sums_of<2, false>
                             : square_sums_of<3, false>)(p, m, sums);
}

template <size_t N, bool Axis>
void algebraic_sums_of(const centred_columns& p, const round_numbers& m, double mean, double factor, double* sums) {
  const round_lanes<in_double, N, Axis> lanes(p, m);
  for (size_t i = 0; i < p.size; i += width) {
    vec column[N + 1];
    const vec square = lanes.across(i, column + 1), w = lanes.weight(i);
    column[0] = (square - broadcast(mean)) * broadcast(factor);
    double* to = sums + i % shape_partial_sums;
    TESSARN_UNROLL
    for (size_t r = 0; r <= N; ++r) {
      const vec row = w * column[r];
      TESSARN_UNROLL
      for (size_t c = r; c <= N; ++c, to += shape_partial_sums) in_double::add(to, row * column[c]);
    }
  }
}
void algebraic_sums(const centred_columns& p, const round_numbers& m, double mean, double factor, double* sums) {
  (m.has_axis         ? algebraic_sums_of<2, true>
   : m.dimension == 2 ? algebraic_sums_of<2, false>
                      : algebraic_sums_of<3, false>)(p, m, mean, factor, sums);
}

template <size_t N, bool Axis>
void round_sums_doubled_of(const centred_columns& p, const round_numbers& m, double* sums) {
  const round_lanes<in_doubled, N, Axis> terms(p, m);
  add_in_blocks(terms, terms.most_sums, p.size, sums);
}
void round_sums_doubled(const centred_columns& p, const round_numbers& m, double* sums) {
  (m.has_axis         ? round_sums_doubled_of<2, true>
   : m.dimension == 2 ? round_sums_doubled_of<2, false>
                      : round_sums_doubled_of<3, false>)(p, m, sums);
}

template <size_t N, bool Axis>
struct from_round {
  const round_lanes<in_doubled, N, Axis>& m;

  template <bool Tail>
  TESSARN_MEMBER doubled at(size_t i) const {
    return m.place(i).distance;
  }
};

template <size_t N, bool Axis>
residual_range round_residuals_of(const centred_columns& p, const round_numbers& m, const residual_output& out,
                                  double* sum) {
  const round_lanes<in_doubled, N, Axis> lanes(p, m);
  return all_residuals(from_round<N, Axis>{lanes}, p.size, out, sum);
}
residual_range round_residuals(const centred_columns& p, const round_numbers& m, const residual_output& out,
                               double* sum) {
  return (m.has_axis         ? round_residuals_of<2, true>
          : m.dimension == 2 ? round_residuals_of<2, false>
                             : round_residuals_of<3, false>)(p, m, out, sum);
}

template <size_t D>
void centre_of(const local_columns& p, const number_pair* mean, size_t n, double* const* high, double* const* low) {
  for (size_t k = 0; k < D; ++k) {
    const doubled m = pair_of(mean[k]);
    for (size_t i = 0; i < n; i += width) {
      const doubled v = local(p, k, i) - m;
      if (i + width <= n) {
        store(high[k] + i, v.high);
        store(low[k] + i, v.low);
      } else {
        store_some<true>(high[k], v.high, i, n);
        store_some<true>(low[k], v.low, i, n);
      }
    }
  }
}
void centre(const local_columns& p, size_t dimension, const number_pair* mean, size_t n, double* const* high,
            double* const* low) {
  (dimension == 2 ? centre_of<2> : centre_of<3>)(p, mean, n, high, low);
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
