// Normal equations of fits in doubled precision: a symmetric positive definite matrix, factorised as L D L'.
#pragma once

#include <cstddef>

#include "analysis/doubled_matrix.h"

namespace tessarn::analysis {

// The inverse of L and the diagonal D stand for the inverse of the matrix, (L^-1)' D^-1 L^-1, of which every form is a
// sum of squares without cancellation.
class normal_equations {
 public:
  // `entry(r, c)` gives the matrix for c <= r. The entries are near 1 or below.
  template <class Entry>
  normal_equations(std::size_t n, Entry&& entry)
      : size_(n), lower_(detail::checked_product(n, n)), reciprocals_(n), inverse_(lower_.size()) {
    for (std::size_t r = 0; r < n; ++r)
      for (std::size_t c = 0; c <= r; ++c) lower_[r * n + c] = entry(r, c);
    factorise();
    if (!regular_) return;
    invert_lower();
    invert();
    if (reciprocal_condition() < 0x1p-40) regular_ = false;
  }

  // False when the columns depend on each other, or nearly: the condition of the matrix is above 2^80, and of the 104
  // bits fewer than a third of those of a double would be right.
  bool regular() const noexcept { return regular_; }
  // 1 / sqrt(norm of the matrix times norm of the inverse), for the largest sum of a row.
  double reciprocal_condition() const noexcept;
  // The solution for a right-hand side, in its place.
  void solve(numbers<doubled>& right) const;
  // Entry (r, c) of the inverse, as a double.
  double inverse(std::size_t r, std::size_t c) const noexcept { return inverse_[r * size_ + c]; }
  // v' M^-1 v for the vector with the entries v(first), v(first + 1), ...; those before are 0.
  template <class Vector>
  doubled form(std::size_t first, Vector&& v) const noexcept {
    doubled total = 0.0;
    for (std::size_t i = first; i < size_; ++i) {
      doubled sum = v(i);  // L^-1 has ones on its diagonal
      for (std::size_t k = first; k < i; ++k) sum += lower_[i * size_ + k] * v(k);
      total += sum * sum * reciprocals_[i];
    }
    return total;
  }

 private:
  void factorise();
  void invert_lower();
  void invert();

  std::size_t size_;
  numbers<doubled> lower_;        // the inverse of L below the diagonal
  numbers<doubled> reciprocals_;  // of D
  numbers<double> inverse_;
  double norm_ = 0;
  bool regular_ = true;
};

}  // namespace tessarn::analysis
