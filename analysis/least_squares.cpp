// Least squares for any matrix: normal equations in doubled precision, with a proved bound of the error.
#include <limits>

#include "analysis/double_system.h"
#include "analysis/scaled_system.h"
#include "analysis/verified_inverse.h"

namespace tessarn {

using namespace analysis;

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();

// n reals, their number rounded up to a multiple of eight.
std::size_t in_eights(std::size_t n) { return detail::checked_sum(n, 7) / 8 * 8; }

// v[i] *= 2^e for n numbers.
void scale_column(double* v, std::size_t n, int e) {
  if (e > 1000 || e < -1000) {
    for (std::size_t i = 0; i < n; ++i) v[i] = scaled(v[i], e);
  } else {
    const double factor = power_of_two(e);
    for (std::size_t i = 0; i < n; ++i) v[i] *= factor;
  }
}

// The matrix, column by column, with columns scaled to a largest entry between 1 and 2, and the right-hand side
// likewise. Behind the last row stand zeros.
struct scaled_problem {
  std::size_t rows, columns, height;  // height: the rows with the zeros
  numbers<double> entries;
  numbers<double> right;
  numbers<int> exponents;  // of the columns
  int shift = 0;           // of the right-hand side
  bool finite;

  scaled_problem(matrix_view a, column_view b)
      : rows(a.rows()),
        columns(a.columns()),
        height(in_eights(rows)),
        entries(detail::checked_product(height, columns)),
        right(height),
        exponents(columns) {
    for (std::size_t r = 0; r < rows; ++r) {
      for (std::size_t c = 0; c < columns; ++c) entries[c * height + r] = a(r, c);
      right[r] = b[r];
    }
    const auto row_largest = detail::system_kernels_in_use().row_largest;
    numbers<double> largest(columns);
    double largest_right;
    finite = row_largest(entries.data(), columns, rows, height, largest.data()) == 0;
    finite = row_largest(right.data(), 1, rows, height, &largest_right) == 0 && finite;
    if (!finite) return;
    for (std::size_t c = 0; c < columns; ++c) {
      exponents[c] = largest[c] > 0 ? exponent_of(largest[c]) : 0;
      scale_column(entries.data() + c * height, rows, -exponents[c]);
    }
    shift = largest_right > 0 ? exponent_of(largest_right) : 0;
    scale_column(right.data(), rows, -shift);
  }
  const double* column(std::size_t c) const noexcept { return entries.data() + c * height; }
};

// Of sums over the rows.
double rows_loss(std::size_t rows) { return chain_loss(in_eights(rows) / detail::row_partial_sums); }

// A'A; the lower half mirrors the upper one.
doubled_matrix gram(const scaled_problem& p) {
  const std::size_t n = p.columns;
  doubled_matrix g(n, n);
  numbers<const double*> columns(n);
  for (std::size_t c = 0; c < n; ++c) columns[c] = p.column(c);
  for (std::size_t i = 0; i < n; ++i)
    detail::system_kernels_in_use().products(columns.data() + i, n - i, p.height, {p.column(i), nullptr, nullptr},
                                             g.high(i) + i, g.low(i) + i, nullptr);
  for (std::size_t i = 0; i < n; ++i)
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

// The solution on its way, over the chosen columns: the residual b - A x in doubled precision with a bound of the error
// of each entry, and A' times it.
struct refinement {
  const scaled_problem& p;
  std::size_t count;
  numbers<const double*> columns;
  numbers<double> x_high, x_low;
  numbers<double> r_high, r_low, r_error;
  numbers<double> product_high, product_low, product_error;

  refinement(const scaled_problem& problem, const independent_columns& chosen)
      : p(problem),
        count(chosen.count),
        columns(count),
        x_high(count),
        x_low(count),
        r_high(p.height),
        r_low(p.height),
        r_error(p.height),
        product_high(count),
        product_low(count),
        product_error(count) {
    for (std::size_t k = 0; k < count; ++k) columns[k] = p.column(chosen.order[k]);
  }

  // The residual of x, and the product with the bound of its error: that of the residual, and what the sums lose.
  void look() {
    const detail::system_kernels& kernels = detail::system_kernels_in_use();
    kernels.tall_residual(columns.data(), count, p.height, p.right.data(), x_high.data(), x_low.data(),
                          {r_high.data(), r_low.data(), r_error.data()});
    double largest = 0, largest_r = 0;
    for (std::size_t k = 0; k < count; ++k) largest += std::fabs(x_high[k]);
    const double unit = (chain_loss(count) + 4) * 0x1p-106 * 1.01, tiny = (largest + 1) * 0x1p-1000;
    const double sum_unit = (rows_loss(p.rows) + 4) * 0x1p-106 * 1.01;
    for (std::size_t i = 0; i < p.rows; ++i) {
      largest_r = std::max(largest_r, std::fabs(r_high[i]));
      r_error[i] = (unit * r_error[i] + sum_unit * std::fabs(r_high[i])) * 1.001 + tiny;
    }
    kernels.products(columns.data(), count, p.height, {r_high.data(), r_low.data(), r_error.data()},
                     product_high.data(), product_low.data(), product_error.data());
    const double lost = static_cast<double>(p.rows) * (largest_r + 1) * 0x1p-1000;
    for (std::size_t k = 0; k < count; ++k) product_error[k] = product_error[k] * 1.001 + lost;
  }

  // x += R A'r.
  void step(const doubled_matrix& inverse) {
    for (std::size_t i = 0; i < count; ++i) {
      doubled v(x_high[i], x_low[i]);
      for (std::size_t k = 0; k < count; ++k) v += inverse.get(i, k) * doubled(product_high[k], product_low[k]);
      x_high[i] = v.high;
      x_low[i] = v.low;
    }
  }

  doubled squares() {
    for (std::size_t i = 0; i < p.rows; ++i) r_low[i] *= 2;  // of the square of high + low
    const double* column = r_high.data();
    doubled sum;
    double weighted;
    detail::system_kernels_in_use().products(&column, 1, p.height, {r_high.data(), r_low.data(), r_error.data()},
                                             &sum.high, &sum.low, &weighted);
    return sum;
  }
};

// Bounds from the last look: whether x is as near as its last bits tell, and the largest bound.
bool bound_solution(const refinement& at, const verified_inverse& v, bounded_solution& s, double& worst) {
  numbers<double> error(at.count);
  for (std::size_t i = 0; i < at.count; ++i) error[i] = at.product_error[i] + std::fabs(at.product_high[i]) * 1.001;
  const numbers<double> z = magnified(v.inverse, error);
  double largest = 0;
  worst = 0;
  for (std::size_t i = 0; i < at.count; ++i) largest = std::max(largest, z[i]);
  bool close = true;
  for (std::size_t i = 0; i < at.count; ++i) {
    s.x[i] = {at.x_high[i], at.x_low[i]};
    s.error[i] = (z[i] + v.amplification() * largest) * 1.001 + underflow;
    close = close && s.error[i] <= std::fabs(at.x_high[i]) * 0x1p-60;
    if (!(s.error[i] <= worst)) worst = s.error[i];
  }
  return close;
}

// x = R A'b with R near the inverse of A'A, refined by R A'(b - A x) until the bounds, which the residual gives, are
// small or do not halve any more.
bounded_solution solve_normal(const independent_columns& chosen, const doubled_matrix& g, refinement& at) {
  const std::size_t n = chosen.count;
  bounded_solution s(n);
  doubled_matrix a(n, n);
  numbers<double> errors(n);
  double lengths = 0;
  for (std::size_t i = 0; i < n; ++i) lengths += std::sqrt(g.get(chosen.order[i], chosen.order[i]).high);
  const double unit = rows_loss(at.p.rows) * 0x1p-106 * 1.01;
  const double tiny = 2 * (static_cast<double>(at.p.rows) + 2) * static_cast<double>(n) * 0x1p-1000;
  for (std::size_t i = 0; i < n; ++i) {
    errors[i] = unit * std::sqrt(g.get(chosen.order[i], chosen.order[i]).high) * lengths * 1.001 + tiny;
    for (std::size_t j = 0; j < n; ++j) a.set(i, j, g.get(chosen.order[i], chosen.order[j]));
  }
  const factorisation factors(a);
  if (!factors.regular()) {
    at.look();
    s.state = status::nearly_singular;
    return s;
  }
  const verified_inverse v = verify(a, factors, errors);
  s.reciprocal_condition = std::sqrt(v.reciprocal_condition);
  for (std::size_t i = 0; i < n; ++i) s.spread[i] = square_root(v.inverse.get(i, i));
  constexpr int most_rounds = 6, least_rounds = 3;  // where nothing is proved, the least
  double worst, worst_before = infinite;
  at.look();
  for (int round = 1;; ++round) {
    at.step(v.inverse);
    at.look();
    if (bound_solution(at, v, s, worst) && v.proved()) return s;
    if (round == most_rounds || (round >= least_rounds && !(worst < worst_before / 2))) break;
    worst_before = worst;
  }
  if (!v.proved()) s.state = status::nearly_singular;
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

}  // namespace

linear_solution least_squares(matrix_view a, column_view b) {
  linear_solution s;
  s.state = b.size() != a.rows() ? status::sizes_differ : a.columns() == 0 ? status::no_unknowns : status::ok;
  if (s.state != status::ok) return s;
  const std::size_t n = a.columns();
  const scaled_problem p(a, b);
  if (!p.finite) {
    s.state = status::not_finite;
    return s;
  }
  const doubled_matrix g = gram(p);
  const independent_columns chosen = choose_columns(g.clone(), p.rows);
  refinement last(p, chosen);
  const bounded_solution found = solve_normal(chosen, g, last);
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
  const doubled squares = last.squares();
  s.residual = scaled(square_root(squares).high, p.shift);
  if (s.state == status::ok) add_standard_errors(p, chosen, found, squares, s);
  return s;
}

}  // namespace tessarn
