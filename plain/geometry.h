// The segment and the plane, plainly.
#pragma once

#include <cmath>

#include "vectors.h"

namespace plain {

struct plane {
  vec3 origin;
  vec3 normal;
  vec3 axis1;
  vec3 axis2;
};

struct line {
  vec3 start;
  vec3 end;
};

inline plane plane_from_axes(vec3 p, vec3 u, vec3 v) { return {p, cross(v, u), u, v}; }

// The axes that belong to a unit normal.
inline void derive_axes(plane& pl) {
  const vec3 n = pl.normal;
  if (n.x == 0 && n.y == 0 && n.z == 1) {
    pl.axis1 = {1.0, 0.0, 0.0};
    pl.axis2 = {0.0, 1.0, 0.0};
    return;
  }
  const double rho = std::sqrt(n.x * n.x + n.y * n.y);
  const double q = 1.0 / rho;
  pl.axis1 = {n.y * q, -n.x * q, 0.0};
  const vec3 a{-n.x * n.z, -n.y * n.z, n.x * n.x + n.y * n.y};
  pl.axis2 = times(a, 1.0 / length(a));
}

inline plane plane_from_normal(vec3 p, vec3 n) {
  plane pl;
  pl.origin = p;
  pl.normal = times(n, 1.0 / length(n));
  derive_axes(pl);
  return pl;
}

inline bool equal(const plane& a, const plane& b) {
  if (!equal(a.normal, b.normal)) return false;
  return dot(sub(b.origin, a.origin), a.normal) == 0;
}

inline void rotate(plane& pl, double a, double b, double c) {
  pl.axis1 = rotate(pl.axis1, pl.axis2, a);
  pl.normal = rotate(pl.normal, pl.axis2, a);
  pl.axis2 = rotate(pl.axis2, pl.axis1, b);
  pl.normal = rotate(pl.normal, pl.axis1, b);
  pl.axis2 = rotate(pl.axis2, pl.normal, c);
  pl.axis1 = rotate(pl.axis1, pl.normal, c);
}

// The line common to two planes in the first one's coordinates; false when e1 = e2 = 0.
inline bool cross(const plane& pl, const plane& o, vec2& p, vec2& q) {
  const vec3 raw = cross(o.axis1, o.axis2);
  const vec3 m = times(raw, 1.0 / length(raw));
  const double h = dot(m, pl.origin) - dot(m, o.origin);
  const double e1 = dot(m, pl.axis1);
  const double e2 = dot(m, pl.axis2);
  if (e1 == 0 && e2 == 0) return false;
  if (e1 == 0) {
    p = {0.0, -h / e2};
    q = {1.0, 0.0};
  } else if (e2 == 0) {
    p = {-h / e1, 0.0};
    q = {0.0, 1.0};
  } else {
    const double r = 1.0 / e2;
    p = {0.0, -h * r};
    const double k = -e1 * r;
    const double f = 1.0 / std::sqrt(k * k + 1.0);
    q = {1.0 * f, k * f};
  }
  return true;
}

inline double triple(vec3 a, vec3 b, vec3 c) { return dot(a, cross(b, c)); }

inline vec3 cross(const plane& pl, vec3 d, vec2& st) {
  const double det = triple(pl.axis1, pl.axis2, d);
  if (det == 0) {
    st = {0.0, 0.0};
    return {0.0, 0.0, 0.0};
  }
  const double q = 1.0 / det;
  const double lambda = triple(pl.axis1, pl.axis2, pl.origin) * q;
  st.x = -triple(pl.origin, pl.axis2, d) * q;
  st.y = -triple(pl.axis1, pl.origin, d) * q;
  return mul(d, lambda);
}

inline vec3 cross(const plane& pl, vec3 d) {
  const double e = dot(pl.normal, d);
  if (e == 0) return d;
  return mul(d, dot(pl.normal, pl.origin) / e);
}

struct levels {
  double s;
  double e;
};

inline levels levels_of(const line& l, const plane& pl) {
  const double c = dot(pl.normal, pl.origin);
  return {dot(pl.normal, l.start) - c, dot(pl.normal, l.end) - c};
}

inline vec3 crossing(const line& l, levels d) {
  const double as = absolute(d.s);
  const double ae = absolute(d.e);
  return quotient(add(mul(l.end, as), mul(l.start, ae)), as + ae);
}

inline bool cut(const line& l, const plane& pl, vec3& x) {
  const levels d = levels_of(l, pl);
  if ((d.s >= 0 && d.e >= 0) || (d.s < 0 && d.e < 0)) return false;
  x = crossing(l, d);
  return true;
}

inline bool cut_off(line& l, const plane& pl) {
  const levels d = levels_of(l, pl);
  if (d.s >= 0 && d.e >= 0) return true;
  if (d.s < 0 && d.e < 0) return false;
  const vec3 x = crossing(l, d);
  if (d.s >= 0) {
    l.end = x;
  } else {
    l.start = x;
  }
  return true;
}

}  // namespace plain
