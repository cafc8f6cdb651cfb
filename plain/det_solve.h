// Determinant, cofactor and square solve, written out step by step.
#pragma once

#include "matrix.h"

namespace plain {

// (-1)^e for an unsigned exponent.
inline double sign_of_power(u32 e) { return std::pow(-1.0, static_cast<double>(e)); }

// ---------------------------------------------------------------- real

// The rule of Sarrus; both sums start from +0.0.
inline double det3(const square& a) {
  double plus = 0.0;
  for (u32 k = 0; k < 3; ++k) plus = plus + a.get(k, 0) * a.get(k + 1, 1) * a.get(k + 2, 2);
  double minus = 0.0;
  for (u32 k = 0; k < 3; ++k) minus = minus + a.get(k, 0) * a.get(k + 2, 1) * a.get(k + 1, 2);
  return plus - minus;
}

// Elimination without any exchange of rows and without a test of the pivot.
inline double det(const square& a) {
  const u32 n = a.size;
  if (n == 3) return det3(a);
  square w = a;
  for (u32 i = 1; i < n; ++i) {
    const u32 p = i - 1;
    for (u32 r = i; r < n; ++r) {
      const double f = (-1.0 / w.get(p, p)) * w.get(p, r);
      for (u32 c = p; c < n; ++c) w.set(c, r, f * w.get(c, p) + w.get(c, r));
    }
  }
  double d = 1.0;
  for (u32 i = 0; i < n; ++i) d = d * w.get(i, i);
  return d;
}

// The matrix without column x and row y.
inline square minor_of(const square& a, u32 x, u32 y) {
  square m(a.size - 1);
  for (u32 r = 0, mr = 0; r < a.size; ++r) {
    if (r == y) continue;
    for (u32 c = 0, mc = 0; c < a.size; ++c) {
      if (c == x) continue;
      m.set(mc, mr, a.get(c, r));
      ++mc;
    }
    ++mr;
  }
  return m;
}

inline double cof(const square& a, u32 x, u32 y) {
  const u32 n = a.size;
  if (n < 2) return 0.0;
  if (n == 2) return sign_of_power(x + y) * a.get((x + 1) % 2, (y + 1) % 2);
  x = wrap(x, n);
  y = wrap(y, n);
  return sign_of_power(x + y) * det(minor_of(a, x, y));
}

// LU factorisation with partial pivoting; false when a pivot column is all zero.
inline bool factorize(square& w, std::vector<u32>& perm) {
  const u32 n = w.size;
  perm.resize(n);
  for (u32 i = 0; i < n; ++i) perm[i] = i;
  for (u32 k = 0; k < n; ++k) {
    double best = 0.0;
    u32 p = k;
    for (u32 r = k; r < n; ++r) {
      if (std::fabs(w.get(k, r)) > best) {
        best = std::fabs(w.get(k, r));
        p = r;
      }
    }
    if (best == 0.0) return false;
    std::swap(perm[k], perm[p]);
    for (u32 c = 0; c < n; ++c) {
      const double upper = w.get(c, k);
      const double lower = w.get(c, p);
      w.set(c, k, lower);
      w.set(c, p, upper);
    }
    for (u32 r = k + 1; r < n; ++r) {
      w.set(k, r, w.get(k, r) / w.get(k, k));
      for (u32 c = k + 1; c < n; ++c) w.set(c, r, w.get(c, r) - w.get(k, r) * w.get(c, k));
    }
  }
  return true;
}

inline void solve(const square& a, matrix& b) {
  const u32 n = a.size;
  square w = a;
  std::vector<u32> perm;
  if (!factorize(w, perm)) return;
  std::vector<double> v(n);
  for (u32 i = 0; i < n; ++i) {
    double s = 0.0;
    for (u32 j = 0; j < i; ++j) s = s + w.get(j, i) * v[j];
    v[i] = stored(b.get(0, perm[i]) - s);
  }
  for (u32 i = n; i-- > 0;) {
    double s = 0.0;
    for (u32 j = i + 1; j < n; ++j) s = s + w.get(j, i) * b.get(0, j);
    b.set(0, i, (v[i] - s) / w.get(i, i));
  }
}

// ---------------------------------------------------------------- complex

// The factor that clears `entry` by means of `pivot`: entry / -pivot, or 0 for a zero pivot.
inline cnum elimination_factor(cnum pivot, cnum entry) {
  const cnum q{-pivot.re, -pivot.im};
  const double d = q.im * q.im + q.re * q.re;
  if (d == 0.0) return {0.0, 0.0};
  const double k = 1.0 / d;
  return {(entry.im * q.im + entry.re * q.re) * k, (entry.im * q.re - entry.re * q.im) * k};
}

// Forward elimination; a zero factor takes part in the arithmetic like any other.
inline void eliminate(csquare& w) {
  const u32 n = w.size;
  for (u32 i = 1; i < n; ++i) {
    const u32 p = i - 1;
    for (u32 r = i; r < n; ++r) {
      const cnum f = elimination_factor(w.get(p, p), w.get(p, r));
      for (u32 c = p; c < n; ++c) w.set(c, r, add(mul(f, w.get(c, p)), w.get(c, r)));
    }
  }
}

inline cnum det(const csquare& a) {
  csquare w = a;
  eliminate(w);
  cnum d{1.0, 0.0};
  for (u32 i = 0; i < a.size; ++i) d = mul(w.get(i, i), d);
  return d;
}

inline csquare minor_of(const csquare& a, u32 x, u32 y) {
  csquare m(a.size - 1);
  for (u32 r = 0, mr = 0; r < a.size; ++r) {
    if (r == y) continue;
    for (u32 c = 0, mc = 0; c < a.size; ++c) {
      if (c == x) continue;
      m.set(mc, mr, a.get(c, r));
      ++mc;
    }
    ++mr;
  }
  return m;
}

inline cnum cof(const csquare& a, u32 x, u32 y) {
  const u32 n = a.size;
  if (n < 2) return {1.0, 0.0};
  cnum t;
  double s;
  if (n == 2) {
    s = sign_of_power(x + y);
    t = a.get((x + 1) % 2, (y + 1) % 2);
  } else {
    x = wrap(x, n);
    y = wrap(y, n);
    s = sign_of_power(x + y);
    t = det(minor_of(a, x, y));
  }
  return {s * t.re, s * t.im};
}

inline void solve(const csquare& a, cmatrix& b) {
  const u32 n = a.size;
  csquare w = a;
  for (u32 k = 1; k < n; ++k) {
    const u32 p = k - 1;
    for (u32 r = k; r < n; ++r) {
      const cnum f = elimination_factor(w.get(p, p), w.get(p, r));
      for (u32 c = 0; c < n; ++c) w.set(c, r, add(mul(f, w.get(c, p)), w.get(c, r)));
      b.set(0, r, add(mul(f, b.get(0, p)), b.get(0, r)));
    }
  }
  for (u32 i = n; i-- > 0;) {
    const cnum d = w.get(i, i);
    const cnum t = b.get(0, i);
    const double q = squared_modulus(d);
    cnum x;
    if (q != 0.0) {
      x = {(d.im * t.im + d.re * t.re) / q, (d.re * t.im - d.im * t.re) / q};
    }
    b.set(0, i, x);
    for (u32 j = i; j-- > 0;) b.set(0, j, sub(b.get(0, j), mul(x, w.get(i, j))));
  }
}

}  // namespace plain
