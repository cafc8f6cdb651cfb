/// \file
/// The zeros, extreme points, inflections and extremes of the curvature of a polynomial: all of them in an interval,
/// each proved.
///
/// The coefficients are taken as the exact numbers that they are, and every sign that decides is computed in integers
/// of any length. So nothing is missed between samples, and nothing is found that is not there; a double zero is told
/// from two near ones and from none. There is no step to choose and no accuracy to ask for: each place comes with the
/// two neighbouring doubles that enclose it, or with the double that it is. A fitted polynomial has rounded
/// coefficients: the answers are exact for these, not for the data.
///
/// Method: multiple zeros are separated by the subresultant chain of p and p' (G. Collins, Subresultants and reduced
/// polynomial remainder sequences, 1967); each zero is isolated by Descartes' rule of signs on Bernstein coefficients
/// (J. Lane, R. Riesenfeld, Bounds on a polynomial, 1981; F. Rouillier, P. Zimmermann, Efficient isolation of
/// polynomial's real roots, 2004), and enclosed by exact signs at doubles. Results have the same bits everywhere.
/// Nothing is thrown but std::bad_alloc.
#pragma once

#include "tessarn/poly.h"
#include "tessarn/status.h"
#include "tessarn/views.h"

namespace tessarn {

/// One place of curve_points.
struct curve_point {
  real lower;          ///< the place is strictly between lower and upper, which are neighbouring doubles,
  real upper;          ///< or at both, when they are equal
  real at;             ///< the double nearest to it; the finite one of lower and upper where the other is infinite
  ulong multiplicity;  ///< of the zero that makes it one, see the functions
  ulong sharing;  ///< the places strictly between lower and upper: 1 unless doubles cannot tell several from each other
  int change;     ///< +1, -1, 0: that function rises through zero, falls through it, does not change its sign
  real value;     ///< p(at), correctly rounded, infinite where too large; 0 of zeros()
  real value_error;  ///< the value of p at the true place is within this of value
  real curvature;    ///< p'' / (1 + p'^2)^(3/2) at `at`, positive where the curve bends to the left
  real radius;       ///< 1 / |curvature|, infinite where that is 0

  /// Of extremes() and curvature_extremes().
  bool is_minimum() const noexcept { return change > 0; }
  bool is_maximum() const noexcept { return change < 0; }
};

/// Places of a curve in ascending order, as columns of equal height; operator[] gathers one place from them.
///
/// \code
/// const binom p{-6, 11, -6, 1};                                  // (x - 1) (x - 2) (x - 3)
/// const tessarn::curve_points zeros = tessarn::zeros(p, 1.5, 9);
/// assert(zeros.state == tessarn::status::ok && zeros.count == 2);
/// assert(zeros[0].at == 2 && zeros[0].lower == zeros[0].upper && zeros[1].at == 3);
/// const tessarn::curve_points turns = tessarn::extremes(p, 0, 9);
/// assert(turns.count == 2 && turns[0].is_maximum() && turns[1].is_minimum());
/// assert(turns[0].lower < turns[0].upper);                        // 2 - 1/sqrt(3) is no double
/// \endcode
struct curve_points {
  status state = status::no_unknowns;  ///< without `ok` there are no places, and the columns are empty
  ulong count = 0;                     ///< the number of places
  mat<long double> lower, upper, at, multiplicity, sharing, change;  ///< as in curve_point
  mat<long double> value, value_error;                               ///< empty of zeros()
  mat<long double> curvature, radius;                                ///< of curvature_extremes() alone

  ulong size() const noexcept { return count; }
  /// Place i; i must be below count.
  curve_point operator[](ulong i) const noexcept {
    return {entry(lower, i),
            entry(upper, i),
            entry(at, i),
            static_cast<ulong>(entry(multiplicity, i)),
            static_cast<ulong>(entry(sharing, i)),
            static_cast<int>(entry(change, i)),
            entry(value, i),
            entry(value_error, i),
            entry(curvature, i),
            entry(radius, i)};
  }

