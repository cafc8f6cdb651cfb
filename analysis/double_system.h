// Square systems by factors in double precision, with a proof that bounds the error: what is tried before doubled
// precision, and takes a hundredth of its time for large systems.
#pragma once

#include <cstddef>

#include "analysis/kernels/systems.h"
#include "analysis/scaled_system.h"
#include "core/workspace.h"

namespace tessarn::analysis {

// The entries of a square matrix in memory, rows `stride` apart.
struct rows_in_memory {
  const double* entries;
  std::size_t size, stride;
};

// A wide bound of what sums of n products of numbers near 1 lose where products or sums are subnormal numbers.
inline double tiny(std::size_t n) noexcept {
  return 4 * static_cast<double>(n) * static_cast<double>(n + 1) * 0x1p-1000;
}

// A bound, in units of 2^-106 of the magnitudes, of what a sum of n exact products in one chain loses, and a tree of
// eight such sums behind it.
inline double chain_loss(std::size_t n) noexcept {
  const double terms = static_cast<double>(n) + 3;
  return terms * std::min(terms, static_cast<double>(detail::columns_between_sums) + 6) + 40;
}

// Whether all are finite.
bool all_finite(const rows_in_memory& m);

// P A = L U of the scaled matrix A, and inverses X of both factors. R = X_U X_L P is near the inverse of A, and
//   R A - I = X_U (X_L (P A - L U) + (X_L L - I) U) + (X_U U - I)
// is bounded in O(n^2) by the backward errors of elimination and of substitution, g |L| |U|, g |X_L| |L| and g |X_U|
// |U| with g = n u / (1 - n u) (S. Oishi, S. Rump, Fast verification of solutions of matrix equations, 2002; N. Higham,
// Accuracy and Stability of Numerical Algorithms, 2002, theorems 8.5 and 9.3). The factors of the bounds are wider than
// the theorems by what the sums of the bounds lose themselves, and `tiny` is added for what numbers below the range of
// normal ones lose.
class double_system {
 public:
  // `more` matrices besides its own are for what is done with the factors: one piece of memory for all spares calls of
  // the operating system.
  explicit double_system(std::size_t n, std::size_t more = 0);

  // Scales, factorises, and inverts the factors. False for exponents too far apart to scale in one step, a pivot that
  // vanishes, or a rounding mode for which bounds do not hold.
  bool factorise(const rows_in_memory& m);

  // False when the bound of |I - R A| is not below 1/4.
  bool prove();

  // Takes another R, given transposed, with bounds of the sums of the rows of |I - R A|, the largest of which is below
  // 1/4, and the condition: what dense_inverse proves where prove() does not.
  void replace_inverse(const double* transposed, const double* departures, double reciprocal_condition);

  // The solution of the scaled system for a right-hand side of at most 1. False when refinement does not reach bounds
  // of 2^-58 of the largest unknown.
  bool solve(const numbers<double>& right, bounded_solution& s);

  std::size_t size() const noexcept { return size_; }
  std::size_t stride() const noexcept { return stride_; }
  const double* scaled_entries() const noexcept { return a_; }
  const double* factors() const noexcept { return factors_; }  // L below the diagonal, and U
  double* lower() const noexcept { return lower_; }            // the transposed inverses
  double* upper() const noexcept { return upper_; }
  double* room(std::size_t i) const noexcept { return room_ + i * size_ * stride_; }
  std::size_t order(std::size_t i) const noexcept { return order_[i]; }  // the row of A that became row i of L U
  double gamma() const noexcept { return gamma_; }
  int row_exponent(std::size_t r) const noexcept { return rows_[r]; }
  int column_exponent(std::size_t c) const noexcept { return columns_[c]; }

 private:
  bool scale(const rows_in_memory& m);
  double reciprocal_condition();
  double residual_bounds(const double* x);
  void multiply(const double* v, bool magnitudes, double* result);
  void apply(const double* v, double* result) { multiply(v, false, result); }
  void apply_magnitudes(const double* v, double* result) { multiply(v, true, result); }
  detail::square_rows rows_of(const double* entries) const noexcept { return {entries, size_, stride_}; }
  double* column(std::size_t i) noexcept { return columns_of_work_ + i * stride_; }

  const detail::system_kernels& kernels_;
  std::size_t size_, stride_;
  detail::workspace<double, 2048, 64> work_;
  double *a_, *factors_, *lower_, *upper_, *room_, *columns_of_work_;
  numbers<std::size_t> order_;
  numbers<int> rows_, columns_;
  double gamma_ = 0, departure_ = 0;
  const double* dense_ = nullptr;  // R', where it replaces the product of the inverses
  double dense_condition_ = 0;
};

}  // namespace tessarn::analysis
