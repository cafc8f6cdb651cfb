// The kernels of the plane fits, one table for each instruction set. Points stand coordinate by coordinate.
#pragma once

#include <stddef.h>

namespace tessarn::detail {

// Candidates are evaluated this many at a time, side by side.
inline constexpr size_t candidate_lanes = 8;

struct point_arrays {
  const double* x;
  const double* y;
  const double* z;
  size_t n;
};

// Sums about a reference point, each accurate to a few roundings of the sum of its magnitudes: of the coordinates,
// of their products xx, yy, zz, xy, xz, yz, and of the squares of the coordinates themselves.
struct moment_sums {
  double first[3];
  double second[6];
  double square;
};

struct geometry_kernels {
  // For eight normals (x, y, z): the mean of (y p.y + x p.x) + z p.z, and the sum of the squares of that less the mean,
  // in the order of the points from +0.0.
  void (*residuals)(const point_arrays& points, const double* x, const double* y, const double* z, double* mean,
                    double* cost);
  // For eight vectors v: cost += 1 - (v . p)^2, or (v . p)^2, over the points in their order.
  void (*add_sines)(const point_arrays& points, const double* x, const double* y, const double* z, double* cost);
  void (*add_cosines)(const point_arrays& points, const double* x, const double* y, const double* z, double* cost);

  void (*moments)(const point_arrays& points, const double* reference, moment_sums* sums);

  // value[i] = the distance of point i from a, or the sum of its distances from a and b, for count points from first.
  void (*distances)(const point_arrays& points, size_t first, size_t count, const double* a, double* value);
  void (*distance_sums)(const point_arrays& points, size_t first, size_t count, const double* a, const double* b,
                        double* value);
};

namespace baseline {
extern const geometry_kernels geometry_table;
}
namespace avx2 {
extern const geometry_kernels geometry_table;
}
namespace avx512 {
extern const geometry_kernels geometry_table;
}

// The table of the instruction set in use.
const geometry_kernels& geometry() noexcept;

}  // namespace tessarn::detail
