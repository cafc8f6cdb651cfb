// The kernels of the plane fits, one table for each instruction set. Points are stored coordinate by coordinate.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "simd/sets.h"

namespace tessarn::detail {

// Candidates are evaluated this many at a time, side by side.
inline constexpr size_t candidate_lanes = 8;

// n points. Kernels may read eight numbers behind the last one of each array, too.
struct point_arrays {
  const double* x;
  const double* y;
  const double* z;
  size_t n;
};

// Sums over the points less a reference point.
// sum: of the coordinates x, y, z and of their products xx, yy, zz, xy, xz, yz; each is accurate to two dozen roundings
// of the sum of its magnitudes.
// weighted: of the same nine, each times the number of points from the first one of its block on; a block has at most
// block_limit points. Accurate to two dozen roundings and one for each block.
inline constexpr size_t block_limit = 128;
inline constexpr size_t moment_count = 9;
struct moment_sums {
  double sum[moment_count];
  double weighted[moment_count];
};

// From these numbers bounds of the sum of the squared residuals of a normal are computed (geometry/bounds.h).
struct residual_form {
  double count;
  double mean[3];
  double second[6];    // the second moments xx, yy, zz, xy, xz, yz
  double weighted[6];  // and their weighted sums
  double form_margin, mean_margin, mean_margin_root, residual_margin;
  double sum_margin, sum_factor;  // of the sum itself, besides the weighted products
  double factor;                  // for all of the sum's roundings, without the weighted products
};

// A table of bits: the hash value h has the word h >> shift.
struct hash_words {
  uint64_t* words;
  unsigned shift;
};

// The arrays that the points of a cloud are written to, with 32 more places behind the last point.
struct cloud_arrays {
  double* to;  // the coordinates of point i are to[i], to[stride + i] and to[2 stride + i]
  size_t stride;
  uint32_t* hash;  // equal points have equal hash values, -0.0 and 0.0 being equal
  // The square of the greatest distance from the reference point, 0 where none is a number, of each group of points and
  // of each block; both null where they are not wanted.
  double* group_radius;
  double* block_radius;
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

  // The moments of the points about the reference point.
  void (*moments)(const point_arrays& points, const double* reference, moment_sums* sums);

  // The first of the points that are farthest from a, if farther than least; points.n otherwise. The second kernel
  // takes the sum of the distances from a and b in place of the distance from a.
  size_t (*farthest)(const point_arrays& points, const double* a, double least);
  size_t (*farthest_from_two)(const point_arrays& points, const double* a, const double* b, double least);

  // Writes n space points to the arrays of a cloud, and forms their moments about the reference point and the sums of
  // their coordinates in the order of the points, from +0.0. A point is four doubles, the last three its coordinates.
  void (*ingest_points)(const double* points, size_t n, const double* reference, const cloud_arrays& arrays,
                        moment_sums* moments, double* sums);
  // A hash value selects two bits of its word, by its last twelve bits. Sets them for every point, and lists, in order,
  // the points whose two bits were set before. The list has room for one point more than it gets, and 32 hash values
  // behind the last one may be read.
  size_t (*list_repeated)(const hash_words& table, const uint32_t* hash, size_t n, uint32_t* listed);
  // Lists, in order, the points of whose word the one bit that the last six bits of the hash value select is set. Sets
  // none.
  size_t (*list_suspects)(const hash_words& table, const uint32_t* hash, size_t n, uint32_t* listed);
  size_t group_points, block_points;  // of every group and every block but the last one
};

#define TESSARN_TABLE(set)                      \
  namespace set {                               \
  extern const geometry_kernels geometry_table; \
  }
TESSARN_FOR_EACH_SET(TESSARN_TABLE)
#undef TESSARN_TABLE

// The table of the instruction set in use.
const geometry_kernels& geometry_kernels_in_use() noexcept;

}  // namespace tessarn::detail
