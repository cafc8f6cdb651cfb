// Fits of surfaces by normal equations in doubled precision about a centre.
#include <limits>

#include "analysis/fit_data.h"
#include "analysis/normal_equations.h"
#include "tessarn/fit.h"

namespace tessarn {

using namespace analysis;

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();

// A term x^i y^j, and its place in the table of the coefficients.
struct term {
  std::size_t i = 0, j = 0, place = 0;
};

// The terms that are fitted, in the order of the table.
struct surface_basis {
  numbers<term> terms;
  std::size_t unknowns = 0, grade;
  bool total_degree;

  surface_basis(std::size_t g, bool total) : terms(g * g), grade(g), total_degree(total) {
    for (std::size_t j = 0; j < g; ++j)
      for (std::size_t i = 0; i < (total ? g - j : g); ++i) terms[unknowns++] = {i, j, g * j + i};
  }
};

struct surface_solution {
  normal_equations equations;
  numbers<doubled> coefficients;  // the whole table
  doubled mean;                   // of the heights, weighted
};

// The moments of all terms, the normal equations and their solution.
surface_solution solve_normal(const fit_data& data, const surface_basis& b) {
  const std::size_t g = b.grade, side = 2 * g - 1;
  const auto add = [&](const fit_block&, const detail::fit_columns& points, double* sums) {
    detail::fit_kernels_in_use().add_surface_moments(points, g, b.total_degree, sums);
  };
  const numbers<doubled> moments = sum_moments(data, side * side + g * g, add);
  const auto entry = [&](std::size_t r, std::size_t c) {
    return moments[side * (b.terms[r].j + b.terms[c].j) + b.terms[r].i + b.terms[c].i];
  };
  surface_solution s{normal_equations(b.unknowns, entry), numbers<doubled>(g * g), moments[side * side] / moments[0]};
  if (!s.equations.regular()) return s;
  numbers<doubled> x(b.unknowns);
  for (std::size_t r = 0; r < b.unknowns; ++r) x[r] = moments[side * side + b.terms[r].place];
  s.equations.solve(x);
  for (std::size_t r = 0; r < b.unknowns; ++r) s.coefficients[b.terms[r].place] = x[r];
  return s;
}

mat<long double> column(std::size_t n) { return mat<long double>(std::size_t{1}, n); }

double judge_fit(const fit_data& data, const surface_solution& s, const surface_basis& b, surface_fit& f) {
  const std::size_t m = s.coefficients.size();
  numbers<double> high(m), low(m);
  for (std::size_t k = 0; k < m; ++k) {
    high[k] = s.coefficients[k].high;
    low[k] = s.coefficients[k].low;
  }
  const fit_quality q =
      judge(data, b.unknowns, [&](const detail::fit_columns& points, double* residuals, double* sums) {
        return detail::fit_kernels_in_use().surface_residuals(points, high.data(), low.data(), b.grade, s.mean.high,
                                                              residuals, sums);
      });
  f.largest_residual = q.largest_residual;
  f.largest_at = static_cast<ulong>(q.largest_at);
  f.r_squared = q.r_squared;
  f.residual_deviation = q.residual_deviation;
  return q.scaled_deviation;
}

// Coefficients, errors and covariance about the centre.
void store(const fit_data& data, const surface_solution& s, const surface_basis& b, double deviation, surface_fit& f) {
  const std::size_t m = s.coefficients.size();
  f.centre_x = data.x().centre;
  f.centre_y = data.second().centre;
  f.scale_x = power_of_two(data.x().exponent);
  f.scale_y = power_of_two(data.second().exponent);
  f.coefficients = column(m);
  f.standard_errors = column(m);
  f.covariance = mat<long double>(m, m);
  const bool told = is_finite(deviation);
  const double variance = deviation * deviation;
  for (std::size_t r = 0; r < b.unknowns; ++r) {
    const std::size_t at = b.terms[r].place;
    const double coefficient = scaled(s.coefficients[at].high, data.y_exponent());
    if (!is_finite(coefficient)) f.state = status::out_of_range;
    f.coefficients.getData()[at] = coefficient;
    f.standard_errors.getData()[at] =
        told ? scaled(deviation * std::sqrt(s.equations.inverse(r, r)), data.y_exponent()) : infinite;
    for (std::size_t c = 0; c < b.unknowns; ++c)
      f.covariance.getData()[at * m + b.terms[c].place] =
          told ? scaled(variance * s.equations.inverse(r, c), 2 * data.y_exponent()) : infinite;
  }
}

// The coefficients of the powers of x and y, and their standard errors.
void expand(const fit_data& data, const surface_solution& s, const surface_basis& b, double deviation, surface_fit& f) {
  const doubled_matrix of_x = expansion(b.grade, data.x()), of_y = expansion(b.grade, data.second());
  f.of_powers = column(s.coefficients.size());
  f.of_powers_errors = column(s.coefficients.size());
  f.powers_state = status::ok;
  doubled_matrix vectors(b.unknowns, b.unknowns), sums(1, b.unknowns);
  for (std::size_t k = 0; k < b.unknowns; ++k) {
    const term& of = b.terms[k];
    for (std::size_t r = 0; r <= k; ++r) vectors.set(k, r, of_x.get(of.i, b.terms[r].i) * of_y.get(of.j, b.terms[r].j));
    sums.add_row(0, s.coefficients[of.place], vectors, k, 0, k + 1);
  }
  const numbers<double> forms = s.equations.forms(vectors, [](std::size_t i) { return i + 1; });
  for (std::size_t r = 0; r < b.unknowns; ++r) {
    const term& power = b.terms[r];
    const doubled sum = sums.get(0, r);
    const int exponent = data.y_exponent() - static_cast<int>(power.i) * data.x().exponent -
                         static_cast<int>(power.j) * data.second().exponent;
    f.of_powers.getData()[power.place] = scaled(sum.high, exponent);
    f.of_powers_errors.getData()[power.place] =
        is_finite(deviation) ? scaled(deviation * std::sqrt(forms[r]), exponent) : infinite;
    if (!is_finite(f.of_powers.getData()[power.place])) f.powers_state = status::out_of_range;
  }
}

// The sum of table[grade j + i] t^i v^j.
real horner(const real* table, ulong grade, real t, real v) {
  real sum = 0;
  for (ulong j = grade; j-- > 0;) {
    real row = 0;
    for (ulong i = grade; i-- > 0;) row = row * t + table[grade * j + i];
    sum = sum * v + row;
  }
  return sum;
}

}  // namespace

