// The point list: direction, removal of outliers, extraction of a chain.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>

#include "poly/line_sums.h"
#include "tessarn/poly.h"
#include "tessarn/vectors.h"
#include "vectors/kernels/kernels.h"
#include "vectors/point_array.h"

using tessarn::real;
using tessarn::detail::neighbours;
using tessarn::detail::removed;

namespace {

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

// marked[i]: point i deviates by more than limit, or has been marked before. Gives the number of marks.
std::size_t mark_outliers(const vector* points, std::size_t count, real limit, bool* marked) {
  static_assert(sizeof(vector) == 3 * sizeof(double), "three doubles a point, as the kernel takes them");
  std::size_t i = 0, found = 0;
  const auto one_by_one = [&](std::size_t end) {
    for (; i < end; ++i) {
      marked[i] = squared_deviation(points, count, i) > limit || points[i].x == removed;
      found += marked[i];
    }
  };
  one_by_one(std::min(neighbours, count));
  if (i + neighbours < count) {
    const std::size_t whole = count - neighbours - i;
    const double* const coordinates = reinterpret_cast<const double*>(points + i);
    found += tessarn::detail::list_kernels_in_use().mark(coordinates, whole, limit, marked + i);
    i += whole;
  }
  one_by_one(count);
  return found;
}

// The points that are not marked, in their order; whole runs of eight at once.
void copy_unmarked(const vector* points, const bool* marked, std::size_t count, vector* to) {
  constexpr std::size_t run = 8;
  const auto copy = [&](std::size_t i) {
    to->x = points[i].x;
    to->y = points[i].y;
    ++to;
  };
  std::size_t i = 0;
  for (; i + run <= count; i += run) {
    std::uint64_t marks;
    static_assert(sizeof marks == run * sizeof(bool));
    std::memcpy(&marks, marked + i, sizeof marks);
    if (marks == 0) {
      for (std::size_t k = 0; k < run; ++k) copy(i + k);
    } else {
      for (std::size_t k = 0; k < run; ++k) {
        if (!marked[i + k]) copy(i + k);
      }
    }
  }
  for (; i < count; ++i) {
    if (!marked[i]) copy(i);
  }
}

vector direction(real slope) { return slope != slope ? vector(0, 1) : vector(1, slope); }

}  // namespace

vector vectormat::avdir() {
  binom line;
  line.create(points, count, 2);
  return direction(line.get(1));
}

void vectormat::DeleteErrors(real limit) {
  // The marks are kept apart until the new storage is there, so that a failure changes nothing.
  const std::unique_ptr<bool[]> marked(new bool[count]);
  constexpr real no_limit = std::numeric_limits<real>::infinity();
  const std::size_t found = mark_outliers(points, count, limit != 0 ? limit : no_limit, marked.get());
  const auto kept = static_cast<tessarn::ulong>(count - found);
  std::unique_ptr<vector[]> rest(new vector[kept]);
  copy_unmarked(points, marked.get(), count, rest.get());
  tessarn::detail::release_points(points);
  points = rest.release();
  count = capacity = kept;
}

vectormat* vectormat::findline(vector dir) {
  if (count < 2) return nullptr;
  vectormat rest(*this);  // worked on apart, so that a failure changes nothing
  std::unique_ptr<vectormat> chain(new vectormat);
  chain->add(points[0]);
  rest.points[0].x = removed;
  tessarn::detail::line_sums line;
  line.add(points[0]);
  real tolerance = first_tolerance;
  for (tessarn::ulong i = 2; i < count; ++i) {
    if (!(dir.arc(points[i] - chain->points[chain->count - 1]) < tolerance)) continue;
    chain->add(points[i]);
    line.add(points[i]);
    rest.points[i].x = removed;
    if (chain->count >= chain_fitted) {
      dir = direction(line.slope());  // what avdir() of the chain gives
      tolerance = chain_tolerance;
    }
  }
  rest.DeleteErrors(0);
  *this = static_cast<vectormat&&>(rest);
  return chain.release();
}
