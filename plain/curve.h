// The analysis of the curve y = p(x), plainly.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "poly.h"

namespace plain {

// i (i - 1) ... (i - k + 1) in 32 bits, wrapping.
inline double falling_factorial(long i, int k) {
  std::uint32_t f = 1;
  for (int j = 0; j < k; ++j) f *= static_cast<std::uint32_t>(i - j);
  return static_cast<double>(static_cast<std::int32_t>(f));
}

inline double derivative_value(const poly& p, int k, double x) {
  if (p.count() <= k) return 0.0;
  double s = 0.0;
  for (long i = k; i < p.count(); ++i) {
    s += (power(x, static_cast<unsigned long>(i - k)) * falling_factorial(i, k)) * p.get(i);
  }
  return s;
}

inline double func_1(const poly& p, double x) { return derivative_value(p, 1, x); }
inline double func_2(const poly& p, double x) { return derivative_value(p, 2, x); }
inline double func_3(const poly& p, double x) { return derivative_value(p, 3, x); }
inline double func_4(const poly& p, double x) { return derivative_value(p, 4, x); }

inline double arc(const poly& p, double x) {
  const double f1 = func_1(p, x);
  const double f2 = func_2(p, x);
  const double s = 1.0 + f1 * f1;
  return f2 / (std::sqrt(s) * s);
}

inline double arc_1(const poly& p, double x) {
  const double f1 = func_1(p, x);
  const double f2 = func_2(p, x);
  const double f3 = func_3(p, x);
  const double s = 1.0 + f1 * f1;
  const double numerator = f3 * (std::sqrt(s) * s) - ((3.0 * f1) * f2) * (std::sqrt(s) * f2);
  // The powers of f1 are products: the square, its square, and the product of the two.
  const double square = f1 * f1;
  const double fourth = square * square;
  const double denominator = (fourth + square) * 3.0 + 1.0 + fourth * square;
  return numerator / denominator;
}

inline vec2 normale(const poly& p, double x) {
  const double f1 = func_1(p, x);
  const double f2 = func_2(p, x);
  const double s = 1.0 + f1 * f1;
  return {-(f1 * s) / f2, s / f2};
}

constexpr double not_found = -1.0;

// A step that does not advance ends the search: with the midpoint of a bracket that is held, else with nothing found.
inline double find_zero(const poly& p, double a, double b, double step, double eps) {
  for (bool held = false;; held = true) {
    step = absolute(step);
    if (step < eps) return (a + b) * 0.5;
    if (a > b) return not_found;
    double x = a;
    for (;;) {
      if (x > b) return not_found;
      const double x1 = x + step;
      const double y = func(p, x);
      const double y1 = func(p, x1);
      if ((y > 0 && y1 < 0) || (y < 0 && y1 > 0)) {
        a = x;
        b = x1;
        if (!(step * 0.01 < step)) return not_found;  // an infinite step
        step = step * 0.01;
        break;
      }
      if (y == 0) return x;
      if (!(x1 > x)) return held ? (a + b) * 0.5 : not_found;
      x = x1;
    }
  }
}

inline double find_extrpoint_arc(const poly& p, double a, double b, double step, double eps) {
  if (step < eps) return (a + b) * 0.5;
  double x = a;
  bool held = false;
  for (;;) {
    if (x >= b) return not_found;
    const double x1 = x + step;
    const double k = arc_1(p, x);
    const double k1 = arc_1(p, x1);
    if ((k > 0 && k1 < 0) || (k < 0 && k1 > 0)) {
      b = x1;
      a = x;
      if (!(step * 0.01 < step)) return not_found;
      step = step * 0.01;
      if (!(step >= eps)) return (a + b) * 0.5;
      x = a;
      held = true;
      continue;
    }
    if (k == 0) return x;
    if (!(x1 > x)) return held ? (a + b) * 0.5 : not_found;
    x = x1;
  }
}

// The chain of successive extrema, walked once; behind one that is found again, the walk goes on one step further.
inline double find_high_hpoint_arc(const poly& p, double a, double b, double step, double eps) {
  double x = find_extrpoint_arc(p, a, b, step, eps);
  if (x == not_found) return not_found;
  double best = x;
  double k = arc(p, x);
  while (x < b) {
    double next = find_extrpoint_arc(p, x, b, step, eps);
    if (next == x && step >= eps && x + step < b) next = find_extrpoint_arc(p, x + step, b, step, eps);
    if (next == not_found || !(next > x)) break;
    x = next;
    const double kx = arc(p, x);
    if (absolute(kx) > absolute(k)) {
      best = x;
      k = kx;
    }
  }
  return best;
}

// The low 32 bits of the truncated quotient; a quotient that does not fit 64 bits gives none.
inline std::uint32_t sample_count(double a, double b, double h) {
  std::int64_t t = 0;
  if (!truncate((b - a) / h + 1.0, t)) return 0;
  return static_cast<std::uint32_t>(static_cast<std::uint64_t>(t));
}

inline double scalar(const poly& p, const poly& q, double a, double b, double h) {
  const std::uint32_t n = sample_count(a, b, h);
  std::vector<vec2> pts;
  for (std::uint32_t i = 0; i < n; ++i) {
    const double x = static_cast<double>(i) * h + a;
    const double d = func(q, x);
    if (d != 0 && d == d) pts.push_back({x, func(p, x) / d});
  }
  if (pts.empty()) return 0.0;
  return fit(pts, 1).get(0);
}

inline poly antifunction(const poly& p, double a, double b, double h) {
  const std::uint32_t n = sample_count(a, b, h);
  std::vector<vec2> pts;
  for (std::uint32_t i = 0; i < n; ++i) {
    const double x = static_cast<double>(i) * h + a;
    pts.push_back({func(p, x), x});
  }
  return fit(pts, static_cast<unsigned long>(p.count()));
}

}  // namespace plain
