// Least squares through the normal equations, and inversion.
#pragma once

#include "decompose.h"
#include "det_solve.h"

namespace plain {

// x becomes the least-squares solution of A x = b; it may be A or b itself.
inline void least_squares(matrix& x, const matrix& a, const matrix& b) {
  const u32 m = a.height;
  const u32 n = a.width;
  if (b.height != m || b.width != 1) return;
  matrix g(1, n);
  square normal(n);
  for (u32 c = 0; c < n; ++c) {
    double s = 0.0;
    for (u32 k = 0; k < m; ++k) s = s + b.get(0, k) * a.get(c, k);
    g.set(0, c, s);
    for (u32 d = 0; d < n; ++d) {
      s = 0.0;
      for (u32 k = 0; k < m; ++k) s = s + a.get(c, k) * a.get(d, k);
      normal.set(d, c, s);
    }
  }
  solve(normal, g);
  x = g;
}

inline matrix inverse_of_diagonal(const matrix& a) {
  matrix r(a.height, a.width);
  for (u32 k = 0; k < a.width && k < a.height; ++k) {
    const double e = a.get(k, k);
    if (e < 0.0 || e > 0.0) {
      r.set(k, k, 1.0 / e);
    } else {
      r.set(k, k, 0.0);
    }
  }
  return r;
}

// The adjugate times the reciprocal of the determinant; a zero determinant is not caught.
inline matrix inverse_by_adjugate(const matrix& a) {
  const u32 n = a.width;
  square m(n);
  for (u32 y = 0; y < n; ++y) {
    for (u32 x = 0; x < n; ++x) m.set(x, y, a.get(x, y));
  }
  const double q = 1.0 / det(m);
  matrix r(n, n);
  for (u32 i = 0; i < n; ++i) {
    for (u32 j = 0; j < n; ++j) {
      double t;
      if (n == 2) {
        t = sign_of_power((i - 1) + (j + 1)) * m.get((i + 1) % 2, (j + 1) % 2);
      } else {
        t = det(minor_of(m, i, j)) * sign_of_power(i + j);
      }
      r.put(j, i, t * q);
    }
  }
  return r;
}

inline matrix pseudo_inverse(const matrix& a) {
  const decomposition d = decompose(a);
  const matrix sp = inverse_of_diagonal(d.s);
  return product(product(d.v, sp), transposed(d.u));
}

inline matrix inverse(const matrix& a) {
  if (is_diagonal(a)) return inverse_of_diagonal(a);
  if (a.width == a.height) return inverse_by_adjugate(a);
  return pseudo_inverse(a);
}

}  // namespace plain
