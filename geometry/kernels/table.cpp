// The kernels of the plane fits; compiled once for each instruction set.
#include <limits>

#include "simd/lanes.h"
#include "geometry/kernels/kernels.h"

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

TESSARN_INLINE vec quadratic_form(const double* s, vec x, vec y, vec z) {
  return (s[0] * x * x + s[1] * y * y + s[2] * z * z) + 2.0 * (s[3] * x * y + s[4] * x * z + s[5] * y * z);
}

// The neighbours are made here: eight numbers that were stored one by one would have to wait for each other to be
// loaded.
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
    const vec square = quadratic_form(f.second, x, y, z) - f.count * (mean * mean);
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
    const vec sum_margin = 1.1 * 0x1p-53 * quadratic_form(f.weighted, x, y, z) + f.sum_margin;
    store(low + i, select(feasible, positive(from * (1 - f.sum_factor) - sum_margin), broadcast(infinity)));
    store(high + i, select(feasible, to * (1 + f.sum_factor) + sum_margin, broadcast(infinity)));
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

TESSARN_INLINE vec greater(vec a, vec b) { return a > b ? a : b; }  // b if a is not a number
TESSARN_INLINE vec lesser(vec a, vec b) { return a < b ? a : b; }

TESSARN_INLINE double greatest_lane(vec v) {
  double lanes[width];
  store(lanes, v);
  for (size_t half = width / 2; half > 0; half /= 2)
    for (size_t k = 0; k < half; ++k) lanes[k] = lanes[k] > lanes[k + half] ? lanes[k] : lanes[k + half];
  return lanes[0];
}

TESSARN_INLINE double sum_of_lanes(vec v) {
  double lanes[width];
  store(lanes, v);
  for (size_t half = width / 2; half > 0; half /= 2)
    for (size_t k = 0; k < half; ++k) lanes[k] += lanes[k + half];
  return lanes[0];
}

TESSARN_INLINE void prefetch(const void* p) {
#if TESSARN_VECTOR_LANES
  __builtin_prefetch(p);
#else
  (void)p;
#endif
}

struct point_lanes {
  vec x, y, z;
};

TESSARN_INLINE point_lanes load_points(const point_arrays& points, size_t i) {
  return {load(points.x + i), load(points.y + i), load(points.z + i)};
}

TESSARN_INLINE point_lanes lanes_of(const double* a) { return {broadcast(a[0]), broadcast(a[1]), broadcast(a[2])}; }

TESSARN_INLINE point_lanes difference(const point_lanes& p, const point_lanes& a) {
  return {p.x - a.x, p.y - a.y, p.z - a.z};
}

// Zeros where m is not set.
TESSARN_INLINE point_lanes only(mask m, const point_lanes& p) {
  return {select(m, p.x, vec{}), select(m, p.y, vec{}), select(m, p.z, vec{})};
}

TESSARN_INLINE mask lanes_below(size_t n) { return lane_numbers() < broadcast((double)n); }

TESSARN_INLINE vec squared_length(const point_lanes& d) { return (d.x * d.x + d.y * d.y) + d.z * d.z; }

// Distances are compared, but most points are excluded by their squares p and q, without a root: sqrt(p) + sqrt(q) is
// less than sqrt(l) where l - p - q is above 2 sqrt(p q); it is sqrt(p + q + 2 min(p, q)) or more.
//
// What l must be for distances of the given square or more; -1, which excludes none, where the squares or their
// products are not accurate. The factor covers the roundings of l - p - q; it makes this smaller by 1e-13 l, and
// thereby its square by more than that of p q is off.
TESSARN_INLINE double exclusion_limit(double square) {
  return square > 1e-100 && square < 1e100 ? square * (1 - 1e-13) : -1;
}

struct farthest_so_far {
  double least;
  size_t found;
};

constexpr size_t block_vectors = 16, block_points = block_vectors * width;
static_assert(block_points <= block_limit, "what the sums' weights are bounded by");

// The squares of the distances of some points from one or from two others.
template <bool TWO>
struct squares_block {
  vec a[block_vectors], b[TWO ? block_vectors : 1];
  size_t vectors;
  vec low;  // not above the greatest square

  TESSARN_MEMBER mask reaches(size_t v, double limit) const {
    if (!TWO) return a[v] >= broadcast(limit);
    const vec rest = limit - (a[v] + b[v]);
    return (rest <= vec{}) | (rest * rest <= 4.0 * (a[v] * b[v]));
  }
  TESSARN_MEMBER void begin() {
    vectors = 0;
    low = vec{};
  }
  TESSARN_MEMBER void add(vec from_a, vec from_b) {
    a[vectors] = from_a;
    if (TWO) b[vectors] = from_b;
    low = greater(TWO ? from_a + from_b + 2.0 * lesser(from_a, from_b) : from_a, low);
    ++vectors;
  }
  // The first is the i-th point.
  TESSARN_MEMBER void compare(size_t i, farthest_so_far& far) const {
    const double limit = exclusion_limit(far.least * far.least);
    mask inside = {};
    for (size_t v = 0; v < vectors; ++v) inside |= reaches(v, limit);
    if (none(inside)) return;
    const double own_limit = exclusion_limit(greatest_lane(low));
    const double both = own_limit > limit ? own_limit : limit;
    for (size_t v = 0; v < vectors; ++v) {
      if (none(reaches(v, both))) continue;
      double distance[width];
      store(distance, TWO ? square_root(a[v]) + square_root(b[v]) : square_root(a[v]));
      for (size_t k = 0; k < width; ++k) {
        if (!(distance[k] > far.least)) continue;
        far.least = distance[k];
        far.found = i + v * width + k;
      }
    }
  }
};

