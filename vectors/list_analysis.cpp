// The point list: direction, removal of outliers, extraction of a chain.
#include <algorithm>
#include <memory>

#include "tessarn/poly.h"
#include "tessarn/vectors.h"
#include "vectors/kernels.h"

using tessarn::real;
using tessarn::detail::neighbours;

namespace {

constexpr real removed = -1;            // the x of a point that is marked for removal
constexpr real first_tolerance = static_cast<real>(0.2);   // radians, while the chain is short
constexpr real chain_tolerance = static_cast<real>(0.05);  // radians, from chain_fitted points on
constexpr tessarn::ulong chain_fitted = 10;

// The squared deviation of point i from the mean of its neighbourhood, as far as the list reaches.
real squared_deviation(const vector* points, std::size_t count, std::size_t i) {
  const std::size_t first = i < neighbours ? 0 : i - neighbours;
  const std::size_t last = std::min(count - 1, i + neighbours);
  real sum = 0;
  for (std::size_t j = first; j <= last; ++j) sum += points[j].y;
  const real deviation = points[i].y - sum / static_cast<real>(last - first + 1);
  return deviation * deviation;
}

// Marks the points that deviate by more than limit; those whose neighbourhood is whole in blocks.
void mark_deviating(const vector* points, std::size_t count, real limit, bool* marked) {
  static_assert(sizeof(vector) == 3 * sizeof(double), "three doubles a point, as the kernel takes them");
  constexpr std::size_t block = 256;
  std::size_t i = 0;
  const auto one_by_one = [&](std::size_t end) {
    for (; i < end; ++i) marked[i] = squared_deviation(points, count, i) > limit;
  };
  one_by_one(std::min(neighbours, count));
  while (i + neighbours < count) {
    const std::size_t n = std::min(block, count - neighbours - i);
    double y[block + 2 * neighbours], squared[block];
    tessarn::detail::list().ordinates(reinterpret_cast<const double*>(points + i - neighbours), n + 2 * neighbours, y);
    tessarn::detail::list().squared_deviations(y + neighbours, squared, n);
    for (std::size_t k = 0; k < n; ++k) marked[i + k] = squared[k] > limit;
    i += n;
  }
  one_by_one(count);
}

}  // namespace

vector vectormat::avdir() {
  binom line;
  line.create(points, count, 2);
  const real slope = line.get(1);
  return slope != slope ? vector(0, 1) : vector(1, slope);
}

void vectormat::DeleteErrors(real limit) {
  // The marks are kept apart until the new storage is there, so that a failure changes nothing.
  const std::unique_ptr<bool[]> marked(new bool[count]());
  if (limit != 0) mark_deviating(points, count, limit, marked.get());
  ulong kept = 0;
  for (ulong i = 0; i < count; ++i) {
    marked[i] = marked[i] || points[i].x == removed;
    kept += !marked[i];
  }
  std::unique_ptr<vector[]> rest(new vector[kept]);
  for (tessarn::ulong i = 0, j = 0; i < count; ++i) {
    if (marked[i]) continue;
    rest[j].x = points[i].x;
    rest[j].y = points[i].y;
    ++j;
  }
  delete[] points;
  points = rest.release();
  count = capacity = kept;
}

vectormat* vectormat::findline(vector dir) {
  if (count < 2) return nullptr;
  vectormat rest(*this);  // worked on apart, so that a failure changes nothing
  std::unique_ptr<vectormat> chain(new vectormat);
  chain->add(points[0]);
  rest.points[0].x = removed;
  real tolerance = first_tolerance;
  for (tessarn::ulong i = 2; i < count; ++i) {
    if (!(dir.arc(points[i] - chain->points[chain->count - 1]) < tolerance)) continue;
    chain->add(points[i]);
    rest.points[i].x = removed;
    if (chain->count >= chain_fitted) {
      dir = chain->avdir();
      tolerance = chain_tolerance;
    }
  }
  rest.DeleteErrors(0);
  *this = static_cast<vectormat&&>(rest);
  return chain.release();
}
