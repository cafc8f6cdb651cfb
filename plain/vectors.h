// The plane vector, the space vector and the polar space vector, plainly.
#pragma once

#include <cmath>

#include "scalar.h"
#include "tessarn/angles.h"

namespace plain {

// ---------------------------------------------------------------------------- plane vector

struct vec2 {
  double x = 0.0;
  double y = 0.0;
};

inline vec2 add(vec2 a, vec2 b) { return {a.x + b.x, a.y + b.y}; }
inline vec2 sub(vec2 a, vec2 b) { return {a.x - b.x, a.y - b.y}; }
inline vec2 mul(vec2 a, double k) { return {a.x * k, a.y * k}; }
inline vec2 quotient(vec2 a, double k) {
  const double r = 1.0 / k;
  return {a.x * r, a.y * r};
}
inline double length(vec2 a) { return std::sqrt(a.x * a.x + a.y * a.y); }
inline vec2 resize(vec2 a, double len) {
  const double q = 1.0 / length(a);
  return {(a.x * len) * q, (a.y * len) * q};
}
inline bool equal(vec2 a, vec2 b) { return equal(a.x, b.x) && equal(a.y, b.y); }

inline double arc(vec2 a) { return tessarn::angles::acos(a.x / length(a)); }

inline double arc(vec2 a, vec2 b) {
  const double c = (a.x * b.x + a.y * b.y) / std::sqrt((a.x * a.x + a.y * a.y) * (b.x * b.x + b.y * b.y));
  const double angle = tessarn::angles::acos(c);
  if (angle != angle) return 0.0;
  return angle;
}

inline double dirarc(vec2 v) {
  if (v.y == 0) return v.x >= 0 ? 0.0 : pi;
  if (v.x == 0) return v.y >= 0 ? half_pi : -half_pi;
  double s = v.y / std::sqrt(v.x * v.x + v.y * v.y);
  if (s > 1.0) s = 1.0;
  if (s < -1.0) s = -1.0;
  const double a = tessarn::angles::asin(s);
  if (v.y > 0) return v.x > 0 ? a : pi - a;
  if (v.y < 0) return v.x > 0 ? a : -pi - a;
  return a;  // only when y is not a number, and then a is not one either
}

inline double dirarc(vec2 v, vec2 b) {
  double d = dirarc(b) - dirarc(v);
  if (d <= -pi) {
    d += two_pi;
  } else if (d > pi) {
    d -= two_pi;
  }
  return d;
}

inline vec2 flip(vec2 a) { return {a.y, a.x}; }

// ---------------------------------------------------------------------------- space vector

struct vec3 {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
};

inline vec3 add(vec3 a, vec3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline vec3 sub(vec3 a, vec3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline double dot(vec3 a, vec3 b) { return (a.y * b.y + a.x * b.x) + a.z * b.z; }

// Each component times k, as *= does it.
inline vec3 times(vec3 a, double k) { return {a.x * k, a.y * k, a.z * k}; }

// The product of the operator: a factor of 0 gives exact zeros.
inline vec3 mul(vec3 a, double k) {
  if (k == 0) return {0.0, 0.0, 0.0};
  return times(a, k);
}
inline vec3 quotient(vec3 a, double k) { return times(a, 1.0 / k); }

inline vec3 cross(vec3 a, vec3 b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
inline double length(vec3 a) { return std::sqrt(a.x * a.x + a.y * a.y + a.z * a.z); }
inline vec3 resize(vec3 a, double len) {
  const double q = 1.0 / length(a);
  return {(a.x * len) * q, (a.y * len) * q, (a.z * len) * q};
}
inline bool equal(vec3 a, vec3 b) { return equal(a.x, b.x) && equal(a.y, b.y) && equal(a.z, b.z); }

// The projection of v onto the direction of a.
inline vec3 projection(vec3 a, vec3 v) {
  const double q = 1.0 / std::sqrt(a.x * a.x + a.y * a.y + a.z * a.z);
  const double k = ((a.x * v.x + a.y * v.y + a.z * v.z) * q) * q;
  if (k == 0) return {0.0, 0.0, 0.0};
  return times(a, k);
}

inline double arc(vec3 a, vec3 b) {
  const double aa = a.x * a.x + a.y * a.y + a.z * a.z;
  const double bb = b.x * b.x + b.y * b.y + b.z * b.z;
  const double c = (a.x * b.x + a.y * b.y + a.z * b.z) / std::sqrt(aa * bb);
  const double angle = tessarn::angles::acos(c);
  if (angle != angle) return 0.0;
  return angle;
}

inline vec3 rotate(vec3 v, double a1, double a2) {
  const double x1 = v.x * tessarn::angles::cos(a1) + v.y * tessarn::angles::sin(a1);
  const double y1 = v.y * tessarn::angles::cos(a1) - v.x * tessarn::angles::sin(a1);
  const double rho = std::sqrt(x1 * x1 + y1 * y1);
  const double rho1 = rho * tessarn::angles::cos(a2) - v.z * tessarn::angles::sin(a2);
  const double z1 = v.z * tessarn::angles::cos(a2) + rho * tessarn::angles::sin(a2);
  const double f = rho1 / rho;
  return {x1 * f, y1 * f, z1};
}

inline vec3 rotate(vec3 v, vec3 n, double angle) {
  const double q = 1.0 / length(n);
  const double d = (dot(v, n) * q) * q;
  const vec3 c = mul(n, d);
  const vec3 u = sub(v, c);
  const double s = tessarn::angles::sin(angle) * q;
  const vec3 w = mul(cross(u, n), s);
  const double k = tessarn::angles::cos(angle);
  return add(add(mul(u, k), c), w);
}

// ---------------------------------------------------------------------------- polar space vector

struct polar {
  double alpha = 0.0;
  double beta = 0.0;
  double len = 0.0;
};

inline vec3 cartesian(polar p) {
  const double t = tessarn::angles::cos(p.beta) * p.len;
  vec3 v;
  v.y = tessarn::angles::sin(p.alpha) * t;
  v.x = tessarn::angles::cos(p.alpha) * t;
  v.z = tessarn::angles::sin(p.beta) * p.len;
  return v;
}

inline polar polar_careful(vec3 v) {
  polar p;
  p.len = length(v);
  if (p.len == 0) return p;
  const double q = 1.0 / p.len;
  p.beta = tessarn::angles::asin(v.z * q);
  if (v.y == 0) {
    p.alpha = v.x < 0 ? pi : 0.0;
  } else if (p.beta >= half_pi || p.beta <= -half_pi) {
    p.alpha = 0.0;
  } else {
    double c = (v.x / tessarn::angles::cos(p.beta)) * q;
    if (c > 1.0) c = 1.0;
    if (c < -1.0) c = -1.0;
    const double a = tessarn::angles::acos(c);
    p.alpha = v.y >= 0 ? a : two_pi - a;
  }
  return p;
}

inline polar polar_plain(vec3 v) {
  polar p;
  p.len = length(v);
  if (p.len == 0) return p;
  p.beta = tessarn::angles::asin(v.z / p.len);
  if (p.beta == half_pi || p.beta == -half_pi) {
    p.alpha = 0.0;
  } else {
    const double a = tessarn::angles::acos(v.x / (tessarn::angles::cos(p.beta) * p.len));
    p.alpha = v.y < 0 ? two_pi - a : a;
  }
  return p;
}

inline polar add(polar a, polar b) { return polar_careful(add(cartesian(a), cartesian(b))); }
inline polar sub(polar a, polar b) { return polar_careful(sub(cartesian(a), cartesian(b))); }
inline double dot(polar a, polar b) { return dot(cartesian(a), cartesian(b)); }
inline polar cross(polar a, polar b) { return polar_careful(cross(cartesian(a), cartesian(b))); }
inline polar mul(polar a, double k) { return {a.alpha, a.beta, a.len * k}; }
inline polar quotient(polar a, double k) { return {a.alpha, a.beta, a.len / k}; }
inline polar resize(polar a, double len) { return {a.alpha, a.beta, len}; }
inline polar rotate(polar a, double da, double db) { return {a.alpha + da, a.beta + db, a.len}; }
inline bool equal(polar a, polar b) { return equal(a.alpha, b.alpha) && equal(a.beta, b.beta) && equal(a.len, b.len); }
inline double arc(polar a, polar b) {
  const double c =
      tessarn::angles::sin(a.beta) * tessarn::angles::sin(b.beta) +
      (tessarn::angles::cos(a.beta) * tessarn::angles::cos(b.beta)) * tessarn::angles::cos(a.alpha - b.alpha);
  const double angle = tessarn::angles::acos(c);
  if (angle != angle) return 0.0;
  return angle;
}

}  // namespace plain
