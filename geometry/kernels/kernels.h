// The kernels of the plane fits, one table for each instruction set. Points stand coordinate by coordinate.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "simd/sets.h"

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

// Sums over the points less a reference point: of the coordinates x, y, z, of their products xx, yy, zz, xy, xz, yz,
// and of these times the number of points from the first of their block on, which has at most block_limit points. Each
// is accurate to two dozen roundings of the sum of its magnitudes, the latter to two dozen and one for each block.
inline constexpr size_t block_limit = 128;
inline constexpr size_t moment_count = 9;
struct moment_sums {
  double sum[moment_count];
  double weighted[moment_count];
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

// A word for each value of a hash less its last bits, as many as shift.
struct hash_words {
  uint64_t* words;
  unsigned shift;
};

// Where the points of a cloud go, with 32 more places behind the last one: the i-th to to[i], to[stride + i] and
// to[2 stride + i], and its hash value, the same for both zeros. The square of the greatest distance from the reference
// point, 0 where none is a number, goes to group_reach for each group of points, and to block_reach for each block, if
// these are wanted.
struct cloud_room {
  double* to;
  size_t stride;
  uint32_t* hash;
  double* group_reach;
  double* block_reach;
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

  void (*moments)(const point_arrays& points, const double* reference, moment_sums* sums);

  // The first of the points that are farthest from a, if farther than least; points.n otherwise. With b, the same for
  // the sum of the distances.
  size_t (*farthest)(const point_arrays& points, const double* a, double least);
  size_t (*farthest_from_two)(const point_arrays& points, const double* a, const double* b, double least);

  // Takes in n space points, each four doubles of which the coordinates are the last three, with their moments about
  // the reference point and the coordinates' sums in the order of the points, from +0.0.
  void (*take_in)(const double* points, size_t n, const double* reference, const cloud_room& room, moment_sums* moments,
                  double* sums);
  // Lists the points, in order, that have both bits of their hash value's word, by its last twelve bits, set by points
  // before; sets them for all points. There is room in the list for one point more, and 32 hash values behind the last
  // one may be read.
  size_t (*list_repeated)(const hash_words& table, const uint32_t* hash, size_t n, uint32_t* listed);
  // The same for the one bit by the last six bits, without setting any.
  size_t (*list_suspects)(const hash_words& table, const uint32_t* hash, size_t n, uint32_t* listed);
  size_t group_points, block_points;  // what a group and a block has, if not the last one
};

#define TESSARN_TABLE(set) \
  namespace set {          \
  extern const geometry_kernels geometry_table; \
  }
TESSARN_FOR_EACH_SET(TESSARN_TABLE)
#undef TESSARN_TABLE

// The table of the instruction set in use.
const geometry_kernels& geometry_kernels_in_use() noexcept;

}  // namespace tessarn::detail
