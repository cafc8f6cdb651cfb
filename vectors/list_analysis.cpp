// The point list: direction, removal of outliers, extraction of a chain.
#include <cmath>
#include <memory>

#include "tessarn/poly.h"
#include "tessarn/vectors.h"

using tessarn::real;

namespace {

constexpr real removed = -1;            // the x of a point that is marked for removal
constexpr tessarn::ulong neighbours = 5;         // on either side of a point, for its moving mean
constexpr real first_tolerance = static_cast<real>(0.2);   // radians, while the chain is short
constexpr real chain_tolerance = static_cast<real>(0.05);  // radians, from chain_fitted points on
constexpr tessarn::ulong chain_fitted = 10;

// The mean ordinate around point i, summed afresh in ascending order.
real moving_mean(const vector* points, tessarn::ulong count, tessarn::ulong i) {
  const tessarn::ulong first = i < neighbours ? 0 : i - neighbours;
  const tessarn::ulong last = count - 1 - i < neighbours ? count - 1 : i + neighbours;
  real sum = 0;
  for (tessarn::ulong j = first; j <= last; ++j) sum += points[j].y;
  return sum / static_cast<real>(last - first + 1);
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
  std::unique_ptr<bool[]> marked(new bool[count]);
  tessarn::ulong kept = 0;
  for (tessarn::ulong i = 0; i < count; ++i) {
    marked[i] = points[i].x == removed;
    if (limit != 0) {
      const real deviation = points[i].y - moving_mean(points, count, i);
      if (deviation * deviation > limit) marked[i] = true;
    }
    if (!marked[i]) ++kept;
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
