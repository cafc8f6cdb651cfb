// Normal equations of fits in doubled precision: a symmetric positive definite matrix, factorised as L D L'.
#pragma once

#include <cstddef>

#include "analysis/doubled_matrix.h"

namespace tessarn::analysis {

// The inverse of L and the diagonal D stand for the inverse of the matrix, (L^-1)' D^-1 L^-1, of which every form is a
// sum of squares without cancellation. The loops run along rows, whose entries do not wait for each other.
class normal_equations {
 public:
  // `entry(r, c)` gives the matrix for c <= r. The entries are near 1 or below.
  template <class Entry>
  normal_equations(std::size_t n, Entry&& entry)
      : size_(n), upper_(n, n), lower_(n, n), reciprocals_(n), inverse_(detail::checked_product(n, n)) {
    for (std::size_t r = 0; r < n; ++r)
      for (std::size_t c = 0; c <= r; ++c) upper_.set(c, r, entry(r, c));
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
  // v' M^-1 v for the vector with the entries v(0), v(1), ...
  template <class Vector>
  double form(Vector&& v) const {
    doubled_matrix one(size_, 1);
    for (std::size_t i = 0; i < size_; ++i) one.set(i, 0, v(i));
    return forms(one, [](std::size_t) { return std::size_t{1}; })[0];
  }
  // v' M^-1 v for each of the vectors that stand in columns. In row i the vectors from number reached(i) on are 0, as
  // they are in the rows above; reached() does not fall. The sums of L^-1 v may cancel and are formed in doubled
  // precision; of their squares, which do not, a double keeps all but the last bits.
  template <class Reached>
  numbers<double> forms(const doubled_matrix& vectors, Reached&& reached) const {
    numbers<double> totals(vectors.columns());
    doubled_matrix sum(1, vectors.columns());
    for (std::size_t i = 0; i < size_; ++i) {
      const std::size_t count = reached(i);
      for (std::size_t j = 0; j < count; ++j) sum.set(0, j, vectors.get(i, j));  // L^-1 has ones on its diagonal
      for (std::size_t k = 0; k < i; ++k) sum.add_products(0, lower_.get(i, k), vectors, k, 0, reached(k));
      for (std::size_t j = 0; j < count; ++j) {
        const double v = sum.get(0, j).high;
        totals[j] += v * v * reciprocals_[i].high;
      }
    }
    return totals;
  }

 private:
  void factorise();
  void invert_lower();
  void invert();

  std::size_t size_;
  doubled_matrix upper_;          // L' above the diagonal
  doubled_matrix lower_;          // the inverse of L
  numbers<doubled> reciprocals_;  // of D
  numbers<double> inverse_;
  double norm_ = 0;
  bool regular_ = true;
};

}  // namespace tessarn::analysis
