// The inverse of a square matrix in doubled precision, with what a proof of an error bound needs.
#pragma once

#include <cstddef>

#include "analysis/doubled_matrix.h"

namespace tessarn::analysis {

// The LU factorisation with partial pivoting, P A = L U, in doubled precision; L and U stand in one matrix.
class factorisation {
 public:
  // The larger of the candidates of a column is the pivot, the upper one of equal candidates.
  explicit factorisation(const doubled_matrix& a);

  // False when a column of candidate pivots held only zeros; the factors up to there stand.
  bool regular() const noexcept { return regular_; }
  bool odd_permutation() const noexcept { return odd_; }
  doubled pivot(std::size_t i) const noexcept { return lu_.get(i, i); }
  // The inverse, by forward and back substitution into the rows of the permuted identity; O(n^3).
  doubled_matrix inverse() const;
  // Bounds of the sums of the rows of |L| |U|, in the order of the rows of A.
  numbers<double> growth() const;

 private:
  std::size_t size_;
  doubled_matrix lu_;
  numbers<std::size_t> permutation_;
  bool regular_ = true;
  bool odd_ = false;
};

// An approximate inverse R of A, and a proved bound of the largest sum of a row of |I - R A|. Where the bound is below
// 1, A is regular, and |x - y| <= |z| + bound / (1 - bound) max |z| with z = R (b - A y) holds for the solution x of A
// x = b and every y (S. Rump, Verification methods: rigorous results using floating-point arithmetic, 2010, section
// 10).
struct verified_inverse {
  doubled_matrix inverse;
  numbers<double> departures;   // a bound of the sum of each row of |I - R A|
  double departure;             // the largest of them; infinite when nothing is proved
  double reciprocal_condition;  // 1 / (|A| |R|) in the norm of the largest sum of a row

  bool proved() const noexcept { return departure < 0.5; }
  // departure / (1 - departure), rounded upwards.
  double amplification() const noexcept { return departure / (1 - departure) * 1.0001; }
};

// `errors` bounds, for each row, the sum of the distances of the given entries from those of the matrix that is meant.
verified_inverse verify(const doubled_matrix& a, const factorisation& f, const numbers<double>& errors);

// For bounds: the sum of the magnitudes of a row.
double row_sum(const doubled_matrix& a, std::size_t row) noexcept;

// For bounds of the error of z = R r: z_i = sum of |R_ik| r_k, for r >= 0.
numbers<double> magnified(const doubled_matrix& r, const numbers<double>& errors);

}  // namespace tessarn::analysis
