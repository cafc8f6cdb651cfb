// Fits of polynomials by normal equations in doubled precision about a centre.
//
// The normal matrix about the centre of the data, with a scale that brings the abscissas into -1 .. 1, has a condition of
// about 1e8 for degree 10, and 1e16 for degree 20: of the 31 digits of doubled precision more than a double holds are left.
#include "tessarn/fit.h"

#include <limits>

#include "analysis/fit_data.h"
#include "analysis/verified_inverse.h"

namespace tessarn {

using namespace analysis;

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();

// The exponents that are fitted, ascending, and the values of the others.
struct basis {
  numbers<std::size_t> exponents;
  std::size_t unknowns = 0;
  numbers<doubled> fixed;  // for each coefficient, scaled as t and y are
  bool any_fixed = false;  // whether a coefficient of the polynomial is not fitted

  explicit basis(std::size_t coefficients) : exponents(coefficients), fixed(coefficients) {}
};

bool has_power(powers which, std::size_t k) {
  switch (which) {
    case powers::all: return true;
    case powers::no_constant: return k > 0;
    case powers::odd: return k % 2 == 1;
    case powers::constant_and_odd: return k == 0 || k % 2 == 1;
  }
  return false;
}

// Fills the basis; the values of fixed coefficients are scaled later.
status choose_basis(const fit_options& options, basis& b) {
  const std::size_t m = b.fixed.size();
  if (m == 0) return status::no_unknowns;
  if (!options.fixed.empty() && options.fixed.size() != m) return status::sizes_differ;
  if (static_cast<int>(options.which) < 0 || options.which > powers::constant_and_odd) return status::bad_option;
  for (std::size_t k = 0; k < m; ++k) {
    const double value = options.fixed.empty() ? 0 : static_cast<double>(options.fixed[k]);
    const bool told = !options.fixed.empty() && value == value;
    if (told && !is_finite(value)) return status::not_finite;
    if (has_power(options.which, k) && !told) {
      b.exponents[b.unknowns++] = k;
    } else {
      b.any_fixed = true;
      b.fixed[k] = told ? value : 0.0;
    }
  }
  return b.unknowns == 0 ? status::no_unknowns : status::ok;
}

// The solution of the normal equations, in t, with the inverse of their matrix.
struct normal_solution {
  status state = status::ok;
  numbers<doubled> coefficients;  // all of the polynomial, the fixed ones among them
  numbers<double> high, low;      // the same, as the kernels take them
  doubled_matrix inverse;         // for the unknowns
  double reciprocal_condition = 0;
  doubled mean = 0.0;             // of the ordinates, weighted
  doubled weights = 0.0;          // their sum

