#include "analysis/normal_equations.h"

namespace tessarn::analysis {

// Step k forms row k of L' and takes its products away from the rows below (G. Golub, C. Van Loan, Matrix Computations,
// 2013, section 4.1.2). Until its own step a row holds its entries of L D.
void normal_equations::factorise() {
  const std::size_t n = size_;
  numbers<double> diagonal(n);
  for (std::size_t r = 0; r < n; ++r) {
    double sum = 0;
    for (std::size_t c = 0; c < n; ++c) sum += magnitude(c <= r ? upper_.get(c, r) : upper_.get(r, c));
    norm_ = std::max(norm_, sum);
    diagonal[r] = upper_.get(r, r).high;
  }
  doubled_matrix row(1, n);
  for (std::size_t k = 0; k < n; ++k) {
    const doubled pivot = upper_.get(k, k);
    if (!(pivot.high > diagonal[k] * 0x1p-95)) {
      regular_ = false;
      return;
    }
    reciprocals_[k] = reciprocal(pivot);
    for (std::size_t c = k + 1; c < n; ++c) row.set(0, c, upper_.get(k, c) * reciprocals_[k]);
    for (std::size_t r = k + 1; r < n; ++r) upper_.add_products(r, -row.get(0, r), upper_, k, r, n);
    for (std::size_t c = k + 1; c < n; ++c) upper_.set(k, c, row.get(0, c));
  }
}

// Row r of the inverse is - (row r of L) times the rows above of the inverse.
void normal_equations::invert_lower() {
  for (std::size_t r = 0; r < size_; ++r) {
    for (std::size_t c = 0; c < r; ++c) lower_.set(r, c, upper_.get(c, r));
    for (std::size_t k = 1; k < r; ++k) lower_.add_products(r, upper_.get(k, r), lower_, k, 0, k);
    for (std::size_t c = 0; c < r; ++c) lower_.set(r, c, -lower_.get(r, c));
    lower_.set(r, r, 1.0);
  }
}

// The factors are known to more than twice the digits; their products are summed as doubles.
void normal_equations::invert() {
  const std::size_t n = size_;
  for (std::size_t k = 0; k < n; ++k) {
    const double* row = lower_.high(k);
    for (std::size_t r = 0; r <= k; ++r) {
      const double factor = row[r] * reciprocals_[k].high;
      double* to = inverse_.data() + r * n;
      for (std::size_t c = 0; c <= r; ++c) to[c] += factor * row[c];
    }
  }
  for (std::size_t r = 0; r < n; ++r)
    for (std::size_t c = 0; c < r; ++c) inverse_[c * n + r] = inverse_[r * n + c];
}

// z = D^-1 L^-1 right, and then (L^-1)' z. Each sum takes its terms in ascending order; the sums grow side by side.
void normal_equations::solve(numbers<doubled>& right) const {
  const std::size_t n = size_;
  numbers<doubled> z(n);
  for (std::size_t r = 0; r < n; ++r) z[r] = right[r];
  for (std::size_t k = 0; k < n; ++k)
    for (std::size_t r = k + 1; r < n; ++r) z[r] = with_product(z[r], lower_.get(r, k), right[k]);
  for (std::size_t r = 0; r < n; ++r) right[r] = z[r] * reciprocals_[r];
  for (std::size_t k = 1; k < n; ++k)
    for (std::size_t r = 0; r < k; ++r) right[r] = with_product(right[r], lower_.get(k, r), right[k]);
}

double normal_equations::reciprocal_condition() const noexcept {
  double inverse_norm = 0;
  for (std::size_t r = 0; r < size_; ++r) {
    double sum = 0;
    for (std::size_t c = 0; c < size_; ++c) sum += std::fabs(inverse(r, c));
    inverse_norm = std::max(inverse_norm, sum);
  }
  const double condition = norm_ * inverse_norm;
  return condition > 1 ? 1 / std::sqrt(condition) : 1;
}

}  // namespace tessarn::analysis
