// Doubled precision: numbers of about 106 bits as unevaluated sums of two doubles, with all four operations.
//
// The algorithms and the bounds of their errors are those of M. Joldes, J.-M. Muller, V. Popescu, Tight and rigorous
// error bounds for basic building blocks of double-word arithmetic, 2017, without fused multiply-add. They hold while
// no product of the parts overflows or becomes subnormal; the callers scale by powers of two so that what is large is
// near 1, and carry `underflow` for what a small product can lose.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>

#include "tessarn/scalar.h"

namespace tessarn::analysis {

// high + low, where high is the sum rounded to a double.
struct doubled {
  double high, low;

  doubled() = default;
  constexpr doubled(double h) noexcept : high(h), low(0) {}
  constexpr doubled(double h, double l) noexcept : high(h), low(l) {}
  double value() const noexcept { return high; }
};

// A bound of the relative error of each operation below: the largest published one is 15 * 2^-106, of the quotient.
inline constexpr double doubled_unit = 0x1p-102;
// A bound of what one operation loses besides, when parts of it become subnormal.
inline constexpr double underflow = 0x1p-1060;

// a + b and its error, where |a| >= |b| or a = 0 (T. Dekker, 1971).
inline doubled ordered_sum(double a, double b) noexcept {
  const double s = a + b;
  return {s, b - (s - a)};
}

// a + b and its error (D. Knuth, 1969).
inline doubled exact_sum(double a, double b) noexcept {
  const double s = a + b;
  const double t = s - a;
  return {s, (a - (s - t)) + (b - t)};
}

// a * b and its error (T. Dekker, 1971, with G. Veltkamp's splitting), for |a| and |b| below 2^990.
inline doubled exact_product(double a, double b) noexcept {
  constexpr double splitter = 134217729;  // 2^27 + 1
  const double p = a * b;
  const double ta = splitter * a, tb = splitter * b;
  const double ah = ta - (ta - a), bh = tb - (tb - b);
  const double al = a - ah, bl = b - bh;
  return {p, ((ah * bh - p) + ah * bl + al * bh) + al * bl};
}

inline doubled operator-(doubled a) noexcept { return {-a.high, -a.low}; }

inline doubled operator+(doubled a, doubled b) noexcept {
  const doubled s = exact_sum(a.high, b.high);
  const doubled t = exact_sum(a.low, b.low);
  const doubled v = ordered_sum(s.high, s.low + t.high);
  return ordered_sum(v.high, t.low + v.low);
}
inline doubled operator-(doubled a, doubled b) noexcept { return a + -b; }

inline doubled operator*(doubled a, doubled b) noexcept {
  const doubled p = exact_product(a.high, b.high);
  return ordered_sum(p.high, p.low + (a.high * b.low + a.low * b.high));
}

inline doubled operator/(doubled a, doubled b) noexcept {
  const double q = a.high / b.high;
  const doubled r = a - b * doubled(q);
  return ordered_sum(q, r.high / b.high);
}

// 1 / a, as the quotient above, by one division of doubles and a step of Newton's method.
inline doubled reciprocal(doubled a) noexcept {
  const double q = 1 / a.high;
  const doubled p = exact_product(q, a.high);
  return ordered_sum(q, q * (((1 - p.high) - p.low) - q * a.low));
}

// sum + a b, of which a few units of |sum| + |a b| may be lost: that of the product is normalised once, with the sum.
inline doubled with_product(doubled sum, doubled a, doubled b) noexcept {
  const doubled p = exact_product(a.high, b.high);
  const doubled s = exact_sum(sum.high, p.high);
  return ordered_sum(s.high, s.low + (sum.low + (p.low + (a.high * b.low + a.low * b.high))));
}

inline doubled& operator+=(doubled& a, doubled b) noexcept { return a = a + b; }
inline doubled& operator-=(doubled& a, doubled b) noexcept { return a = a - b; }
inline doubled& operator*=(doubled& a, doubled b) noexcept { return a = a * b; }

// The square root; 0 for what is not positive (A. Karp, P. Markstein, 1997).
inline doubled square_root(doubled a) noexcept {
  if (!(a.high > 0)) return 0.0;
  const double r = std::sqrt(a.high);
  const doubled rest = a - exact_product(r, r);
  return ordered_sum(r, rest.high / (2 * r));
}

inline double magnitude(double v) noexcept { return std::fabs(v); }
inline double magnitude(doubled v) noexcept { return std::fabs(v.high); }

inline bool is_finite(double v) noexcept { return v - v == 0; }

// The power of two 2^e, for -1022 <= e <= 1023.
inline double power_of_two(int e) noexcept {
  const std::uint64_t bits = static_cast<std::uint64_t>(e + 1023) << 52;
  double v;
  std::memcpy(&v, &bits, sizeof v);
  return v;
}

// The e with 2^e <= |v| < 2^(e+1), for a finite v that is not 0.
inline int exponent_of(double v) noexcept {
  int below = 0;
  if (std::fabs(v) < 0x1p-1022) {
    v *= 0x1p60;
    below = 60;
  }
  std::uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  return static_cast<int>((bits >> 52) & 0x7FF) - 1023 - below;
}

// v * 2^e for any e: exact unless the result is subnormal or too large.
inline double scaled(double v, int e) noexcept {
  while (e > 1000) {
    v *= 0x1p1000;
    e -= 1000;
    if (!is_finite(v) || v == 0) return v;
  }
  while (e < -1000) {
    v *= 0x1p-1000;
    e += 1000;
    if (v == 0) return v;
  }
  return v * power_of_two(e);
}
inline doubled scaled(doubled v, int e) noexcept { return {scaled(v.high, e), scaled(v.low, e)}; }

}  // namespace tessarn::analysis
