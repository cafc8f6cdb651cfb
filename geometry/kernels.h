// The kernels of the plane fits, one table for each instruction set. Points stand coordinate by coordinate.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace tessarn::detail {

// Candidates are evaluated this many at a time, side by side.
inline constexpr size_t candidate_lanes = 8;

// Eight numbers behind each of them may be read, too.
struct point_arrays {
  const double* x;
  const double* y;
  const double* z;
  size_t n;
};

// Sums about a reference point, each accurate to two dozen roundings of the sum of its magnitudes: of the coordinates,
// of their products xx, yy, zz, xy, xz, yz, and of the squares of the coordinates themselves.
struct moment_sums {
  double first[3];
  double second[6];
  double square;
  // The products, each times the number of points from the first of its block on: not less than the sum of the partial
  // sums, for the squares, in the order of the points.
  double weighted[6];
};

// What bounds the sum of the squared residuals of a normal (bounds.h): the sums' first moments over their number, the
// second moments xx, yy, zz, xy, xz, yz, and the margins.
struct residual_form {
  double count;
  double mean[3];
  double second[6];
  double weighted[6];
  double form_margin, mean_margin, mean_margin_root, residual_margin;
  double sum_margin, sum_factor;  // of the sum itself, besides the weighted products
  double factor;                  // for all of the sum's roundings, without the weighted products
};

// A search for repeated hash values of points. The table has a bit for each value of a hash less its last bits, as
// many as shift; those of the points are set. Lists the points whose bit was set before; there is room for one point
// more, and 48 hash values behind the last one may be read.
struct repeated_hashes {
  const uint32_t* hash;
  uint64_t* table;
  unsigned shift;
  uint32_t* listed;
  size_t found;
};

struct geometry_kernels {
  // For eight normals (x, y, z): the mean of (y p.y + x p.x) + z p.z, summed in the order of the points from +0.0.
  void (*means)(const point_arrays& points, const double* x, const double* y, const double* z, double* mean);
  // These means, and the sums of the squares of that less the mean, likewise in order.
  void (*residuals)(const point_arrays& points, const double* x, const double* y, const double* z, double* mean,
                    double* cost);
  // The eight neighbours of the centre, row by row, in the grid of the given step, x = centre_x + (-1, 0 or 1) step
  // and y alike, with z = sqrt(1 - x^2 - y^2), and bounds of the sum of squares; infinite where there is no z.
  void (*bound_residuals)(const residual_form& form, double centre_x, double centre_y, double step, double* x,
                          double* y, double* z, double* low, double* high);
  // For eight vectors v: cost += 1 - (v . p)^2, or (v . p)^2, over the points in their order.
  void (*add_sines)(const point_arrays& points, const double* x, const double* y, const double* z, double* cost);
  void (*add_cosines)(const point_arrays& points, const double* x, const double* y, const double* z, double* cost);

  // The moments, and what farthest would find from the reference point and 0. With hashes, searches them along the way.
  size_t (*moments)(const point_arrays& points, const double* reference, moment_sums* sums, repeated_hashes* hashes);

  // The first of the points that are farthest from a, if farther than least; points.n otherwise. With b, the same for
  // the sum of the distances.
  size_t (*farthest)(const point_arrays& points, const double* a, double least);
  size_t (*farthest_from_two)(const point_arrays& points, const double* a, const double* b, double least);

  // The coordinates of n space points, each four doubles of which they are the last three, to to[i], to[stride + i] and
  // to[2 stride + i], and a hash value of each, the same for both zeros. There is room for 32 more.
  // The coordinates' sums in the order of the points, from +0.0, to sums.
  void (*unpack)(const double* points, size_t n, double* to, size_t stride, uint32_t* hash, double* sums);
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
