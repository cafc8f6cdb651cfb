/// \file
/// Least-squares fits of polynomials and surfaces that tell what they are worth.
///
/// A fit works in doubled precision (about 106 bits) about a centre and with a scale of its own, so that polynomials of
/// degree 10 keep their digits where the normal equations in double precision have none left. It takes the numbers of
/// the caller as they are: no abscissa is a marker. Results have the same bits everywhere. Nothing is thrown but
/// std::bad_alloc.
///
/// Weights act on residuals: a fit makes the sum of (w (y - p(x)))^2 smallest, as hyperbinom::create does. They are
/// proportional to 1 / (standard deviation of the ordinate).
#pragma once

#include "tessarn/poly.h"
#include "tessarn/status.h"
#include "tessarn/views.h"

namespace tessarn {

/// Which powers of x a polynomial may have.
enum class powers : int {
  all,               ///< 1, x, x^2, ...
  no_constant,       ///< x, x^2, x^3, ...: through the origin
  odd,               ///< x, x^3, x^5, ...
  constant_and_odd,  ///< 1, x, x^3, x^5, ..., as binom::createtan
};

/// The options of a fit of a polynomial.
struct fit_options {
  powers which = powers::all;  ///< the coefficients of the other powers are 0
  column_view weights;         ///< one weight for each point, 0 or positive; none: all weights are 1
  column_view fixed;           ///< none, or a value for each coefficient, the constant first; NaN: is to be fitted
  bool leave_out_not_finite = false;  ///< leave points with a NaN or an infinity out, instead of answering `not_finite`
};

/// A value of a fitted polynomial, and how far it may be off.
struct prediction {
  real value;        ///< p(x)
  real mean;         ///< half of the interval for the curve itself
  real observation;  ///< half of the interval for one further observation of weight 1
};

/// A fitted polynomial. With q unknowns and n points that have a weight, the residual variance is
/// sum (w (y - p))^2 / (n - q), and the covariance of the coefficients that times the inverse of the normal matrix.
/// Where n = q no deviation can be told: deviations, errors and covariance are infinite.
struct polynomial_fit {
  status state = status::no_points;
  real centre = 0;                          ///< p(x) = sum of coefficients[k] ((x - centre) / scale)^k
  real scale = 1;                           ///< a power of two
  mat<long double> coefficients;            ///< about the centre, a column; empty unless the state is `ok`
  mat<long double> standard_errors;         ///< of these coefficients, a column; 0 for fixed ones
  mat<long double> covariance;              ///< of these coefficients
  status powers_state = status::no_points;  ///< `out_of_range` when a coefficient of a power of x is too large
  mat<long double> of_powers;               ///< the coefficients of 1, x, x^2, ..., a column
  mat<long double> of_powers_errors;        ///< their standard errors, a column
  ulong points_used = 0;                    ///< points with a weight above 0
  ulong points_left_out = 0;                ///< points that are not finite or have a weight of 0
  ulong unknowns = 0;                       ///< coefficients that were fitted
  real residual_deviation = 0;              ///< the residual standard deviation
  real r_squared = 0;             ///< 1 - sum (w r)^2 / sum (w (y - mean))^2; the mean counts as 0 without a constant
  real largest_residual = 0;      ///< y - p(x) where it is largest in magnitude, with its sign
  ulong largest_at = 0;           ///< the point it belongs to
  real reciprocal_condition = 0;  ///< an estimate for the columns 1, t, t^2, ... of t = (x - centre) / scale

  /// p(x), from the coefficients about the centre; 0 without coefficients.
  [[nodiscard]] TESSARN_API real value(real x) const;
  /// p(x) with intervals of `factor` standard deviations. For an interval of a given confidence, factor is that
  /// quantile of Student's distribution for n - q degrees of freedom: for 95 %, 1.96 for very many and 2.23 for ten.
  [[nodiscard]] TESSARN_API prediction predict(real x, real factor) const;
  /// The polynomial in powers of x. Far from the centre of the data its evaluation loses digits that value() keeps.
  [[nodiscard]] TESSARN_API binom expanded() const;
};

/// Fits a polynomial with so many coefficients, its degree plus one, through points of the plane.
///
/// \code
/// const vector points[] = {{0, 1}, {1, 3}, {2, 7}, {3, 13}};   // 1 + x + x^2
/// const tessarn::polynomial_fit f = tessarn::fit_polynomial({points, 4}, 3);
/// assert(f.state == tessarn::status::ok && f.of_powers.get(0, 2) == 1);
/// assert(f.value(10) == 111 && f.expanded().func(10) == 111);
/// \endcode
///
/// Statuses: `no_unknowns`, `sizes_differ` (columns, weights or fixed values of other sizes), `bad_option`,
/// `not_finite`, `bad_weight`, `no_points`, `too_few_points`, `too_few_distinct` abscissas, `nearly_singular` when the
/// columns have a condition above about 1e12 even about the centre, `out_of_range` when the abscissas span more than
/// the range of a real or less than 1e-290, or a result is too large. Coefficients are given with `ok` alone.
[[nodiscard]] TESSARN_API polynomial_fit fit_polynomial(plane_points points, ulong coefficients,
                                                        const fit_options& options = {});

/// The options of a fit of a surface.
struct surface_options {
  bool total_degree = false;          ///< only the terms x^i y^j with i + j < grade, instead of all with i, j < grade
  column_view weights;                ///< one weight for each point, 0 or positive; none: all weights are 1
  bool leave_out_not_finite = false;  ///< leave points with a NaN or an infinity out, instead of answering `not_finite`
};

/// A fitted surface z = p(x, y). Tables hold the coefficient of the powers i and j at grade j + i, as hyperbinom does,
/// in a column; deviations and errors are formed as for polynomial_fit.
struct surface_fit {
  status state = status::no_points;
  ulong grade = 0;
  /// p = sum of coefficients ((x - centre_x) / scale_x)^i ((y - centre_y) / scale_y)^j
  real centre_x = 0, centre_y = 0;
  real scale_x = 1, scale_y = 1;            ///< powers of two
  mat<long double> coefficients;            ///< about the centre; empty unless the state is `ok`
  mat<long double> standard_errors;         ///< of these coefficients; 0 for terms that were not asked for
  mat<long double> covariance;              ///< of these coefficients
  status powers_state = status::no_points;  ///< `out_of_range` when a coefficient of powers of x and y is too large
  mat<long double> of_powers;               ///< the coefficients of x^i y^j
  mat<long double> of_powers_errors;        ///< their standard errors
  ulong points_used = 0;                    ///< points with a weight above 0
  ulong points_left_out = 0;                ///< points that are not finite or have a weight of 0
  ulong unknowns = 0;                       ///< coefficients that were fitted
  real residual_deviation = 0;              ///< the residual standard deviation
  real r_squared = 0;                       ///< 1 - sum (w r)^2 / sum (w (z - mean))^2
  real largest_residual = 0;                ///< z - p(x, y) where it is largest in magnitude, with its sign
  ulong largest_at = 0;                     ///< the point it belongs to
  real reciprocal_condition = 0;            ///< an estimate for the columns of the terms about the centre

