/// \file
/// How flat points are: the least-squares plane, and the two parallel planes with the smallest distance that hold all
/// points.
///
/// The first is the usual reference plane. The distance of the other two is the flatness of ISO 1101, the minimum zone,
/// which is never larger than the peak to valley of the first. It is exact: the planes touch the convex hull of the
/// points, whose corners, edges and faces are found by exact arithmetic.
///
/// Coordinates far from the origin keep all their digits, whatever the direction of the plane; a plane may stand
/// upright. Results have the same bits everywhere. Nothing is thrown but std::bad_alloc.
#pragma once

#include "tessarn/status.h"
#include "tessarn/views.h"

namespace tessarn {

/// The options of flatness().
///
/// \code
/// const vector3d points[] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, std::numeric_limits<double>::infinity()}};
/// tessarn::flatness_options o;
/// assert(tessarn::flatness({points, 4}, o).state == tessarn::status::not_finite);
/// o.leave_out_not_finite = true;
/// assert(tessarn::flatness({points, 4}, o).zone == 0);
/// \endcode
struct flatness_options {
  bool leave_out_not_finite = false;  ///< leave points with a NaN or an infinity out, instead of answering `not_finite`
};

/// A plane among points: the places p with normal . p = offset. The residual of a point is normal . p - offset, its
/// distance from the plane, positive on the side into which the normal points.
///
/// \code
/// const vector3d points[] = {{0, 0, 1}, {4, 0, 1}, {0, 4, 1}, {4, 4, 1}};
/// const tessarn::reference_plane p = tessarn::flatness({points, 4}).least_squares;
/// assert(p.normal == vector3d(0, 0, 1) && p.offset == 1 && p.point == vector3d(2, 2, 1));
/// assert(p.peak_to_valley == 0);
/// \endcode
struct reference_plane {
  status state = status::no_points;
  vector3d normal;  ///< of length 1; its component of the largest magnitude, the first of several, is positive
  vector3d point;   ///< the foot of the centroid of the points on the plane, rounded
  real offset = 0;  ///< normal . p of all p of the plane
  mat<long double> residuals;  ///< of each point, a column, from the plane itself and not from its rounded fields
  real root_mean_square = 0;   ///< sqrt(sum residual^2 / n)
  real peak_to_valley = 0;     ///< the largest residual minus the smallest one
  ulong highest = 0;           ///< the point with the largest residual, the first of several
  ulong lowest = 0;            ///< the point with the smallest residual, the first of several
};

/// The result of flatness(): the minimum zone, its middle plane, and the least-squares plane.
///
/// \code
/// // A pyramid of height 1 on a square: it rests on its base, or between two planes through its sides.
/// const vector3d points[] = {{0, 0, 0}, {4, 0, 0}, {0, 4, 0}, {4, 4, 0}, {2, 2, 1}};
/// const tessarn::flatness_result f = tessarn::flatness({points, 5});
/// assert(f.state == tessarn::status::ok && f.zone == 1);
/// assert(f.touching_above == 1 && f.touching[0] == 4);  // the tip above, three corners of the base below
/// assert(f.zone <= f.least_squares.peak_to_valley);
/// \endcode
struct flatness_result {
  status state = status::no_points;
  real zone = 0;  ///< the minimum zone: the smallest distance of two parallel planes that hold all points
  /// The plane in the middle of the zone: its residuals lie between -zone / 2 and zone / 2, which the touching points
  /// reach. Its highest and lowest point are the first ones of these.
  reference_plane middle;
  /// Points on the two planes, which determine them: first those above, where the normal points, then those below.
  /// Three and one, one and three, or two and two; for points in one plane three of them that span it.
  ulong touching[4] = {};
  ulong touching_above = 0;  ///< how many of them are above
  ulong touching_below = 0;  ///< how many of them are below
  /// The plane with the smallest sum of squared distances; it has a state of its own.
  reference_plane least_squares;
  /// How well the normal of the least-squares plane is determined, from 0 to 1/2: (s2^2 - s3^2) / (s1^2 + s2^2 + s3^2)
  /// with the singular values s1 >= s2 >= s3 of the centred points.
  real determination = 0;
  ulong points_used = 0;      ///< points that are finite
  ulong points_left_out = 0;  ///< points that are not
};

/// Finds the least-squares plane and the minimum zone of points.
///
/// Method: the normal of the least-squares plane is an eigenvector of the scatter matrix about the centroid, in doubled
/// precision by Jacobi's method. The zone is the width of the convex hull, which lies between a face and a corner or
/// between two edges (M. Houle, G. Toussaint, Computing the width of a set, 1988). The hull is found by quickhull
/// (C. Barber, D. Dobkin, H. Huhdanpaa, 1996) with exact determinants (J. Shewchuk, 1997).
///
/// Accuracy, for the points exactly as given, n of them: the zone and its normal are the exact ones rounded, within
/// 2^-53 + 2^-90 of the zone and of 1. A residual of the middle plane is off by at most 2^-53 of itself and 2^-95 of
/// the extent of the points. With e = (n + 64) 2^-98 / determination the normal of the least-squares plane is off by at
/// most 2^-53 + e, a residual by 2^-53 of itself and of the extent by (n + 64) 2^-98 + e s2 / sqrt(s1^2 + s2^2 + s3^2),
/// with the singular values as at `determination`. Coordinates below 2^-270 of the largest one count as 0 for the zone.
///
/// Where several zones have the same width, to within 2^-90 of it, one is taken that depends on the places of the
/// points and not on their order. Of points at one place the first is named.
///
/// Statuses of the result and of the middle plane: `no_points`; `sizes_differ` of the columns; `not_finite`;
/// `too_few_points`, fewer than three; `too_few_distinct`, all at one place; `collinear`, exactly on one line;
/// `out_of_range` when a result is too large for a real; `other_rounding` when the thread does not round to nearest, as
/// exact arithmetic needs. With `collinear` the zone is 0, as for all points in one plane, and there is no plane.
/// Statuses of the least-squares plane besides: `collinear` also when the points lie on one line as far as the digits
/// of their coordinates tell, and `not_determined` when they are as wide in two directions as in the thinnest one; the
/// plane is then one of the best ones.
///
/// Points that are left out have the residual NaN. Cost: O(n), then O(m log m) on average for the hull of the m points
/// that are not proved to lie inside a polytope of extreme points, which are few unless most points are near the hull;
/// then, for a hull of h edges, O(h) for hulls that are about as round on both sides, and O(h^2) in the worst case.
[[nodiscard]] TESSARN_API flatness_result flatness(space_points points, const flatness_options& options = {});

}  // namespace tessarn
