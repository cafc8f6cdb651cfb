// Values and derivatives of polynomials, searches by scanning, and the product of polynomials.
#include <gsl/gsl_poly.h>

#include <array>
#include <boost/math/tools/rational.hpp>

#include "inputs.h"
#include "plain/curve.h"

namespace bench {

namespace {

constexpr int count = 6;  // coefficients of the curves over arrays and of the searches
using coefficients = std::array<double, count>;

template <std::size_t N>
inline double horner(const std::array<double, N>& c, double x) {
  double s = c[N - 1];
  for (std::size_t k = N - 1; k-- > 0;) s = s * x + c[k];
  return s;
}

// The same for any number of coefficients.
inline double horner(const double* c, std::size_t n, double x) {
  double s = c[n - 1];
  for (std::size_t k = n - 1; k-- > 0;) s = s * x + c[k];
  return s;
}

std::array<double, count - 1> derivative(const coefficients& c) {
  std::array<double, count - 1> d;
  for (std::size_t k = 1; k < count; ++k) d[k - 1] = double(k) * c[k];
  return d;
}

void set(binom& p, const double* c, long n) {
  p.create(tessarn::slong(n));
  for (long k = 0; k < n; ++k) p.set(tessarn::slong(k), c[k]);
}

// At one abscissa: the running power and the terms; powers, factors and coefficients.
products_and_sums func_needs(int n) { return {2.0 * n - 3, n - 1.0}; }
products_and_sums derivative_needs(int n) { return powers_below(n - 1) + products_and_sums{2.0 * n - 4, n - 2.0}; }

// ---------------------------------------------------------------------------- over arrays

// At n abscissas, with one array for the results.
work over_array(products_and_sums needs, long n) {
  return {needs.side_by_side() * double(n), 16.0 * double(n), traffic::copy, 8.0 * double(n)};
}

struct array_inputs {
  explicit array_inputs(long size) : n(size), rotation(rotation_for(16.0 * double(n))), y(std::size_t(n)) {
    const values drawn = random_values(count, 10);
    std::copy(drawn.begin(), drawn.end(), c.begin());
    set(p, c.data(), count);
    any = drawn;
    for (std::size_t k = 1; k < drawn.size(); ++k) any_derivative.push_back(double(k) * drawn[k]);
    for (int i = 0; i < rotation; ++i) x.push_back(random_values(std::size_t(n), 11 + std::uint64_t(i)));
  }
  long n;
  int rotation;
  std::vector<values> x;
  values y;
  coefficients c;
  values any, any_derivative;
  binom p;
};

plain::poly plain_form(const coefficients& c) { return {values(c.begin(), c.end())}; }

void add_func(long n) {
  row<array_inputs> r("func over an array, 6 coefficients", n, over_array(func_needs(count), n));
  r.agree({1e-13}).note("ascending powers, not Horner's scheme");
  r.ours([](array_inputs & in, int i) -> auto& {
    in.p.func(in.x[std::size_t(i)].data(), in.y.data(), index(in.n));
    return in.y;
  });
  r.peer(
      "other", "Horner loop", [](array_inputs & in, int i) -> auto& {
        const coefficients c = in.c;
        const values& x = in.x[std::size_t(i)];
        for (std::size_t k = 0; k < x.size(); ++k) in.y[k] = horner(c, x[k]);
        return in.y;
      });
  r.peer(
      "other", "Boost.Math", [](array_inputs & in, int i) -> auto& {
        double c[count];
        std::copy(in.c.begin(), in.c.end(), c);
        const values& x = in.x[std::size_t(i)];
        for (std::size_t k = 0; k < x.size(); ++k) in.y[k] = boost::math::tools::evaluate_polynomial(c, x[k]);
        return in.y;
      });
  r.peer(
      "GSL", "gsl_poly_eval", [](array_inputs & in, int i) -> auto& {
        const values& x = in.x[std::size_t(i)];
        for (std::size_t k = 0; k < x.size(); ++k) in.y[k] = gsl_poly_eval(in.c.data(), count, x[k]);
        return in.y;
      });
  r.plain([](array_inputs & in, int i) -> auto& {
    const plain::poly p = plain_form(in.c);
    for (std::size_t k = 0; k < in.y.size(); ++k) in.y[k] = plain::func(p, in.x[std::size_t(i)][k]);
    return in.y;
  });
}

void add_derivative(long n) {
  row<array_inputs> r("func_1 over an array, 6 coefficients", n, over_array(derivative_needs(count), n));
  r.agree({1e-13}).note("correctly rounded powers");
  r.ours([](array_inputs & in, int i) -> auto& {
    in.p.func_1(in.x[std::size_t(i)].data(), in.y.data(), index(in.n));
    return in.y;
  });
  r.peer(
      "other", "Horner loop", [](array_inputs & in, int i) -> auto& {
        const auto d = derivative(in.c);
        const values& x = in.x[std::size_t(i)];
        for (std::size_t k = 0; k < x.size(); ++k) in.y[k] = horner(d, x[k]);
        return in.y;
      });
  r.peer(
      "other", "Boost.Math", [](array_inputs & in, int i) -> auto& {
        const auto known = derivative(in.c);
        double d[count - 1];
        std::copy(known.begin(), known.end(), d);
        const values& x = in.x[std::size_t(i)];
        for (std::size_t k = 0; k < x.size(); ++k) in.y[k] = boost::math::tools::evaluate_polynomial(d, x[k]);
        return in.y;
      });
  if (n <= 10000) {
    r.plain([](array_inputs & in, int i) -> auto& {
      const plain::poly p = plain_form(in.c);
      for (std::size_t k = 0; k < in.y.size(); ++k) in.y[k] = plain::func_1(p, in.x[std::size_t(i)][k]);
      return in.y;
    });
  }
}

// Rows of their own for the loop that a user writes for any number of coefficients.
template <class Ours>
void add_array_of_any(const std::string& operation, products_and_sums needs, long n, Ours ours,
                      values array_inputs::*c) {
  row<array_inputs> r(operation + " over an array, 6 coefficients, against any number", n, over_array(needs, n));
  r.agree({1e-13}).note("the peer has the number as an argument, too");
  r.ours([ours](array_inputs & in, int i) -> auto& {
    ours(in, in.x[std::size_t(i)]);
    return in.y;
  });
  r.peer(
      "other", "Horner loop, any number", [c](array_inputs & in, int i) -> auto& {
        const values& x = in.x[std::size_t(i)];
        const double* first = (in.*c).data();
        const std::size_t n = (in.*c).size();
        for (std::size_t k = 0; k < x.size(); ++k) in.y[k] = horner(first, n, x[k]);
        return in.y;
      });
}

void add_func_of_any(long n) {
  add_array_of_any(
      "func", func_needs(count), n,
      [](array_inputs& in, const values& x) { in.p.func(x.data(), in.y.data(), index(in.n)); }, &array_inputs::any);
}

void add_derivative_of_any(long n) {
  add_array_of_any(
      "func_1", derivative_needs(count), n,
      [](array_inputs& in, const values& x) { in.p.func_1(x.data(), in.y.data(), index(in.n)); },
      &array_inputs::any_derivative);
}

// ---------------------------------------------------------------------------- one at a time

struct point_inputs {
  explicit point_inputs(long size)
      : n(size), c(random_values(std::size_t(n), 12)), x(random_values(std::size_t(rotation), 13)) {
    set(p, c.data(), n);
    plain.cof = c;
  }
  long n;
  int rotation = 251;
  values c, x;
  binom p;
  plain::poly plain;
};

void add_point(long n) {
  row<point_inputs> r("func_1 by number of coefficients", n,
                      {derivative_needs(int(n)).side_by_side(), 8.0 * double(n), traffic::read});
  r.agree({1e-12}).note("correctly rounded powers");
  r.ours([](point_inputs& in, int i) { return in.p.func_1(in.x[std::size_t(i)]); });
  r.peer("other", "Horner", [](point_inputs& in, int i) {
    const double x = in.x[std::size_t(i)];
    double s = 0;
    for (std::size_t k = in.c.size(); k-- > 1;) s = s * x + double(k) * in.c[k];
    return s;
  });
  r.peer("GSL", "gsl_poly_eval_derivs", [](point_inputs& in, int i) {
    double result[2];
    gsl_poly_eval_derivs(in.c.data(), in.c.size(), in.x[std::size_t(i)], result, 2);
    return result[1];
  });
  r.plain([](point_inputs& in, int i) { return plain::func_1(in.plain, in.x[std::size_t(i)]); });
}

// ---------------------------------------------------------------------------- searches

// The scheme of our searches, with one evaluation of f a sample: scan for a change of sign, refine
// the step a hundredfold.
template <class Function>
double scan(Function f, double a, double b, double step, double eps) {
  while (step >= eps) {
    double x = a, y = f(a);
    for (;;) {
      if (x > b) return -1;
      const double next = x + step, value = f(next);
      if (y * value < 0) {
        a = x;
        b = next;
        step *= 0.01;
        break;
      }
      if (y == 0) return x;
      x = next;
      y = value;
    }
  }
  return (a + b) / 2;
}

// Curves whose zero, and whose extreme point of the curvature, lie just below 1.
struct search_inputs {
  explicit search_inputs(long size) : n(size), step(1 / double(size)), eps(step * 1e-3) {
    for (int i = 0; i < rotation; ++i) {
      const double v = before_one(step, i);
      add(zero, zero_curves, plain_zero, curve_with_zero(v));
      add(bend, bend_curves, plain_bend, curve_with_bend(v));
    }
  }
  static void add(std::vector<coefficients>& c, std::vector<binom>& p, std::vector<plain::poly>& q, const values& v) {
    c.emplace_back();
    std::copy(v.begin(), v.end(), c.back().begin());
    p.emplace_back();
    set(p.back(), v.data(), count);
    q.push_back({v});
  }
  long n;
  double step, eps;
  static constexpr int rotation = 3;
  std::vector<coefficients> zero, bend;
  std::vector<binom> zero_curves, bend_curves;
  std::vector<plain::poly> plain_zero, plain_bend;
};

void add_find_zero(long n) {
  row<search_inputs> r("find_zero by samples", n,
                       {(func_needs(count) + products_and_sums{0, 1}).side_by_side() * double(n), 0});
  r.agree({1e-6});
  r.ours([](search_inputs& in, int i) { return in.zero_curves[std::size_t(i)].find_zero(0, 1, in.step, in.eps); });
  r.peer("other", "Horner scan", [](search_inputs& in, int i) {
    const coefficients c = in.zero[std::size_t(i)];
    return scan([&](double x) { return horner(c, x); }, 0, 1, in.step, in.eps);
  });
  r.plain(
      [](search_inputs& in, int i) { return plain::find_zero(in.plain_zero[std::size_t(i)], 0, 1, in.step, in.eps); });
}

void add_find_extreme(long n) {
  // Three derivatives from shared powers, and the formula of the curvature's derivative.
  row<search_inputs> r("find_extrpoint_arc by samples", n, {(4 + 3 * (5 + 4 + 3) + 18.0) * double(n), 0});
  r.agree({1e-6});
  r.ours([](search_inputs& in, int i) {
    return in.bend_curves[std::size_t(i)].find_extrpoint_arc(0, 1, in.step, in.eps);
  });
  // The sign of the derivative of the curvature is that of f''' (1 + f'^2) - 3 f' f''^2.
  r.peer("other", "Horner scan", [](search_inputs& in, int i) {
    std::array<double, 5> d1;
    std::array<double, 4> d2;
    std::array<double, 3> d3;
    const coefficients& c = in.bend[std::size_t(i)];
    for (std::size_t k = 0; k < 5; ++k) d1[k] = double(k + 1) * c[k + 1];
    for (std::size_t k = 0; k < 4; ++k) d2[k] = double(k + 1) * d1[k + 1];
    for (std::size_t k = 0; k < 3; ++k) d3[k] = double(k + 1) * d2[k + 1];
    return scan(
        [&](double x) {
          const double f1 = horner(d1, x), f2 = horner(d2, x), f3 = horner(d3, x);
          return f3 * (1 + f1 * f1) - 3 * f1 * f2 * f2;
        },
        0, 1, in.step, in.eps);
  });
  r.plain([](search_inputs& in, int i) {
    return plain::find_extrpoint_arc(in.plain_bend[std::size_t(i)], 0, 1, in.step, in.eps);
  });
}

// ---------------------------------------------------------------------------- product

struct polynomial_inputs {
  explicit polynomial_inputs(long size) : n(size) {
    for (int i = 0; i < rotation; ++i) {
      c.push_back(random_values(std::size_t(n), 20 + std::uint64_t(i)));
      ours.emplace_back();
      set(ours.back(), c.back().data(), n);
    }
  }
  std::size_t next(int i) const { return std::size_t((i + 1) % rotation); }
  long n;
  static constexpr int rotation = 7;
  std::vector<values> c;
  std::vector<binom> ours;
};

void add_polynomial_product(long n) {
  row<polynomial_inputs> r("polynomial product", n, {2.0 * double(n) * double(n), 32.0 * double(n)});
  r.agree({1e-13});
  r.ours([](polynomial_inputs& in, int i) {
    binom p;
    p.copy(in.ours[std::size_t(i)]);
    p *= in.ours[in.next(i)];
    return p;
  });
  r.peer("other", "loop", [](polynomial_inputs& in, int i) {
    const values &a = in.c[std::size_t(i)], &b = in.c[in.next(i)];
    values p(a.size() + b.size() - 1);
    for (std::size_t j = 0; j < b.size(); ++j) {
      for (std::size_t k = 0; k < a.size(); ++k) p[k + j] += a[k] * b[j];
    }
    return p;
  });
  r.plain([](polynomial_inputs& in, int i) {
    plain::poly p{in.c[std::size_t(i)]};
    plain::mul(p, plain::poly{in.c[in.next(i)]});
    return p;
  });
}

}  // namespace

void add_curves() {
  add_func(1000);
  add_func(1000000);
  add_derivative(1000);
  add_derivative(1000000);
  add_func_of_any(1000);
  add_func_of_any(1000000);
  add_derivative_of_any(1000);
  add_derivative_of_any(1000000);
  add_point(3);
  add_point(6);
  add_point(12);
  add_find_zero(10000);
  add_find_zero(1000000);
  add_find_extreme(1000);
  add_find_extreme(100000);
  add_polynomial_product(20);
  add_polynomial_product(200);
}

}  // namespace bench
