// Residuals of points from planes, lines and moved partners, with their extremes and the sums of their squares.
#pragma once

#include "analysis/kernels/moments.inl"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// A known doubled number as a factor.
struct factor {
  doubled v, parts;
};
TESSARN_INLINE factor factor_of(number_pair v) {
  const doubled d = pair_of(v);
  return {d, split(d.high)};
}

// f[0] x[0] + f[1] x[1] + ... - offset. The errors are collected in one number; the result is off by at most 2^-100 of
// the sum of the magnitudes.
template <size_t D>
TESSARN_INLINE doubled linear(const factor (&f)[D], const split_point<D>& x, doubled offset) {
  vec high = -offset.high, low = -offset.low;
  TESSARN_UNROLL
  for (size_t k = 0; k < D; ++k) {
    const doubled p = loose_product(f[k].v, f[k].parts, x.v[k], x.parts[k]);
    const doubled s = exact_sum(high, p.high);
    high = s.high;
    low += s.low + p.low;
  }
  return exact_sum(high, low);
}

// 0 in place of what is smaller than the noise.
TESSARN_INLINE doubled without_noise(doubled v, vec noise) {
  const auto small = absolute(v.high) < noise;
  return {select(small, broadcast(0), v.high), select(small, broadcast(0), v.low)};
}

TESSARN_INLINE vec scaled(vec v, const result_scale& s) {
  return v * broadcast(s.factors[0]) * broadcast(s.factors[1]);
}

// The extremes in each lane, and the numbers of their points.
struct lane_range {
  vec lowest, highest, largest, lowest_at, highest_at, largest_at;
};

TESSARN_INLINE void include_in(lane_range& r, vec v, vec numbers) {
  const vec size = absolute(v);
  const auto lower = v<r.lowest, higher = v> r.highest, larger = size > r.largest;
  r.lowest = select(lower, v, r.lowest);
  r.lowest_at = select(lower, numbers, r.lowest_at);
  r.highest = select(higher, v, r.highest);
  r.highest_at = select(higher, numbers, r.highest_at);
  r.largest = select(larger, size, r.largest);
  r.largest_at = select(larger, numbers, r.largest_at);
}

// The lane with the greatest number; of several that whose point is the first.
TESSARN_INLINE void greatest_lane(vec v, vec at, double& greatest, size_t& first) {
  double values[width], places[width];
  store(values, v);
  store(places, at);
  size_t best = 0;
  for (size_t k = 1; k < width; ++k)
    if (values[k] > values[best] || (values[k] == values[best] && places[k] < places[best])) best = k;
  greatest = values[best];
  first = static_cast<size_t>(places[best]);
}

TESSARN_INLINE residual_range range_of(const lane_range& r) {
  residual_range all;
  greatest_lane(-r.lowest, r.lowest_at, all.lowest, all.lowest_at);
  all.lowest = -all.lowest;
  greatest_lane(r.highest, r.highest_at, all.highest, all.highest_at);
  greatest_lane(r.largest, r.largest_at, all.largest, all.largest_at);
  return all;
}

// Stores the numbers of lanes that belong to points.
template <bool Tail>
TESSARN_INLINE void store_some(double* p, vec v, size_t i, size_t n) {
  if (!Tail) {
    store(p + i, v);
    return;
  }
  double lanes[width];
  store(lanes, v);
  for (size_t k = 0; k < width && i + k < n; ++k) p[i + k] = lanes[k];
}

// Runs over the points: `distance.at<Tail>(i)` is the residual in the lanes from point i on.
template <class Distance>
struct residual_terms {
  static constexpr size_t most_sums = 1;
  const Distance& distance;
  const residual_output& out;
  size_t n;
  lane_range& range;

  template <bool Tail>
  TESSARN_MEMBER void add(size_t i, double* lane) const {
    doubled v = distance.template at<Tail>(i);
    const vec numbers = lane_numbers() + broadcast(static_cast<double>(i));
    store_some<Tail>(out.residuals, scaled(v.high, out.scale), i, n);
    const doubled parts = split(v.high);
    doubled square = loose_product(v, parts, v, parts);
    if (out.weights) {
      const doubled w = squared_weight_of<false>(out.weights, i, n);
      square = loose_product(w, split(w.high), square, split(square.high));
    }
    if (Tail) {
      const auto m = lanes_in_use(i, n);
      square = {kept<Tail>(m, square.high), kept<Tail>(m, square.low)};
      // A lane behind the last point takes what is extreme already.
      lane_range masked = range;
      include_in(masked, v.high, numbers);
      range.lowest = select(m, masked.lowest, range.lowest);
      range.lowest_at = select(m, masked.lowest_at, range.lowest_at);
      range.highest = select(m, masked.highest, range.highest);
      range.highest_at = select(m, masked.highest_at, range.highest_at);
      range.largest = select(m, masked.largest, range.largest);
      range.largest_at = select(m, masked.largest_at, range.largest_at);
    } else {
      include_in(range, v.high, numbers);
    }
    add_one(lane, square);
  }
};

