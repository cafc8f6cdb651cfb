/// \file
/// The one answer that every call of the second layer gives: whether the result holds, and if not, why.
///
/// The members of the classes answer by their documented special results, an empty matrix or an unchanged right-hand
/// side. The functions of tessarn/solve.h, fit.h, shapes.h, curve.h, align.h and flat.h return a structure that begins
/// with a status instead. They throw nothing but std::bad_alloc.
#pragma once

#include "tessarn/scalar.h"

namespace tessarn {

/// Whether a result holds. `ok` alone says that every field of the result has its documented meaning; what the fields
/// hold with another status, each function says.
enum class status : int {
  ok,                ///< the result holds
  no_points,         ///< there are no points, or none is left
  no_unknowns,       ///< nothing is asked for: no coefficients, no columns
  sizes_differ,      ///< arguments have sizes that do not belong together
  not_finite,        ///< an argument holds a NaN or an infinity
  bad_option,        ///< an option has a value outside its range
  bad_weight,        ///< a weight is negative, or all are zero
  too_few_points,    ///< fewer points with a weight than unknowns
  too_few_distinct,  ///< fewer distinct places than unknowns
  rank_deficient,    ///< columns depend on each other, as far as doubled precision tells
  singular,          ///< the matrix is singular, as far as doubled precision tells
  nearly_singular,   ///< a solution was computed, but no bound of its error could be proved
  out_of_range,      ///< a result is too large for a real
  not_converged,     ///< the steps that were allowed did not reach the end
  collinear,         ///< the points lie on one line, as far as their digits tell
  not_determined,    ///< other values of what was asked for fit as well
  bad_interval,      ///< an interval ends before it begins, or lies at infinity
  identically_zero,  ///< a function is zero everywhere, so that its zeros are not single places
  too_much_work,     ///< a proof would take more work than is allowed
  coplanar,          ///< the points lie in one plane, as far as their digits tell
  other_rounding,    ///< the thread does not round to nearest, so that nothing can be proved
};

/// A sentence in plain words, without a line end. The text lives as long as the library is loaded.
[[nodiscard]] TESSARN_API const char* to_string(status s) noexcept;

}  // namespace tessarn
