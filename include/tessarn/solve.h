/// \file
/// Linear systems, inverses and determinants that tell what they are worth.
///
/// Every result has a status, an estimate of the condition, and bounds of its error. The bounds are proved, not
/// estimated: for the matrix exactly as given, the true result lies within the bound of the computed one; where nothing
/// can be proved, the bound is infinite and the status is not `ok`. Up to condition numbers of about 1e11 a result is a
/// real next to the true one, and a bound can be proved up to about 1e27, of least squares up to about 1e13.
///
/// All take O(n^3) operations. Square systems are factorised in double precision, and the result is corrected by a
/// residual as good as in doubled precision (about 106 bits); that takes a few times as long as a result without a
/// bound. Where it proves too little (large condition numbers, the earlier the more rows there are) the factors are in
/// doubled precision, and each of their operations takes some ten times as long.
///
/// Results have the same bits everywhere. Nothing is thrown but std::bad_alloc.
#pragma once

#include "tessarn/status.h"
#include "tessarn/views.h"

namespace tessarn {

/// The solution of a linear system.
struct linear_solution {
  status state = status::no_unknowns;
  mat<long double> x;             ///< the solution, a column; empty unless the status says that there is one
  mat<long double> error;         ///< |true x - x| is at most this, entry by entry; infinite where nothing is proved
  real reciprocal_condition = 0;  ///< an estimate: near 1 well conditioned, near 1e-16 hardly determined
  ulong rank = 0;                 ///< the number of independent columns, as far as doubled precision tells
  real residual = 0;              ///< the length of b - A x, of least_squares() alone, as are those that follow
  real residual_deviation = 0;    ///< residual / sqrt(rows - columns); infinite for as many columns as rows
  mat<long double>
      standard_errors;  ///< of the entries of x, a column: sqrt of the diagonal of residual_deviation^2 / (A'A)
};

/// The solution of a linear system of complex numbers.
struct complex_solution {
  status state = status::no_unknowns;
  mat<cplx> x;                    ///< the solution, a column; empty unless the status says that there is one
  mat<long double> error;         ///< the real and the imaginary part of x are off by at most this, entry by entry
  real reciprocal_condition = 0;  ///< as for real systems
};

/// The inverse of a square matrix.
struct inverse_matrix {
  status state = status::no_unknowns;
  mat<long double> inverse;       ///< empty unless the status says that there is one
  mat<long double> error;         ///< |true inverse - inverse| is at most this, entry by entry
  real reciprocal_condition = 0;  ///< as for systems
};

/// The inverse of a square complex matrix.
struct complex_inverse_matrix {
  status state = status::no_unknowns;
  mat<cplx> inverse;              ///< empty unless the status says that there is one
  mat<long double> error;         ///< the real and the imaginary part are off by at most this, entry by entry
  real reciprocal_condition = 0;  ///< as for systems
};

/// The determinant of a square matrix.
struct determinant_value {
  status state = status::no_unknowns;
  real value = 0;      ///< the determinant
  real error = 0;      ///< |true determinant - value| is at most this
  real fraction = 0;   ///< also for determinants beyond the range of a real: fraction * 2^exponent, the fraction
  slong exponent = 0;  ///< between 1 and 2 in magnitude, or 0
  real reciprocal_condition = 0;  ///< as for systems; 0 where the matrix is singular or nearly so
};

/// Solves A x = b for a square A by LU factorisation with partial pivoting of the scaled matrix, and refinement until
/// the bound is small beside x.
///
/// \code
/// const mat<long double> a{{0, 2}, {1, 1}}, b{{4}, {5}};
/// const tessarn::linear_solution s = tessarn::solve(a, b);
/// assert(s.state == tessarn::status::ok && s.x.get(0, 0) == 3 && s.x.get(0, 1) == 2);
/// assert(s.error.get(0, 0) < 1e-15);
/// \endcode
///
/// Statuses: `no_unknowns` for a matrix without entries; `sizes_differ`; `not_finite`; `singular` when a column of
/// pivots vanishes, without x; `nearly_singular` with an x whose error is not known; `out_of_range` when an entry of x
/// is too large, without x.
[[nodiscard]] TESSARN_API linear_solution solve(matrix_view a, column_view b);

/// Solves A x = b for complex numbers, with pivoting: as the real system of twice the size for the parts of x.
[[nodiscard]] TESSARN_API complex_solution solve(complex_view a, complex_view b);

/// The x that makes the sum of the squares of b - A x smallest, for any numbers of rows and columns.
///
/// The normal equations are formed and solved in doubled precision after the columns were scaled by powers of two, and
/// the solution is refined by residuals in doubled precision. That gives all digits of a double up to condition numbers
/// of about 1e14, without the loss of half of the digits that normal equations in double precision have.
///
/// A column counts as dependent on those chosen before it when the part of it that is orthogonal to them is smaller by
/// about 1e-14; the largest part is chosen each time. With dependent columns the status is `rank_deficient`, and x is
/// the solution with zeros for the dependent columns: one of many that reach the smallest sum. Its error is infinite.
///
/// Statuses besides: `no_unknowns` without columns; `sizes_differ`; `not_finite`; `nearly_singular` with an x whose
/// error is not known; `out_of_range` without x.
[[nodiscard]] TESSARN_API linear_solution least_squares(matrix_view a, column_view b);

/// The inverse from the pivoted factorisation, O(n^3). Statuses as for solve().
[[nodiscard]] TESSARN_API inverse_matrix inverse(matrix_view a);
[[nodiscard]] TESSARN_API complex_inverse_matrix inverse(complex_view a);

/// The determinant from the pivoted factorisation, O(n^3); of the empty matrix 1.
///
/// The bound of the error holds for singular matrices, too: the status is then `ok`, the value 0 or tiny, and the error
/// at least as large. When error < |value|, the matrix is proved to be regular.
///
/// Statuses: `sizes_differ`; `not_finite`; `out_of_range` when the determinant is too large for a real: value and error
/// are infinite then, fraction and exponent hold.
[[nodiscard]] TESSARN_API determinant_value determinant(matrix_view a);

}  // namespace tessarn
