#include "analysis/normal_equations.h"

namespace tessarn::analysis {

// Row by row; the products with D are kept while a row is formed (G. Golub, C. Van Loan, Matrix Computations, 2013,
// section 4.1.2).
void normal_equations::factorise() {
  const std::size_t n = size_;
  for (std::size_t r = 0; r < n; ++r) {
    double sum = 0;
    for (std::size_t c = 0; c < n; ++c) sum += magnitude(c <= r ? lower_[r * n + c] : lower_[c * n + r]);
    norm_ = std::max(norm_, sum);
  }
  numbers<doubled> multiples(n);
  for (std::size_t r = 0; r < n; ++r) {
    doubled* row = lower_.data() + r * n;
    doubled pivot = row[r];
    const double entry = pivot.high;
    for (std::size_t c = 0; c < r; ++c) {
      doubled sum = row[c];
      for (std::size_t k = 0; k < c; ++k) sum -= multiples[k] * lower_[c * n + k];
      multiples[c] = sum;
      row[c] = sum * reciprocals_[c];
      pivot -= sum * row[c];
    }
    if (!(pivot.high > entry * 0x1p-95)) {
      regular_ = false;
      return;
    }
    reciprocals_[r] = doubled(1.0) / pivot;
  }
}

// In place, row by row: row r of the inverse is - (row r of L) times the rows above of the inverse.
void normal_equations::invert_lower() {
  const std::size_t n = size_;
  numbers<doubled> row(n);
  for (std::size_t r = 1; r < n; ++r) {
    for (std::size_t c = 0; c < r; ++c) row[c] = lower_[r * n + c];
    for (std::size_t c = 0; c < r; ++c) {
      doubled sum = row[c];
      for (std::size_t k = c + 1; k < r; ++k) sum += row[k] * lower_[k * n + c];
      lower_[r * n + c] = -sum;
    }
  }
}

// The factors are known to more than twice the digits; their products are summed as doubles.
void normal_equations::invert() {
  const std::size_t n = size_;
  for (std::size_t k = 0; k < n; ++k) {
    const double reciprocal = reciprocals_[k].high;
    for (std::size_t r = 0; r <= k; ++r) {
      const double factor = (r == k ? 1 : lower_[k * n + r].high) * reciprocal;
      for (std::size_t c = 0; c <= r; ++c) inverse_[r * n + c] += factor * (c == k ? 1 : lower_[k * n + c].high);
    }
  }
  for (std::size_t r = 0; r < n; ++r)
    for (std::size_t c = 0; c < r; ++c) inverse_[c * n + r] = inverse_[r * n + c];
}

// z = D^-1 L^-1 right, and then (L^-1)' z.
void normal_equations::solve(numbers<doubled>& right) const {
  const std::size_t n = size_;
  for (std::size_t r = n; r-- > 0;) {
    doubled sum = right[r];
    for (std::size_t k = 0; k < r; ++k) sum += lower_[r * n + k] * right[k];
    right[r] = sum;
  }
  for (std::size_t r = 0; r < n; ++r) right[r] *= reciprocals_[r];
  for (std::size_t r = 0; r < n; ++r)
    for (std::size_t k = r + 1; k < n; ++k) right[r] += lower_[k * n + r] * right[k];
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
