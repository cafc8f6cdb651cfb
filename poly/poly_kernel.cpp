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

// COUNT rows at once, each summed in the order of the points: enough chains of additions to hide their latency.
template <size_t COUNT>
void add_rows(const double* rows, size_t n, double* sums) {
  double s[COUNT];
  for (size_t e = 0; e < COUNT; ++e) s[e] = sums[e];
  for (size_t i = 0; i < n; ++i)
    for (size_t e = 0; e < COUNT; ++e) s[e] += rows[e * point_block + i];
  for (size_t e = 0; e < COUNT; ++e) sums[e] = s[e];
}

constexpr size_t chains_at_once = 12;

// Up to chains_at_once rows.
void add_last_rows(const double* rows, size_t count, size_t n, double* sums) {
  switch (count) {
    case 1: return add_rows<1>(rows, n, sums);
    case 2: return add_rows<2>(rows, n, sums);
    case 3: return add_rows<3>(rows, n, sums);
    case 4: return add_rows<4>(rows, n, sums);
    case 5: return add_rows<5>(rows, n, sums);
    case 6: return add_rows<6>(rows, n, sums);
    case 7: return add_rows<7>(rows, n, sums);
    case 8: return add_rows<8>(rows, n, sums);
    case 9: return add_rows<9>(rows, n, sums);
    case 10: return add_rows<10>(rows, n, sums);
    case 11: return add_rows<11>(rows, n, sums);
    case 12: return add_rows<12>(rows, n, sums);
    default: return;
  }
}

void add_powers(double* powers, const double* y, size_t n, unsigned exponents, unsigned ordinates, double* sums) {
  double* moments = powers + exponents * point_block;
  for (size_t e = 0; e < ordinates; ++e)
    for (size_t i = 0; i < point_block; i += width)
      store(moments + e * point_block + i, load(powers + e * point_block + i) * load(y + i));
  sums[0] += (double)n;  // the powers 0: ones, whose sum is exact
  const double* rows = powers + point_block;
  size_t left = exponents - 1 + ordinates;
  for (++sums; left > chains_at_once; left -= chains_at_once - 1) {
    add_rows<chains_at_once - 1>(rows, n, sums);
    rows += (chains_at_once - 1) * point_block;
    sums += chains_at_once - 1;
  }
  add_last_rows(rows, left, n, sums);
}

// The sums of a surface fit of grade G, all in registers while the points of a block pass.
template <size_t G, bool WEIGHTED>
TESSARN_INLINE void add_products_of_grade(const double* rows, const double* py, const double* w, const double* z,
                                          size_t n, size_t stride, double* sums, double* moments) {
  constexpr size_t side = 2 * G - 1;
  constexpr size_t vectors = (side + width - 1) / width;
  constexpr size_t moment_vectors = (G + width - 1) / width;
  vec sum[side][vectors], moment[G][moment_vectors];
  for (size_t b = 0; b < side; ++b)
    for (size_t v = 0; v < vectors; ++v) sum[b][v] = load(sums + b * stride + v * width);
  for (size_t b = 0; b < G; ++b)
    for (size_t v = 0; v < moment_vectors; ++v) moment[b][v] = load(moments + b * stride + v * width);
  for (size_t i = 0; i < n; ++i) {
    const vec ordinate = broadcast(z[i]);
    for (size_t b = 0; b < side; ++b) {
      const vec y = broadcast(py[b * point_block + i]);
      for (size_t v = 0; v < vectors; ++v) {
        const vec basis = y * load(rows + i * stride + v * width);
        sum[b][v] += WEIGHTED ? basis * broadcast(w[i]) : basis;
        if (b < G && v < moment_vectors) moment[b][v] += basis * ordinate;
      }
    }
  }
  for (size_t b = 0; b < side; ++b)
    for (size_t v = 0; v < vectors; ++v) store(sums + b * stride + v * width, sum[b][v]);
  for (size_t b = 0; b < G; ++b)
    for (size_t v = 0; v < moment_vectors; ++v) store(moments + b * stride + v * width, moment[b][v]);
}

template <bool WEIGHTED>
void add_products_of(const double* rows, const double* py, const double* w, const double* z, size_t n, unsigned g,
                     size_t stride, double* sums, double* moments) {
  switch (g) {
    case 1: return add_products_of_grade<1, WEIGHTED>(rows, py, w, z, n, stride, sums, moments);
    case 2: return add_products_of_grade<2, WEIGHTED>(rows, py, w, z, n, stride, sums, moments);
    case 3: return add_products_of_grade<3, WEIGHTED>(rows, py, w, z, n, stride, sums, moments);
    case 4: return add_products_of_grade<4, WEIGHTED>(rows, py, w, z, n, stride, sums, moments);
    default: break;
  }
  const size_t side = 2 * g - 1;
  for (size_t i = 0; i < n; ++i)
    for (size_t b = 0; b < side; ++b) {
      const vec y = broadcast(py[b * point_block + i]);
      for (size_t a = 0; a < side; a += width) {
        const vec basis = y * load(rows + i * stride + a);
        double* sum = sums + b * stride + a;
        store(sum, load(sum) + (WEIGHTED ? basis * broadcast(w[i]) : basis));
        if (b >= g || a >= g) continue;
        double* moment = moments + b * stride + a;
        store(moment, load(moment) + basis * broadcast(z[i]));
      }
    }
}

void add_products(const double* px, const double* py, const double* w, const double* z, size_t n, unsigned g,
                  size_t stride, double* rows, double* sums, double* moments) {
  const size_t side = 2 * g - 1;
  for (size_t a = 0; a < side; ++a)
    for (size_t i = 0; i < n; ++i) rows[i * stride + a] = px[a * point_block + i];
  if (w)
    add_products_of<true>(rows, py, w, z, n, g, stride, sums, moments);
  else
    add_products_of<false>(rows, py, w, z, n, g, stride, sums, moments);
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

void values(const double* cof, size_t count, const double* x, double* y, size_t n) {
  size_t i = 0;
  for (; i + 4 * width <= n; i += 4 * width) value_group<4>(cof, count, x + i, y + i);
  for (; i + width <= n; i += width) value_group<1>(cof, count, x + i, y + i);
  for (; i < n; ++i) {
    const double point = x[i];
    double sum = cof[0];
    double power = 1;
    for (size_t k = 1; k < count; ++k) {
      power *= point;
      sum += power * cof[k];
    }
    y[i] = sum;
  }
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

size_t first_event(const double* x, const double* f, double end, bool at_end) {
  size_t i = 0;
#if defined(__GNUC__) || defined(__clang__)
  const vec last = broadcast(end);
  const vec zero = {};
  for (; i + width < point_block; i += width) {
    const vec x0 = load(x + i);
    const vec f0 = load(f + i);
    const vec f1 = load(f + i + 1);
    mask event = (x0 >= last) | (f0 == zero) | ((f0 > zero) & (f1 < zero)) | ((f0 < zero) & (f1 > zero));
    event |= ~(load(x + i + 1) > x0);
    int64_t any = 0;
    for (size_t k = 0; k < width; ++k) any |= event[k];
    if (any == 0) continue;
    for (size_t k = i; k < i + width; ++k)
      if (is_event(x + k, f + k, end, at_end)) return k;
  }
#endif
  for (; i + 1 < point_block; ++i)
    if (is_event(x + i, f + i, end, at_end)) return i;
  return point_block - 1;
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
