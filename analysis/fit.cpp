// Fits of polynomials by normal equations in doubled precision about a centre.
//
// The normal matrix about the centre of the data, with a scale that brings the abscissas into -1 .. 1, has a condition
// of about 1e8 for degree 10, and 1e16 for degree 20: of the 31 digits of doubled precision more than a double holds
// are left.
#include "tessarn/fit.h"

#include <limits>

#include "analysis/fit_data.h"
#include "analysis/normal_equations.h"

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

// The solution of the normal equations, in t.
struct normal_solution {
  normal_equations equations;     // for the unknowns
  numbers<doubled> coefficients;  // all of the polynomial, the fixed ones among them
  doubled mean;                   // of the ordinates, weighted
};

// The equations of the unknowns; the terms of the fixed coefficients go to the right-hand side.
normal_solution solve_normal(const fit_data& data, const basis& b) {
  const std::size_t m = b.fixed.size(), q = b.unknowns, exponents = 2 * m - 1;
  const auto add = [&](const fit_block&, const detail::fit_columns& points, double* sums) {
    detail::fit_kernels_in_use().add_moments(points, exponents, m, sums);
  };
  const numbers<doubled> moments = sum_moments(data, exponents + m, add);
  numbers<doubled> x(q);
  for (std::size_t r = 0; r < q; ++r) {
    x[r] = moments[exponents + b.exponents[r]];
    if (!b.any_fixed) continue;
    for (std::size_t k = 0; k < m; ++k) x[r] -= b.fixed[k] * moments[b.exponents[r] + k];
  }
  const auto entry = [&](std::size_t r, std::size_t c) { return moments[b.exponents[r] + b.exponents[c]]; };
  normal_solution s{normal_equations(q, entry), numbers<doubled>(m), moments[exponents] / moments[0]};
  if (!s.equations.regular()) return s;
  s.equations.solve(x);
  for (std::size_t k = 0; k < m; ++k) s.coefficients[k] = b.fixed[k];
  for (std::size_t r = 0; r < q; ++r) s.coefficients[b.exponents[r]] = x[r];
  return s;
}

mat<long double> column(std::size_t n) { return mat<long double>(std::size_t{1}, n); }

// The coefficients of the powers of x and their standard errors; deviation is that of the scaled residuals.
void expand(const fit_data& data, const normal_solution& s, const basis& b, double deviation, polynomial_fit& f) {
  const std::size_t m = b.fixed.size();
  const doubled_matrix e = expansion(m, data.x());
  f.of_powers = column(m);
  f.of_powers_errors = column(m);
  f.powers_state = status::ok;
  doubled_matrix sums(1, m), vectors(b.unknowns, m);
  for (std::size_t k = 0; k < m; ++k) sums.add_products(0, s.coefficients[k], e, k, 0, k + 1);
  for (std::size_t i = 0; i < b.unknowns; ++i)
    for (std::size_t j = 0; j <= b.exponents[i]; ++j) vectors.set(i, j, e.get(b.exponents[i], j));
  const numbers<double> forms = s.equations.forms(vectors, [&](std::size_t i) { return b.exponents[i] + 1; });
  for (std::size_t j = 0; j < m; ++j) {
    const double form = forms[j];
    const int exponent = data.y_exponent() - static_cast<int>(j) * data.x().exponent;
    f.of_powers.getData()[j] = scaled(sums.get(0, j).high, exponent);
    f.of_powers_errors.getData()[j] = form == 0              ? 0
                                      : is_finite(deviation) ? scaled(deviation * std::sqrt(form), exponent)
                                                             : infinite;
    if (!is_finite(f.of_powers.getData()[j])) f.powers_state = status::out_of_range;
  }
}

// Residuals, the largest of them, and R^2; gives the deviation of the scaled residuals.
double judge_fit(const fit_data& data, const normal_solution& s, const basis& b, polynomial_fit& f) {
  const std::size_t m = s.coefficients.size();
  numbers<double> high(m), low(m);
  for (std::size_t k = 0; k < m; ++k) {
    high[k] = s.coefficients[k].high;
    low[k] = s.coefficients[k].low;
  }
  const double mean = b.exponents[0] == 0 ? s.mean.high : 0;
  const fit_quality q =
      judge(data, b.unknowns, [&](const detail::fit_columns& points, double* residuals, double* sums) {
        return detail::fit_kernels_in_use().residuals(points, high.data(), low.data(), m, mean, residuals, sums);
      });
  f.largest_residual = q.largest_residual;
  f.largest_at = static_cast<ulong>(q.largest_at);
  f.r_squared = q.r_squared;
  f.residual_deviation = q.residual_deviation;
  return q.scaled_deviation;
}

// Coefficients, errors and covariance about the centre.
void store(const fit_data& data, const normal_solution& s, const basis& b, double deviation, polynomial_fit& f) {
  const std::size_t m = b.fixed.size();
  f.centre = data.x().centre;
  f.scale = power_of_two(data.x().exponent);
  f.coefficients = column(m);
  f.standard_errors = column(m);
  f.covariance = mat<long double>(m, m);
  for (std::size_t k = 0; k < m; ++k) {
    f.coefficients.getData()[k] = scaled(s.coefficients[k].high, data.y_exponent());
    if (!is_finite(f.coefficients.getData()[k])) f.state = status::out_of_range;
  }
  const bool told = is_finite(deviation);
  const double variance = deviation * deviation;
  for (std::size_t r = 0; r < b.unknowns; ++r)
    for (std::size_t c = 0; c <= r; ++c) {
      const double entry = s.equations.inverse(r, c);
      const double covariance = told ? scaled(variance * entry, 2 * data.y_exponent()) : infinite;
      f.covariance.getData()[b.exponents[r] * m + b.exponents[c]] = covariance;
      f.covariance.getData()[b.exponents[c] * m + b.exponents[r]] = covariance;
      if (r == c)
        f.standard_errors.getData()[b.exponents[r]] =
            told ? scaled(deviation * std::sqrt(entry), data.y_exponent()) : infinite;
    }
}

}  // namespace

// In steps: the powers to fit, the points, their moments, the solution, its residuals, and the results in the caller's
// units.
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
  const fit_input input{points.x, {}, points.y, options.weights, false, options.leave_out_not_finite};
  fit_data data(input, b.unknowns, b.exponents[0] == 0, all_odd);
  f.state = data.state();
  f.points_used = static_cast<ulong>(data.used());
  f.points_left_out = static_cast<ulong>(data.left_out());
  f.unknowns = static_cast<ulong>(b.unknowns);
  if (f.state != status::ok) return f;
  data.prepare(!b.any_fixed);
  f.state = data.state();
  if (f.state != status::ok) return f;
  for (std::size_t k = 0; b.any_fixed && k < coefficients; ++k)
    b.fixed[k] = scaled(b.fixed[k].high, static_cast<int>(k) * data.x().exponent - data.y_exponent());
  const normal_solution s = solve_normal(data, b);
  if (!s.equations.regular()) {
    f.state = status::nearly_singular;
    return f;
  }
  f.reciprocal_condition = s.equations.reciprocal_condition();
  const double deviation = judge_fit(data, s, b, f);
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
    for (ulong c = covariance.getWidth(); c-- > 0;)
      inner = inner * t + covariance.getData()[r * covariance.getWidth() + c];
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
