// The distinct points of a cloud, coordinate by coordinate, with their moments.
#include "geometry/cloud.h"

#include <algorithm>
#include <memory>

#include "geometry/coordinates.h"
#include "geometry/duplicates.h"

namespace tessarn::detail {
namespace {

// The mean of some of the points, which is near enough to the centre of the cloud.
vector3d approximate_centre(const vector3d* pts, std::size_t n) {
  const std::size_t samples = std::min(n, std::clamp<std::size_t>(n / 16, 8, 2048));
  vector3d sum;
  for (std::size_t k = 0; k < samples; ++k) sum += pts[k * n / samples];
  return sum / static_cast<real>(samples);
}

}  // namespace

cloud::cloud(const vector3d* pts, ulong count)
    : n_(count),
      reference_(approximate_centre(pts, count)),
      distances_(count),
      stride_((n_ + padding) / 8 * 8),
      room_(3 * stride_),
      coordinates_(room_.data()) {
  static_assert(sizeof(vector3d) == 4 * sizeof(double), "four doubles a point, as the kernel takes them");
  duplicate_search search(count);
  const cloud_arrays to = {as_doubles(coordinates_), stride_, search.hashes(), distances_.of_groups(),
                           distances_.of_blocks()};
  geometry_kernels_in_use().ingest_points(reinterpret_cast<const double*>(pts), n_, coordinates_of(reference_).data(),
                                          to, &moments_, sums_);
  distances_.prepare(reference_);
  const std::unique_ptr<bool[]> marked = search.marked(pts);
  if (marked) remove(marked.get());
}

// Moves the points that stay together, and forms sums and moments again: those of all points do not give them.
void cloud::remove(const bool* marked) {
  std::size_t kept = 0;
  std::fill_n(sums_, 3, 0.0);
  for (std::size_t i = 0; i < n_; ++i) {
    if (marked[i]) continue;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      real* c = coordinates_ + axis * stride_;
      c[kept] = c[i];
      sums_[axis] += static_cast<double>(c[i]);
    }
    ++kept;
  }
  n_ = kept;
  distances_.forget();
  geometry_kernels_in_use().moments(arrays(), coordinates_of(reference_).data(), &moments_);
}

vector3d cloud::farthest_from(const vector3d& a) const {
  const std::size_t i = distances_.farthest(arrays(), a, nullptr, 0);
  return i < n_ ? point(i) : a;
}

vector3d cloud::farthest_from(const vector3d& a, const vector3d& b) const {
  const auto least = static_cast<double>((a - a).lenld() + (a - b).lenld());
  const std::size_t i = distances_.farthest(arrays(), a, &b, least);
  return i < n_ ? point(i) : a;
}

}  // namespace tessarn::detail
