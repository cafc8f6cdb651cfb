// Derivatives and curvature of a polynomial at one abscissa; the searches and the members share them.
#pragma once

#include "tessarn/scalar.h"

namespace tessarn::detail {

// The coefficients of a polynomial, ascending.
struct coefficients {
  const real* cof;
  slong n;
};

// p(x) by a running power, terms in ascending order.
real value_at(coefficients p, real x) noexcept;

// The k-th derivative, k = 1 .. 4: the sum of (x^(i-k) F(i)) c_i in ascending i with correctly rounded
// powers, F the falling factorial in wrapping 32-bit integers.
real derivative_at(coefficients p, unsigned k, real x) noexcept;

// The first three derivatives, which share their powers.
struct derivatives {
  real first, second, third;
};
derivatives derivatives_at(coefficients p, real x) noexcept;

real curvature(const derivatives& d) noexcept;
real curvature_derivative(const derivatives& d) noexcept;

}  // namespace tessarn::detail
