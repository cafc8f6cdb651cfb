// The neighbouring doubles about an isolated zero.
#pragma once

#include "analysis/isolation.h"

namespace tessarn::analysis {

// A first guess comes from the polynomial in doubles, which may be wrong; the signs at doubles that decide are exact.
class refinement {
 public:
  // For positive zeros of p, which must outlive this object.
  explicit refinement(const polynomial& p);
  // Fills in the doubles about the zero, and says so where the zero is a double.
  void operator()(isolated_zero& z) const;

 private:
  double guess(double low, double high, int sign_low) const noexcept;
  void narrow(isolated_zero& z, int sign_low) const;

  const polynomial& p_;
  sequence<double> rounded_;  // the coefficients times a power of two, the largest near 1
};

}  // namespace tessarn::analysis