template <bool TWO>
TESSARN_INLINE size_t farthest_point(const point_arrays& points, const double* from_a, const double* from_b,
                                     double least) {
  const point_lanes a = lanes_of(from_a), b = lanes_of(from_b);
  farthest_so_far far = {least, points.n};
  squares_block<TWO> block;
  for (size_t i = 0; i < points.n;) {
    const size_t first = i;
    block.begin();
    for (; block.vectors < block_vectors && i + width <= points.n; i += width) {
      const point_lanes p = load_points(points, i);
      block.add(squared_length(difference(p, a)), TWO ? squared_length(difference(p, b)) : vec{});
    }
    if (block.vectors < block_vectors && i < points.n) {
      const mask inside = lanes_below(points.n - i);
      const point_lanes p = load_points(points, i);
      block.add(select(inside, squared_length(difference(p, a)), vec{}),
                TWO ? select(inside, squared_length(difference(p, b)), vec{}) : vec{});
      i = points.n;
    }
    block.compare(first, far);
  }
  return far.found;
}

size_t farthest(const point_arrays& points, const double* a, double least) {
  return farthest_point<false>(points, a, a, least);
}

size_t farthest_from_two(const point_arrays& points, const double* a, const double* b, double least) {
  return farthest_point<true>(points, a, b, least);
}

// A running sum with its rounding errors (D. Knuth, The Art of Computer Programming 2, 4.2.2).
struct accurate_sum {
  vec high, low;
  TESSARN_MEMBER void add(vec v) {
    const vec s = high + v;
    const vec part = s - high;
    low += (high - (s - part)) + (v - part);
    high = s;
  }
};

// First the differences from the reference point, then their products: d is p less the reference point.
TESSARN_INLINE void add_moments(const point_lanes& d, vec* sum) {
  sum[0] += d.x;
  sum[1] += d.y;
  sum[2] += d.z;
  sum[3] += d.x * d.x;
  sum[4] += d.y * d.y;
  sum[5] += d.z * d.z;
  sum[6] += d.x * d.y;
  sum[7] += d.x * d.z;
  sum[8] += d.y * d.z;
}

// The accurate sums take what has been added in the lanes over a block.
struct moment_totals {
  accurate_sum total[moment_count];
  vec weighted[moment_count];

  TESSARN_MEMBER void begin() {
    for (size_t s = 0; s < moment_count; ++s) total[s].high = total[s].low = weighted[s] = vec{};
  }
  TESSARN_MEMBER void add(const vec* sum, double weight) {
    for (size_t s = 0; s < moment_count; ++s) {
      total[s].add(sum[s]);
      weighted[s] += weight * sum[s];
    }
  }
  TESSARN_MEMBER void finish(moment_sums* result) const {
    for (size_t s = 0; s < moment_count; ++s) {
      result->sum[s] = sum_of_lanes(total[s].high + total[s].low);
      result->weighted[s] = sum_of_lanes(weighted[s]);
    }
  }
};

void moments(const point_arrays& points, const double* reference, moment_sums* result) {
  const point_lanes r = lanes_of(reference);
  moment_totals totals;
  totals.begin();
  for (size_t i = 0; i < points.n;) {
    const size_t first = i, end = points.n - first < block_points ? points.n : first + block_points;
    vec sum[moment_count] = {};
    for (; i + width <= end; i += width) add_moments(difference(load_points(points, i), r), sum);
    if (i < end) add_moments(only(lanes_below(end - i), difference(load_points(points, i), r)), sum);
    i = end;
    totals.add(sum, (double)(points.n - first));
  }
  totals.finish(result);
}

#if TESSARN_VECTOR_LANES
typedef uint64_t bits __attribute__((vector_size(width * 8), may_alias));
TESSARN_INLINE bits bits_of(vec v) { return (bits)v; }
TESSARN_INLINE void store_upper_halves(uint32_t* p, bits b) {
  typedef uint32_t halves __attribute__((vector_size(width * 4)));
  typedef uint32_t unaligned_halves __attribute__((vector_size(width * 4), aligned(4), may_alias));
  *reinterpret_cast<unaligned_halves*>(p) = __builtin_convertvector(b >> 32, halves);
}
#else
typedef uint64_t bits;
TESSARN_INLINE bits bits_of(vec v) {
  union {
    double v;
    uint64_t bits;
  } number = {v};
  return number.bits;
}
TESSARN_INLINE void store_upper_halves(uint32_t* p, bits b) { *p = (uint32_t)(b >> 32); }
#endif

