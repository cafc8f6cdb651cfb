// The kernels of the point list; compiled once for each instruction set.
#include "core/lanes.h"
#include "vectors/kernels.h"

namespace tessarn::detail::TESSARN_ISA {
namespace {

void squared_deviations(const double* y, double* squared, size_t n) {
  constexpr size_t window = 2 * neighbours + 1;
  const double* first = y - neighbours;
  size_t i = 0;
  for (; i + width <= n; i += width) {
    vec sum = {};
    for (size_t k = 0; k < window; ++k) sum += load(first + i + k);
    const vec deviation = load(y + i) - sum / broadcast((double)window);
    store(squared + i, deviation * deviation);
  }
  for (; i < n; ++i) {
    double sum = 0;
    for (size_t k = 0; k < window; ++k) sum += first[i + k];
    const double deviation = y[i] - sum / (double)window;
    squared[i] = deviation * deviation;
  }
}

void ordinates(const double* points, size_t n, double* y) {
  size_t i = 0;
  for (; i + width <= n; i += width) {
    vec abscissas, at;
    load_plane_points(points + 3 * i, abscissas, at);
    store(y + i, at);
  }
  for (; i < n; ++i) y[i] = points[3 * i + 2];
}

}  // namespace

const list_kernels list_table = {squared_deviations, ordinates};

}  // namespace tessarn::detail::TESSARN_ISA
