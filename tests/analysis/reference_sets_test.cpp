// The eleven sets of linear regression of NIST's Statistical Reference Datasets. The judge is the solution of the
// decimal data in exact rational arithmetic, of which the certified values are the first 15 digits.
#include <tessarn/fit.h>
#include <tessarn/solve.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "rational.h"

#if defined(TESTS_HAVE_GMP)

namespace {

using test::rational;
using test::rational_matrix;

// The number that a decimal text means: digits, a point and an exponent, each optional but the digits.
rational decimal(std::string text) {
  int exponent = 0;
  const std::size_t e = text.find_first_of("eE");
  if (e != std::string::npos) {
    exponent = std::stoi(text.substr(e + 1));
    text.resize(e);
  }
  const std::size_t point = text.find('.');
  if (point != std::string::npos) {
    exponent -= static_cast<int>(text.size() - point - 1);
    text.erase(point, 1);
  }
  const bool negative = text[0] == '-';
  if (negative || text[0] == '+') text.erase(0, 1);
  mpz_class digits(text, 10), ten;
  mpz_ui_pow_ui(ten.get_mpz_t(), 10, static_cast<unsigned long>(std::abs(exponent)));
  rational value(digits);
  if (exponent < 0)
    value /= rational(ten);
  else
    value *= rational(ten);
  return negative ? rational(-value) : value;
}

// A file of decimal numbers, as exact numbers and as doubles, and the certified values that its comments hold.
struct data_set {
  rational_matrix exact;
  std::vector<std::vector<double>> rows;
  std::vector<double> certified, certified_errors;
  double certified_deviation = -1;

  explicit data_set(const std::string& name) {
    std::ifstream file(name);
    EXPECT_TRUE(file.good()) << name;
    bool header = true;
    for (std::string line; std::getline(file, line);) {
      if (line.rfind("# coefficient", 0) == 0) {
        std::istringstream words(line.substr(line.find(':') + 1));
        std::string value, standard, deviation, error;
        words >> value >> standard >> deviation >> error;
        certified.push_back(std::stod(value));
        certified_errors.push_back(std::stod(error));
      }
      if (line.rfind("# residual standard deviation", 0) == 0)
        certified_deviation = std::stod(line.substr(std::string("# residual standard deviation").size()));
      if (line.empty() || line[0] == '#') continue;
      if (header) {
        header = false;
        continue;
      }
      std::istringstream fields(line);
      exact.emplace_back();
      rows.emplace_back();
      for (std::string field; std::getline(fields, field, ',');) {
        exact.back().push_back(decimal(field));
        rows.back().push_back(std::stod(field));
      }
    }
  }
};

// The square root of a rational as a double.
double root(const rational& v) {
  mpf_class wide(0, 400);
  wide = mpf_class(v, 400);
  return mpf_class(sqrt(wide)).get_d();
}

struct exact_regression {
  std::vector<rational> coefficients;
  std::vector<double> errors;
  double deviation;
};

// Solves the normal equations of a design, given row by row, exactly.
exact_regression regress(const rational_matrix& design, const std::vector<rational>& y) {
  const std::size_t n = design.size(), q = design[0].size();
  rational_matrix normal(q, std::vector<rational>(q)), right(q, std::vector<rational>(q + 1));
  for (std::size_t i = 0; i < q; ++i) {
    right[i][i + 1] = 1;
    for (std::size_t k = 0; k < n; ++k) {
      right[i][0] += design[k][i] * y[k];
      for (std::size_t j = 0; j < q; ++j) normal[i][j] += design[k][i] * design[k][j];
    }
  }
  rational det, squares;
  EXPECT_TRUE(test::eliminate(normal, right, det));
  exact_regression found;
  for (std::size_t i = 0; i < q; ++i) found.coefficients.push_back(right[i][0]);
  for (std::size_t k = 0; k < n; ++k) {
    rational r = y[k];
    for (std::size_t i = 0; i < q; ++i) r -= design[k][i] * right[i][0];
    squares += r * r;
  }
  const rational variance = squares / rational(static_cast<unsigned long>(n - q));
  for (std::size_t i = 0; i < q; ++i) found.errors.push_back(root(variance * right[i][i + 1]));
  found.deviation = root(variance);
  return found;
}

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

std::string path(const std::string& name) {
  const bool ours = name == "norris" || name == "pontius" || name == "wampler1" || name == "wampler2";
  return std::string(ours ? EXAMPLE_DATA : ANALYSIS_DATA) + "/" + name + ".csv";
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

struct set_name {
  const char* name;
  std::size_t coefficients, first;
};
constexpr set_name polynomials[] = {{"norris", 2, 0},   {"pontius", 3, 0},  {"noint1", 2, 1},   {"noint2", 2, 1},
                                    {"filip", 11, 0},   {"wampler1", 6, 0}, {"wampler2", 6, 0}, {"wampler3", 6, 0},
                                    {"wampler4", 6, 0}, {"wampler5", 6, 0}};

// The exact solution of a set of points, for its decimal numbers or for the doubles that are nearest to them.
exact_regression regress(const set_name& s, const data_set& set, bool of_doubles) {
  rational_matrix design;
  std::vector<rational> y;
  for (std::size_t k = 0; k < set.rows.size(); ++k) {
    const rational x = of_doubles ? rational(set.rows[k][0]) : set.exact[k][0];
    rational power = 1;
    design.emplace_back();
    for (std::size_t i = 0; i < s.coefficients; ++i, power *= x)
      if (i >= s.first) design.back().push_back(power);
    y.push_back(of_doubles ? rational(set.rows[k][1]) : set.exact[k][1]);
  }
  return regress(design, y);
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
  rational_matrix design;
  std::vector<rational> y;
  mat<long double> a(std::size_t{7}, n), b(std::size_t{1}, n);
  for (std::size_t k = 0; k < n; ++k) {
    design.push_back(set.exact[k]);
    design.back()[0] = 1;
    y.push_back(set.exact[k][0]);
    for (std::size_t i = 0; i < 7; ++i) a.getData()[7 * k + i] = i == 0 ? 1 : set.rows[k][i];
    b.getData()[k] = set.rows[k][0];
  }
  const exact_regression exact = regress(design, y);
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