template <class Distance>
TESSARN_INLINE residual_range all_residuals(const Distance& distance, size_t n, const residual_output& out,
                                            double* sum) {
  constexpr double infinite = 0x1.fffffffffffffp1023;  // of all that residuals can be in local units
  lane_range range{broadcast(infinite), broadcast(-infinite), broadcast(-1), broadcast(0), broadcast(0), broadcast(0)};
  range.lowest_at = range.highest_at = range.largest_at = broadcast(static_cast<double>(n));
  add_in_blocks(residual_terms<Distance>{distance, out, n, range}, 1, n, sum);
  return range_of(range);
}

struct from_plane {
  const local_columns& p;
  factor normal[3];
  doubled offset;
  vec noise;

  template <bool Tail>
  TESSARN_MEMBER doubled at(size_t i) const {
    return without_noise(linear(normal, point_at<3, false>(p, i, 0), offset), noise);
  }
};

residual_range plane_residuals(const local_columns& p, const number_pair* normal, number_pair offset, size_t n,
                               const residual_output& out, double* sum) {
  const from_plane d{
      p, {factor_of(normal[0]), factor_of(normal[1]), factor_of(normal[2])}, pair_of(offset), broadcast(out.noise)};
  return all_residuals(d, n, out, sum);
}

struct from_line {
  const local_columns& p;
  factor across[2][3];
  doubled offsets[2];
  vec noise;

  template <bool Tail>
  TESSARN_MEMBER doubled at(size_t i) const {
    const split_point<3> x = point_at<3, false>(p, i, 0);
    const doubled a = linear(across[0], x, offsets[0]), b = linear(across[1], x, offsets[1]);
    return without_noise(root_of(a * a + b * b), noise);
  }
};

residual_range line_residuals(const local_columns& p, const number_pair (&across)[2][3],
                              const number_pair (&offsets)[2], size_t n, const residual_output& out, double* sum) {
  from_line d{p, {}, {pair_of(offsets[0]), pair_of(offsets[1])}, broadcast(out.noise)};
  for (size_t r = 0; r < 2; ++r)
    for (size_t k = 0; k < 3; ++k) d.across[r][k] = factor_of(across[r][k]);
  return all_residuals(d, n, out, sum);
}

// The differences are stored as they are formed.
template <size_t D>
struct from_partner {
  const local_columns &a, &b;
  factor matrix[D][D];
  doubled offset[D];
  vec unit, noise;
  size_t n;
  const result_scale& scale;
  double* differences;

  template <bool Tail>
  TESSARN_MEMBER doubled at(size_t i) const {
    const split_point<D> x = point_at<D, false>(a, i, 0);
    double lanes[D][width];
    vec squares = broadcast(0), errors = broadcast(0);
    TESSARN_UNROLL
    for (size_t r = 0; r < D; ++r) {
      const doubled y = local(b, r, i), from = exact_sum(y.high * unit, -offset[r].high);
      const vec low = from.low + (y.low * unit - offset[r].low);
      const doubled d = without_noise(-linear(matrix[r], x, doubled{from.high, low}), noise);
      store(lanes[r], scaled(d.high, scale));
      const doubled parts = split(d.high), square = loose_product(d, parts, d, parts);
      const doubled sum = exact_sum(squares, square.high);
      squares = sum.high;
      errors += sum.low + square.low;
    }
    const size_t used = Tail && n - i < width ? n - i : width;
    for (size_t l = 0; l < used; ++l)
      for (size_t r = 0; r < D; ++r) differences[D * (i + l) + r] = lanes[r][l];
    return root_of(ordered_sum(squares, errors));
  }
};

template <size_t D>
residual_range motion_residuals_of(const local_columns& a, const local_columns& b, double unit,
                                   const number_pair* matrix, const number_pair* offset, size_t n,
                                   const residual_output& out, double* differences, double* sum) {
  from_partner<D> d{a, b, {}, {}, broadcast(unit), broadcast(out.noise), n, out.scale, differences};
  for (size_t r = 0; r < D; ++r) {
    d.offset[r] = pair_of(offset[r]);
    for (size_t k = 0; k < D; ++k) d.matrix[r][k] = factor_of(matrix[D * r + k]);
  }
  return all_residuals(d, n, out, sum);
}

residual_range motion_residuals(const local_columns& a, const local_columns& b, size_t dimension, double unit,
                                const number_pair* matrix, const number_pair* offset, size_t n,
                                const residual_output& out, double* differences, double* sum) {
  return (dimension == 2 ? motion_residuals_of<2> : motion_residuals_of<3>)(a, b, unit, matrix, offset, n, out,
                                                                            differences, sum);
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