 private:
  static real entry(const mat<long double>& column, ulong i) noexcept {
    return i < column.getHeight() ? column.getData()[i] : 0;
  }
};

/// The zeros of p in [a, b], the ends included, each once, with its multiplicity.
///
/// \code
/// const tessarn::real p[] = {2, -3, 0, 1};                        // (x - 1)^2 (x + 2), the constant first
/// const tessarn::curve_points z = tessarn::zeros({p, 4}, -5, 5);
/// assert(z.count == 2 && z[0].at == -2 && z[1].at == 1);
/// assert(z[1].multiplicity == 2 && z[1].change == 0);             // touches zero without crossing it
/// assert(tessarn::zeros(binom{2, 0, 1}, -5, 5).count == 0);       // x^2 + 2 has none: proved
/// \endcode
///
/// Infinite a and b mean that there is no end on that side; a zero beyond the largest double then has an infinite
/// `upper`, on the negative side an infinite `lower`. `change` is that of p.
///
/// Statuses: `not_finite` for a coefficient that is not finite, or a or b that is NaN; `bad_interval` for a > b, or an
/// interval at infinity alone; `identically_zero` for the polynomial that is zero everywhere, also the one without
/// coefficients; `too_much_work` for a degree above 250, and where the proof would take more than 10^9 operations on
/// 32-bit digits: then nothing is known. A degree of about 100 comes there when the coefficients are of very different
/// magnitudes, or when there are multiple zeros. A constant that is not zero has no zeros: `ok`.
///
/// Cost: for n coefficients O(n^2) sums of integers for each halving of an interval, and O(n) products for each sign at
/// a double. The integers are as long as the coefficients with all their exponents: some hundreds of bits for the
/// degree 10.
[[nodiscard]] TESSARN_API curve_points zeros(column_view coefficients, real a, real b);

/// The extreme points of p in [a, b]: the places where p' changes its sign, with the value of p there.
///
/// \code
/// const tessarn::curve_points e = tessarn::extremes(binom{0, -3, 0, 1}, -2, 2);    // x^3 - 3 x
/// assert(e.count == 2 && e[0].at == -1 && e[0].is_maximum() && e[0].value == 2);
/// assert(e[1].at == 1 && e[1].is_minimum() && e[1].value == -2);
/// assert(tessarn::extremes(binom{0, 0, 0, 1}, -2, 2).count == 0);                  // x^3 has none
/// \endcode
///
/// An end of the interval is one only where p' changes its sign at this very place, never for being an end: compare
/// p(a) and p(b) with the values for the largest and smallest p in [a, b]. `multiplicity` is that of the zero of p', an
/// odd number. Statuses as for zeros(); `identically_zero` for constants, whose p' vanishes everywhere.
[[nodiscard]] TESSARN_API curve_points extremes(column_view coefficients, real a, real b);

/// The inflections of p in [a, b]: the places where p'' changes its sign, with the value of p there.
///
/// \code
/// const tessarn::curve_points i = tessarn::inflections(binom{0, 0, -3, 1}, -9, 9);  // x^3 - 3 x^2
/// assert(i.count == 1 && i[0].at == 1 && i[0].value == -2);
/// assert(i[0].change == 1);                                   // bends to the right before, to the left behind it
/// \endcode
///
/// `multiplicity` and `change` are those of the zero of p''. Statuses as for zeros(); `identically_zero` for straight
/// lines.
[[nodiscard]] TESSARN_API curve_points inflections(column_view coefficients, real a, real b);

/// The places in [a, b] where the curvature k = p'' / (1 + p'^2)^(3/2) is extreme: k' changes its sign, that is
/// p''' (1 + p'^2) - 3 p' p''^2, with p, the curvature and its radius there.
///
/// \code
/// const tessarn::curve_points k = tessarn::curvature_extremes(binom{0, 0, 2}, -1, 1);  // the parabola 2 x^2
/// assert(k.count == 1 && k[0].at == 0 && k[0].is_maximum());
/// assert(k[0].curvature == 4 && k[0].radius == 0.25);
/// \endcode
///
/// Maximum and minimum are those of the magnitude |k|, whatever the side to which the curve bends: at a maximum the
/// curve is sharpest and the radius smallest, at a minimum flattest. x and y are in one unit, and the curvature in 1 /
/// that unit. Inflections, where the radius is infinite, are among them only where k touches 0 without crossing it.
/// curvature and radius are within a few units in the last place of those at `at`; value_error holds as for the other
/// functions. `multiplicity` is that of the zero of the numerator above, `change` the sign change of the derivative of
/// |k|.
///
/// The numerator has the degree 3 n - 5 for a polynomial of degree n, so n may be at most 85. Statuses as for zeros();
/// `identically_zero` for straight lines.
[[nodiscard]] TESSARN_API curve_points curvature_extremes(column_view coefficients, real a, real b);

}  // namespace tessarn
