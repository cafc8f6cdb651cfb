// Least squares for any matrix: normal equations in doubled precision, with a proved bound of the error.
#include <limits>

#include "analysis/scaled_system.h"
#include "analysis/verified_inverse.h"

namespace tessarn {

using namespace analysis;

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();

// The matrix with columns scaled to a largest entry between 1 and 2, and the right-hand side likewise.
struct scaled_problem {
  numbers<double> entries;  // row by row
  numbers<double> right;
  numbers<int> exponents;  // of the columns
  int shift = 0;           // of the right-hand side
  std::size_t rows, columns;

  scaled_problem(matrix_view a, column_view b)
      : entries(detail::checked_product(a.rows(), a.columns())),
        right(a.rows()),
        exponents(a.columns()),
        rows(a.rows()),
        columns(a.columns()) {
    for (std::size_t c = 0; c < columns; ++c) {
      double largest = 0;
      for (std::size_t r = 0; r < rows; ++r) largest = std::max(largest, std::fabs(static_cast<double>(a(r, c))));
      exponents[c] = largest > 0 ? exponent_of(largest) : 0;
      for (std::size_t r = 0; r < rows; ++r) entries[r * columns + c] = scaled(a(r, c), -exponents[c]);
    }
    double largest = 0;
    for (std::size_t r = 0; r < rows; ++r) largest = std::max(largest, std::fabs(static_cast<double>(b[r])));
    shift = largest > 0 ? exponent_of(largest) : 0;
    for (std::size_t r = 0; r < rows; ++r) right[r] = scaled(b[r], -shift);
  }
  const double* row(std::size_t r) const noexcept { return entries.data() + r * columns; }
};

// A'A, its upper half summed over the rows in ascending order and mirrored.
doubled_matrix gram(const scaled_problem& p) {
  doubled_matrix g(p.columns, p.columns);
  for (std::size_t r = 0; r < p.rows; ++r) {
    const double* row = p.row(r);
    for (std::size_t i = 0; i < p.columns; ++i) {
      double* high = g.high(i);
      double* low = g.low(i);
      for (std::size_t j = i; j < p.columns; ++j) {
        const doubled sum = doubled(high[j], low[j]) + exact_product(row[i], row[j]);
        high[j] = sum.high;
        low[j] = sum.low;
      }
    }
  }
  for (std::size_t i = 0; i < p.columns; ++i)
    for (std::size_t j = 0; j < i; ++j) g.set(i, j, g.get(j, i));
  return g;
}

// The columns in the order in which the pivoted Cholesky factorisation of A'A chooses them, as many as are independent:
// the next one has the largest part that is orthogonal to those before. (P. Businger, G. Golub, Linear least squares
// solutions by Householder transformations, 1965, choose the same columns.)
struct independent_columns {
  numbers<std::size_t> order;
  std::size_t count = 0;
};
independent_columns choose_columns(doubled_matrix g, std::size_t rows) {
  const std::size_t n = g.rows();
  independent_columns chosen{numbers<std::size_t>(n)};
  numbers<double> squares(n);
  for (std::size_t i = 0; i < n; ++i) {
    chosen.order[i] = i;
    squares[i] = g.get(i, i).high;
  }
  // The square of about 1e-14, more for large problems, whose sums lose more.
  const double least = static_cast<double>(rows + n) * static_cast<double>(n) * 0x1p-98;
  for (std::size_t k = 0; k < n; ++k) {
    std::size_t best = k;
    for (std::size_t i = k; i < n; ++i)
      if (g.get(chosen.order[i], chosen.order[i]).high > g.get(chosen.order[best], chosen.order[best]).high) best = i;
    std::swap(chosen.order[k], chosen.order[best]);
    const std::size_t pivot = chosen.order[k];
    const doubled square = g.get(pivot, pivot);
    if (!(square.high > least * squares[pivot])) break;
    ++chosen.count;
    for (std::size_t i = k + 1; i < n; ++i) {
      const std::size_t other = chosen.order[i];
      g.add_row(other, -(g.get(other, pivot) / square), g, pivot);
    }
  }
  return chosen;
}

// b - A x in doubled precision, over the chosen columns, with a bound of the error of each entry.
void residual(const scaled_problem& p, const independent_columns& chosen, const numbers<doubled>& x,
              numbers<doubled>& r, numbers<double>& error) {
  const double unit = 2 * (static_cast<double>(chosen.count) + 2) * doubled_unit;
  double largest = 0;
  for (std::size_t k = 0; k < chosen.count; ++k) largest += magnitude(x[k]);
  for (std::size_t i = 0; i < p.rows; ++i) {
    doubled sum = p.right[i];
    double magnitudes = std::fabs(p.right[i]);
    for (std::size_t k = 0; k < chosen.count; ++k) {
      const double entry = p.row(i)[chosen.order[k]];
      sum -= doubled(entry) * x[k];
      magnitudes += std::fabs(entry * x[k].high);
    }
    r[i] = sum;
    error[i] = (unit * magnitudes + (largest + 1) * 0x1p-1000) * 1.001;
  }
}

// A' r over the chosen columns, with bounds of the error: those of r, and 2 (m + 2) units of |A|' |r|.
void transposed_product(const scaled_problem& p, const independent_columns& chosen, const numbers<doubled>& r,
                        const numbers<double>& r_error, numbers<doubled>& product, numbers<double>& error) {
  const double unit = 2 * (static_cast<double>(p.rows) + 2) * doubled_unit;
  for (std::size_t k = 0; k < chosen.count; ++k) {
    doubled sum = 0.0;
    double off = 0;
    for (std::size_t i = 0; i < p.rows; ++i) {
      const double entry = p.row(i)[chosen.order[k]];
      sum += doubled(entry) * r[i];
      off += std::fabs(entry) * (r_error[i] + unit * std::fabs(r[i].high)) + 0x1p-1000 * (std::fabs(r[i].high) + 1);
    }
    product[k] = sum;
    error[k] = off * 1.001;
  }
}

// x = R A'b with R near the inverse of A'A, refined twice by R A'(b - A x); the residual after that gives the bound.
bounded_solution solve_normal(const scaled_problem& p, const independent_columns& chosen, const doubled_matrix& g,
                              numbers<doubled>& r) {
  const std::size_t n = chosen.count;
  bounded_solution s(n);
  doubled_matrix a(n, n);
  numbers<double> errors(n);
  double lengths = 0;
  for (std::size_t i = 0; i < n; ++i) lengths += std::sqrt(g.get(chosen.order[i], chosen.order[i]).high);
  for (std::size_t i = 0; i < n; ++i) {
    const double length = std::sqrt(g.get(chosen.order[i], chosen.order[i]).high);
    errors[i] = 2 * (static_cast<double>(p.rows) + 2) *
                (doubled_unit * length * lengths * 1.001 + static_cast<double>(n) * 0x1p-1000);
    for (std::size_t j = 0; j < n; ++j) a.set(i, j, g.get(chosen.order[i], chosen.order[j]));
  }
  const factorisation factors(a);
  if (!factors.regular()) {
    s.state = status::nearly_singular;
    return s;
  }
  const verified_inverse v = verify(a, factors, errors);
  s.reciprocal_condition = std::sqrt(v.reciprocal_condition);
  for (std::size_t i = 0; i < n; ++i) s.spread[i] = square_root(v.inverse.get(i, i));
  numbers<double> r_error(p.rows), error(n);
  numbers<doubled> product(n);
  for (int round = 0;; ++round) {
    residual(p, chosen, s.x, r, r_error);
    transposed_product(p, chosen, r, r_error, product, error);
    if (round == 3) break;
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t k = 0; k < n; ++k) s.x[i] += v.inverse.get(i, k) * product[k];
  }
  if (!v.proved()) {
    s.state = status::nearly_singular;
    return s;
  }
  for (std::size_t i = 0; i < n; ++i) error[i] += magnitude(product[i]) * 1.001;
  const numbers<double> z = magnified(v.inverse, error);
  double largest = 0;
  for (std::size_t i = 0; i < n; ++i) largest = std::max(largest, z[i]);
  for (std::size_t i = 0; i < n; ++i) s.error[i] = (z[i] + v.amplification() * largest) * 1.001 + underflow;
  return s;
}

