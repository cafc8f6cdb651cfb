// Zeros of polynomials by Sturm's chains in exact rationals, the judge of what the second layer says about them.
#pragma once

#if defined(TESTS_HAVE_GMP)

#include <gmpxx.h>

#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace test {

using rational = mpq_class;
using rational_polynomial = std::vector<rational>;  // the constant first; no leading zeros

inline void trim(rational_polynomial& p) {
  while (!p.empty() && p.back() == 0) p.pop_back();
}

template <class Numbers>
rational_polynomial exact_polynomial(const Numbers& coefficients) {
  rational_polynomial p;
  for (const auto c : coefficients) p.emplace_back(static_cast<double>(c));
  trim(p);
  return p;
}

inline rational value_at(const rational_polynomial& p, const rational& x) {
  rational v = 0;
  for (std::size_t k = p.size(); k-- > 0;) v = v * x + p[k];
  return v;
}

inline rational_polynomial slope_of(const rational_polynomial& p) {
  rational_polynomial d;
  for (std::size_t k = 1; k < p.size(); ++k) d.push_back(p[k] * static_cast<unsigned long>(k));
  return d;
}

inline rational_polynomial times(const rational_polynomial& a, const rational_polynomial& b) {
  if (a.empty() || b.empty()) return {};
  rational_polynomial p(a.size() + b.size() - 1);
  for (std::size_t i = 0; i < a.size(); ++i)
    for (std::size_t k = 0; k < b.size(); ++k) p[i + k] += a[i] * b[k];
  return p;
}

inline rational_polynomial minus(rational_polynomial a, const rational_polynomial& b) {
  if (a.size() < b.size()) a.resize(b.size());
  for (std::size_t k = 0; k < b.size(); ++k) a[k] -= b[k];
  trim(a);
  return a;
}

// a = q b + remainder.
inline rational_polynomial divide(rational_polynomial a, const rational_polynomial& b, rational_polynomial& remainder) {
  rational_polynomial q(a.size() >= b.size() ? a.size() - b.size() + 1 : 0);
  for (std::size_t k = q.size(); k-- > 0;) {
    q[k] = a[k + b.size() - 1] / b.back();
    for (std::size_t i = 0; i < b.size(); ++i) a[k + i] -= q[k] * b[i];
  }
  trim(a);
  remainder = std::move(a);
  return q;
}
inline rational_polynomial quotient(const rational_polynomial& a, const rational_polynomial& b) {
  rational_polynomial rest;
  return divide(a, b, rest);
}

inline rational_polynomial gcd_of(rational_polynomial a, rational_polynomial b) {
  while (!b.empty()) {
    rational_polynomial r;
    divide(a, b, r);
    if (!r.empty()) {
      const rational leading = r.back();
      for (rational& c : r) c /= leading;
    }
    a = std::move(b);
    b = std::move(r);
  }
  return a;
}

// A point of the line or one of its ends.
struct place_on_line {
  int end = 0;  // -1, +1: the ends
  rational x;

  place_on_line(double v) : end(std::isinf(v) ? (v < 0 ? -1 : 1) : 0), x(end == 0 ? rational(v) : rational(0)) {}
  place_on_line(rational v) : x(std::move(v)) {}
};

inline int sign_at(const rational_polynomial& p, const place_on_line& at) {
  if (p.empty()) return 0;
  if (at.end == 0) return sgn(value_at(p, at.x));
  return at.end < 0 && p.size() % 2 == 0 ? -sgn(p.back()) : sgn(p.back());
}

// Sturm's chain of a polynomial without multiple zeros.
class sturm_chain {
 public:
  explicit sturm_chain(const rational_polynomial& p) {
    if (p.size() < 2) return;
    chain_ = {p, slope_of(p)};
    while (chain_.back().size() > 1) {
      rational_polynomial r;
      divide(chain_[chain_.size() - 2], chain_.back(), r);
      if (r.empty()) break;
      const rational scale = -abs(r.back());
      for (rational& c : r) c /= scale;
      chain_.push_back(std::move(r));
    }
  }
  // Zeros x with a < x <= b; with a <= x <= b; with a < x < b.
  int half_open(const place_on_line& a, const place_on_line& b) const { return changes(a) - changes(b); }
  int closed(const place_on_line& a, const place_on_line& b) const { return half_open(a, b) + zero_at(a); }
  int open(const place_on_line& a, const place_on_line& b) const { return half_open(a, b) - zero_at(b); }
  int zero_at(const place_on_line& x) const { return !chain_.empty() && x.end == 0 && sign_at(chain_[0], x) == 0; }

 private:
  int changes(const place_on_line& x) const {
    int n = 0, last = 0;
    for (const rational_polynomial& p : chain_) {
      const int s = sign_at(p, x);
      if (s != 0 && last != 0 && s != last) ++n;
      if (s != 0) last = s;
    }
    return n;
  }
  std::vector<rational_polynomial> chain_;
};

// Element i holds the zeros of multiplicity i + 1 (D. Yun, On square-free decomposition algorithms, 1976).
inline std::vector<rational_polynomial> by_multiplicity(const rational_polynomial& f) {
  std::vector<rational_polynomial> factors;
  const rational_polynomial slope = slope_of(f), common = gcd_of(f, slope);
  rational_polynomial b = quotient(f, common), d = minus(quotient(slope, common), slope_of(b));
  while (b.size() > 1) {
    const rational_polynomial a = gcd_of(b, d);
    factors.push_back(a);
    b = quotient(b, a);
    d = minus(quotient(d, a), slope_of(b));
  }
  return factors;
}

}  // namespace test

#endif
