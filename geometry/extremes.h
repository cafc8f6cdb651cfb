// The points of a cloud that are farthest from one or two others.
#pragma once

#include <memory>

#include "geometry/kernels/kernels.h"
#include "tessarn/vectors.h"

namespace tessarn::detail {

// The greatest distance from a reference point for each group and each block of points. A search leaves out the groups
// and blocks whose points lie too near: a point is no farther from another one than it is by way of the reference
// point.
class distance_index {
 public:
  explicit distance_index(std::size_t points);
  distance_index(const distance_index&) = delete;

  // The arrays for the squares of the distances, null for few points. After they have been filled, prepare must be
  // called.
  double* of_groups() { return squares_.get(); }
  double* of_blocks() { return squares_ ? squares_.get() + groups_ : nullptr; }
  void prepare(const vector3d& reference);
  // After points have been removed: the groups are no longer those of the squares.
  void forget() { usable_ = false; }

  // The first of the points that are farthest from a, if farther than least, otherwise points.n. With b the sum of the
  // distances from a and b takes the place of the distance from a.
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
