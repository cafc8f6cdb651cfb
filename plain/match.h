// Matching of two corresponding point sets by a rotation (W. Kabsch, 1976) or an affine map, and
// the application of a 4 x 4 transform to a point.
#pragma once

#include "linear.h"

namespace plain {

struct point3 {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
};

namespace match {

inline void read(const point3& p, double (&c)[3]) {
  c[0] = stored(p.x);
  c[1] = stored(p.y);
  c[2] = stored(p.z);
}

inline void centroid(const point3* pts, u32 n, double (&c)[3]) {
  c[0] = c[1] = c[2] = 0.0;
  for (u32 i = 0; i < n; ++i) {
    double p[3];
    read(pts[i], p);
    for (int k = 0; k < 3; ++k) c[k] = c[k] + p[k];
  }
  const double r = 1.0 / static_cast<double>(n);
  for (int k = 0; k < 3; ++k) c[k] = c[k] * r;
}

// H = sum of (b_i - cb) (a_i - ca)^T / n.
inline matrix cross_covariance(const point3* a, const point3* b, u32 n) {
  double ca[3], cb[3];
  centroid(a, n, ca);
  centroid(b, n, cb);
  matrix h(3, 3);
  for (u32 i = 0; i < n; ++i) {
    double pa[3], pb[3];
    read(a[i], pa);
    read(b[i], pb);
    matrix p(1, 3);
    matrix q(3, 1);
    for (u32 k = 0; k < 3; ++k) {
      p.set(0, k, pb[k] - cb[k]);
      q.set(k, 0, pa[k] - ca[k]);
    }
    h = sum(h, product(p, q));
  }
  return divided(h, static_cast<double>(n));
}

inline square as_square(const matrix& m) {
  square s(m.width);
  s.data = m.data;
  return s;
}

inline bool not_orthonormal(double d) { return std::fabs(std::fabs(d) - 1.0) > 0.001; }

}  // namespace match

inline bool calc_match(square& t, const point3* a, const point3* b, u32 n) {
  if (a == nullptr || b == nullptr || n < 3) return false;
  const decomposition d = decompose(match::cross_covariance(a, b, n));
  matrix r = product(d.v, transposed(d.u));
  double determinant = det(match::as_square(r));
  if (match::not_orthonormal(determinant)) return false;
  if (!(determinant >= 0.0)) {
    matrix v = d.v;
    for (u32 y = 0; y < 3; ++y) v.set(2, y, -v.get(2, y));
    r = product(v, transposed(d.u));
    determinant = det(match::as_square(r));
    if (match::not_orthonormal(determinant)) return false;
  }
  matrix s(1, 3);
  for (u32 i = 0; i < n; ++i) {
    double pa[3], pb[3];
    match::read(a[i], pa);
    match::read(b[i], pb);
    for (u32 row = 0; row < 3; ++row) {
      double ra = 0.0;
      for (u32 k = 0; k < 3; ++k) ra = ra + r.get(k, row) * pa[k];
      s.set(0, row, s.get(0, row) + stored(pb[row] - ra));
    }
  }
  s = divided(s, static_cast<double>(n));
  t = square(4);
  for (u32 row = 0; row < 3; ++row) {
    for (u32 c = 0; c < 3; ++c) t.set(c, row, r.get(c, row));
    t.set(3, row, s.get(0, row));
  }
  t.set(3, 3, 1.0);
  return true;
}

inline void calc_transform(square& t, const point3* a, const point3* b, u32 n) {
  t = square(4);
  for (u32 r = 0; r < 4; ++r) {
    matrix m(4, n);
    matrix g(1, n);
    for (u32 i = 0; i < n; ++i) {
      m.set(0, i, a[i].x);
      m.set(1, i, a[i].y);
      m.set(2, i, a[i].z);
      m.set(3, i, 1.0);
      g.set(0, i, r == 0 ? b[i].x : r == 1 ? b[i].y : r == 2 ? b[i].z : 1.0);
    }
    matrix u;
    least_squares(u, m, g);
    for (u32 k = 0; k < 4; ++k) t.set(k, r, u.get(1, k));
  }
}

// `out` keeps its value unless the matrix is 4 x 4.
inline void transform(const square& t, const point3& in, point3& out) {
  if (t.size != 4) return;
  const point3 p = in;
  double c[3];
  for (u32 r = 0; r < 3; ++r) {
    c[r] = (t.get(1, r) * p.y + t.get(0, r) * p.x) + (t.get(2, r) * p.z + t.get(3, r));
  }
  out = {c[0], c[1], c[2]};
}

}  // namespace plain
