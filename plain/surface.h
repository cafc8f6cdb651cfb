// The polynomial in two variables and its fits, plainly. Element g j + i belongs to x^i y^j.
#pragma once

#include <cstddef>
#include <vector>

#include "poly.h"
#include "vectors.h"

namespace plain {

struct surface {
  long grade = 0;
  std::vector<double> cof;

  bool inside(long i, long j) const { return i >= 0 && i < grade && j >= 0 && j < grade; }
  double get(long i, long j) const { return inside(i, j) ? cof[static_cast<std::size_t>(grade * j + i)] : 0.0; }
  void set(long i, long j, double v) {
    if (inside(i, j)) cof[static_cast<std::size_t>(grade * j + i)] = v;
  }
};

inline surface created_surface(long g) { return {g, zeros(g * g)}; }

// Keeps the first g elements only, that is the terms without y.
inline void resize(surface& p, long g) {
  if (g == p.grade) return;
  surface r = created_surface(g);
  for (long k = 0; k < p.grade && k < g * g; ++k) {
    r.cof[static_cast<std::size_t>(k)] = p.cof[static_cast<std::size_t>(k)];
  }
  p = r;
}

inline double func(const surface& p, double x, double y) {
  if (p.grade < 1) return 0.0;
  double s = 0.0;
  double yp = 1.0;
  std::size_t k = 0;
  for (long j = 0; j < p.grade; ++j) {
    double t = yp;
    s = s + t * p.cof[k++];
    for (long i = 1; i < p.grade; ++i) {
      t = t * x;
      s = s + t * p.cof[k++];
    }
    yp = yp * y;
  }
  return s;
}

inline void add(surface& p, const surface& other, double sign) {
  const surface q = other;
  if (q.grade > p.grade) resize(p, q.grade);
  for (long i = 0; i < p.grade; ++i) {
    for (long j = 0; j < p.grade; ++j) {
      p.set(i, j, sign > 0 ? p.get(i, j) + q.get(i, j) : p.get(i, j) - q.get(i, j));
    }
  }
}

inline void add(surface& p, const surface& q) { add(p, q, 1.0); }
inline void sub(surface& p, const surface& q) { add(p, q, -1.0); }

inline void mul(surface& p, const surface& q) {
  surface r = created_surface(p.grade + q.grade - 1);
  if (q.grade < 1) {
    p = r;
    return;
  }
  for (long qi = 0; qi < q.grade; ++qi) {
    for (long qj = 0; qj < q.grade; ++qj) {
      for (long i = 0; i < p.grade; ++i) {
        for (long j = 0; j < p.grade; ++j) {
          r.set(i + qi, j + qj, r.get(i + qi, j + qj) + q.get(qi, qj) * p.get(i, j));
        }
      }
    }
  }
  p = r;
}

inline void mul(surface& p, double s) {
  for (double& c : p.cof) c = c * s;
}

inline double basis(long grade, long k, double x, double y) {
  return power(x, static_cast<unsigned long>(k % grade)) * power(y, static_cast<unsigned long>(k / grade));
}

// The fit; w holds one weight a point, or is empty for the plain fit.
inline surface fit_surface(const std::vector<vec3>& pts, const std::vector<double>& w, unsigned long g) {
  surface p = created_surface(static_cast<long>(g));
  const std::size_t n = g * g;
  std::vector<double> a(n * n);
  std::vector<double> b(n);
  for (std::size_t r = 0; r < n; ++r) {
    for (std::size_t c = 0; c < n; ++c) {
      free_sum s;
      for (std::size_t k = 0; k < pts.size(); ++k) {
        const double t = power(pts[k].y, r / g + c / g) * power(pts[k].x, r % g + c % g);
        s.add(w.empty() ? t : t * (w[k] * w[k]));
      }
      a[r * n + c] = nan_to_zero(s.total());
    }
    free_sum s;
    for (std::size_t k = 0; k < pts.size(); ++k) {
      const double t = power(pts[k].y, r / g) * power(pts[k].x, r % g);
      s.add(w.empty() ? t * pts[k].z : t * ((w[k] * pts[k].z) * w[k]));
    }
    b[r] = nan_to_zero(s.total());
  }
  solve_square(a, n, b);
  for (std::size_t k = 0; k < n; ++k) p.cof[k] = b[k];
  return p;
}

}  // namespace plain
