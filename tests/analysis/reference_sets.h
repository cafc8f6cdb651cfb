// The eleven sets of linear regression of NIST's Statistical Reference Datasets, and their solution in exact rational
// arithmetic, of which the certified values are the first 15 digits.
#pragma once

#if defined(TESTS_HAVE_GMP)

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "rational.h"

namespace test {

// The number that a decimal text means: digits, a point and an exponent, each optional but the digits.
inline rational decimal(std::string text) {
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
  bool found = false;

  explicit data_set(const std::string& name) {
    std::ifstream file(name);
    found = file.good();
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
inline double root(const rational& v) {
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
inline exact_regression regress(const rational_matrix& design, const std::vector<rational>& y) {
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
  eliminate(normal, right, det);
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

struct set_name {
  const char* name;
  std::size_t coefficients, first;
};
inline constexpr set_name polynomials[] = {
    {"norris", 2, 0},   {"pontius", 3, 0},  {"noint1", 2, 1},   {"noint2", 2, 1},   {"filip", 11, 0},
    {"wampler1", 6, 0}, {"wampler2", 6, 0}, {"wampler3", 6, 0}, {"wampler4", 6, 0}, {"wampler5", 6, 0}};

// The exact solution of a set of points, for its decimal numbers or for the doubles that are nearest to them.
inline exact_regression regress(const set_name& s, const data_set& set, bool of_doubles) {
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

inline std::string path(const std::string& name) {
  const bool ours = name == "norris" || name == "pontius" || name == "wampler1" || name == "wampler2";
  return std::string(ours ? EXAMPLE_DATA : ANALYSIS_DATA) + "/" + name + ".csv";
}

// The exact solution of Longley's regression in six variables and a constant.
inline exact_regression regress_longley(const data_set& set) {
  rational_matrix design;
  std::vector<rational> y;
  for (const rational_column& row : set.exact) {
    design.push_back(row);
    design.back()[0] = 1;
    y.push_back(row[0]);
  }
  return regress(design, y);
}

}  // namespace test

#endif