// -0.0 becomes 0.0. Coordinates of few bits have them in the upper half only.
TESSARN_INLINE bits folded_bits_of(vec v) {
  const bits b = bits_of(v + 0.0);
  return b ^ b >> 32;
}

// A linear combination of the coordinates' bits.
TESSARN_INLINE bits hash_of(const point_lanes& p) {
  return folded_bits_of(p.x) * 0x9E3779B97F4A7C15u + folded_bits_of(p.y) * 0xBF58476D1CE4E5B9u +
         folded_bits_of(p.z) * 0x94D049BB133111EBu;
}

TESSARN_INLINE point_lanes unpack_points(const double* points, double* to, size_t stride, uint32_t* hash) {
  point_lanes p;
  load_space_points(points, p.x, p.y, p.z);
  store(to, p.x);
  store(to + stride, p.y);
  store(to + 2 * stride, p.z);
  store_upper_halves(hash, hash_of(p));
  return p;
}

TESSARN_INLINE vec note_reach(double* to, const point_lanes& d) {
  const vec square = greater(squared_length(d), vec{});
  *to = greatest_lane(square);
  return square;
}

// One pass over the points: coordinates, hash values, moments and ordered sums. The loop is bound by memory, so the sums
// are free.
void take_in(const double* points, size_t n, const double* reference, const cloud_room& room, moment_sums* result,
             double* sums) {
  constexpr size_t ahead = 128;
  const point_lanes r = lanes_of(reference);
  moment_totals totals;
  totals.begin();
  quad ordered = all_lanes(0);
  for (size_t i = 0; i < n;) {
    const size_t first = i, end = n - first < block_points ? n : first + block_points;
    vec sum[moment_count] = {}, reach = {};
    for (; i + width <= end; i += width) {
      const double* later = points + 4 * (i + ahead + width <= n ? i + ahead : i);  // the processor stops at pages
      for (size_t k = 0; k < 4 * width; k += 8) prefetch(later + k);
      const point_lanes d = difference(unpack_points(points + 4 * i, room.to + i, room.stride, room.hash + i), r);
      add_moments(d, sum);
      if (room.group_reach) reach = greater(note_reach(room.group_reach + i / width, d), reach);
      for (size_t k = i; k < i + width; ++k) ordered = ordered + load_point(points + 4 * k + 1);
    }
    if (i < end) {
      double rest[4 * width] = {};
      for (size_t k = 0; k < 4 * (end - i); ++k) rest[k] = k % 4 == 0 ? 0 : points[4 * i + k];
      const point_lanes p = unpack_points(rest, room.to + i, room.stride, room.hash + i);
      const point_lanes d = only(lanes_below(end - i), difference(p, r));
      add_moments(d, sum);
      if (room.group_reach) reach = greater(note_reach(room.group_reach + i / width, d), reach);
      for (; i < end; ++i) ordered = ordered + load_point(points + 4 * i + 1);
    }
    totals.add(sum, (double)(n - first));
    if (room.group_reach) room.block_reach[first / block_points] = greatest_lane(reach);
  }
  totals.finish(result);
  store_point(sums, ordered);
}

// Without branches: they could not be foreseen.
size_t list_repeated(const hash_words& table, const uint32_t* hash, size_t n, uint32_t* listed) {
  constexpr size_t ahead = 32;
  const hash_words own = table;  // stays in registers
  size_t found = 0;
  TESSARN_UNROLL_LONG
  for (size_t k = 0; k < n; ++k) {
    prefetch(&own.words[hash[k + ahead] >> own.shift]);
    const uint32_t h = hash[k];
    uint64_t& word = own.words[h >> own.shift];
    const uint64_t two = (uint64_t)1 << h % 64 | (uint64_t)1 << h / 64 % 64;
    listed[found] = (uint32_t)k;
    found += (word & two) == two;
    word |= two;
  }
  return found;
}

size_t list_suspects(const hash_words& table, const uint32_t* hash, size_t n, uint32_t* listed) {
  const hash_words own = table;
  size_t found = 0;
  TESSARN_UNROLL_LONG
  for (size_t k = 0; k < n; ++k) {
    const uint32_t h = hash[k];
    listed[found] = (uint32_t)k;
    found += own.words[h >> own.shift] >> h % 64 & 1;
  }
  return found;
}

}  // namespace

const geometry_kernels geometry_table = {
    .means = means,
    .residuals = residuals,
    .bound_residuals = bound_residuals,
    .add_sines = add_sines,
    .add_cosines = add_cosines,
    .moments = moments,
    .farthest = farthest,
    .farthest_from_two = farthest_from_two,
    .take_in = take_in,
    .list_repeated = list_repeated,
    .list_suspects = list_suspects,
    .group_points = width,
    .block_points = block_points,
};

}  // namespace tessarn::detail::TESSARN_ISA
