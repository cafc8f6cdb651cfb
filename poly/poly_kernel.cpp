// The kernels of the polynomials; compiled once for each instruction set.
#include "core/lanes.h"
#include "poly/kernels.h"

namespace tessarn::detail::TESSARN_ISA {
namespace {

// The same steps as in core/power.h, in lanes.
struct pair {
  vec high, low;
};

TESSARN_INLINE pair split(vec x) {
#if defined(__GNUC__) || defined(__clang__)
  const vec high = (vec)((mask)x & ~(mask{} + 0x7FFFFFF));
#else
  union {
    double v;
    uint64_t bits;
  } cut = {x};
  cut.bits &= ~uint64_t{0x7FFFFFF};
  const vec high = cut.v;
#endif
  return {high, x - high};
}

TESSARN_INLINE pair exact_product(vec a, vec x, pair halves) {
  const vec p = a * x;
  const pair b = split(a);
  const vec e = ((b.high * halves.high - p) + b.high * halves.low + b.low * halves.high) + b.low * halves.low;
  return {p, e};
}

TESSARN_INLINE pair times(pair w, vec x, pair halves) {
  const pair p = exact_product(w.high, x, halves);
  const vec t = p.low + w.low * x;
  const vec high = p.high + t;
  return {high, t - (high - p.high)};
}

// The chains of powers of GROUP vectors of abscissas side by side, to hide the latency of their steps.
template <size_t GROUP>
struct chains {
  vec x[GROUP];
  pair halves[GROUP];
  pair power[GROUP];

