// Square systems that the library sets up for itself: normal equations.
#pragma once

#include "core/storage.h"
#include "core/workspace.h"
#include "matrix/elimination.h"

namespace tessarn::detail {

// n equations with one right-hand side. Up to 16 unknowns nothing is allocated.
class linear_system {
 public:
  // Fails as a matrix of n x n entries does where 32 bits do not count them.
  explicit linear_system(ulong n) : n_(n), entries_(length_for(n)) {}
  linear_system(const linear_system&) = delete;

  std::size_t size() const noexcept { return n_; }
  // The n coefficients of equation r.
  real* row(std::size_t r) noexcept { return entries_.data() + n_ * r; }
  // The right-hand side, and then the solution.
  real* right() noexcept { return entries_.data() + n_ * n_; }
  // Leaves the right-hand side as it is when a column of candidate pivots is exactly 0.
  void solve() {
    if (n_ > 0) solve_lu(entries_.data(), n_, {right(), n_, 1});
  }

 private:
  static std::size_t length_for(ulong n) {
    require_countable(n, n);
    return checked_product(n, checked_sum(n, 1));
  }

  const std::size_t n_;
  workspace<real, 16 * 17> entries_;
};

}  // namespace tessarn::detail
