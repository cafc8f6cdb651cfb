/// \file
/// Lines in space, circles, spheres and cylinders through measured points, by least squares of orthogonal distances.
///
/// A fit makes the sum of (w d)^2 smallest, where d is the distance of a point from the shape and w its weight. No
/// guess is asked of the caller. Every fit answers with a status, standard errors of its parameters and the residual of
/// each point; results have the same bits everywhere, and nothing is thrown but std::bad_alloc.
///
/// Coordinates may have any unit and may be far from the origin: a fit works in doubled precision (about 106 bits)
/// about the centroid of the points, with a power of two as its unit. What the rounding of the coordinates themselves
/// cannot tell is not told by a fit: what is below 2^-50 of the largest coordinate counts as 0. Points on a circle
/// whose arc is no higher than that count as collinear, for example.
///
/// Circle, sphere and cylinder are described by their curvature during the search, so that the plane and the line are
/// shapes like others. Where one of them is at least as good as any finite shape, the status says so instead of a huge
/// radius.
///
/// Sources: S. Ahn, W. Rauh, H.-J. Warnecke, Least-squares orthogonal distances fitting of circle, sphere, ellipse,
/// hyperbola, and parabola, 2001; A. Forbes, Least-squares best-fit geometric elements, NPL report DITC 140/89, 1989;
/// V. Pratt, Direct least-squares fitting of algebraic surfaces, 1987 (the curvature); G. Taubin, Estimation of planar
/// curves, surfaces, and nonplanar space curves defined by implicit equations, 1991 (the start); N. Chernov, Circular
/// and linear regression: fitting circles and lines by least squares, 2010; J. More, The Levenberg-Marquardt algorithm:
/// implementation and theory, 1978 (the search); D. Eberly, Fitting 3D data with a cylinder, 2003 (starts all over the
/// half sphere).
///
/// Accuracy: with `ok`, each parameter is that of the minimum to within one unit in its last place, plus 2^-75 of the
/// radius (of 1 for a direction), and residuals and deviations are as accurate. Where the points hardly determine the
/// shape, a reciprocal condition below 2^-30, the status is `not_determined` instead. A distance that a program forms
/// from a rounded centre far away and a rounded radius is off by some units in the last place of the radius; the
/// residuals of the result are not.
///
/// Cost: proportional to the number of points. A line copies no points; the others keep them as doubled numbers, six of
/// 64 bits for a point of space, and two more where there are weights. A circle or sphere takes a few passes; a
/// cylinder some hundred, most of them to find where to start.
#pragma once

#include "tessarn/status.h"
#include "tessarn/vectors.h"
#include "tessarn/views.h"

