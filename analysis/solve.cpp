// Square systems and inverses with proved bounds, real and complex.
#include "tessarn/solve.h"

#include <cstdlib>
#include <limits>

#include "analysis/dense_inverse.h"
#include "analysis/double_system.h"
#include "analysis/scaled_system.h"
#include "analysis/verified_inverse.h"
#include "core/storage.h"

namespace tessarn {

namespace analysis {

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();

// The residual b - A x in doubled precision, and for each entry a bound of its error: 2 (n + 2) units of |b| + |A| |x|,
// and what the entries of A are off.
void residual(const scaled_matrix& a, const numbers<doubled>& b, const numbers<doubled>& x, numbers<doubled>& r,
              numbers<double>& error) {
  const std::size_t n = b.size();
  const double unit = 2 * (static_cast<double>(n) + 2) * doubled_unit;
  double largest = 0;
  for (std::size_t c = 0; c < n; ++c) largest = std::max(largest, magnitude(x[c]));
  for (std::size_t row = 0; row < n; ++row) {
    doubled sum = b[row];
    double magnitudes = magnitude(b[row]);
    for (std::size_t c = 0; c < n; ++c) {
      sum -= a.entries.get(row, c) * x[c];
      magnitudes += std::fabs(a.entries.high(row)[c] * x[c].high);
    }
    r[row] = sum;
    error[row] = (unit * magnitudes + a.errors[row] * (largest + 1)) * 1.001;
  }
}

void add_product(const doubled_matrix& m, const numbers<doubled>& v, numbers<doubled>& sums) {
  for (std::size_t r = 0; r < m.rows(); ++r)
    for (std::size_t c = 0; c < m.columns(); ++c) sums[r] += m.get(r, c) * v[c];
}

}  // namespace

bool store_scaled(doubled v, double error, int e, double& value, double& bound) noexcept {
  value = scaled(v.high, e);
  if (!is_finite(value)) return false;
  // The low part and the error are rounded upwards; a value that became subnormal has lost less than the smallest
  // number.
  bound = scaled((std::fabs(v.low) + error) * 1.0001, e) + (v.high == 0 && error == 0 ? 0 : 0x1p-1073);
  return true;
}

// x = R b, refined once by R (b - A x), and bounded by what the next residual says.
bounded_solution solve_scaled(const scaled_matrix& a, const numbers<doubled>& b) {
  const std::size_t n = b.size();
  bounded_solution s(n);
  const factorisation factors(a.entries);
  if (!factors.regular()) {
    s.state = status::singular;
    return s;
  }
  const verified_inverse v = verify(a.entries, factors, a.errors);
  s.reciprocal_condition = v.reciprocal_condition;
  numbers<doubled> r(n);
  numbers<double> error(n);
  add_product(v.inverse, b, s.x);
  residual(a, b, s.x, r, error);
  add_product(v.inverse, r, s.x);
  if (!v.proved()) {
    s.state = status::nearly_singular;
    for (std::size_t i = 0; i < n; ++i) s.error[i] = infinite;
    return s;
  }
  residual(a, b, s.x, r, error);
  for (std::size_t i = 0; i < n; ++i) error[i] += std::fabs(r[i].high) * 1.001;
  const numbers<double> z = magnified(v.inverse, error);
  double largest = 0;
  for (std::size_t i = 0; i < n; ++i) largest = std::max(largest, z[i]);
  for (std::size_t i = 0; i < n; ++i) s.error[i] = (z[i] + v.amplification() * largest) * 1.001 + underflow;
  return s;
}

namespace {

// The power of two that divides the right-hand side besides those of the rows of the matrix, so that its largest entry
// is between 1 and 2.
template <class Right, class Exponent>
int right_exponent(std::size_t n, Right&& right, Exponent&& row_exponent) {
  int shift = -5000;  // below every exponent
  for (std::size_t r = 0; r < n; ++r)
    if (right(r) != 0) shift = std::max(shift, exponent_of(right(r)) - row_exponent(r));
  return shift == -5000 ? 0 : shift;
}

// Undoes the scaling.
template <class Exponent>
void store_solution(bounded_solution& s, int shift, Exponent&& column_exponent) {
  for (std::size_t i = 0; i < s.x.size(); ++i) {
    double value, bound;
    if (!store_scaled(s.x[i], s.error[i], shift - column_exponent(i), value, bound)) {
      s.state = status::out_of_range;
      return;
    }
    s.x[i] = value;
    s.error[i] = bound;
    if (!is_finite(bound)) s.state = status::nearly_singular;
  }
}

// The solution by a proved system; false where refinement does not reach far enough.
template <class Right>
bool refine_plainly(double_system& a, Right&& right, bounded_solution& s) {
  const std::size_t n = a.size();
  const auto row_exponent = [&](std::size_t r) { return a.row_exponent(r); };
  const int shift = right_exponent(n, right, row_exponent);
  numbers<double> b(n);
  for (std::size_t r = 0; r < n; ++r) b[r] = scaled(right(r), -a.row_exponent(r) - shift);
  if (!a.solve(b, s)) return false;
  store_solution(s, shift, [&](std::size_t c) { return a.column_exponent(c); });
  return true;
}

// By factors in double precision; false where these prove too little. Where the inverses of the factors do not prove
// it, their product R often does, by a look at I - R A; that takes three times as long.
template <class Right>
bool solve_plainly(const rows_in_memory& m, Right&& right, bounded_solution& s) {
  {
    double_system a(m.size);
    if (!a.factorise(m)) return false;
    if (a.prove()) return refine_plainly(a, right, s);
  }
  double_system a(m.size, dense_inverse::matrices);
  if (!a.factorise(m)) return false;
  dense_inverse inverse(a);
  if (!inverse.prove(false)) return false;
  a.replace_inverse(inverse.transposed(), inverse.departures(), inverse.reciprocal_condition());
  return refine_plainly(a, right, s);
}

// Where double precision does not prove enough, in doubled precision.
template <class Right>
bounded_solution solve_rows(const rows_in_memory& m, Right&& right) {
  const std::size_t n = m.size;
  bounded_solution fast(n);
  if (solve_plainly(m, right, fast)) return fast;
  const scaled_matrix a = scale(n, [&](std::size_t r, std::size_t c) { return m.entries[r * m.stride + c]; });
  const int shift = right_exponent(n, right, [&](std::size_t r) { return a.rows[r]; });
  numbers<doubled> b(n);
  for (std::size_t r = 0; r < n; ++r) b[r] = scaled(right(r), -a.rows[r] - shift);
  bounded_solution s = solve_scaled(a, b);
  if (s.state != status::singular) store_solution(s, shift, [&](std::size_t c) { return a.columns[c]; });
  return s;
}

rows_in_memory memory_of(const matrix_view& m) { return {detail::as_doubles(m.data()), m.rows(), m.stride()}; }

bool all_finite(const matrix_view& m) { return all_finite(memory_of(m)); }
bool all_finite(const complex_view& m) {
  for (std::size_t r = 0; r < m.rows(); ++r)
    for (std::size_t c = 0; c < m.columns(); ++c)
      if (!is_finite(m(r, c).re) || !is_finite(m(r, c).im)) return false;
  return true;
}

// The entry of the real matrix of twice the size that acts on the real parts, followed by the imaginary parts.
double part(const complex_view& a, std::size_t r, std::size_t c) {
  const std::size_t n = a.rows();
  const cplx& v = a(r % n, c % n);
  if (r / n == c / n) return v.re;
  return r < n ? -v.im : v.im;
}

template <class View>
status check_square(const View& a) {
  if (a.rows() != a.columns()) return status::sizes_differ;
  if (a.rows() == 0) return status::no_unknowns;
  return all_finite(a) ? status::ok : status::not_finite;
}

bool has_solution(status s) { return s == status::ok || s == status::nearly_singular; }

// That matrix, row by row.
numbers<double> parts_in_memory(const complex_view& a) {
  const std::size_t n = detail::checked_product(2, a.rows());
  numbers<double> entries(detail::checked_product(n, n));
  for (std::size_t r = 0; r < n; ++r)
    for (std::size_t c = 0; c < n; ++c) entries[r * n + c] = part(a, r, c);
  return entries;
}

// The inverse and the bounds, row by row.
struct bounded_inverse {
  numbers<double> entries, errors;
  double reciprocal_condition = 0;
  status state = status::ok;

