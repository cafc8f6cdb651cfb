// Derivatives and curvature of a polynomial, at one abscissa and at blocks of them; the members and the searches share
// them, and both ways give the same bits.
#pragma once

#include "core/storage.h"
#include "poly/kernels/kernels.h"
#include "tessarn/scalar.h"

namespace tessarn::detail {

// The coefficients of a polynomial, ascending.
struct coefficients {
  const real* cof;
  slong n;
};

// i (i-1) ... (i-k+1) in 32 bits; for very long polynomials it wraps.
slong falling_factorial(slong i, unsigned k) noexcept;

// The k-th derivative, k = 1 .. 4: the sum of (x^(i-k) F(i)) c_i in ascending i with correctly rounded
// powers, F the falling factorial in wrapping 32-bit integers.
real derivative_at(coefficients p, unsigned k, real x) noexcept;

// The first three derivatives, which share their powers.
struct derivatives {
  real first, second, third;
};
derivatives derivatives_at(coefficients p, real x) noexcept;

// p'' / (1 + p'^2)^(3/2), and its derivative by x.
real curvature(const derivatives& d) noexcept;
real curvature_derivative(const derivatives& d) noexcept;

// The functions of a curve at a block of point_block abscissas, by the kernels. They give the bits of the functions
// above.

class block_values {
 public:
  explicit block_values(coefficients p) noexcept : p_(p) {}
  void operator()(const double* x, double* y) const;

 private:
  coefficients p_;
};

// The k-th derivative. The factors F(i) are formed once for all blocks.
class block_derivative {
 public:
  block_derivative(coefficients p, unsigned k);
  void operator()(const double* x, double* y) const;

 private:
  coefficients p_;
  unsigned k_;
  real_array factors_;
};

// The curvature, or with derivative set its derivative.
class block_curvature {
 public:
  block_curvature(coefficients p, bool derivative);
  void operator()(const double* x, double* y) const;

 private:
  coefficients p_;
  bool derivative_;
  real_array factors_;
};

}  // namespace tessarn::detail
