// The polynomial in one variable and its least-squares fits, plainly.
#pragma once

#include <cstddef>
#include <new>
#include <utility>
#include <vector>

#include "power.h"
#include "scalar.h"
#include "vectors.h"

namespace plain {

// Solves A u = b in place by LU factorisation with partial pivoting; A is n x n, row by row.
// Returns false, with b as it was, when a pivot column is all zeros.
inline bool solve_square(std::vector<double> w, std::size_t n, std::vector<double>& b) {
  std::vector<std::size_t> perm(n);
  for (std::size_t i = 0; i < n; ++i) perm[i] = i;
  for (double& e : w) e = nan_to_zero(e);
  for (std::size_t k = 0; k < n; ++k) {
    double best = 0.0;
    std::size_t p = k;
    for (std::size_t r = k; r < n; ++r) {
      if (absolute(w[r * n + k]) > best) {
        best = absolute(w[r * n + k]);
        p = r;
      }
    }
    if (best == 0.0) return false;
    std::swap(perm[k], perm[p]);
    for (std::size_t c = 0; c < n; ++c) std::swap(w[k * n + c], w[p * n + c]);
    for (std::size_t r = k + 1; r < n; ++r) {
      w[r * n + k] = nan_to_zero(w[r * n + k] / w[k * n + k]);
      for (std::size_t c = k + 1; c < n; ++c) {
        w[r * n + c] = nan_to_zero(w[r * n + c] - w[r * n + k] * w[k * n + c]);
      }
    }
  }
  std::vector<double> v(n);
  for (std::size_t i = 0; i < n; ++i) {
    double s = 0.0;
    for (std::size_t j = 0; j < i; ++j) s += w[i * n + j] * v[j];
    v[i] = nan_to_zero(b[perm[i]] - s);
  }
  for (std::size_t i = n; i-- > 0;) {
    double s = 0.0;
    for (std::size_t j = i + 1; j < n; ++j) s += w[i * n + j] * b[j];
    b[i] = nan_to_zero((v[i] - s) / w[i * n + i]);
  }
  return true;
}

struct poly {
  std::vector<double> cof;