// The residual deviation, and the standard errors of x.
void add_standard_errors(const scaled_problem& p, const independent_columns& chosen, const bounded_solution& found,
                         doubled squares, linear_solution& s) {
  const bool told = p.rows > p.columns;
  const doubled deviation =
      told ? square_root(squares / doubled(static_cast<double>(p.rows - p.columns))) : doubled(infinite);
  s.residual_deviation = scaled(deviation.high, p.shift);
  s.standard_errors = mat<long double>(std::size_t{1}, p.columns);
  for (std::size_t k = 0; k < chosen.count; ++k) {
    const std::size_t c = chosen.order[k];
    s.standard_errors.getData()[c] =
        told ? scaled((deviation * found.spread[k]).high, p.shift - p.exponents[c]) : infinite;
  }
}

status check(matrix_view a, column_view b) {
  if (b.size() != a.rows()) return status::sizes_differ;
  if (a.columns() == 0) return status::no_unknowns;
  for (std::size_t r = 0; r < a.rows(); ++r) {
    if (!is_finite(b[r])) return status::not_finite;
    for (std::size_t c = 0; c < a.columns(); ++c)
      if (!is_finite(a(r, c))) return status::not_finite;
  }
  return status::ok;
}

}  // namespace

linear_solution least_squares(matrix_view a, column_view b) {
  linear_solution s;
  s.state = check(a, b);
  if (s.state != status::ok) return s;
  const std::size_t n = a.columns();
  const scaled_problem p(a, b);
  const doubled_matrix g = gram(p);
  const independent_columns chosen = choose_columns(g.clone(), p.rows);
  numbers<doubled> r(p.rows);
  const bounded_solution found = solve_normal(p, chosen, g, r);
  s.state = chosen.count < n ? status::rank_deficient : found.state;
  s.rank = static_cast<ulong>(chosen.count);
  s.reciprocal_condition = chosen.count < n ? 0 : found.reciprocal_condition;
  s.x = mat<long double>(std::size_t{1}, n);
  s.error = mat<long double>(std::size_t{1}, n);
  for (std::size_t i = 0; i < n; ++i) s.error.getData()[i] = infinite;
  for (std::size_t k = 0; k < chosen.count; ++k) {
    const std::size_t c = chosen.order[k];
    double value, bound;
    if (!store_scaled(found.x[k], found.error[k], p.shift - p.exponents[c], value, bound)) {
      linear_solution none;
      none.state = status::out_of_range;
      none.rank = s.rank;
      return none;
    }
    s.x.getData()[c] = value;
    if (found.state == status::ok && chosen.count == n) s.error.getData()[c] = bound;
    if (s.state == status::ok && !is_finite(bound)) s.state = status::nearly_singular;
  }
  doubled squares = 0.0;
  for (std::size_t i = 0; i < p.rows; ++i) squares += r[i] * r[i];
  s.residual = scaled(square_root(squares).high, p.shift);
  if (s.state == status::ok) add_standard_errors(p, chosen, found, squares, s);
  return s;
}

}  // namespace tessarn