namespace tessarn {

/// The options of a fit of a shape.
struct shape_options {
  column_view weights;                ///< one weight for each point, 0 or positive; none: all weights are 1
  bool leave_out_not_finite = false;  ///< leave points with a NaN or an infinity out, instead of answering `not_finite`
  ulong most_steps = 500;             ///< steps of the search from one start at most, 1 or more
};

/// What all fits of shapes tell. All lengths have the unit of the coordinates. With q unknowns, n points that have a
/// weight and weighted residuals w d, the residual variance is sum (w d)^2 / (n - q), as for polynomial_fit. Where n =
/// q no deviation can be told: deviations and errors are infinite then.
///
/// The standard errors of the parameters come from the derivatives of the distances at the result, and are right as far
/// as the distances are linear in the parameters over a few standard errors.
struct shape_fit {
  status state = status::no_points;
  ulong points_used = 0;        ///< points with a weight above 0
  ulong points_left_out = 0;    ///< points that are not finite or have a weight of 0
  ulong unknowns = 0;           ///< parameters that were fitted
  ulong steps = 0;              ///< of the search that led to the result; 0 for a line, which needs no search
  real root_mean_square = 0;    ///< sqrt(sum (w d)^2 / sum w^2)
  real residual_deviation = 0;  ///< the residual standard deviation
  mat<long double> residuals;   ///< d of each point, a column; NaN for points left out; empty unless the state is `ok`
  real largest_residual = 0;    ///< d where it is largest in magnitude, with its sign
  ulong largest_at = 0;         ///< the point it belongs to
  real peak_to_valley = 0;      ///< the largest d less the smallest
  real reciprocal_condition = 0;  ///< an estimate for the derivatives of the distances; small: hardly determined
};

/// A line in space.
struct line_fit : shape_fit {
  vector3d point{0, 0, 0};             ///< the centroid of the points, which lies on the line
  vector3d direction{0, 0, 0};         ///< of length 1; its component of largest magnitude, the first such, is positive
  vector3d point_errors{0, 0, 0};      ///< standard errors of the coordinates of the point, across the line
  vector3d direction_errors{0, 0, 0};  ///< standard errors of the components of the direction
};

/// Fits a line through points of space.
///
/// \code
/// const vector3d points[] = {{0, 0, 5}, {1, 2, 5}, {2, 4, 5}, {3, 6, 5}};
/// const tessarn::line_fit f = tessarn::fit_line({points, 4});
/// assert(f.state == tessarn::status::ok && f.point.y == 3 && f.direction.z == 0);
/// assert(f.direction.y == 2 * f.direction.x && f.largest_residual < 1e-20);
/// \endcode
///
/// The line goes through the centroid along the eigenvector of the largest eigenvalue of the covariance (K. Pearson, On
/// lines and planes of closest fit to systems of points in space, 1901).
///
/// Residuals are distances and have no sign. A point gives two numbers, its distances along two directions across the
/// line, and the line has four unknowns, so the residual variance is sum (w d)^2 / (2 n - 4). `peak_to_valley` is the
/// diameter of the cylinder about the line that holds all points. `reciprocal_condition` is the difference of the
/// standard deviations along the line and along the longest direction across it, divided by the first.
///
/// Statuses: `sizes_differ`, `no_points`, `not_finite`, `bad_weight`, `bad_option`, `too_few_points` below two,
/// `too_few_distinct` when all points are equal, `not_determined` when the points are as long in a second direction,
/// `out_of_range` when weights span more than 2^200 or a result is too large.
[[nodiscard]] TESSARN_API line_fit fit_line(space_points points, const shape_options& options = {});

/// A circle in the plane.
struct circle_fit : shape_fit {
  vector centre{0, 0};         ///< the centre
  real radius = 0;             ///< above 0
  vector centre_errors{0, 0};  ///< standard errors of the coordinates of the centre
  real radius_error = 0;       ///< standard error of the radius
};

/// Fits a circle through points of the plane. Residuals are positive outside the circle.
///
/// \code
/// const vector points[] = {{5, 0}, {3, 4}, {-4, 3}, {0, -5}, {-3, -4}};
/// const tessarn::circle_fit f = tessarn::fit_circle({points, 5});
/// assert(f.state == tessarn::status::ok && f.radius == 5);
/// assert(f.centre.x * f.centre.x + f.centre.y * f.centre.y < 1e-40 && f.residual_deviation < 1e-20);
/// \endcode
///
/// The starts are the stationary circles of Taubin's algebraic fit; the lowest of the sums they lead to is the result.
///
/// Statuses: those of fit_line(); `too_few_points` and `too_few_distinct` below three; `collinear`; `not_determined`
/// when a line fits at least as well as any circle, or when several circles fit equally well; `not_converged` when
/// the search did not end in the steps that were allowed; `out_of_range`. The parameters are given with `ok` alone.
[[nodiscard]] TESSARN_API circle_fit fit_circle(plane_points points, const shape_options& options = {});

/// A sphere.
struct sphere_fit : shape_fit {
  vector3d centre{0, 0, 0};         ///< the centre
  real radius = 0;                  ///< above 0
  vector3d centre_errors{0, 0, 0};  ///< standard errors of the coordinates of the centre
  real radius_error = 0;            ///< standard error of the radius
};

/// Fits a sphere through points of space. Residuals are positive outside the sphere.
///
/// \code
/// const vector3d points[] = {{4, 2, 3}, {-2, 2, 3}, {1, 5, 3}, {1, -1, 3}, {1, 2, 6}, {1, 2, 0}};
/// const tessarn::sphere_fit f = tessarn::fit_sphere({points, 6});
/// assert(f.state == tessarn::status::ok && f.radius == 3);
/// assert(f.centre.x == 1 && f.centre.y == 2 && f.centre.z == 3);
/// \endcode
///
/// Statuses: those of fit_circle(), with `too_few_points` and `too_few_distinct` below four, `coplanar` besides
/// `collinear`, and `not_determined` when a plane fits at least as well as any sphere.
[[nodiscard]] TESSARN_API sphere_fit fit_sphere(space_points points, const shape_options& options = {});

/// A cylinder without ends.
struct cylinder_fit : shape_fit {
  vector3d point{0, 0, 0};             ///< the point of the axis that is nearest to the centroid of the points
  vector3d direction{0, 0, 0};         ///< of the axis, of length 1; its component of largest magnitude is positive
  real radius = 0;                     ///< above 0
  vector3d point_errors{0, 0, 0};      ///< standard errors of the coordinates of the point
  vector3d direction_errors{0, 0, 0};  ///< standard errors of the components of the direction
  real radius_error = 0;               ///< standard error of the radius
};

/// Fits a cylinder through points of space. Residuals are positive outside the cylinder.
///
/// \code
/// const vector3d points[] = {{5, 0, 0}, {3, 4, 1}, {-4, 3, 2}, {0, -5, 3}, {-3, -4, 4}, {4, -3, 5}, {0, 5, 6}};
/// const tessarn::cylinder_fit f = tessarn::fit_cylinder({points, 7});
/// assert(f.state == tessarn::status::ok && f.radius == 5 && f.direction.z == 1);
/// assert(f.largest_residual < 1e-20 && f.points_used == 7 && f.unknowns == 5);
/// \endcode
///
/// The starts are algebraic circles across 49 directions all over the half sphere; the search goes on from those with
/// the lowest sums: 64 for few points, and 12 from 500 points on. The sum of a cylinder can have several minima even
/// for good points, and the lowest of those found is the result.
///
/// Statuses: those of fit_sphere(), with `too_few_points` and `too_few_distinct` below six, since through five points
/// go up to six cylinders. The corners of a cube, which lie on three cylinders, are `not_determined`.
[[nodiscard]] TESSARN_API cylinder_fit fit_cylinder(space_points points, const shape_options& options = {});

}  // namespace tessarn