  TESSARN_MEMBER void begin(const double* from) {
    for (size_t v = 0; v < GROUP; ++v) {
      x[v] = load(from + v * width);
      halves[v] = split(x[v]);
    }
  }
  // To the power e from the one before.
  TESSARN_MEMBER void advance(size_t e) {
    for (size_t v = 0; v < GROUP; ++v) {
      if (e == 0)
        power[v] = {broadcast(1), vec{}};
      else if (e == 1)
        power[v] = {x[v], vec{}};
      else if (e == 2)
        power[v] = exact_product(x[v], x[v], halves[v]);
      else
        power[v] = times(power[v], x[v], halves[v]);
    }
  }
};

constexpr size_t group = width == 1 ? 1 : 4;
constexpr size_t group_points = group * width;

// All magnitudes of a block at least low and below high.
bool in_range(const double* x, double low, double high) {
#if defined(__GNUC__) || defined(__clang__)
  mask inside = mask{} - 1;
  for (size_t i = 0; i < point_block; i += width) {
    const vec magnitude = (vec)((mask)load(x + i) & (mask{} + INT64_MAX));
    inside &= (magnitude >= broadcast(low)) & (magnitude < broadcast(high));
  }
  int64_t all = -1;
  for (size_t k = 0; k < width; ++k) all &= inside[k];
  return all != 0;
#else
  bool all = true;
  for (size_t i = 0; i < point_block; ++i) {
    const double magnitude = x[i] < 0 ? -x[i] : x[i];
    all &= magnitude >= low && magnitude < high;
  }
  return all;
#endif
}

void powers(const double* x, unsigned exponents, double* powers) {
  for (size_t i = 0; i < point_block; i += group_points) {
    chains<group> c;
    c.begin(x + i);
    for (size_t e = 0; e < exponents; ++e) {
      c.advance(e);
      for (size_t v = 0; v < group; ++v) store(powers + e * point_block + i + v * width, c.power[v].high);
    }
  }
}

constexpr size_t sum_vectors = partial_sums / width;

// Adds one row, or its products with y, to its partial sums.
template <bool PRODUCTS>
TESSARN_INLINE void add_row(const double* row, const double* y, double* sum) {
  vec s[sum_vectors];
  for (size_t v = 0; v < sum_vectors; ++v) s[v] = load(sum + v * width);
  for (size_t i = 0; i < point_block; i += partial_sums)
    for (size_t v = 0; v < sum_vectors; ++v) {
      const vec p = load(row + i + v * width);
      s[v] += PRODUCTS ? p * load(y + i + v * width) : p;
    }
  for (size_t v = 0; v < sum_vectors; ++v) store(sum + v * width, s[v]);
}

void add_powers(const double* powers, const double* y, unsigned exponents, unsigned ordinates, double* sums) {
  for (size_t e = 0; e < exponents; ++e) add_row<false>(powers + e * point_block, y, sums + e * partial_sums);
  sums += exponents * partial_sums;
  for (size_t e = 0; e < ordinates; ++e) add_row<true>(powers + e * point_block, y, sums + e * partial_sums);
}

template <bool WEIGHTED>
TESSARN_INLINE void add_products_row(const double* px, const double* y, const double* w, const double* z, size_t side,
                                     size_t moment_count, double* sums, double* moments) {
  for (size_t a = 0; a < side; ++a) {
    const bool with_moment = a < moment_count;
    vec s[sum_vectors], m[sum_vectors];
    for (size_t v = 0; v < sum_vectors; ++v) {
      s[v] = load(sums + a * partial_sums + v * width);
      m[v] = with_moment ? load(moments + a * partial_sums + v * width) : vec{};
    }
    for (size_t i = 0; i < point_block; i += partial_sums)
      for (size_t v = 0; v < sum_vectors; ++v) {
        const size_t at = i + v * width;
        const vec basis = load(y + at) * load(px + a * point_block + at);
        s[v] += WEIGHTED ? basis * load(w + at) : basis;
        if (with_moment) m[v] += basis * load(z + at);
      }
    for (size_t v = 0; v < sum_vectors; ++v) {
      store(sums + a * partial_sums + v * width, s[v]);
      if (with_moment) store(moments + a * partial_sums + v * width, m[v]);
    }
  }
}

void add_products(const double* px, const double* py, const double* w, const double* z, unsigned g, double* sums,
                  double* moments) {
  const size_t side = 2 * g - 1;
  for (size_t b = 0; b < side; ++b) {
    const double* y = py + b * point_block;
    double* row = sums + b * side * partial_sums;
    double* moment_row = moments + b * g * partial_sums;
    if (w)
      add_products_row<true>(px, y, w, z, side, b < g ? g : 0, row, moment_row);
    else
      add_products_row<false>(px, y, w, z, side, b < g ? g : 0, row, moment_row);
  }
}

template <size_t GROUP>
TESSARN_INLINE void value_group(const double* cof, size_t count, const double* x, double* y) {
  vec point[GROUP], power[GROUP], sum[GROUP];
  for (size_t v = 0; v < GROUP; ++v) {
    point[v] = load(x + v * width);
    power[v] = broadcast(1);
    sum[v] = broadcast(cof[0]);
  }
  for (size_t i = 1; i < count; ++i) {
    const vec c = broadcast(cof[i]);
    for (size_t v = 0; v < GROUP; ++v) {
      power[v] *= point[v];
      sum[v] += power[v] * c;
    }
  }
  for (size_t v = 0; v < GROUP; ++v) store(y + v * width, sum[v]);
}

void values(const double* cof, size_t count, const double* x, double* y) {
  constexpr size_t vectors = 4;
  static_assert(point_block % (vectors * width) == 0);
  for (size_t i = 0; i < point_block; i += vectors * width) value_group<vectors>(cof, count, x + i, y + i);
}

void power_series(const double* cof, const double* factor, size_t count, const double* x, double* y) {
  for (size_t i = 0; i < point_block; i += group_points) {
    chains<group> c;
    c.begin(x + i);
    vec sum[group] = {};
    for (size_t e = 0; e < count; ++e) {
      c.advance(e);
      const vec f = broadcast(factor[e]);
      const vec k = broadcast(cof[e]);
      for (size_t v = 0; v < group; ++v) sum[v] += c.power[v].high * f * k;
    }
    for (size_t v = 0; v < group; ++v) store(y + i + v * width, sum[v]);
  }
}

constexpr size_t derivative_group = width == 1 ? 1 : 2;

void derivatives(const double* cof, const double* factors, size_t stride, size_t count, const double* x, double* d) {
  for (size_t i = 0; i < point_block; i += derivative_group * width) {
    chains<derivative_group> c;
    c.begin(x + i);
    vec sum[3][derivative_group] = {};
    for (size_t e = 0; e + 1 < count; ++e) {
      c.advance(e);
      for (size_t k = 0; k < 3 && e + k + 1 < count; ++k) {
        const vec f = broadcast(factors[k * stride + e + k + 1]);
        const vec coefficient = broadcast(cof[e + k + 1]);
        for (size_t v = 0; v < derivative_group; ++v) sum[k][v] += c.power[v].high * f * coefficient;
      }
    }
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

// VECTORS vectors of coefficients of a product from number k on, each a sum over j ascending.
template <size_t VECTORS>
TESSARN_INLINE void convolve_group(const double* c, size_t first, size_t last, const double* q, double* r) {
  vec sum[VECTORS] = {};
  for (size_t j = first; j < last; ++j) {
    const vec factor = broadcast(q[j]);
    for (size_t v = 0; v < VECTORS; ++v) sum[v] += load(c + v * width - j) * factor;
  }
  for (size_t v = 0; v < VECTORS; ++v) store(r + v * width, sum[v]);
}

void convolve(const double* c, size_t n, const double* q, size_t nq, double* r) {
  constexpr size_t vectors = 4, block = vectors * width;
  for (size_t k = 0; k < n + nq - 1; k += block) {
    const size_t first = k >= n ? k - n + 1 : 0;
    const size_t last = k + block < nq ? k + block : nq;
    convolve_group<vectors>(c + k, first, last, q, r + k);
  }
}

TESSARN_INLINE bool is_event(const double* x, const double* f, double end, bool at_end) {
  if (x[0] > end || (at_end && x[0] == end)) return true;
  if ((f[0] > 0 && f[1] < 0) || (f[0] < 0 && f[1] > 0) || f[0] == 0) return true;
  return !(x[1] > x[0]);
}

#if defined(__GNUC__) || defined(__clang__)
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
#if defined(__GNUC__) || defined(__clang__)
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

const poly_kernels poly_table = {in_range,     powers,      add_powers,   add_products, values,
                                 power_series, derivatives, curvature,    curvature_derivative,
                                 first_event,  surface_values, convolve};

}  // namespace tessarn::detail::TESSARN_ISA
