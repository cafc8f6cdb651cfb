/// \file
/// The motion that carries points onto their partners, and what it is worth.
///
/// Both functions make the sum of (w |b_i - (scale R a_i + t)|)^2 smallest over all rotations R and translations t, and
/// on request over all scales. The orientation is the usual one: the motion carries a onto b. (The classic calc_match
/// stores the rotation that carries b onto a.) A mirror image never comes out unless it is asked for.
///
/// The points are centred exactly, and everything is computed in doubled precision (about 106 bits), so points far from
/// the origin keep all their digits. Results have the same bits everywhere. Nothing is thrown but std::bad_alloc.
///
/// Weights act on residuals, as in tessarn/fit.h: they are proportional to 1 / (standard deviation of a coordinate).
#pragma once

#include "tessarn/status.h"
#include "tessarn/views.h"

namespace tessarn {

/// The options of align().
///
/// \code
/// tessarn::align_options o;
/// o.scale = true;  // the second triangle is twice as large
/// const vector a[] = {{0, 0}, {1, 0}, {0, 1}}, b[] = {{5, 5}, {5, 7}, {3, 5}};
/// assert(tessarn::align({a, 3}, {b, 3}, o).scale == 2);
/// \endcode
struct align_options {
  bool scale = false;                 ///< also find the scale that fits best; else it is 1
  bool reflections = false;           ///< allow a mirror image where it fits better than every rotation
  column_view weights;                ///< one weight for each pair, 0 or positive; none: all weights are 1
  bool leave_out_not_finite = false;  ///< leave pairs with a NaN or an infinity out, instead of answering `not_finite`
};

/// A motion of space, b = image + scale R (a - centre), and how far the points are from it.
///
/// \code
/// const vector3d a[] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
/// const vector3d b[] = {{5, 0, 0}, {5, 1, 0}, {4, 0, 0}};  // a quarter turn about the z axis, and (5, 0, 0) added
/// const tessarn::space_alignment m = tessarn::align({a, 3}, {b, 3});
/// assert(m.state == tessarn::status::ok && m.translation == vector3d(5, 0, 0));
/// assert(m.rotation.get(0, 1) == 1);  // the column comes first: x turns into y
/// assert(m.map(vector3d(0, 0, 7)) == vector3d(5, 0, 7) && m.root_mean_square == 0);
/// \endcode
struct space_alignment {
  status state = status::no_points;
  /// R, 3 x 3: R'R differs from the identity by at most 2^-51, entry by entry.
  mat<long double> rotation;
  real scale = 1;                ///< positive, or 0 where the points of a and b have nothing in common
  vector3d translation;          ///< t of b = scale R a + t
  vector3d centre;               ///< the centroid of the points of a, rounded
  vector3d image;                ///< where the motion carries `centre`: near the centroid of the points of b
  bool reflected = false;        ///< R is a rotation times -1; only with the option
  mat<long double> differences;  ///< b_i - (scale R a_i + t), one row of three for each pair
  mat<long double> distances;    ///< their lengths, a column
  real root_mean_square = 0;     ///< sqrt(sum (w distance)^2 / sum w^2)
  real largest_residual = 0;     ///< the largest distance of a pair with a weight
  ulong largest_at = 0;          ///< the pair it belongs to, the first of several
  ulong points_used = 0;         ///< pairs with a weight above 0
  ulong points_left_out = 0;     ///< pairs that are not finite or have a weight of 0
  /// How well the rotation is determined, from 0 to 2/3: (s2 + s3) / (|a| |b|), with the singular values s1 >= s2 >= s3
  /// of the sum H of w^2 b a' about the centroids, s3 negative where det H is, and the roots |a|, |b| of the sums of
  /// (w a)^2 and (w b)^2. Points that are off by e times the extent of the set turn the rotation by up to about
  /// e / determination. It is near 0 for points near a line, and for a mirrored set that is symmetric.
  real determination = 0;

