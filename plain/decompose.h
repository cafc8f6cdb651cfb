// Singular value decomposition after Golub and Reinsch (1970): Householder reduction to bidiagonal
// form, implicit-shift QR, and a Shell sort that carries the columns along.
#pragma once

#include "matrix.h"

namespace plain {

struct decomposition {
  matrix u;  // height m, width n
  matrix s;  // n x n, singular values on the diagonal
  matrix v;  // n x n
};

namespace svd {

inline double with_sign(double a, double b) { return b >= 0.0 ? std::fabs(a) : -std::fabs(a); }
inline double hypotenuse(double a, double b) { return std::sqrt(a * a + b * b); }

// The state of the algorithm; u[r][c] is written U(r, c) below.
struct work {
  long m, n;
  std::vector<double> u, v, w, rv1;
  double anorm = 0.0;

  double& U(long r, long c) { return u[static_cast<std::size_t>(r * n + c)]; }
  double& V(long r, long c) { return v[static_cast<std::size_t>(r * n + c)]; }
  double& W(long i) { return w[static_cast<std::size_t>(i)]; }
  double& E(long i) { return rv1[static_cast<std::size_t>(i)]; }

  void rotate_u(long i, long j, double c, double s) {
    for (long r = 0; r < m; ++r) {
      const double y = U(r, i);
      const double z = U(r, j);
      U(r, i) = y * c + z * s;
      U(r, j) = z * c - y * s;
    }
  }

