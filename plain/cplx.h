// The complex number, plainly.
#pragma once

#include <cmath>

#include "scalar.h"
#include "tessarn/angles.h"

namespace plain {

struct cplx {
  double re = 0.0;
  double im = 0.0;
};

inline cplx unit(double angle) { return {tessarn::angles::cos(angle), tessarn::angles::sin(angle)}; }

inline cplx add(cplx a, cplx b) { return {a.re + b.re, a.im + b.im}; }
inline cplx sub(cplx a, cplx b) { return {a.re - b.re, a.im - b.im}; }
inline cplx mul(cplx a, cplx b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
inline cplx mul(cplx a, double k) { return {a.re * k, a.im * k}; }

// A zero (or unordered) divisor gives zero and, in the operators, overwrites the left operand too.
inline cplx quotient(cplx a, cplx b) {
  const double d = b.re * b.re + b.im * b.im;
  if (d == 0 || d != d) return {0.0, 0.0};
  const double k = 1.0 / d;
  return {(a.re * b.re + a.im * b.im) * k, (a.im * b.re - a.re * b.im) * k};
}

inline bool quotient_overwrites(cplx b) {
  const double d = b.re * b.re + b.im * b.im;
  return d == 0 || d != d;
}

inline cplx quotient(cplx a, double k) {
  const double r = 1.0 / k;
  return {a.re * r, a.im * r};
}

inline double modulus(cplx a) { return std::sqrt(a.re * a.re + a.im * a.im); }

inline bool equal(cplx a, cplx b) { return equal(a.re, b.re) && equal(a.im, b.im); }
inline bool differ_in_both(cplx a, cplx b) { return !equal(a.re, b.re) && !equal(a.im, b.im); }
inline bool less(cplx a, cplx b) { return modulus(a) < modulus(b); }
inline bool greater(cplx a, cplx b) { return modulus(a) > modulus(b); }

inline double phi(cplx a) {
  const double r = modulus(a);
  if (r == 0 || r != r) return 0.0;
  const double c = a.re / r;
  if (a.re >= 0) {
    if (a.im >= 0) return tessarn::angles::acos(c);
    return two_pi - tessarn::angles::acos(c);
  }
  const double c2 = -c;
  if (a.im >= 0) return pi - tessarn::angles::acos(c2);
  return pi + tessarn::angles::acos(c2);
}

inline cplx root(cplx z) {
  const double r = modulus(z);
  const double s = std::sqrt(r);
  double a = 0.0;
  if (r == 0 || r != r) {
    a = 0.0;
  } else if (z.re >= 0) {
    a = z.im >= 0 ? tessarn::angles::acos(z.re / r) : two_pi - tessarn::angles::acos(z.re / r);
  } else {
    const double c2 = (-1.0 / r) * z.re;
    a = z.im >= 0 ? pi - tessarn::angles::acos(c2) : pi + tessarn::angles::acos(c2);
  }
  const double h = a * 0.5;
  const cplx c1{s * tessarn::angles::cos(h), s * tessarn::angles::sin(h)};
  const double h2 = h + pi;
  const double t = (tessarn::angles::cos(h2) * s) * tessarn::angles::sin(h2);
  if (t * t - r == z.re && (s + s) * t == z.im) return {t, s};
  return c1;
}

}  // namespace plain
