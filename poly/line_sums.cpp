// The sums of a straight-line fit, continued point by point.
#include "poly/line_sums.h"

#include "core/nan_rule.h"
#include "matrix/linear_system.h"
#include "poly/power_sums.h"

namespace tessarn::detail {

void line_sums::add(const vector& point) noexcept {
  const auto x = static_cast<double>(point.x), y = static_cast<double>(point.y);
  if (x == -1 || x != x) return;
  const std::size_t k = count_++ % partial_sums;
  x_[k] += x;
  square_[k] += x * x;
  y_[k] += y;
  product_[k] += x * y;
}

// Solves the two normal equations that a fit with two coefficients has.
real line_sums::slope() const {
  linear_system system(2);
  system.row(0)[0] = static_cast<real>(count_);
  system.row(0)[1] = system.row(1)[0] = nan_to_zero(tree_sum(x_));
  system.row(1)[1] = nan_to_zero(tree_sum(square_));
  system.right()[0] = nan_to_zero(tree_sum(y_));
  system.right()[1] = nan_to_zero(tree_sum(product_));
  system.solve();
  return system.right()[1];
}

}  // namespace tessarn::detail