  explicit bounded_inverse(std::size_t n) : entries(detail::checked_product(n, n)), errors(n * n) {}

  // Entry i from the inverse of the scaled matrix; false when it is out of range.
  bool store(std::size_t i, doubled v, double off, int exponent) {
    if (!store_scaled(v, off, exponent, entries[i], errors[i])) {
      state = status::out_of_range;
      return false;
    }
    if (!is_finite(errors[i])) state = status::nearly_singular;
    return true;
  }
};

// Undoes the scaling of one entry after the other, by powers of two that one product of two factors holds; false where
// exponents are too large for that.
bool store_inverse(const double_system& a, const dense_inverse& inverse, bounded_inverse& s) {
  constexpr int most = 350;
  const std::size_t n = a.size();
  numbers<double> row_factors(n), column_factors(n);
  for (std::size_t i = 0; i < n; ++i) {
    if (std::abs(a.column_exponent(i)) > most || std::abs(a.row_exponent(i)) > most) return false;
    row_factors[i] = power_of_two(-a.column_exponent(i));
    column_factors[i] = power_of_two(-a.row_exponent(i));
  }
  for (std::size_t r = 0; r < n; ++r)
    for (std::size_t c = 0; c < n; ++c) {
      const doubled v = inverse.entry(r, c);
      const double factor = row_factors[r] * column_factors[c];
      s.entries[r * n + c] = v.high * factor;
      s.errors[r * n + c] = (std::fabs(v.low) + inverse.error(r, c)) * 1.0001 * factor + 0x1p-1073;
    }
  return true;
}

// By factors in double precision; false where these prove too little.
bool invert_plainly(const rows_in_memory& m, bounded_inverse& s) {
  const std::size_t n = m.size;
  double_system a(n, dense_inverse::matrices);
  if (!a.factorise(m)) return false;
  dense_inverse inverse(a);
  if (!inverse.prove(true) || !inverse.refine()) return false;
  s.reciprocal_condition = inverse.reciprocal_condition();
  if (store_inverse(a, inverse, s)) return true;
  for (std::size_t r = 0; r < n; ++r)
    for (std::size_t c = 0; c < n; ++c)
      if (!s.store(r * n + c, inverse.entry(r, c), inverse.error(r, c), -a.column_exponent(r) - a.row_exponent(c)))
        return true;
  return true;
}

// In doubled precision, each entry with the bound max |R e_c| (d_r + d^2 / (1 - d)), where d_r bounds the sum of row r
// of |I - R A| and d is the largest: the inverse is R + (I - R A) R + (I - R A)^2 R + ...
bounded_inverse invert_rows(const rows_in_memory& m) {
  const std::size_t n = m.size;
  bounded_inverse s(n);
  if (invert_plainly(m, s)) return s;
  const scaled_matrix a = scale(n, [&](std::size_t r, std::size_t c) { return m.entries[r * m.stride + c]; });
  const factorisation factors(a.entries);
  if (!factors.regular()) {
    s.state = status::singular;
    return s;
  }
  const verified_inverse v = verify(a.entries, factors, a.errors);
  s.reciprocal_condition = v.reciprocal_condition;
  if (!v.proved()) s.state = status::nearly_singular;
  for (std::size_t c = 0; c < n; ++c) {
    double largest = 0;
    for (std::size_t r = 0; r < n; ++r) largest = std::max(largest, magnitude(v.inverse.get(r, c)));
    for (std::size_t r = 0; r < n; ++r) {
      const double off = v.proved() ? largest * (v.departures[r] + v.departure * v.amplification()) * 1.001 : infinite;
      if (!s.store(r * n + c, v.inverse.get(r, c), off, -a.columns[r] - a.rows[c])) return s;
    }
  }
  return s;
}

mat<long double> column(std::size_t n) { return mat<long double>(std::size_t{1}, n); }

}  // namespace

}  // namespace analysis

