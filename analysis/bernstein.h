// Polynomials on an interval as sums of Bernstein polynomials with integer coefficients.
//
// p(t) = sum of b_k C(n, k) t^k (1 - t)^(n - k) for t from 0 to 1, up to a positive factor. The number of changes of
// sign among the b_k, zeros left out, is the number of zeros with 0 < t < 1, each as often as its multiplicity, or
// exceeds it by an even number: Descartes' rule after a change of the variable (J. Lane, R. Riesenfeld, Bounds on a
// polynomial, 1981). No change: no zero; one change: exactly one.
#pragma once

#include "analysis/exact_polynomial.h"

namespace tessarn::analysis {

using bernstein = sequence<integer>;

// The coefficients c_k k! (n - k)!, from which the sums of bernstein_sums() are those above: C(n, k) b_k n! is the sum
// of C(n - i, k - i) c_i n!, and C(n - i, k - i) / C(n, k) = C(k, i) / C(n, i).
polynomial weigh(polynomial p);
// The coefficients on (0, 2^k) from weighted ones.
bernstein on_power_of_two(const polynomial& weighted, int k);
// The coefficients on (low, high).
bernstein on_interval(const polynomial& p, const dyadic& low, const dyadic& high);

int changes_of_sign(const bernstein& b) noexcept;
// The sign of p immediately to the right of the left end.
int first_sign(const bernstein& b) noexcept;
// Makes b the coefficients on the right half, and returns those on the left half (P. de Casteljau, 1959).
bernstein split(bernstein& b);

}  // namespace tessarn::analysis