  /// p(x, y), from the coefficients about the centre; 0 without coefficients.
  [[nodiscard]] TESSARN_API real value(real x, real y) const;
  /// p(x, y) with intervals of `factor` standard deviations, as polynomial_fit::predict.
  [[nodiscard]] TESSARN_API prediction predict(real x, real y, real factor) const;
  /// The polynomial in powers of x and y.
  [[nodiscard]] TESSARN_API hyperbinom expanded() const;
};

/// Fits a surface of a grade, the number of powers of each variable, through points of space.
///
/// Statuses as for fit_polynomial(), with `too_few_distinct` for places (x, y), and with `rank_deficient` when the
/// places do not determine the terms, as points on one line do not determine a plane. A grade above 30 is a
/// `bad_option`.
[[nodiscard]] TESSARN_API surface_fit fit_surface(space_points points, ulong grade,
                                                  const surface_options& options = {});

/// How a robust fit weighs a residual of u robust standard deviations.
enum class robust_weights : int {
  huber,  ///< 1 up to |u| = 1.345, and 1.345 / |u| beyond: far points count less, and never nothing
  tukey,  ///< (1 - (u / 4.685)^2)^2 up to |u| = 4.685, and 0 beyond: far points do not count
};

/// The options of a robust fit.
struct robust_options {
  robust_weights weigh_by = robust_weights::tukey;
  fit_options fit;          ///< as for fit_polynomial()
  ulong most_rounds = 200;  ///< reweightings at most
};

/// A polynomial that was fitted with outliers present.
struct robust_fit {
  status state = status::no_points;  ///< that of the fit, or `not_converged`: the fit of the last round is there then
  polynomial_fit fit;                ///< with the last weights; its deviations and errors take these weights as given
  mat<long double> weights;          ///< of each point, 0 to 1, a column: the factor of its squared residual
  real scale = 0;                    ///< the robust standard deviation: the median of |w residual| over 0.6745
  ulong rounds = 0;                  ///< reweightings that were done
};

/// Fits a polynomial with iteratively reweighted least squares (P. Holland, R. Welsch, Robust regression using
/// iteratively reweighted least-squares, 1977, whose constants give 95 % efficiency for normal errors): first with
/// Huber's weights and the scale of each round, then for Tukey's weights on from there with the scale of Huber's fit.
/// It resists outliers in the ordinates as long as they are a minority everywhere; an outlier far away in x pulls the
/// curve as in any fit of this kind.
///
/// Statuses as for fit_polynomial(), of the first and of every later round: `too_few_points` also when Tukey's weights
/// leave too few points; `not_converged`.
[[nodiscard]] TESSARN_API robust_fit fit_robust(plane_points points, ulong coefficients,
                                                const robust_options& options = {});

/// The options of a robust fit of a surface.
struct robust_surface_options {
  robust_weights weigh_by = robust_weights::tukey;
  surface_options fit;      ///< as for fit_surface()
  ulong most_rounds = 200;  ///< reweightings at most
};

/// A surface that was fitted with outliers present; the fields are those of robust_fit.
struct robust_surface_fit {
  status state = status::no_points;
  surface_fit fit;
  mat<long double> weights;
  real scale = 0;
  ulong rounds = 0;
};

/// Fits a surface as the other fit_robust() fits a polynomial. It resists outliers in the heights.
[[nodiscard]] TESSARN_API robust_surface_fit fit_robust(space_points points, ulong grade,
                                                        const robust_surface_options& options = {});

}  // namespace tessarn