// The steps of fit_polynomial(), for the terms of a surface.
surface_fit fit_surface(space_points points, ulong grade, const surface_options& options) {
  surface_fit f;
  if (grade == 0 || grade > detail::largest_grade) {
    f.state = grade == 0 ? status::no_unknowns : status::bad_option;
    return f;
  }
  const surface_basis b(grade, options.total_degree);
  const fit_input input{points.x, points.y, points.z, options.weights, true, options.leave_out_not_finite};
  fit_data data(input, b.unknowns, true, false);
  if (data.state() == status::ok) data.prepare(true);
  f.state = data.state();
  f.points_used = static_cast<ulong>(data.used());
  f.points_left_out = static_cast<ulong>(data.left_out());
  f.unknowns = static_cast<ulong>(b.unknowns);
  if (f.state != status::ok) return f;
  const surface_solution s = solve_normal(data, b);
  if (!s.equations.regular()) {
    f.state = status::rank_deficient;
    return f;
  }
  f.grade = grade;
  f.reciprocal_condition = s.equations.reciprocal_condition();
  const double deviation = judge_fit(data, s, b, f);
  store(data, s, b, deviation, f);
  if (f.state != status::ok) {
    surface_fit none;
    none.state = f.state;
    return none;
  }
  expand(data, s, b, deviation, f);
  return f;
}

real surface_fit::value(real x, real y) const {
  const real t = (x - centre_x) / scale_x, v = (y - centre_y) / scale_y;
  return coefficients.getHeight() == 0 ? 0 : horner(coefficients.getData(), grade, t, v);
}

prediction surface_fit::predict(real x, real y, real factor) const {
  const real t = (x - centre_x) / scale_x, v = (y - centre_y) / scale_y;
  const auto at_place = [&](const real* table) { return horner(table, grade, t, v); };
  real form = 0, of_y = 1;
  for (ulong j = 0; j < grade; ++j, of_y *= v) {
    real term = of_y;
    for (ulong i = 0; i < grade; ++i, term *= t)
      form += term * at_place(covariance.getData() + (grade * j + i) * grade * grade);
  }
  if (form < 0) form = 0;
  return {value(x, y), factor * static_cast<real>(std::sqrt(form)),
          factor * static_cast<real>(std::sqrt(residual_deviation * residual_deviation + form))};
}

hyperbinom surface_fit::expanded() const {
  hyperbinom p;
  p.create(static_cast<slong>(grade));
  for (ulong k = 0; k < of_powers.getHeight(); ++k)
    p.set(static_cast<slong>(k % grade), static_cast<slong>(k / grade), of_powers.getData()[k]);
  return p;
}

}  // namespace tessarn
