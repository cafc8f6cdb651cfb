// The line fit of a growing number of points: the sums of the fit with two coefficients go on from point to point.
#pragma once

#include "poly/kernels/kernels.h"
#include "tessarn/vectors.h"

namespace tessarn::detail {

// After any number of points slope() is coefficient 1 of binom::create with these points and two coefficients, to the
// bit: the fit adds the accepted point k to partial sum k mod 8, from +0.0, and so do these sums.
class line_sums {
 public:
  // A point whose x is the marker -1 or NaN takes no part.
  void add(const vector& point) noexcept;
  real slope() const;

 private:
  std::size_t count_ = 0;
  double x_[partial_sums] = {}, square_[partial_sums] = {}, y_[partial_sums] = {}, product_[partial_sums] = {};
};

}  // namespace tessarn::detail
