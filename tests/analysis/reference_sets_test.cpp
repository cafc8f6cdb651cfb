// The eleven sets of linear regression of NIST's Statistical Reference Datasets. The judge is the solution of the
// decimal data in exact rational arithmetic, of which the certified values are the first 15 digits.
#include <tessarn/fit.h>
#include <tessarn/solve.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "rational.h"
#include "reference_sets.h"

#if defined(TESTS_HAVE_GMP)

namespace {

using test::data_set;
using test::exact_regression;
using test::path;
using test::polynomials;
using test::rational;
using test::rational_matrix;
using test::set_name;

double digits(double exact, double value) {
  if (exact == 0) return std::fabs(value) < 1e-15 ? 17 : -std::log10(std::fabs(value));
  return test::digits(rational(exact), value);
}

// The fewest correct digits of coefficients, their errors and the residual deviation; printed as a line of a table.
struct correct_digits {
  double coefficients = 17, errors = 17, deviation = 17;
};
correct_digits compare(const std::string& name, const exact_regression& exact, const double* values,
                       const double* errors, double deviation) {
  correct_digits d;
  for (std::size_t i = 0; i < exact.coefficients.size(); ++i) {
    d.coefficients = std::fmin(d.coefficients, test::digits(exact.coefficients[i], values[i]));
    d.errors = std::fmin(d.errors, digits(exact.errors[i], errors[i]));
  }
  d.deviation = digits(exact.deviation, deviation);
  std::printf("%-10s %6.1f %6.1f %6.1f\n", name.c_str(), d.coefficients, d.errors, d.deviation);
  return d;
}

// The certified values of the file are those of the exact solution, to 15 digits: the judge is right.
void expect_certified(const data_set& set, const exact_regression& exact) {
  if (set.certified.empty()) return;
  ASSERT_EQ(set.certified.size(), exact.coefficients.size());
  for (std::size_t i = 0; i < exact.coefficients.size(); ++i) {
    EXPECT_GT(test::digits(exact.coefficients[i], set.certified[i]), 14);
    EXPECT_GT(digits(exact.errors[i], set.certified_errors[i]), 14);
  }
  EXPECT_GT(digits(exact.deviation, set.certified_deviation), 14);
}

tessarn::polynomial_fit fit(const set_name& s, const data_set& set) {
  std::vector<vector> points;
  for (const std::vector<double>& row : set.rows) points.emplace_back(row[0], row[1]);
  tessarn::fit_options options;
  if (s.first > 0) options.which = tessarn::powers::no_constant;
  const tessarn::polynomial_fit f =
      tessarn::fit_polynomial(points, static_cast<tessarn::ulong>(s.coefficients), options);
  EXPECT_EQ(f.state, tessarn::status::ok) << s.name;
  EXPECT_EQ(f.powers_state, tessarn::status::ok) << s.name;
  EXPECT_EQ(f.expanded().getcofcnt(), s.coefficients);
  return f;
}

// Against the exact solution for the doubles that the fit is given, no digit is missing.
TEST(ReferenceSets, EveryDigitOfTheDoubles) {
  for (const set_name& s : polynomials) {
    const data_set set(path(s.name));
    ASSERT_TRUE(set.found) << s.name;
    const exact_regression exact = regress(s, set, true);
    const tessarn::polynomial_fit f = fit(s, set);
    const correct_digits d = compare(s.name, exact, f.of_powers.getData() + s.first,
                                     f.of_powers_errors.getData() + s.first, f.residual_deviation);
    EXPECT_GE(d.coefficients, 15) << s.name;
    EXPECT_GE(d.errors, 15) << s.name;
    EXPECT_GE(d.deviation, 15) << s.name;
  }
}

// At least 14 of the certified digits, or as many as the exact solution for the doubles has, which are not the decimal
// numbers: that is what limits Norris and Pontius, and Wampler2, whose residuals are nothing but that rounding.
TEST(ReferenceSets, CertifiedDigits) {
  for (const set_name& s : polynomials) {
    const data_set set(path(s.name));
    ASSERT_TRUE(set.found) << s.name;
    const exact_regression exact = regress(s, set, false), limit = regress(s, set, true);
    expect_certified(set, exact);
    std::vector<double> values;
    for (const rational& v : limit.coefficients) values.push_back(v.get_d());
    const correct_digits most =
        compare(std::string(s.name) + " *", exact, values.data(), limit.errors.data(), limit.deviation);
    const tessarn::polynomial_fit f = fit(s, set);
    const correct_digits d = compare(s.name, exact, f.of_powers.getData() + s.first,
                                     f.of_powers_errors.getData() + s.first, f.residual_deviation);
    EXPECT_GE(d.coefficients, std::fmin(14, most.coefficients - 0.1)) << s.name;
    EXPECT_GE(d.errors, std::fmin(14, most.errors - 0.1)) << s.name;
    EXPECT_GE(d.deviation, std::fmin(14, most.deviation - 0.1)) << s.name;
  }
}

TEST(ReferenceSets, LongleyByLeastSquares) {
  const data_set set(path("longley"));
  const std::size_t n = set.rows.size();
  mat<long double> a(std::size_t{7}, n), b(std::size_t{1}, n);
  for (std::size_t k = 0; k < n; ++k) {
    for (std::size_t i = 0; i < 7; ++i) a.getData()[7 * k + i] = i == 0 ? 1 : set.rows[k][i];
    b.getData()[k] = set.rows[k][0];
  }
  const exact_regression exact = test::regress_longley(set);
  expect_certified(set, exact);
  const tessarn::linear_solution s = tessarn::least_squares(a, b);
  ASSERT_EQ(s.state, tessarn::status::ok);
  const correct_digits d = compare("longley", exact, s.x.getData(), s.standard_errors.getData(), s.residual_deviation);
  EXPECT_GE(d.coefficients, 14);
  EXPECT_GE(d.errors, 14);
  EXPECT_GE(d.deviation, 14);
}

}  // namespace

#endif