  long count() const { return static_cast<long>(cof.size()); }
  double get(long i) const { return i >= 0 && i < count() ? cof[static_cast<std::size_t>(i)] : 0.0; }
  void set(long i, double v) {
    if (i >= 0 && i < count()) cof[static_cast<std::size_t>(i)] = v;
  }
};

inline std::vector<double> zeros(long n) {
  if (n < 0) throw std::bad_alloc();
  return std::vector<double>(static_cast<std::size_t>(n), 0.0);
}

inline poly created(long n) { return {zeros(n)}; }

inline void resize(poly& p, long n) {
  if (n == p.count()) return;
  std::vector<double> c = zeros(n);
  for (long i = 0; i < n && i < p.count(); ++i) {
    c[static_cast<std::size_t>(i)] = p.cof[static_cast<std::size_t>(i)];
  }
  p.cof = c;
}

inline double func(const poly& p, double x) {
  if (p.cof.empty()) return 0.0;
  double s = p.cof[0];
  double w = 1.0;
  for (std::size_t i = 1; i < p.cof.size(); ++i) {
    w = w * x;
    s = s + w * p.cof[i];
  }
  return s;
}

inline poly derivative(const poly& p) {
  poly d = created(p.count() - 1);
  for (long k = 1; k < p.count(); ++k) d.set(k - 1, static_cast<double>(k) * p.get(k));
  return d;
}

inline void add(poly& p, const poly& other) {
  const poly q = other;
  if (q.count() > p.count()) resize(p, q.count());
  for (long i = 0; i < p.count(); ++i) p.set(i, p.get(i) + q.get(i));
}

inline void sub(poly& p, const poly& other) {
  const poly q = other;
  if (q.count() > p.count()) resize(p, q.count());
  for (long i = 0; i < p.count(); ++i) p.set(i, p.get(i) - q.get(i));
}

inline void mul(poly& p, const poly& q) {
  poly r = created(p.count() + q.count() - 1);
  for (long j = 0; j < q.count(); ++j) {
    for (long i = 0; i < p.count(); ++i) r.set(i + j, r.get(i + j) + p.get(i) * q.get(j));
  }
  p = r;
}

inline void mul(poly& p, double s) {
  for (double& c : p.cof) c = c * s;
}

inline void shift_h(poly& p, double x0) {
  poly r = created(p.count());
  poly pow_i{{1.0}};
  const poly factor{{-x0, 1.0}};
  for (long i = 0; i < p.count(); ++i) {
    poly term = pow_i;
    mul(term, p.get(i));
    if (term.count() > r.count()) resize(r, term.count());
    for (long k = 0; k < r.count(); ++k) r.set(k, r.get(k) + term.get(k));
    mul(pow_i, factor);
  }
  p = r;
}

inline void shift_v(poly& p, double dy) {
  if (p.count() == 0) resize(p, 1);
  p.cof[0] = p.cof[0] + dy;
}

inline void mirror_h(poly& p) {
  for (std::size_t i = 1; i < p.cof.size(); i += 2) p.cof[i] = flip_sign(p.cof[i]);
}

inline void mirror_v(poly& p) {
  for (double& c : p.cof) c = flip_sign(c);
}

// ---------------------------------------------------------------------------- fits

// The sums over points have a free order. It is: term k to partial sum k mod 8, the eight added as a tree.
struct free_sum {
  double s[8] = {};
  std::size_t k = 0;
  void add(double term) { s[k++ % 8] += term; }
  double total() const { return ((s[0] + s[4]) + (s[2] + s[6])) + ((s[1] + s[5]) + (s[3] + s[7])); }
};

inline double power_sum(const std::vector<vec2>& pts, unsigned long k) {
  free_sum s;
  for (const vec2& p : pts) s.add(power(p.x, k));
  return nan_to_zero(s.total());
}

inline double moment(const std::vector<vec2>& pts, unsigned long k) {
  free_sum s;
  for (const vec2& p : pts) s.add(power(p.x, k) * p.y);
  return nan_to_zero(s.total());
}

// The full fit with m coefficients; points whose x is -1.0 or NaN are left out.
inline poly fit(const std::vector<vec2>& points, unsigned long m) {
  std::vector<vec2> pts;
  for (const vec2& p : points) {
    if (p.x != -1.0 && p.x == p.x) pts.push_back(p);
  }
  poly result = created(static_cast<long>(m));
  std::vector<double> a(m * m);
  std::vector<double> b(m);
  for (unsigned long i = 0; i < m; ++i) {
    for (unsigned long j = 0; j < m; ++j) a[i * m + j] = power_sum(pts, i + j);
    b[i] = moment(pts, i);
  }
  solve_square(a, m, b);
  for (unsigned long i = 0; i < m; ++i) result.set(static_cast<long>(i), b[i]);
  return result;
}

// The fit whose only free terms are the constant and the odd powers; it uses every point.
inline poly fit_odd(const std::vector<vec2>& pts, unsigned long m) {
  poly result = created(static_cast<long>(m));
  const unsigned long q = m / 2 + 1;
  auto e = [](unsigned long r) { return r == 0 ? 0 : 2 * r - 1; };
  std::vector<double> a(q * q);
  std::vector<double> b(q);
  for (unsigned long r = 0; r < q; ++r) {
    for (unsigned long c = 0; c < q; ++c) a[r * q + c] = power_sum(pts, e(r) + e(c));
    b[r] = moment(pts, e(r));
  }
  solve_square(a, q, b);
  for (unsigned long r = 0; r < q; ++r) result.set(static_cast<long>(e(r)), b[r]);
  return result;
}

}  // namespace plain
