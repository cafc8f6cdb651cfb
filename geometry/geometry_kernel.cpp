// The kernels of the plane fits; compiled once for each instruction set.
#include "core/lanes.h"
#include "geometry/kernels.h"

namespace tessarn::detail::TESSARN_ISA {
namespace {

constexpr size_t groups = candidate_lanes / width;

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

void residuals(const point_arrays& points, const double* x, const double* y, const double* z, double* mean,
               double* cost) {
  const candidates c = load_candidates(x, y, z);
  vec sum[groups] = {};
  for (size_t i = 0; i < points.n; ++i)
    for (size_t g = 0; g < groups; ++g) sum[g] += height(c, g, points, i);
  vec offset[groups];
  for (size_t g = 0; g < groups; ++g) offset[g] = sum[g] / broadcast((double)points.n);
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

// A running sum with its rounding errors (D. Knuth, The Art of Computer Programming 2, 4.2.2).
struct accurate_sum {
  double high, low;
  TESSARN_MEMBER void add(double v) {
    const double s = high + v;
    const double part = s - high;
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
  accurate_sum total[sums] = {};
  size_t i = 0;
  while (i + width <= points.n) {
    vec sum[sums] = {};
    for (size_t k = 0; k < lane_depth && i + width <= points.n; ++k, i += width) add_moments(points, i, r, sum);
    for (size_t s = 0; s < sums; ++s) {
      double lane[width];
      store(lane, sum[s]);
      for (size_t k = 0; k < width; ++k) total[s].add(lane[k]);
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

TESSARN_INLINE vec distance(const point_arrays& points, size_t i, const double* a) {
  const vec x = load(points.x + i) - broadcast(a[0]);
  const vec y = load(points.y + i) - broadcast(a[1]);
  const vec z = load(points.z + i) - broadcast(a[2]);
  return square_root((x * x + y * y) + z * z);
}

void distances(const point_arrays& points, size_t first, size_t count, const double* a, double* value) {
  for (size_t i = 0; i < count; i += width) store(value + i, distance(points, first + i, a));
}

void distance_sums(const point_arrays& points, size_t first, size_t count, const double* a, const double* b,
                   double* value) {
  for (size_t i = 0; i < count; i += width)
    store(value + i, distance(points, first + i, a) + distance(points, first + i, b));
}

}  // namespace

const geometry_kernels geometry_table = {residuals, add_sines, add_cosines, moments, distances, distance_sums};

}  // namespace tessarn::detail::TESSARN_ISA
