// The kernels of the plane fits; compiled once for each instruction set.
#include <limits>

#include "core/lanes.h"
#include "geometry/kernels.h"

namespace tessarn::detail::TESSARN_ISA {
namespace {

constexpr size_t groups = candidate_lanes / width;
constexpr double infinity = std::numeric_limits<double>::infinity();

struct candidates {
  vec x[groups], y[groups], z[groups];
};

TESSARN_INLINE candidates load_candidates(const double* x, const double* y, const double* z) {
  candidates c;
  for (size_t g = 0; g < groups; ++g) {
    c.x[g] = load(x + g * width);
    c.y[g] = load(y + g * width);
    c.z[g] = load(z + g * width);
  }
  return c;
}

TESSARN_INLINE vec height(const candidates& c, size_t g, const point_arrays& points, size_t i) {
  return (c.y[g] * broadcast(points.y[i]) + c.x[g] * broadcast(points.x[i])) + c.z[g] * broadcast(points.z[i]);
}

TESSARN_INLINE void make_offsets(const candidates& c, const point_arrays& points, vec* offset) {
  vec sum[groups] = {};
  for (size_t i = 0; i < points.n; ++i)
    for (size_t g = 0; g < groups; ++g) sum[g] += height(c, g, points, i);
  for (size_t g = 0; g < groups; ++g) offset[g] = sum[g] / broadcast((double)points.n);
}

void means(const point_arrays& points, const double* x, const double* y, const double* z, double* mean) {
  vec offset[groups];
  make_offsets(load_candidates(x, y, z), points, offset);
  for (size_t g = 0; g < groups; ++g) store(mean + g * width, offset[g]);
}

void residuals(const point_arrays& points, const double* x, const double* y, const double* z, double* mean,
               double* cost) {
  const candidates c = load_candidates(x, y, z);
  vec offset[groups];
  make_offsets(c, points, offset);
  vec squares[groups] = {};
  for (size_t i = 0; i < points.n; ++i)
    for (size_t g = 0; g < groups; ++g) {
      const vec r = height(c, g, points, i) - offset[g];
      squares[g] += r * r;
    }
  for (size_t g = 0; g < groups; ++g) {
    store(mean + g * width, offset[g]);
    store(cost + g * width, squares[g]);
  }
}

TESSARN_INLINE vec positive(vec v) { return select(v > vec{}, v, vec{}); }

// The neighbours are made here: eight numbers that were stored one by one would have to wait for each other to be loaded.
void bound_residuals(const residual_form& f, double centre_x, double centre_y, double step, double* to_x, double* to_y,
                     double* to_z, double* low, double* high) {
  static const double columns[candidate_lanes] = {-1, 0, 1, -1, 1, -1, 0, 1};
  static const double rows[candidate_lanes] = {-1, -1, -1, 0, 0, 1, 1, 1};
  for (size_t i = 0; i < candidate_lanes; i += width) {
    // -0.0 becomes 0.0, as it does by adding 0 times a step.
    const vec x = (centre_x + 0.0) + load(columns + i) * step, y = (centre_y + 0.0) + load(rows + i) * step;
    const vec z = square_root(1.0 - x * x - y * y);
    const mask feasible = (x * x + y * y <= broadcast(1)) & (z == z);
    const vec mean = f.mean[0] * x + f.mean[1] * y + f.mean[2] * z;
    const vec squares = f.second[0] * x * x + f.second[1] * y * y + f.second[2] * z * z;
    const vec products = f.second[3] * x * y + f.second[4] * x * z + f.second[5] * y * z;
    const vec square = squares + 2.0 * products - f.count * (mean * mean);
    const vec least = positive(square - f.form_margin);
    const vec greatest = positive(square) + f.form_margin;
    // Of (sqrt(least) - margin)^2 and (sqrt(greatest + mean_margin) + margin)^2, from one root that is above both.
    const vec root = square_root(greatest) + f.mean_margin_root;
    const vec margin = f.residual_margin + 1.1 * 0x1p-53 * root;
    const vec moved = 2.2 * margin * root;
    const vec from = positive(least - moved);
    const vec to = greatest + f.mean_margin + moved + margin * margin;
    store(to_x + i, x);
    store(to_y + i, y);
    store(to_z + i, z);
    store(low + i, select(feasible, from * (1 - f.factor), broadcast(infinity)));
    store(high + i, select(feasible, to * (1 + f.factor), broadcast(infinity)));
  }
}

template <bool SINES>
TESSARN_INLINE void add_squares(const point_arrays& points, const double* x, const double* y, const double* z,
                                double* cost) {
  const candidates c = load_candidates(x, y, z);
  vec sum[groups];
  for (size_t g = 0; g < groups; ++g) sum[g] = load(cost + g * width);
  for (size_t i = 0; i < points.n; ++i)
    for (size_t g = 0; g < groups; ++g) {
      const vec p = height(c, g, points, i);
      sum[g] += SINES ? 1.0 - p * p : p * p;
    }
  for (size_t g = 0; g < groups; ++g) store(cost + g * width, sum[g]);
}

void add_sines(const point_arrays& points, const double* x, const double* y, const double* z, double* cost) {
  add_squares<true>(points, x, y, z, cost);
}

void add_cosines(const point_arrays& points, const double* x, const double* y, const double* z, double* cost) {
  add_squares<false>(points, x, y, z, cost);
}

template <bool VECTOR>
struct number {
  typedef double type;
};
template <>
struct number<true> {
  typedef vec type;
};

// A running sum with its rounding errors (D. Knuth, The Art of Computer Programming 2, 4.2.2), of numbers or of vectors.
template <bool VECTOR>
struct accurate_sum {
  typedef typename number<VECTOR>::type term;
  term high, low;
  TESSARN_MEMBER void add(term v) {
    const term s = high + v;
    const term part = s - high;
    low += (high - (s - part)) + (v - part);
    high = s;
  }
};

constexpr size_t sums = 10;
constexpr size_t lane_depth = 16;  // additions in a lane before it goes to the accurate sums

TESSARN_INLINE void add_moments(const point_arrays& points, size_t i, const vec* reference, vec* sum) {
  const vec px = load(points.x + i), py = load(points.y + i), pz = load(points.z + i);
  const vec x = px - reference[0], y = py - reference[1], z = pz - reference[2];
  sum[0] += x;
  sum[1] += y;
  sum[2] += z;
  sum[3] += x * x;
  sum[4] += y * y;
  sum[5] += z * z;
  sum[6] += x * y;
  sum[7] += x * z;
  sum[8] += y * z;
  sum[9] += (px * px + py * py) + pz * pz;
}

void moments(const point_arrays& points, const double* reference, moment_sums* result) {
  const vec r[3] = {broadcast(reference[0]), broadcast(reference[1]), broadcast(reference[2])};
  accurate_sum<true> lanes[sums] = {};
  size_t i = 0;
  while (i + width <= points.n) {
    vec sum[sums] = {};
    for (size_t k = 0; k < lane_depth && i + width <= points.n; ++k, i += width) add_moments(points, i, r, sum);
    for (size_t s = 0; s < sums; ++s) lanes[s].add(sum[s]);
  }
  accurate_sum<false> total[sums] = {};
  for (size_t s = 0; s < sums; ++s) {
    double high[width], low[width];
    store(high, lanes[s].high);
    store(low, lanes[s].low);
    for (size_t k = 0; k < width; ++k) {
      total[s].add(high[k]);
      total[s].low += low[k];
    }
  }
  for (; i < points.n; ++i) {
    const double px = points.x[i], py = points.y[i], pz = points.z[i];
    const double x = px - reference[0], y = py - reference[1], z = pz - reference[2];
    const double term[sums] = {x, y, z, x * x, y * y, z * z, x * y, x * z, y * z, (px * px + py * py) + pz * pz};
    for (size_t s = 0; s < sums; ++s) total[s].add(term[s]);
  }
  for (size_t s = 0; s < 3; ++s) result->first[s] = total[s].high + total[s].low;
  for (size_t s = 0; s < 6; ++s) result->second[s] = total[3 + s].high + total[3 + s].low;
  result->square = total[9].high + total[9].low;
}

TESSARN_INLINE vec squared_distance(const point_arrays& points, size_t i, const double* a) {
  const vec x = load(points.x + i) - broadcast(a[0]);
  const vec y = load(points.y + i) - broadcast(a[1]);
  const vec z = load(points.z + i) - broadcast(a[2]);
  return (x * x + y * y) + z * z;
}

// Distances are compared, but most points are excluded by squares: a sum of squares that is not above the result has no
// larger distance, or sum of the two distances, than least, since sqrt(p) + sqrt(q) <= sqrt(2 (p + q)). -1, which
// excludes none, where the square of least is not accurate.
TESSARN_INLINE double exclusion_limit(double least, double factor) {
  return least > 1e-140 && least < 1e140 ? least * least * (factor * (1 - 1e-13)) : -1;
}

constexpr size_t search_vectors = 4;
constexpr size_t search_points = search_vectors * width;

template <bool TWO>
TESSARN_INLINE size_t farthest_point(const point_arrays& points, const double* a, const double* b, double least) {
  constexpr double factor = TWO ? 0.5 : 1;
  double limit = exclusion_limit(least, factor);
  size_t found = points.n;
  for (size_t i = 0; i < points.n; i += search_points) {
    vec from_a[search_vectors], from_b[search_vectors];
    mask inside = {};
    for (size_t v = 0; v < search_vectors; ++v) {
      from_a[v] = squared_distance(points, i + v * width, a);
      from_b[v] = TWO ? squared_distance(points, i + v * width, b) : vec{};
      inside |= (TWO ? from_a[v] + from_b[v] : from_a[v]) > broadcast(limit);
    }
    if (none(inside)) continue;
    double value[search_points];
    for (size_t v = 0; v < search_vectors; ++v)
      store(value + v * width, TWO ? square_root(from_a[v]) + square_root(from_b[v]) : square_root(from_a[v]));
    for (size_t k = 0; k < search_points && i + k < points.n; ++k) {
      if (!(value[k] > least)) continue;
      least = value[k];
      found = i + k;
    }
    limit = exclusion_limit(least, factor);
  }
  return found;
}

size_t farthest(const point_arrays& points, const double* a, double least) {
  return farthest_point<false>(points, a, a, least);
}

size_t farthest_from_two(const point_arrays& points, const double* a, const double* b, double least) {
  return farthest_point<true>(points, a, b, least);
}

#if defined(__GNUC__) || defined(__clang__)
typedef uint64_t bits __attribute__((vector_size(width * 8), may_alias));
TESSARN_INLINE bits bits_of(vec v) { return (bits)v; }
TESSARN_INLINE void store_bits(uint64_t* p, bits b) { store(reinterpret_cast<double*>(p), (vec)b); }
#else
typedef uint64_t bits;
TESSARN_INLINE bits bits_of(vec v) {
  union {
    double v;
    uint64_t bits;
  } number = {v};
  return number.bits;
}
TESSARN_INLINE void store_bits(uint64_t* p, bits b) { *p = b; }
#endif

// -0.0 becomes 0.0. Coordinates of few bits have them in the upper half only.
TESSARN_INLINE bits folded_bits_of(vec v) {
  const bits b = bits_of(v + 0.0);
  return b ^ b >> 32;
}

// A linear combination of the coordinates' bits.
TESSARN_INLINE bits hash_of(vec x, vec y, vec z) {
  return folded_bits_of(x) * 0x9E3779B97F4A7C15u + folded_bits_of(y) * 0xBF58476D1CE4E5B9u +
         folded_bits_of(z) * 0x94D049BB133111EBu;
}

TESSARN_INLINE void unpack_points(const double* points, double* to, size_t stride, uint64_t* hash) {
  vec x, y, z;
  load_space_points(points, x, y, z);
  store(to, x);
  store(to + stride, y);
  store(to + 2 * stride, z);
  store_bits(hash, hash_of(x, y, z));
}

// The sums go along: their additions wait for each other, the rest waits for the memory.
void unpack(const double* points, size_t n, double* to, size_t stride, uint64_t* hash, double* sums) {
  quad sum = all_lanes(0);
  size_t i = 0;
  for (; i + width <= n; i += width) {
    unpack_points(points + 4 * i, to + i, stride, hash + i);
    for (size_t k = i; k < i + width; ++k) sum = sum + load_point(points + 4 * k + 1);
  }
  double rest[4 * width] = {};
  for (size_t k = 0; k < 4 * (n - i); ++k) rest[k] = k % 4 == 0 ? 0 : points[4 * i + k];
  if (i < n) unpack_points(rest, to + i, stride, hash + i);
  for (; i < n; ++i) sum = sum + load_point(points + 4 * i + 1);
  store_point(sums, sum);
}

}  // namespace

const geometry_kernels geometry_table = {means,    residuals, bound_residuals,   add_sines, add_cosines, moments,
                                         farthest, farthest_from_two, unpack};

}  // namespace tessarn::detail::TESSARN_ISA
