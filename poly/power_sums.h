// The sums of which the normal equations of the polynomial fits consist.
#pragma once

#include "core/storage.h"
#include "poly/kernels.h"
#include "tessarn/vectors.h"

namespace tessarn::detail {

// The value of a sum from its partial sums.
inline double tree_sum(const double* s) noexcept {
  return ((s[0] + s[4]) + (s[2] + s[6])) + ((s[1] + s[5]) + (s[3] + s[7]));
}

// power(e) = sum of x^e for e below exponents, and moment(e) = sum of x^e y for e below ordinates <= exponents, over
// the points in the order in which they are added: correctly rounded powers, each sum in partial_sums from +0.0.
// Equal exponents share one sum. The points pass through a block of fixed size.
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
  // Adds point_block points at once, if none is waiting and no abscissa is the marker or a NaN; false otherwise.
  bool add_block(const vector* points, real marker) {
    static_assert(sizeof(vector) == 3 * sizeof(double), "three doubles a point, as the kernel takes them");
    if (filled_ != 0) return false;
    if (!kernels_.unpack_plane(reinterpret_cast<const double*>(points), static_cast<double>(marker), x_, y_)) return false;
    filled_ = point_block;
    flush();
    return true;
  }
  // To be called after the last point.
  void flush();
  real power(unsigned e) const { return tree_sum(sums_ + e * partial_sums); }
  real moment(unsigned e) const { return power(exponents_ + e); }

 private:
  const poly_kernels& kernels_ = poly();
  const unsigned exponents_, ordinates_;
  const std::size_t length_;
  const real_array storage_;  // two sets of sums, and powers
  double* sums_;
  double* next_;
  std::size_t filled_ = 0;
  alignas(64) double x_[point_block], y_[point_block];
};

// Whether the chains of the powers below count of a block of abscissas are safe (core/power.h), or those of 0.
bool chains_are_safe(const double* x, unsigned count) noexcept;

// powers[e * point_block + i] = x[i]^e for a block of abscissas x = powers + point_block, whatever their range, and e
// from 2 to below exponents.
void block_powers(unsigned exponents, double* powers);

}  // namespace tessarn::detail
