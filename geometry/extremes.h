// The points of a cloud that are farthest from one or two others.
#pragma once

#include <memory>

#include "geometry/kernels/kernels.h"
#include "tessarn/vectors.h"

namespace tessarn::detail {

// How far the points of each group and each block go from a reference point. By these whole ones are left out of a
// search: a point is no farther from another one than it is by way of the reference point.
class distance_index {
 public:
  explicit distance_index(std::size_t points);
  distance_index(const distance_index&) = delete;

  // Where the squares of the distances go, null for few points; prepare has to follow.
  double* of_groups() { return squares_.get(); }
  double* of_blocks() { return squares_ ? squares_.get() + groups_ : nullptr; }
  void prepare(const vector3d& reference);
  // For points that are not those of the groups any more.
  void forget() { usable_ = false; }

  // The first of the points that are farthest from a, if farther than least, otherwise points.n; with b, the same for
  // the sum of the distances from both.
  std::size_t farthest(const point_arrays& points, const vector3d& a, const vector3d* b, double least) const;

 private:
  class query;
  double first_guess(query from) const;

  std::size_t groups_, blocks_;
  std::unique_ptr<double[]> squares_;
  vector3d reference_;
  double greatest_ = 0;  // of the squares
  bool usable_ = false;
};

}  // namespace tessarn::detail
