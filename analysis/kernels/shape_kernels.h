// The kernels of motions, planes, lines, circles, spheres and cylinders, one table for each instruction set. Lanes run
// across points.
#pragma once

#include <stddef.h>

#include "simd/sets.h"

namespace tessarn::detail {

// Each sum over the points is kept as this many partial sums, point i in partial sum i mod 8. The terms of 256 points
// are added with one number for what their roundings lost; these sums are added in doubled precision, block by block.
// So the sum is off by at most 2^-97 of the sum of the magnitudes of its terms, however many there are.
inline constexpr size_t shape_partial_sums = 8;

// Points in arrays, an array for each coordinate, of which numbers up to a multiple of eight may be read. Coordinate k
// becomes v factors[k][0] factors[k][1] - origin[k], an exact doubled number: its local coordinate.
struct local_columns {
  const double* c[3];
  double factors[3][2], origin[3];
};

// How results leave a kernel: multiplied by a power of two, in two steps where one power would be out of range.
struct result_scale {
  double factors[2];
};

// A doubled number as the kernels take it.
struct number_pair {
  double high, low;
};

// The extremes of the residuals, by their leading parts, in local units, and the first point of each.
struct residual_range {
  double lowest, highest, largest;  // `largest`: in magnitude
  size_t lowest_at, highest_at, largest_at;
};

// Residuals of n points: what is smaller than `noise` in magnitude counts as 0.
struct residual_output {
  double* residuals;
  result_scale scale;
  double noise;
  const double* weights;  // null: all weights are 1
};

// Points relative to their centroid as doubled numbers, and the squares of their weights; null: all are 1. Of each
// array the numbers up to a multiple of eight are 0 behind the last point; those of the weights, too.
struct centred_columns {
  const double* high[3];
  const double* low[3];
  const double *weight, *weight_low;
  size_t size;
};

// A circle, sphere or cylinder with the directions in which it is changed; see analysis/round_shape.h for the letters.
struct round_numbers {
  size_t dimension, left_out, part[4];
  bool has_axis;
  number_pair v[5], axes[3][3], ratio[4], curvature[4], bend[4][4];
};

struct shape_kernels {
  // Sum k takes w^2 times local coordinate k; sum `dimension` takes w^2, and only where weights are given. Here and
  // below a sum is shape_partial_sums leading parts, then as many low parts.
  void (*add_means)(const local_columns& p, size_t dimension, const double* weights, size_t n, double* sums);

  // The sums take w^2 times the products of the local coordinates k <= l: (0, 0), (0, 1), ...
  void (*add_products)(const local_columns& p, size_t dimension, const double* weights, size_t n, double* sums);

  // Coordinate k of b times l of a: (0, 0), (0, 1), ... `lengths` takes the products of a, as above, then those of b;
  // of these the sums for k < l are formed in double precision, with low parts of 0.
  void (*add_pair_products)(const local_columns& a, const local_columns& b, size_t dimension, const double* weights,
                            size_t n, double* sums, double* lengths);

  // The distances normal . p - offset from a plane; the sum takes w^2 residual^2.
  residual_range (*plane_residuals)(const local_columns& p, const number_pair* normal, number_pair offset, size_t n,
                                    const residual_output& out, double* sum);

  // The distances from a line, each the length of (first . p - first_offset, second . p - second_offset); the sum as
  // for a plane.
  residual_range (*line_residuals)(const local_columns& p, const number_pair (&across)[2][3],
                                   const number_pair (&offsets)[2], size_t n, const residual_output& out, double* sum);

  // The differences b unit - matrix a - offset, point after point, and their lengths as residuals. `matrix` is row
  // after row; `noise` acts on each coordinate.
  residual_range (*motion_residuals)(const local_columns& a, const local_columns& b, size_t dimension, double unit,
                                     const number_pair* matrix, const number_pair* offset, size_t n,
                                     const residual_output& out, double* differences, double* sum);

  // The local coordinates less `mean`, as doubled numbers.
  void (*centre)(const local_columns& p, size_t dimension, const number_pair* mean, size_t n, double* const* high,
                 double* const* low);

  // The distances from a round shape.
  residual_range (*round_residuals)(const centred_columns& p, const round_numbers& m, const residual_output& out,
                                    double* sum);

  // The sum of w^2 r^2, then with u unknowns those of w^2 r r_i; w^2 r_i r_j for j <= i, (0, 0), (1, 0), ...; and
  // w^2 (r_i r_j + r r_ij). In double precision each sum has its partial sums alone.
  void (*round_sums)(const centred_columns& p, const round_numbers& m, double* sums);
  void (*round_sums_doubled)(const centred_columns& p, const round_numbers& m, double* sums);

  // The sum of w^2 r^2 alone, in double precision, as shape_partial_sums numbers.
  void (*round_squares)(const centred_columns& p, const round_numbers& m, double* sum);

  // Of the places q across the axes of the shape, in double precision: sum 0 takes w^2, sum 1 takes w^2 |q|^2; gives
  // the largest |q|^2. Then, with z = (|q|^2 - mean) factor, the sums of w^2 times the products of z, q_0, q_1, ...:
  // (0, 0), (0, 1), ...
  double (*square_sums)(const centred_columns& p, const round_numbers& m, double* sums);
  void (*algebraic_sums)(const centred_columns& p, const round_numbers& m, double mean, double factor, double* sums);

  // Of each direction d the points with the greatest and the least product with it: values[16 d + l] and
  // values[16 d + 8 + l] take the products of the points whose number is l modulo 8, `places` the numbers of the first
  // of them, counted from `begin` on. Points are taken as in the next, and behind the last one stand copies of others.
  void (*find_extremes)(const local_columns& p, const double (*directions)[3], size_t count, size_t n, double begin,
                        double* values, double* places);

  // Stores the numbers of the points for which f0 x + f1 y + f2 z - f3 is not below 0 for some facet f, and gives how
  // many they are. (x, y, z) are the products with the factors, of which those below 2^-270 become 0, less the origins,
  // all rounded to doubles.
  size_t (*keep_outside)(const local_columns& p, const double (*facets)[4], size_t count, size_t n, size_t* kept);
};

#define TESSARN_TABLE(set)                \
  namespace set {                         \
  extern const shape_kernels shape_table; \
  }
TESSARN_FOR_EACH_SET(TESSARN_TABLE)
#undef TESSARN_TABLE

// The table of the instruction set in use.
const shape_kernels& shape_kernels_in_use() noexcept;

}  // namespace tessarn::detail