using namespace analysis;

linear_solution solve(matrix_view a, column_view b) {
  linear_solution s;
  s.state = b.size() != a.rows() ? status::sizes_differ : check_square(a);
  if (s.state != status::ok) return s;
  const std::size_t n = a.rows();
  for (std::size_t i = 0; i < n; ++i)
    if (!is_finite(b[i])) s.state = status::not_finite;
  if (s.state != status::ok) return s;
  const bounded_solution found = solve_rows(memory_of(a), [&](std::size_t i) { return static_cast<double>(b[i]); });
  s.state = found.state;
  s.reciprocal_condition = found.reciprocal_condition;
  if (!has_solution(s.state)) return s;
  s.rank = static_cast<ulong>(n);
  s.x = column(n);
  s.error = column(n);
  for (std::size_t i = 0; i < n; ++i) {
    s.x.getData()[i] = found.x[i].high;
    s.error.getData()[i] = found.error[i];
  }
  return s;
}

complex_solution solve(complex_view a, complex_view b) {
  complex_solution s;
  s.state = b.rows() != a.rows() || b.columns() != 1 ? status::sizes_differ : check_square(a);
  if (s.state == status::ok && !all_finite(b)) s.state = status::not_finite;
  if (s.state != status::ok) return s;
  const std::size_t n = a.rows();
  const numbers<double> parts = parts_in_memory(a);
  const auto right = [&](std::size_t i) { return static_cast<double>(i < n ? b(i, 0).re : b(i - n, 0).im); };
  const bounded_solution found = solve_rows({parts.data(), 2 * n, 2 * n}, right);
  s.state = found.state;
  s.reciprocal_condition = found.reciprocal_condition;
  if (!has_solution(s.state)) return s;
  s.x.create(1, static_cast<ulong>(n));
  s.error = column(n);
  for (std::size_t i = 0; i < n; ++i) {
    s.x.getData()[i].re = found.x[i].high;
    s.x.getData()[i].im = found.x[n + i].high;
    s.error.getData()[i] = std::max(found.error[i], found.error[n + i]);
  }
  return s;
}

