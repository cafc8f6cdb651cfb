// Correct digits and times of linear regressions: NIST's eleven reference sets, fitted by this library and by those
// that its users would take instead. Each line of the output is one fit as JSON; digits.py makes the table. The judge
// is the exact rational solution of the decimal data.
#include <Eigen/Dense>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include <gsl/gsl_multifit.h>
#include <lapack.h>

#include "analysis/reference_sets.h"
#include "support/random.h"
#include "tessarn/fit.h"
#include "tessarn/solve.h"
#include "tessarn/tessarn.h"

namespace {

using test::data_set;
using test::exact_regression;

// One regression: rows of the design, as every library but ours takes them, and points where it is a polynomial.
struct problem {
  std::string name;
  Eigen::MatrixXd design;
  Eigen::VectorXd y;
  std::vector<vector> points;
  std::size_t coefficients = 0;  // of the polynomial, those that are 0 among them
  bool through_origin = false;
  exact_regression exact;
};

problem polynomial(const test::set_name& s) {
  problem p;
  const data_set set(test::path(s.name));
  p.name = s.name;
  p.coefficients = s.coefficients;
  p.through_origin = s.first > 0;
  p.exact = test::regress(s, set, false);
  const auto n = static_cast<Eigen::Index>(set.rows.size());
  p.design.resize(n, static_cast<Eigen::Index>(s.coefficients - s.first));
  p.y.resize(n);
  for (Eigen::Index k = 0; k < n; ++k) {
    const double x = set.rows[static_cast<std::size_t>(k)][0];
    double power = p.through_origin ? x : 1;
    for (Eigen::Index i = 0; i < p.design.cols(); ++i, power *= x) p.design(k, i) = power;
    p.y(k) = set.rows[static_cast<std::size_t>(k)][1];
    p.points.emplace_back(x, p.y(k));
  }
  return p;
}

problem longley() {
  problem p;
  const data_set set(test::path("longley"));
  p.name = "longley";
  p.exact = test::regress_longley(set);
  const auto n = static_cast<Eigen::Index>(set.rows.size());
  p.design.resize(n, 7);
  p.y.resize(n);
  for (Eigen::Index k = 0; k < n; ++k) {
    for (Eigen::Index i = 0; i < 7; ++i)
      p.design(k, i) = i == 0 ? 1 : set.rows[static_cast<std::size_t>(k)][static_cast<std::size_t>(i)];
    p.y(k) = set.rows[static_cast<std::size_t>(k)][0];
  }
  return p;
}

using coefficients = std::vector<double>;
using method = std::function<coefficients(const problem&)>;

coefficients of(const Eigen::VectorXd& v) { return {v.data(), v.data() + v.size()}; }

// The calls of the second layer: a fit for polynomials, least squares for the regression in six variables.
coefficients ours(const problem& p) {
  if (p.points.empty()) {
    const auto rows = static_cast<std::size_t>(p.design.rows()), columns = static_cast<std::size_t>(p.design.cols());
    const Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor> by_rows = p.design;
    const tessarn::linear_solution s =
        tessarn::least_squares({by_rows.data(), rows, columns}, tessarn::column_view(p.y.data(), rows));
    return {s.x.getData(), s.x.getData() + columns};
  }
  tessarn::fit_options options;
  if (p.through_origin) options.which = tessarn::powers::no_constant;
  const tessarn::polynomial_fit f =
      tessarn::fit_polynomial(p.points, static_cast<tessarn::ulong>(p.coefficients), options);
  return {f.of_powers.getData() + (p.through_origin ? 1 : 0), f.of_powers.getData() + p.coefficients};
}

// The classic calls: binom::create, and mat::solve where the power 0 is missing or there is no polynomial.
coefficients classic(const problem& p) {
  if (!p.points.empty() && !p.through_origin) {
    std::vector<vector> points = p.points;
    binom b;
    b.create(points.data(), static_cast<tessarn::ulong>(points.size()), static_cast<tessarn::ulong>(p.coefficients));
    coefficients c;
    for (std::size_t k = 0; k < p.coefficients; ++k) c.push_back(b.get(static_cast<tessarn::slong>(k)));
    return c;
  }
  mat<long double> a(static_cast<std::size_t>(p.design.cols()), static_cast<std::size_t>(p.design.rows())),
      y(std::size_t{1}, static_cast<std::size_t>(p.design.rows())), x;
  for (Eigen::Index r = 0; r < p.design.rows(); ++r) {
    for (Eigen::Index c = 0; c < p.design.cols(); ++c) a.getData()[r * p.design.cols() + c] = p.design(r, c);
    y.getData()[r] = p.y(r);
  }
  x.solve(a, y);
  return {x.getData(), x.getData() + x.getHeight()};
}

coefficients gsl(const problem& p) {
  const auto n = static_cast<std::size_t>(p.design.rows()), m = static_cast<std::size_t>(p.design.cols());
  gsl_matrix* a = gsl_matrix_alloc(n, m);
  gsl_matrix* covariance = gsl_matrix_alloc(m, m);
  gsl_vector *y = gsl_vector_alloc(n), *c = gsl_vector_alloc(m);
  for (std::size_t r = 0; r < n; ++r) {
    for (std::size_t k = 0; k < m; ++k)
      gsl_matrix_set(a, r, k, p.design(static_cast<Eigen::Index>(r), static_cast<Eigen::Index>(k)));
    gsl_vector_set(y, r, p.y(static_cast<Eigen::Index>(r)));
  }
  gsl_multifit_linear_workspace* work = gsl_multifit_linear_alloc(n, m);
  double squares = 0;
  gsl_multifit_linear(a, y, c, covariance, &squares, work);
  coefficients result;
  for (std::size_t k = 0; k < m; ++k) result.push_back(gsl_vector_get(c, k));
  gsl_multifit_linear_free(work);
  gsl_vector_free(c);
  gsl_vector_free(y);
  gsl_matrix_free(covariance);
  gsl_matrix_free(a);
  return result;
}

// LAPACK's solver by the singular value decomposition, with every singular value kept.
coefficients dgelsd(const problem& p) {
  Eigen::MatrixXd a = p.design;
  Eigen::VectorXd b = p.y;
  int m = static_cast<int>(a.rows()), n = static_cast<int>(a.cols()), one = 1, rank = 0, info = 0, query = -1;
  std::vector<double> singular_values(static_cast<std::size_t>(n)), work(1);
  std::vector<int> integers(1000);
  double threshold = 0;
  LAPACK_dgelsd(&m, &n, &one, a.data(), &m, b.data(), &m, singular_values.data(), &threshold, &rank, work.data(),
                &query, integers.data(), &info);
  int size = static_cast<int>(work[0]);
  work.resize(static_cast<std::size_t>(size));
  LAPACK_dgelsd(&m, &n, &one, a.data(), &m, b.data(), &m, singular_values.data(), &threshold, &rank, work.data(), &size,
                integers.data(), &info);
  return {b.data(), b.data() + n};
}

// The least time of a call over nine rounds, in nanoseconds.
template <class Call>
double time_of(int calls, Call call) {
  using clock = std::chrono::steady_clock;
  double best = 1e300;
  for (int round = 0; round < 9; ++round) {
    const auto start = clock::now();
    for (int k = 0; k < calls; ++k) call();
    best = std::min(best, std::chrono::duration<double, std::nano>(clock::now() - start).count() / calls);
  }
  return best;
}

void print(const problem& p, const std::string& library, const method& f) {
  const coefficients c = f(p);
  double digits = 17;
  for (std::size_t k = 0; k < p.exact.coefficients.size(); ++k)
    digits = std::min(digits, k < c.size() ? test::digits(p.exact.coefficients[k], c[k]) : 0);
  std::printf("{\"set\": \"%s\", \"library\": \"%s\", \"digits\": %.2f, \"ns\": %.0f}\n", p.name.c_str(),
              library.c_str(), digits, time_of(200, [&] { f(p); }));
}

// For libraries of other languages: the data and the exact coefficients, to 30 digits.
void print_problem(const problem& p) {
  std::printf("{\"problem\": \"%s\", \"degree\": %zu, \"x\": [", p.name.c_str(), p.coefficients - 1);
  for (std::size_t k = 0; k < p.points.size(); ++k) std::printf("%s%.17g", k ? ", " : "", p.points[k].x);
  std::printf("], \"y\": [");
  for (std::size_t k = 0; k < p.points.size(); ++k) std::printf("%s%.17g", k ? ", " : "", p.points[k].y);
  std::printf("], \"exact\": [");
  for (std::size_t k = 0; k < p.exact.coefficients.size(); ++k) {
    mp_exp_t exponent = 0;
    const std::string text = mpf_class(p.exact.coefficients[k], 200).get_str(exponent, 10, 30);
    const bool negative = text[0] == '-';
    std::printf("%s\"%s0.%se%ld\"", k ? ", " : "", negative ? "-" : "", text.c_str() + (negative ? 1 : 0),
                static_cast<long>(exponent));
  }
  std::puts("]}");
}

// The classic fit and the one in doubled precision, over random points in a list.
void print_times(std::size_t coefficients, std::size_t n) {
  test::random_source random(1609);
  vectormat points;
  for (std::size_t i = 0; i < n; ++i) points.add(vector(random.uniform(2, 8), random.uniform()));
  const auto m = static_cast<tessarn::ulong>(coefficients);
  const int calls = static_cast<int>(1 + 200000 / n);
  const double classic = time_of(calls, [&] {
    binom b;
    b.create(points.data(), static_cast<tessarn::ulong>(n), m);
  });
  const double ours = time_of(calls, [&] {
    if (tessarn::fit_polynomial(points, m).state != tessarn::status::ok) std::abort();
  });
  std::printf("{\"coefficients\": %zu, \"n\": %zu, \"classic\": %.0f, \"ours\": %.0f}\n", coefficients, n, classic,
              ours);
}

}  // namespace

int main() {
  std::vector<problem> problems;
  for (const test::set_name& s : test::polynomials) problems.push_back(polynomial(s));
  problems.push_back(longley());
  for (const problem& p : problems) {
    if (p.name != "longley" && !p.through_origin) print_problem(p);
    print(p, "Tessarn", ours);
    print(p, "classic", classic);
    print(p, "GSL", gsl);
    print(p, "Eigen QR", [](const problem& q) { return of(q.design.colPivHouseholderQr().solve(q.y)); });
    print(p, "Eigen SVD", [](const problem& q) {
      return of(q.design.jacobiSvd(Eigen::ComputeThinU | Eigen::ComputeThinV).solve(q.y));
    });
    print(p, "dgelsd", dgelsd);
  }
  for (const std::size_t m : {2, 4, 8, 11})
    for (const std::size_t n : {20, 100, 1000, 10000, 1000000}) print_times(m, n);
}
