// The kernels of the polynomials; compiled once for each instruction set.
#include "simd/lanes.h"
#include "poly/kernels/power_chains.inl"
#include "poly/kernels/fit_sums.inl"
#include "poly/kernels/kernels.h"
#include "poly/kernels/surface_sums.inl"

namespace tessarn::detail::TESSARN_ISA {
namespace {

constexpr size_t group = width == 1 ? partial_sums : 4;

// All magnitudes of a block at least low and below high, or 0.
bool in_range(const double* x, double low, double high) {
#if TESSARN_VECTOR_LANES
  // Magnitudes are ordered as their bits are, and differences of the bits are below 0 where one is out of range.
  const mask least = (mask)broadcast(low), end = (mask)broadcast(high) - 1;
  mask outside = {};
  for (size_t i = 0; i < point_block; i += width) {
    const mask magnitude = (mask)absolute(load(x + i));
    outside |= (end - magnitude) | ((magnitude - least) & (mask{} - magnitude));
  }
  return none(outside & (mask{} + INT64_MIN));
#else
  bool all = true;
  for (size_t i = 0; i < point_block; ++i) {
    const double magnitude = x[i] < 0 ? -x[i] : x[i];
    all &= magnitude < high && (magnitude >= low || magnitude == 0);
  }
  return all;
#endif
}

template <size_t EXPONENTS>
TESSARN_INLINE size_t add_few_powers(const double* points, size_t n, double marker, double* sums) {
  if constexpr (few_registers)
    return add_points_by_chains<few_powers_singly<EXPONENTS>>(points, n, marker, sums);
  else
    return add_points_by_chains<few_powers<EXPONENTS>>(points, n, marker, sums);
}

size_t add_plane_points(const double* points, size_t n, double marker, unsigned exponents, double* sums) {
  switch (exponents) {
    case 3: return add_line_points(points, n, marker, sums);
    case 5: return add_few_powers<5>(points, n, marker, sums);
    case 7: return add_few_powers<7>(points, n, marker, sums);
    case 9: return add_points_by_chains<many_powers<9>>(points, n, marker, sums);
    case 11: return add_points_by_chains<many_powers<11>>(points, n, marker, sums);
    case 13: return add_points_by_chains<many_powers<13>>(points, n, marker, sums);
    case 15: return add_points_by_chains<many_powers<15>>(points, n, marker, sums);
    default: return 0;
  }
}

bool unpack_plane(const double* points, double marker, double* x, double* y) {
  mask marked = {};
  for (size_t i = 0; i < point_block; i += width) {
    vec px, py;
    load_plane_points(points + 3 * i, px, py);
    marked |= (px == broadcast(marker)) | (px != px);
    store(x + i, px);
    store(y + i, py);
  }
  return none(marked);
}

// A group in which a chain is in doubt is run again with certain ones.
template <size_t GROUP, size_t COUNT = 0, class Use>
TESSARN_INLINE void run_chains(const double* from, size_t count, const Use& use) {
  vec x[GROUP];
  for (size_t v = 0; v < GROUP; ++v) x[v] = load(from + v * width);
  if (count <= max_half_count) {
    half_exponent_chains<GROUP, COUNT> quick;
    quick.run(x, count, use);
    if (none(quick.doubt)) return;
  }
  double_double_chains<GROUP> certain;
  certain.run(x, count, use);
}

template <size_t GROUP>
struct store_powers {
  double* to;
  TESSARN_MEMBER void operator()(size_t e, const vec* power) const {
    for (size_t v = 0; e > 1 && v < GROUP; ++v) store(to + e * point_block + v * width, power[v]);
  }
};

void certain_powers(size_t exponents, double* powers) {
  double_double_chains<1> certain;
  const vec x = load(powers + point_block);
  certain.run(&x, exponents, store_powers<1>{powers});
}

// A group in which a chain is in doubt is run again with certain ones.
template <size_t GROUP, size_t COUNT>
TESSARN_INLINE void quick_powers(double* powers, size_t count = COUNT) {
  for (double* to = powers; to < powers + point_block; to += GROUP * width) {
    vec x[GROUP];
    for (size_t v = 0; v < GROUP; ++v) x[v] = load(to + point_block + v * width);
    half_exponent_chains<GROUP, COUNT> quick;
    quick.run(x, count, store_powers<GROUP>{to});
    if (none(quick.doubt)) continue;
    for (size_t v = 0; v < GROUP; ++v) certain_powers(count, to + v * width);
  }
}

// The fits need odd numbers of powers. As many vectors stand side by side as there are registers for them.
void powers(unsigned exponents, double* powers) {
  switch (exponents) {
    case 3: return quick_powers<4, 3>(powers);
    case 5: return quick_powers<4, 5>(powers);
    case 7: return quick_powers<2, 7>(powers);
    case 9: return quick_powers<2, 9>(powers);
    case 11: return quick_powers<1, 11>(powers);
    case 13: return quick_powers<1, 13>(powers);
    case 15: return quick_powers<1, 15>(powers);
    case 17: return quick_powers<1, 17>(powers);
    default: break;
  }
  if (exponents <= max_half_count) return quick_powers<2, 0>(powers, exponents);
  for (size_t i = 0; i < point_block; i += width) certain_powers(exponents, powers + i);
}

// Adds rows, and their products with y, to their partial sums.
template <size_t ROWS, bool PRODUCTS>
TESSARN_INLINE void add_some_rows(const double* row, const double* y, size_t n, double* sums, double* moments) {
  vec s[ROWS][sum_vectors], m[ROWS][sum_vectors];
  for (size_t r = 0; r < ROWS; ++r)
    for (size_t v = 0; v < sum_vectors; ++v) {
      s[r][v] = load(sums + r * partial_sums + v * width);
      m[r][v] = PRODUCTS ? load(moments + r * partial_sums + v * width) : vec{};
    }
  for (size_t i = 0; i < n; i += partial_sums)
    for (size_t v = 0; v < sum_vectors; ++v) {
      const vec ordinate = PRODUCTS ? load(y + i + v * width) : vec{};
      for (size_t r = 0; r < ROWS; ++r) {
        const vec p = load(row + r * point_block + i + v * width);
        s[r][v] += p;
        if (PRODUCTS) m[r][v] += p * ordinate;
      }
    }
  for (size_t r = 0; r < ROWS; ++r)
    for (size_t v = 0; v < sum_vectors; ++v) {
      store(sums + r * partial_sums + v * width, s[r][v]);
      if (PRODUCTS) store(moments + r * partial_sums + v * width, m[r][v]);
    }
}

template <bool PRODUCTS, size_t ROWS>
TESSARN_INLINE void add_rows(const double* row, size_t rows, const double* y, size_t n, double* sums, double* moments) {
  for (; rows >= ROWS; rows -= ROWS) {
    add_some_rows<ROWS, PRODUCTS>(row, y, n, sums, moments);
    row += ROWS * point_block;
    sums += ROWS * partial_sums;
    if (PRODUCTS) moments += ROWS * partial_sums;
  }
  if constexpr (ROWS > 1) add_rows<PRODUCTS, ROWS - 1>(row, rows, y, n, sums, moments);
}

void add_powers(const double* powers, const double* y, size_t n, unsigned exponents, double* sums) {
  const size_t ordinates = (exponents + 1) / 2;
  double* moments = sums + exponents * partial_sums;
  add_rows<true, product_rows>(powers, ordinates, y, n, sums, moments);
  powers += ordinates * point_block;
  sums += ordinates * partial_sums;
  add_rows<false, product_rows>(powers, exponents - ordinates, y, n, sums, moments);
}

bool unpack_space(const double* points, size_t exponents, double* px, double* py, double* z) {
  if (exponents == 5) return unpack_with_powers<5>(points, px, py, z);
  if (exponents == 7) return unpack_with_powers<7>(points, px, py, z);
  for (size_t i = 0; i < point_block; i += width) {
    vec x, y, pz;
    load_surface_points(points + 4 * i, x, y, pz);
    store(px + point_block + i, x);
    store(py + point_block + i, y);
    store(z + i, pz);
  }
  return false;
}

void apply_weights(const double* w, double* z) {
  for (size_t i = 0; i < point_block; i += width) {
    const vec weight = load_for_surface(w + i);
    store(z + i, (weight * load(z + i)) * weight);
    store(z + point_block + i, weight * weight);
  }
}

void add_points(const double* points, const double* w, size_t n, double* sums, double* moments) {
  if (w)
    add_points_of<true>(points, w, n, sums, moments);
  else
    add_points_of<false>(points, w, n, sums, moments);
}

void add_products(const surface_blocks& blocks, bool weighted, unsigned g, double* sums, double* moments) {
  if (weighted)
    add_products_of<true>(blocks, g, sums, moments);
  else
    add_products_of<false>(blocks, g, sums, moments);
}

constexpr size_t value_vectors = 4;

// Values by a running power, in place.
TESSARN_INLINE void value_group(const double* cof, size_t count, vec* x) {
  vec power[value_vectors], sum[value_vectors];
  for (size_t v = 0; v < value_vectors; ++v) {
    power[v] = x[v];
    sum[v] = broadcast(cof[0]);
  }
  for (size_t i = 1; i < count; ++i) {
    const vec c = broadcast(cof[i]);
    for (size_t v = 0; v < value_vectors; ++v) sum[v] += power[v] * c;
    if (i + 1 == count) break;
    for (size_t v = 0; v < value_vectors; ++v) power[v] *= x[v];
  }
  for (size_t v = 0; v < value_vectors; ++v) x[v] = sum[v];
}

void values(const double* cof, size_t count, const double* x, double* y) {
  static_assert(point_block % (value_vectors * width) == 0);
  for (size_t i = 0; i < point_block; i += value_vectors * width) {
    vec at[value_vectors];
    for (size_t v = 0; v < value_vectors; ++v) at[v] = load(x + i + v * width);
    value_group(cof, count, at);
    for (size_t v = 0; v < value_vectors; ++v) store(y + i + v * width, at[v]);
  }
}

bool one_sign(const double* cof, size_t count, double first, double step) {
  double lane[value_vectors * width];
  for (size_t k = 0; k < value_vectors * width; ++k) lane[k] = (double)(int)k * step;
  mask not_above = {}, not_below = {};
  for (size_t i = 0; i < long_block; i += value_vectors * width) {
    const vec start = broadcast(first + (double)(int)i * step);
    vec at[value_vectors];
    for (size_t v = 0; v < value_vectors; ++v) at[v] = start + load(lane + v * width);
    value_group(cof, count, at);
    for (size_t v = 0; v < value_vectors; ++v) {
      not_above |= complement(at[v] > vec{});
      not_below |= complement(at[v] < vec{});
    }
  }
  return none(not_above) || none(not_below);
}

template <size_t GROUP, bool MERGED>
struct add_to_series {
  const double* cof;
  const double* factor;
  vec* sum;
  TESSARN_MEMBER void operator()(size_t e, const vec* power) const {
    const bool plain = MERGED && ((e + 1) & e) == 0;
    const vec f = broadcast(factor[e]);
    const vec k = broadcast(cof[e]);
    for (size_t v = 0; v < GROUP; ++v) sum[v] = (e == 0 ? vec{} : sum[v]) + (plain ? power[v] : power[v] * f) * k;
  }
};

template <bool MERGED, size_t GROUP, size_t COUNT = 0>
TESSARN_INLINE void add_power_series(const double* cof, const double* factor, size_t count, const double* x,
                                     double* y) {
  for (size_t i = 0; i < point_block; i += GROUP * width) {
    vec sum[GROUP] = {};
    run_chains<GROUP, COUNT>(x + i, count, add_to_series<GROUP, MERGED>{cof, factor, sum});
    for (size_t v = 0; v < GROUP; ++v) store(y + i + v * width, sum[v]);
  }
}

template <bool MERGED>
TESSARN_INLINE void some_power_series(const double* cof, const double* factor, size_t count, const double* x,
                                      double* y) {
  switch (count) {
    case 4: return add_power_series<MERGED, group, 4>(cof, factor, 4, x, y);
    case 5: return add_power_series<MERGED, group, 5>(cof, factor, 5, x, y);
    case 6: return add_power_series<MERGED, group, 6>(cof, factor, 6, x, y);
    case 7: return add_power_series<MERGED, group, 7>(cof, factor, 7, x, y);
    default: return add_power_series<MERGED, group>(cof, factor, count, x, y);
  }
}

void power_series(const double* cof, const double* factor, bool merged, size_t count, const double* x, double* y) {
  if (merged)
    some_power_series<true>(cof, factor, count, x, y);
  else
    some_power_series<false>(cof, factor, count, x, y);
}

constexpr size_t derivative_group = width == 1 ? 1 : 2;

struct add_to_derivatives {
  const double* cof;
  const double* factors;
  size_t stride, count;
  vec (*sum)[derivative_group];
  TESSARN_MEMBER void operator()(size_t e, const vec* power) const {
    for (size_t k = 0; k < 3; ++k) {
      if (e == 0)
        for (size_t v = 0; v < derivative_group; ++v) sum[k][v] = vec{};
      if (e + k + 1 >= count) continue;
      const vec f = broadcast(factors[k * stride + e + k + 1]);
      const vec coefficient = broadcast(cof[e + k + 1]);
      for (size_t v = 0; v < derivative_group; ++v) sum[k][v] += power[v] * f * coefficient;
    }
  }
};

void derivatives(const double* cof, const double* factors, size_t stride, size_t count, const double* x, double* d) {
  for (size_t i = 0; i < point_block; i += derivative_group * width) {
    vec sum[3][derivative_group] = {};
    run_chains<derivative_group>(x + i, count == 0 ? 0 : count - 1,
                                 add_to_derivatives{cof, factors, stride, count, sum});
    for (size_t k = 0; k < 3; ++k)
      for (size_t v = 0; v < derivative_group; ++v) store(d + k * point_block + i + v * width, sum[k][v]);
  }
}

void curvature(const double* d, double* y) {
  for (size_t i = 0; i < point_block; i += width) {
    const vec first = load(d + i);
    const vec second = load(d + point_block + i);
    const vec s = 1.0 + first * first;
    store(y + i, second / (square_root(s) * s));
  }
}

void curvature_derivative(const double* d, double* y) {
  for (size_t i = 0; i < point_block; i += width) {
    const vec first = load(d + i);
    const vec second = load(d + point_block + i);
    const vec third = load(d + 2 * point_block + i);
    const vec square = first * first;
    const vec fourth = square * square;
    const vec s = 1.0 + square;
    const vec root = square_root(s);
    const vec numerator = third * (root * s) - (3.0 * first * second) * (root * second);
    store(y + i, numerator / ((fourth + square) * 3.0 + 1.0 + fourth * square));
  }
}

// The vectors v of a block of a product's coefficients from number k on are sums over j ascending. At a time t vector v
// is at j = t + v width, so that all need the same coefficients c[k - t], c[k - t + 1], ...
constexpr size_t product_vectors = width == 8 ? 4 : 6;
constexpr size_t product_block = product_vectors * width;

TESSARN_INLINE void convolve_block(const double* c, ptrdiff_t n, const double* q, ptrdiff_t nq, ptrdiff_t k,
                                   double* r) {
  constexpr auto lead = static_cast<ptrdiff_t>(product_block - width);
  const ptrdiff_t first = k - n + 1 > -lead ? k - n + 1 : -lead;
  const ptrdiff_t from_last = k + static_cast<ptrdiff_t>(width);
  const ptrdiff_t end = from_last < nq ? from_last : nq;
  vec sum[product_vectors] = {};
  for (ptrdiff_t t = first; t < end; ++t) {
    const vec shared = load(c + (k - t));
    for (size_t v = 0; v < product_vectors; ++v) sum[v] += shared * broadcast(q[t + static_cast<ptrdiff_t>(v * width)]);
  }
  for (size_t v = 0; v < product_vectors; ++v) store(r + v * width, sum[v]);
}

// Of n numbers and what stands behind them in the last vector.
TESSARN_INLINE mask some_not_finite(const double* x, size_t n) {
  mask others = {};
  for (size_t i = 0; i < n; i += width) others |= not_finite(load(x + i));
  return others;
}

bool convolve(const double* c, size_t n, const double* q, size_t nq, double* r) {
  if (!none(some_not_finite(c, n) | some_not_finite(q, nq))) return false;
  for (size_t k = 0; k < n + nq - 1; k += product_block)
    convolve_block(c, static_cast<ptrdiff_t>(n), q, static_cast<ptrdiff_t>(nq), static_cast<ptrdiff_t>(k), r + k);
  return true;
}

TESSARN_INLINE bool is_event(const double* x, const double* f, double end, bool at_end) {
  if (x[0] > end || (at_end && x[0] == end)) return true;
  if ((f[0] > 0 && f[1] < 0) || (f[0] < 0 && f[1] > 0) || f[0] == 0) return true;
  return !(x[1] > x[0]);
}

#if TESSARN_VECTOR_LANES
TESSARN_INLINE mask events(const double* x, const double* f, vec last) {
  const vec zero = {};
  const vec x0 = load(x);
  const vec f0 = load(f);
  const vec f1 = load(f + 1);
  const mask change = ((f0 > zero) & (f1 < zero)) | ((f0 < zero) & (f1 > zero));
  return (x0 >= last) | (f0 == zero) | change | ~(load(x + 1) > x0);
}
#endif

size_t first_event(const double* x, const double* f, double end, bool at_end) {
  constexpr size_t pairs = point_block - 1;
#if TESSARN_VECTOR_LANES
  const vec last = broadcast(end);
  mask event = events(x + pairs - width, f + pairs - width, last);
  for (size_t i = 0; i + width < pairs; i += width) event |= events(x + i, f + i, last);
  int64_t any = 0;
  for (size_t k = 0; k < width; ++k) any |= event[k];
  if (any == 0) return pairs;
#endif
  for (size_t i = 0; i < pairs; ++i)
    if (is_event(x + i, f + i, end, at_end)) return i;
  return pairs;
}

TESSARN_INLINE void surface_group(const double* cof, size_t g, const double* x, const double* y, double* z) {
  const vec px = load(x);
  const vec py = load(y);
  vec sum = vec{};
  vec row = broadcast(1);
  for (size_t j = 0; j < g; ++j) {
    vec t = row;
    sum += t * broadcast(*cof++);
    for (size_t i = 1; i < g; ++i) {
      t *= px;
      sum += t * broadcast(*cof++);
    }
    row *= py;
  }
  store(z, sum);
}

void surface_values(const double* cof, size_t g, const double* x, const double* y, double* z, size_t n) {
  size_t i = 0;
  for (; i + width <= n; i += width) surface_group(cof, g, x + i, y + i, z + i);
  if (i == n) return;
  double rest[3][width] = {};
  for (size_t k = i; k < n; ++k) {
    rest[0][k - i] = x[k];
    rest[1][k - i] = y[k];
  }
  surface_group(cof, g, rest[0], rest[1], rest[2]);
  for (size_t k = i; k < n; ++k) z[k] = rest[2][k - i];
}

}  // namespace

const poly_kernels poly_table = {
    .add_plane_points = add_plane_points,
    .unpack_plane = unpack_plane,
    .surface_lanes = surface_lanes,
    .unpack_space = unpack_space,
    .apply_weights = apply_weights,
    .in_range = in_range,
    .powers = powers,
    .add_powers = add_powers,
    .add_products = add_products,
    .add_points = add_points,
    .values = values,
    .power_series = power_series,
    .derivatives = derivatives,
    .curvature = curvature,
    .curvature_derivative = curvature_derivative,
    .first_event = first_event,
    .one_sign = one_sign,
    .surface_values = surface_values,
    .convolve = convolve,
};

}  // namespace tessarn::detail::TESSARN_ISA