inverse_matrix inverse(matrix_view a) {
  inverse_matrix s;
  s.state = check_square(a);
  if (s.state != status::ok) return s;
  const std::size_t n = a.rows();
  const bounded_inverse found = invert_rows(memory_of(a));
  s.state = found.state;
  s.reciprocal_condition = found.reciprocal_condition;
  if (!has_solution(s.state)) return s;
  s.inverse = mat<long double>(n, n);
  s.error = mat<long double>(n, n);
  std::copy(found.entries.data(), found.entries.data() + n * n, s.inverse.getData());
  std::copy(found.errors.data(), found.errors.data() + n * n, s.error.getData());
  return s;
}

// The left half of the inverse of the real matrix of twice the size holds the real parts above the imaginary ones.
complex_inverse_matrix inverse(complex_view a) {
  complex_inverse_matrix s;
  s.state = check_square(a);
  if (s.state != status::ok) return s;
  const std::size_t n = a.rows();
  const numbers<double> parts = parts_in_memory(a);
  const std::size_t twice = 2 * n;
  const bounded_inverse found = invert_rows({parts.data(), twice, twice});
  s.state = found.state;
  s.reciprocal_condition = found.reciprocal_condition;
  if (!has_solution(s.state)) return s;
  s.inverse.create(static_cast<ulong>(n), static_cast<ulong>(n));
  s.error = mat<long double>(n, n);
  for (std::size_t r = 0; r < n; ++r)
    for (std::size_t c = 0; c < n; ++c) {
      cplx& v = s.inverse.getData()[r * n + c];
      const std::size_t re = r * twice + c, im = (n + r) * twice + c;
      v.re = found.entries[re];
      v.im = found.entries[im];
      s.error.getData()[r * n + c] = std::max(found.errors[re], found.errors[im]);
    }
  return s;
}

}  // namespace tessarn
