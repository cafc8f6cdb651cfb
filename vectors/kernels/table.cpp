// The kernel of the point list; compiled once for each instruction set.
#include "simd/lanes.h"
#include "vectors/kernels/kernels.h"

namespace tessarn::detail::TESSARN_ISA {
namespace {

constexpr size_t block = 256;
constexpr size_t window = 2 * neighbours + 1;

// Writes the coordinates of n points to two arrays.
TESSARN_INLINE void split_coordinates(const double* points, size_t n, double* x, double* y) {
  size_t i = 0;
  for (; i + width <= n; i += width) {
    vec abscissas, at;
    load_plane_points(points + 3 * i, abscissas, at);
    store(x + i, abscissas);
    store(y + i, at);
  }
  for (; i < n; ++i) {
    x[i] = points[3 * i + 1];
    y[i] = points[3 * i + 2];
  }
}

// squared[i] = (y[i + neighbours] - mean of y[i] .. y[i + 2 neighbours])^2; each sum in ascending order from +0.0.
TESSARN_INLINE void squared_deviations(const double* y, size_t n, double* squared) {
  size_t i = 0;
  for (; i + width <= n; i += width) {
    vec sum = {};
    for (size_t k = 0; k < window; ++k) sum += load(y + i + k);
    const vec deviation = load(y + i + neighbours) - sum / broadcast((double)window);
    store(squared + i, deviation * deviation);
  }
  for (; i < n; ++i) {
    double sum = 0;
    for (size_t k = 0; k < window; ++k) sum += y[i + k];
    const double deviation = y[i + neighbours] - sum / (double)window;
    squared[i] = deviation * deviation;
  }
}

// By blocks that stay in the nearest cache: coordinates, deviations, marks. The marks of a block are counted in 32
// bits, which vectorises.
size_t mark(const double* points, size_t n, double limit, bool* marked) {
  double x[block + 2 * neighbours], y[block + 2 * neighbours], squared[block];
  size_t found = 0;
  for (size_t first = 0; first < n; first += block) {
    const size_t m = n - first < block ? n - first : block;
    split_coordinates(points + 3 * first - 3 * neighbours, m + 2 * neighbours, x, y);
    squared_deviations(y, m, squared);
    uint32_t in_block = 0;
    for (size_t i = 0; i < m; ++i) {
      const bool is_marked = (squared[i] > limit) | (x[neighbours + i] == removed);
      marked[first + i] = is_marked;
      in_block += is_marked;
    }
    found += in_block;
  }
  return found;
}

}  // namespace

const list_kernels list_table = {.mark = mark};

}  // namespace tessarn::detail::TESSARN_ISA