  /// Where the motion carries a point: image + scale R (p - centre), which keeps the digits of points far from the
  /// origin that scale R p + t would lose. (0, 0, 0) without a motion.
  [[nodiscard]] TESSARN_API vector3d map(const vector3d& p) const;
};

/// A motion of the plane; the fields have the meaning that they have in space.
///
/// \code
/// const vector a[] = {{0, 0}, {2, 0}}, b[] = {{1, 1}, {1, 3}};
/// const tessarn::plane_alignment m = tessarn::align({a, 2}, {b, 2});
/// assert(m.state == tessarn::status::ok && m.map(vector(0, 2)) == vector(-1, 1));
/// \endcode
struct plane_alignment {
  status state = status::no_points;
  mat<long double> rotation;     ///< R, 2 x 2
  real scale = 1;                ///< positive, or 0 where the points of a and b have nothing in common
  vector translation;            ///< t of b = scale R a + t
  vector centre;                 ///< the centroid of the points of a, rounded
  vector image;                  ///< where the motion carries `centre`
  bool reflected = false;        ///< det R = -1; only with the option
  mat<long double> differences;  ///< b_i - (scale R a_i + t), one row of two for each pair
  mat<long double> distances;    ///< their lengths, a column
  real root_mean_square = 0;     ///< sqrt(sum (w distance)^2 / sum w^2)
  real largest_residual = 0;     ///< the largest distance of a pair with a weight
  ulong largest_at = 0;          ///< the pair it belongs to, the first of several
  ulong points_used = 0;         ///< pairs with a weight above 0
  ulong points_left_out = 0;     ///< pairs that are not finite or have a weight of 0
  /// How well the rotation is determined, from 0 to 1: the sum of w^2 (R a) . b over |a| |b|, about the centroids.
  real determination = 0;

  /// Where the motion carries a point: image + scale R (p - centre). (0, 0) without a motion.
  [[nodiscard]] TESSARN_API vector map(const vector& p) const;
};

/// Finds the motion of space that carries the points of a onto those of b, pair by pair.
///
/// Method: the unit quaternion of the rotation is the eigenvector of a symmetric 4 x 4 matrix (B. Horn, Closed-form
/// solution of absolute orientation using unit quaternions, 1987), found by Jacobi's method; it cannot be a mirror
/// image. The scale is that of S. Umeyama, Least-squares estimation of transformation parameters between two point
/// patterns, 1991: the one for which the residuals of b are smallest.
///
/// Accuracy: for the points exactly as given, n of them, and e = (n + 64) 2^-98 / determination, an entry of the
/// rotation is off by at most 2^-53 + e, the scale by (2^-53 + e) of itself, and a distance by 2^-52 of itself and e of
/// the extent of the points (of a times the scale, or of b, whichever is larger). So all digits of a double are right
/// while the determination is above about n 1e-13.
///
/// Statuses without a motion: `sizes_differ`; `no_points`; `not_finite`; `bad_weight`; `too_few_points`, fewer than
/// three pairs with a weight; `too_few_distinct` when all points of a or all of b are equal; `out_of_range` when the
/// scale, the translation or a distance leaves the range of a real. Statuses with a motion that is only one of the best
/// ones, that by the smallest angle where many are equally good: `collinear` when the points of a or of b lie on one
/// line as far as the digits of their coordinates tell; `not_determined` when other rotations fit as well for another
/// reason. Residuals hold with them, too.
///
/// The differences and distances of pairs that are not finite are NaN. Cost: O(n). Memory: the results; where some
/// pairs do not count besides a copy of the results, and the numbers and weights of those that do.
[[nodiscard]] TESSARN_API space_alignment align(space_points a, space_points b, const align_options& options = {});

/// Finds the motion of the plane that carries the points of a onto those of b, pair by pair.
///
/// Accuracy and statuses as in space, but two pairs are enough, and points on a line determine the rotation.
[[nodiscard]] TESSARN_API plane_alignment align(plane_points a, plane_points b, const align_options& options = {});

}  // namespace tessarn
