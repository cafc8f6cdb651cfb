// Intervals with exactly one zero each, from Descartes' rule of signs, and their refinement to neighbouring doubles.
#pragma once

#include "analysis/exact_polynomial.h"

namespace tessarn::analysis {

// A zero strictly between `low` and `high`, the only one there, or exactly at `low` when `exact`.
struct isolated_zero {
  dyadic low, high;
  bool exact = false;
  // The doubles about it: neighbours, or equal where the zero is a double; and the double nearest to it.
  double lower = 0, upper = 0, nearest = 0;

  void mirror() noexcept;
};

// The zeros of a polynomial without multiple zeros in [a, b], in ascending order; a and b may be infinite. Incomplete
// when the work was not allowed.
sequence<isolated_zero> isolate(const polynomial& square_free, double a, double b, work_allowance& work);

// Halves the interval of a zero that is not exact.
void halve(const polynomial& square_free, isolated_zero& z);

// The sign that a polynomial keeps in all of (low, high); 0 where Descartes' rule does not exclude a zero.
int constant_sign(const polynomial& p, const dyadic& low, const dyadic& high);

}  // namespace tessarn::analysis
