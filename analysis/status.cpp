// The sentences of the statuses.
#include "tessarn/status.h"

namespace tessarn {

const char* to_string(status s) noexcept {
  switch (s) {
    case status::ok: return "The result holds.";
    case status::no_points: return "There are no points.";
    case status::no_unknowns: return "No unknowns are asked for.";
    case status::sizes_differ: return "The sizes of the arguments do not belong together.";
    case status::not_finite: return "An argument holds a NaN or an infinity.";
    case status::bad_option: return "An option has a value outside its range.";
    case status::bad_weight: return "A weight is negative, or all weights are zero.";
    case status::too_few_points: return "There are fewer points with a weight than unknowns.";
    case status::too_few_distinct: return "There are fewer distinct places than unknowns.";
    case status::rank_deficient: return "The columns depend on each other, so the solution is not determined.";
    case status::singular: return "The matrix is singular.";
    case status::nearly_singular:
      return "The problem is so nearly singular that no bound of the error could be proved.";
    case status::out_of_range: return "A result is too large for a real number.";
    case status::not_converged: return "The iteration did not converge in the steps that were allowed.";
    case status::collinear: return "The points lie on one line, as far as their digits tell.";
    case status::not_determined: return "The data do not determine the result: others fit as well.";
    case status::bad_interval: return "The interval ends before it begins, or lies at infinity.";
    case status::identically_zero: return "The function is zero everywhere, so that its zeros are not single places.";
    case status::too_much_work: return "The proof would take more work than is allowed.";
    case status::coplanar: return "The points lie in one plane, as far as their digits tell.";
    case status::other_rounding: return "The thread does not round to nearest, so that nothing can be proved.";
  }
  return "This is no status.";
}

}  // namespace tessarn
