// Classical Gram-Schmidt on the columns and elimination in place, for real and complex entries.
#pragma once

#include "det_solve.h"

namespace plain {

inline void orthogonalize(square& a) {
  const u32 n = a.size;
  std::vector<double> t(n);
  if (n < 2) return;
  for (u32 j = 1; j < n; ++j) {
    for (u32 k = 0; k < n; ++k) t[k] = a.get(j, k);
    for (u32 i = 0; i < j; ++i) {
      double num = 0.0;
      double den = 0.0;
      for (u32 k = 0; k < n; ++k) {
        num = num + a.get(i, k) * a.get(j, k);
        den = den + a.get(i, k) * a.get(i, k);
      }
      const double c = num / den;
      for (u32 k = 0; k < n; ++k) t[k] = t[k] - c * a.get(i, k);
    }
    for (u32 k = 0; k < n; ++k) a.set(j, k, t[k]);
  }
}

// The product is not conjugated. A coefficient of 0 takes part in the arithmetic like any other.
inline void orthogonalize(csquare& a) {
  const u32 n = a.size;
  std::vector<cnum> t(n);
  if (n < 2) return;
  for (u32 j = 1; j < n; ++j) {
    for (u32 k = 0; k < n; ++k) t[k] = a.get(j, k);
    for (u32 i = 0; i < j; ++i) {
      cnum num;
      cnum den;
      for (u32 k = 0; k < n; ++k) {
        num = add(num, mul(a.get(i, k), a.get(j, k)));
        den = add(den, mul(a.get(i, k), a.get(i, k)));
      }
      const double q = den.re * den.re + den.im * den.im;
      cnum c;
      if (q != 0.0) {
        const double r = 1.0 / q;
        c = {(num.re * den.re + num.im * den.im) * r, (num.im * den.re - num.re * den.im) * r};
      }
      for (u32 k = 0; k < n; ++k) t[k] = sub(t[k], mul(c, a.get(i, k)));
    }
    for (u32 k = 0; k < n; ++k) a.set(j, k, t[k]);
  }
}

inline void optimize(square& a) {
  const u32 n = a.size;
  if (n < 2) return;
  for (u32 k = 1; k < n; ++k) {
    const u32 p = k - 1;
    for (u32 r = k; r < n; ++r) {
      const double f = a.get(p, r) / a.get(p, p);
      for (u32 c = p; c < n; ++c) a.set(c, r, a.get(c, r) - f * a.get(c, p));
    }
  }
}

inline void optimize(csquare& a) { eliminate(a); }

}  // namespace plain
