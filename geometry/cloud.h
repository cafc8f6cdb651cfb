// The distinct points of a cloud, coordinate by coordinate, and its extreme points.
#pragma once

#include "core/storage.h"
#include "core/workspace.h"
#include "geometry/extremes.h"
#include "geometry/kernels/kernels.h"
#include "tessarn/vectors.h"

namespace tessarn::detail {

class cloud {
 public:
  // Of each group of equal points the last one is kept, in order. -0.0 equals 0.0, a point with NaN equals nothing.
  // Linear expected time; one packed copy and tables of about 20 bytes a point, none of which is allocated for a
  // hundred points that differ.
  cloud(const vector3d* pts, ulong count);
  cloud(const cloud&) = delete;

  std::size_t size() const { return n_; }
  vector3d point(std::size_t i) const { return {x()[i], y()[i], z()[i]}; }
  point_arrays arrays() const { return {as_doubles(x()), as_doubles(y()), as_doubles(z()), n_}; }

  // The coordinate sums in the order of the points, times the reciprocal of their number.
  vector3d centroid() const { return vector3d(sums_[0], sums_[1], sums_[2]) / static_cast<real>(n_); }
  // About a point amid the cloud.
  const moment_sums& moments() const { return moments_; }
  const vector3d& reference() const { return reference_; }
  // The first of the points farthest from a, if farther than 0; else a.
  vector3d farthest_from(const vector3d& a) const;
  // The first of the points with the largest sum of distances from a and b, if larger than that of a; else a.
  vector3d farthest_from(const vector3d& a, const vector3d& b) const;

 private:
  const real* x() const { return coordinates_; }
  const real* y() const { return coordinates_ + stride_; }
  const real* z() const { return coordinates_ + 2 * stride_; }

  void remove(const bool* marked);

  std::size_t n_;
  vector3d reference_;
  double sums_[3];
  moment_sums moments_;
  distance_index distances_;
  static constexpr std::size_t padding = 48;  // for the whole vectors of the kernels
  std::size_t stride_;
  workspace<real, 3 * 160, 64> room_;
  real* const coordinates_;
};

}  // namespace tessarn::detail