  explicit normal_solution(std::size_t m) : coefficients(m), high(m), low(m), inverse(0, 0) {}
};

// Sums the moments, and solves with one refinement: x = R g, x += R (g - G x).
normal_solution solve_normal(const fit_data& data, const basis& b) {
  const std::size_t m = b.fixed.size(), q = b.unknowns, exponents = 2 * m - 1;
  normal_solution s(m);
  numbers<double> sums(detail::checked_product(2 * detail::fit_partial_sums, exponents + m));
  detail::fit_kernels_in_use().add_moments(data.columns(), exponents, m, sums.data());
  numbers<doubled> moments(exponents + m);
  for (std::size_t i = 0; i < exponents + m; ++i) moments[i] = total(sums.data() + 2 * detail::fit_partial_sums * i);
  s.weights = moments[0];
  s.mean = moments[exponents] / moments[0];
  doubled_matrix g(q, q);
  numbers<doubled> right(q);
  numbers<double> errors(q);
  for (std::size_t r = 0; r < q; ++r) {
    right[r] = moments[exponents + b.exponents[r]];
    for (std::size_t k = 0; k < m; ++k) right[r] -= b.fixed[k] * moments[b.exponents[r] + k];
    for (std::size_t c = 0; c < q; ++c) g.set(r, c, moments[b.exponents[r] + b.exponents[c]]);
    errors[r] = row_sum(g, r) * 0x1p-98;  // what the sums have lost, roughly: they are no part of a proof here
  }
  const factorisation factors(g);
  s.state = factors.regular() ? status::ok : status::nearly_singular;
  if (s.state != status::ok) return s;
  verified_inverse v = verify(g, factors, errors);
  s.reciprocal_condition = std::sqrt(v.reciprocal_condition);
  if (!v.proved()) s.state = status::nearly_singular;
  numbers<doubled> x(q), rest(q);
  for (int round = 0; round < 2; ++round) {
    for (std::size_t r = 0; r < q; ++r) {
      rest[r] = right[r];
      for (std::size_t c = 0; c < q; ++c) rest[r] -= g.get(r, c) * x[c];
    }
    for (std::size_t r = 0; r < q; ++r)
      for (std::size_t c = 0; c < q; ++c) x[r] += v.inverse.get(r, c) * rest[c];
  }
  for (std::size_t k = 0; k < m; ++k) s.coefficients[k] = b.fixed[k];
  for (std::size_t r = 0; r < q; ++r) s.coefficients[b.exponents[r]] = x[r];
  for (std::size_t k = 0; k < m; ++k) {
    s.high[k] = s.coefficients[k].high;
    s.low[k] = s.coefficients[k].low;
  }
  s.inverse = std::move(v.inverse);
  return s;
}

mat<long double> column(std::size_t n) { return mat<long double>(std::size_t{1}, n); }

// The powers of t in powers of x 2^-e: entry (j, k) is the coefficient of (x 2^-e)^j in t^k, binomial(k, j) (-c)^(k-j) with the
// scaled centre c.
doubled_matrix expansion(std::size_t m, double centre) {
  doubled_matrix e(m, m);
  for (std::size_t k = 0; k < m; ++k)
    for (std::size_t j = 0; j <= k; ++j) {
      doubled v = j > 0 ? e.get(j - 1, k - 1) : doubled(k == 0 ? 1.0 : 0.0);
      if (j < k) v -= doubled(centre) * e.get(j, k - 1);
      e.set(j, k, v);
    }
  return e;
}

// sum over k and l of row[k] C[k][l] row[l] for the inverse of the normal matrix, which has rows for the unknowns alone.
template <class Row>
doubled quadratic_form(const normal_solution& s, const basis& b, Row&& row) {
  doubled sum = 0.0;
  for (std::size_t r = 0; r < b.unknowns; ++r) {
    doubled inner = 0.0;
    for (std::size_t c = 0; c < b.unknowns; ++c) inner += s.inverse.get(r, c) * row(b.exponents[c]);
    sum += inner * row(b.exponents[r]);
  }
  return sum;
}

// The coefficients of the powers of x and their standard errors; deviation is that of the scaled residuals.
void expand(const fit_data& data, const normal_solution& s, const basis& b, doubled deviation, polynomial_fit& f) {
  const std::size_t m = b.fixed.size();
  const doubled_matrix e = expansion(m, scaled(data.centre(), -data.x_exponent()));
  f.of_powers = column(m);
  f.of_powers_errors = column(m);
  f.powers_state = status::ok;
  for (std::size_t j = 0; j < m; ++j) {
    doubled sum = 0.0;
    for (std::size_t k = j; k < m; ++k) sum += e.get(j, k) * s.coefficients[k];
    const doubled form = quadratic_form(s, b, [&](std::size_t k) { return e.get(j, k); });
    const int exponent = data.y_exponent() - static_cast<int>(j) * data.x_exponent();
    f.of_powers.getData()[j] = scaled(sum.high, exponent);
    f.of_powers_errors.getData()[j] =
        form.high == 0 ? 0 : is_finite(deviation.high) ? scaled((deviation * square_root(form)).high, exponent) : infinite;
    if (!is_finite(f.of_powers.getData()[j])) f.powers_state = status::out_of_range;
  }
}

// Residuals, the largest of them, and R^2; gives the deviation of the scaled residuals.
doubled judge(fit_data& data, const normal_solution& s, const basis& b, polynomial_fit& f) {
  double sums[4 * detail::fit_partial_sums] = {};
  const bool about_mean = b.unknowns > 0 && b.exponents[0] == 0;
  detail::fit_kernels_in_use().residuals(data.columns(), s.high.data(), s.low.data(), s.high.size(),
                                         about_mean ? s.mean.high : 0, data.residuals(), sums);
  const doubled squares = total(sums), all = total(sums + 2 * detail::fit_partial_sums);
  std::size_t largest = 0;
  const double* r = data.residuals();
  for (std::size_t i = 0; i < data.used(); ++i)
    if (std::fabs(r[i]) > std::fabs(r[largest])) largest = i;
  f.largest_residual = scaled(r[largest], data.y_exponent());
  f.largest_at = static_cast<ulong>(data.number(largest));
  f.r_squared = all.high > 0 ? (doubled(1.0) - squares / all).high : 1;
  const std::size_t freedom = data.used() - b.unknowns;
  if (freedom == 0) {
    f.residual_deviation = infinite;
    return infinite;
  }
  const doubled deviation = square_root(squares / doubled(static_cast<double>(freedom)));
  f.residual_deviation = scaled(deviation.high, data.y_exponent() + data.weight_exponent());
  return deviation;
}

// Coefficients, errors and covariance about the centre.
void store(const fit_data& data, const normal_solution& s, const basis& b, doubled deviation, polynomial_fit& f) {
  const std::size_t m = b.fixed.size();
  f.centre = data.centre();
  f.scale = power_of_two(data.x_exponent());
  f.coefficients = column(m);
  f.standard_errors = column(m);
  f.covariance = mat<long double>(m, m);
  for (std::size_t k = 0; k < m; ++k) {
    f.coefficients.getData()[k] = scaled(s.coefficients[k].high, data.y_exponent());
    if (!is_finite(f.coefficients.getData()[k])) f.state = status::out_of_range;
  }
  for (std::size_t r = 0; r < b.unknowns; ++r) {
    const doubled root = square_root(s.inverse.get(r, r));
    f.standard_errors.getData()[b.exponents[r]] =
        is_finite(deviation.high) ? scaled((deviation * root).high, data.y_exponent()) : infinite;
    for (std::size_t c = 0; c < b.unknowns; ++c)
      f.covariance.getData()[b.exponents[r] * m + b.exponents[c]] =
          is_finite(deviation.high) ? scaled((deviation * deviation * s.inverse.get(r, c)).high, 2 * data.y_exponent())
                                    : infinite;
  }
}

}  // namespace

