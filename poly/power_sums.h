// The sums of which the normal equations of the polynomial fits consist.
#pragma once

#include "core/storage.h"
#include "poly/kernels.h"

namespace tessarn::detail {

// power(e) = sum of x^e for e below exponents, and moment(e) = sum of x^e y for e below ordinates <= exponents, over
// the points in the order in which they are added: correctly rounded powers, each sum from +0.0. Equal exponents
// share one sum. The points pass through a block of fixed size.
class power_sums {
 public:
  power_sums(unsigned exponents, unsigned ordinates);
  // Adds the point if it is accepted.
  void add(real x, real y, bool accepted) {
    x_[filled_] = static_cast<double>(x);
    y_[filled_] = static_cast<double>(y);
    filled_ += accepted;
    if (filled_ == point_block) flush();
  }
  // To be called after the last point.
  void flush();
  real power(unsigned e) const { return sums_[e]; }
  real moment(unsigned e) const { return sums_[exponents_ + e]; }

 private:
  const poly_kernels& kernels_ = poly();
  const unsigned exponents_, ordinates_;
  real_array sums_;
  real_array powers_;
  std::size_t filled_ = 0;
  double x_[point_block], y_[point_block];
};

// Whether the chains of powers of a block of abscissas are safe up to the given exponent (core/power.h).
bool chains_are_safe(const double* x, unsigned highest) noexcept;

// powers[e * point_block + i] = x[i]^e for a block of abscissas, whatever their range, and e below exponents.
void block_powers(const double* x, unsigned exponents, double* powers);

}  // namespace tessarn::detail