  void rotate_v(long i, long j, double c, double s) {
    for (long r = 0; r < n; ++r) {
      const double y = V(r, i);
      const double z = V(r, j);
      V(r, i) = y * c + z * s;
      V(r, j) = z * c - y * s;
    }
  }
};

inline void bidiagonalize(work& t) {
  const long m = t.m;
  const long n = t.n;
  double g = 0.0;
  double scale = 0.0;
  for (long i = 0; i < n; ++i) {
    const long l = i + 1;
    t.E(i) = scale * g;
    g = scale = 0.0;
    if (i < m) {
      for (long k = i; k < m; ++k) scale += std::fabs(t.U(k, i));
      if (scale != 0.0) {
        double s = 0.0;
        for (long k = i; k < m; ++k) t.U(k, i) /= scale;
        for (long k = i; k < m; ++k) s += t.U(k, i) * t.U(k, i);
        double f = t.U(i, i);
        g = -with_sign(std::sqrt(s), f);
        const double h = f * g - s;
        t.U(i, i) = f - g;
        for (long j = l; j < n; ++j) {
          s = 0.0;
          for (long k = i; k < m; ++k) s += t.U(k, i) * t.U(k, j);
          f = s / h;
          for (long k = i; k < m; ++k) t.U(k, j) += f * t.U(k, i);
        }
        for (long k = i; k < m; ++k) t.U(k, i) *= scale;
      }
    }
    t.W(i) = scale * g;
    g = scale = 0.0;
    if (i < m && i != n - 1) {
      for (long k = l; k < n; ++k) scale += std::fabs(t.U(i, k));
      if (scale != 0.0) {
        double s = 0.0;
        for (long k = l; k < n; ++k) t.U(i, k) /= scale;
        for (long k = l; k < n; ++k) s += t.U(i, k) * t.U(i, k);
        const double f = t.U(i, l);
        g = -with_sign(std::sqrt(s), f);
        const double h = f * g - s;
        t.U(i, l) = f - g;
        for (long k = l; k < n; ++k) t.E(k) = t.U(i, k) / h;
        for (long j = l; j < m; ++j) {
          s = 0.0;
          for (long k = l; k < n; ++k) s += t.U(j, k) * t.U(i, k);
          for (long k = l; k < n; ++k) t.U(j, k) += s * t.E(k);
        }
        for (long k = l; k < n; ++k) t.U(i, k) *= scale;
      }
    }
    const double candidate = std::fabs(t.W(i)) + std::fabs(t.E(i));
    if (candidate > t.anorm) t.anorm = candidate;
  }
}

inline void accumulate_right(work& t) {
  const long n = t.n;
  double g = 0.0;
  long l = 0;
  for (long i = n - 1; i >= 0; --i) {
    if (i < n - 1) {
      if (g != 0.0) {
        for (long j = l; j < n; ++j) t.V(j, i) = (t.U(i, j) / t.U(i, l)) / g;
        for (long j = l; j < n; ++j) {
          double s = 0.0;
          for (long k = l; k < n; ++k) s += t.U(i, k) * t.V(k, j);
          for (long k = l; k < n; ++k) t.V(k, j) += s * t.V(k, i);
        }
      }
      for (long j = l; j < n; ++j) t.V(i, j) = t.V(j, i) = 0.0;
    }
    t.V(i, i) = 1.0;
    g = t.E(i);
    l = i;
  }
}

inline void accumulate_left(work& t) {
  const long m = t.m;
  const long n = t.n;
  for (long i = (m < n ? m : n) - 1; i >= 0; --i) {
    const long l = i + 1;
    double g = t.W(i);
    for (long j = l; j < n; ++j) t.U(i, j) = 0.0;
    if (g != 0.0) {
      g = 1.0 / g;
      for (long j = l; j < n; ++j) {
        double s = 0.0;
        for (long k = l; k < m; ++k) s += t.U(k, i) * t.U(k, j);
        const double f = (s / t.U(i, i)) * g;
        for (long k = i; k < m; ++k) t.U(k, j) += f * t.U(k, i);
      }
      for (long j = i; j < m; ++j) t.U(j, i) *= g;
    } else {
      for (long j = i; j < m; ++j) t.U(j, i) = 0.0;
    }
    t.U(i, i) += 1.0;
  }
}

inline void cancel(work& t, long l, long k) {
  double c = 0.0;
  double s = 1.0;
  for (long i = l; i <= k; ++i) {
    const double f = s * t.E(i);
    t.E(i) = c * t.E(i);
    if (std::fabs(f) + t.anorm == t.anorm) break;
    const double g = t.W(i);
    double h = hypotenuse(g, f);
    t.W(i) = h;
    h = 1.0 / h;
    c = g * h;
    s = -(f * h);
    t.rotate_u(l - 1, i, c, s);
  }
}

inline void sweep(work& t, long l, long k) {
  const double z0 = t.W(k);
  double x = t.W(l);
  double y = t.W(k - 1);
  double g = t.E(k - 1);
  double h = t.E(k);
  double f = ((y - z0) * (y + z0) + (g - h) * (g + h)) / ((h + h) * y);
  g = std::sqrt(f * f + 1.0);
  f = ((x - z0) * (x + z0) + h * (y / (f + with_sign(g, f)) - h)) / x;
  double c = 1.0;
  double s = 1.0;
  for (long j = l; j < k; ++j) {
    const long i = j + 1;
    g = t.E(i);
    y = t.W(i);
    h = s * g;
    g = c * g;
    double z = hypotenuse(f, h);
    t.E(j) = z;
    c = f / z;
    s = h / z;
    f = x * c + g * s;
    g = g * c - x * s;
    h = y * s;
    y = y * c;
    t.rotate_v(j, i, c, s);
    z = hypotenuse(f, h);
    t.W(j) = z;
    if (z != 0.0) {
      c = f / z;
      s = h / z;
    }
    f = c * g + s * y;
    x = c * y - s * g;
    t.rotate_u(j, i, c, s);
  }
  t.E(l) = 0.0;
  t.E(k) = f;
  t.W(k) = x;
}

// A value that takes more sweeps than the limit is left as it stands.
inline void diagonalize(work& t, int limit) {
  for (long k = t.n - 1; k >= 0; --k) {
    for (int sweeps = 0; sweeps < limit; ++sweeps) {
      bool cancellation = false;
      long l = k;
      for (;; --l) {
        if (l == 0 || std::fabs(t.E(l)) + t.anorm == t.anorm) break;
        if (std::fabs(t.W(l - 1)) + t.anorm == t.anorm) {
          cancellation = true;
          break;
        }
      }
      if (cancellation) cancel(t, l, k);
      if (l == k) {
        if (!(t.W(k) >= 0.0)) {
          t.W(k) = -t.W(k);
          for (long r = 0; r < t.n; ++r) t.V(r, k) = -t.V(r, k);
        }
        break;
      }
      sweep(t, l, k);
    }
  }
}

inline void sort(work& t) {
  const long m = t.m;
  const long n = t.n;
  std::vector<double> su(static_cast<std::size_t>(m));
  std::vector<double> sv(static_cast<std::size_t>(n));
  long gap = 1;
  do {
    gap = 3 * gap + 1;
  } while (gap <= n);
  do {
    gap = gap / 3;
    for (long i = gap; i < n; ++i) {
      const double sw = t.W(i);
      for (long r = 0; r < m; ++r) su[static_cast<std::size_t>(r)] = t.U(r, i);
      for (long r = 0; r < n; ++r) sv[static_cast<std::size_t>(r)] = t.V(r, i);
      long j = i;
      while (t.W(j - gap) < sw) {
        t.W(j) = t.W(j - gap);
        for (long r = 0; r < m; ++r) t.U(r, j) = -t.U(r, j - gap);
        for (double& e : su) e = -e;
        for (long r = 0; r < n; ++r) t.V(r, j) = -t.V(r, j - gap);
        for (double& e : sv) e = -e;
        j = j - gap;
        if (j < gap) break;
      }
      t.W(j) = sw;
      for (long r = 0; r < m; ++r) t.U(r, j) = su[static_cast<std::size_t>(r)];
      for (long r = 0; r < n; ++r) t.V(r, j) = sv[static_cast<std::size_t>(r)];
    }
  } while (gap > 1);
}

}  // namespace svd

inline decomposition decompose(const matrix& a, int sweep_limit = 30) {
  const u32 n = a.width;
  svd::work t;
  t.m = static_cast<long>(a.height);
  t.n = static_cast<long>(n);
  t.u = a.data;
  t.v.assign(static_cast<std::size_t>(n) * n, 0.0);
  t.w.assign(n, 0.0);
  t.rv1.assign(n, 0.0);
  svd::bidiagonalize(t);
  svd::accumulate_right(t);
  svd::accumulate_left(t);
  svd::diagonalize(t, sweep_limit);
  svd::sort(t);
  decomposition d{matrix(n, a.height), matrix(n, n), matrix(n, n)};
  d.u.data = t.u;
  d.v.data = t.v;
  for (u32 i = 0; i < n; ++i) d.s.data[static_cast<std::size_t>(i) * n + i] = t.w[i];
  return d;
}

}  // namespace plain
