// A square system, scaled by powers of two to entries of at most 1, in doubled precision.
#pragma once

#include <cstddef>

#include "analysis/doubled_matrix.h"
#include "tessarn/solve.h"

namespace tessarn::analysis {

// The matrix with row r multiplied by 2^-rows[r] and column c by 2^-columns[c].
struct scaled_matrix {
  doubled_matrix entries;
  numbers<int> rows, columns;
  numbers<double> errors;  // for verify(): what entries that became subnormal have lost, summed over each row

  explicit scaled_matrix(std::size_t n) : entries(n, n), rows(n), columns(n), errors(n) {}
};

// Each row is divided by the power of two of its largest entry, and then each column by that of its largest; a row or a
// column of zeros stays as it is. `Entry` gives the entry (row, column) of the matrix.
template <class Entry>
scaled_matrix scale(std::size_t n, Entry&& entry) {
  scaled_matrix s(n);
  for (std::size_t r = 0; r < n; ++r) {
    double largest = 0;
    for (std::size_t c = 0; c < n; ++c) largest = std::max(largest, std::fabs(static_cast<double>(entry(r, c))));
    s.rows[r] = largest > 0 ? exponent_of(largest) : 0;
    s.errors[r] = static_cast<double>(n) * 0x1p-1000;
  }
  for (std::size_t c = 0; c < n; ++c) {
    int largest = -5000;  // below every exponent
    for (std::size_t r = 0; r < n; ++r)
      if (entry(r, c) != 0) largest = std::max(largest, exponent_of(static_cast<double>(entry(r, c))) - s.rows[r]);
    s.columns[c] = largest == -5000 ? 0 : largest;
    for (std::size_t r = 0; r < n; ++r)
      s.entries.set(r, c, scaled(static_cast<double>(entry(r, c)), -s.rows[r] - s.columns[c]));
  }
  return s;
}

// The solution of a system as far as it is known: for each unknown its value, a doubled number, and a bound of the
// error.
struct bounded_solution {
  numbers<doubled> x;
  numbers<double> error;
  numbers<doubled> spread;  // of least squares: the square roots of the diagonal of the inverse of A'A
  double reciprocal_condition = 0;
  status state = status::ok;  // ok, singular, nearly_singular or out_of_range

  explicit bounded_solution(std::size_t n) : x(n), error(n), spread(n) {}
};

// Stores v * 2^e as a double, and widens the error by what the rounding loses; false when it is too large.
bool store_scaled(doubled v, double error, int e, double& value, double& bound) noexcept;

// The refined solution of the scaled system and its bounds, before the scaling is undone.
bounded_solution solve_scaled(const scaled_matrix& a, const numbers<doubled>& b);

}  // namespace tessarn::analysis