// In steps: the powers to fit, the points, their moments, the solution, its residuals, and the results in the caller's units.
polynomial_fit fit_polynomial(plane_points points, ulong coefficients, const fit_options& options) {
  polynomial_fit f;
  if (coefficients > 1000) {  // the powers of t leave the range of doubles, and no such fit is determined
    f.state = status::bad_option;
    return f;
  }
  basis b(coefficients);
  f.state = choose_basis(options, b);
  if (f.state != status::ok) return f;
  bool all_odd = true;
  for (std::size_t r = 0; r < b.unknowns; ++r) all_odd = all_odd && b.exponents[r] % 2 == 1;
  fit_data data(points, options, b.unknowns, b.exponents[0] == 0, all_odd);
  f.state = data.state();
  f.points_used = static_cast<ulong>(data.used());
  f.points_left_out = static_cast<ulong>(data.left_out());
  f.unknowns = static_cast<ulong>(b.unknowns);
  if (f.state != status::ok) return f;
  data.prepare(!b.any_fixed);
  f.state = data.state();
  if (f.state != status::ok) return f;
  for (std::size_t k = 0; k < coefficients; ++k)
    b.fixed[k] = scaled(b.fixed[k].high, static_cast<int>(k) * data.x_exponent() - data.y_exponent());
  const normal_solution s = solve_normal(data, b);
  f.state = s.state;
  f.reciprocal_condition = s.reciprocal_condition;
  if (f.state != status::ok) return f;
  const doubled deviation = judge(data, s, b, f);
  store(data, s, b, deviation, f);
  if (f.state != status::ok) {
    polynomial_fit none;
    none.state = f.state;
    return none;
  }
  expand(data, s, b, deviation, f);
  return f;
}

real polynomial_fit::value(real x) const {
  const real t = (x - centre) / scale;
  real sum = 0;
  for (ulong k = coefficients.getHeight(); k-- > 0;) sum = sum * t + coefficients.getData()[k];
  return sum;
}

prediction polynomial_fit::predict(real x, real factor) const {
  const real t = (x - centre) / scale;
  real form = 0, row_power = 1;
  for (ulong r = 0; r < covariance.getHeight(); ++r, row_power *= t) {
    real inner = 0;
    for (ulong c = covariance.getWidth(); c-- > 0;) inner = inner * t + covariance.getData()[r * covariance.getWidth() + c];
    form += row_power * inner;
  }
  if (form < 0) form = 0;
  return {value(x), factor * static_cast<real>(std::sqrt(form)),
          factor * static_cast<real>(std::sqrt(residual_deviation * residual_deviation + form))};
}

binom polynomial_fit::expanded() const {
  binom p;
  p.create(static_cast<slong>(of_powers.getHeight()));
  for (ulong k = 0; k < of_powers.getHeight(); ++k) p.set(static_cast<slong>(k), of_powers.getData()[k]);
  return p;
}

}  // namespace tessarn
