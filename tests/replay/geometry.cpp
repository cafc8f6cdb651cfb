// Operations of line3d and plane.
#include "replay/draw.h"

namespace replay {
namespace {

using tessarn::ulong;

constexpr unsigned n = 600;
constexpr int most_points = 30;

// Points near a plane, on it, or anywhere; some twice.
ulong draw_cloud(input& in, vector3d* points) {
  const int count = in.integer(0, most_points);
  const int kind = in.integer(0, 5);
  const vector3d slope = finite_vector3d(in);
  for (int i = 0; i < count; ++i) {
    points[i] = kind == 0 ? draw<vector3d>(in) : finite_vector3d(in);
    using tessarn::detail::product;
    if (kind > 1) points[i].z = product(slope.x, points[i].x) + product(slope.y, points[i].y) + slope.z;
    if (kind > 3) points[i].z += in.within(-0.25, 0.25);
    if (i > 0 && in.integer(0, 9) == 0) points[i] = points[i - 1];
  }
  return static_cast<ulong>(count);
}

template <class Line, class Plane>
void cut(input& in, output& out) {
  Line a = draw<line3d>(in);
  Plane b = draw<plane>(in);
  vector3d x(7, 8, 9);
  out.put(a.cut(b, x));
  out.put(x);
}

template <class Plane>
void cross_planes(input& in, output& out) {
  Plane a = draw<plane>(in);
  Plane b = draw<plane>(in);
  vector p(7, 8);
  vector q(8, 9);
  out.put(a.cross(b, p, q));
  out.put(p);
  out.put(q);
}

template <class Plane, class Vector>
void cross_line(input& in, output& out) {
  Plane a = draw<plane>(in);
  Vector d = draw<vector3d>(in);
  vector st(7, 8);
  out.put(a.cross(d, st));
  out.put(st);
  out.put(a.cross(d));
}

template <class Vector>
void planes_from_vectors(input& in, output& out) {
  Vector p = draw<vector3d>(in);
  Vector u = draw<vector3d>(in);
  Vector v = draw<vector3d>(in);
  out.put(plane(p, u, v));
  out.put(plane(p, u));
  out.put(line3d(p, v));
}

void rotate(input& in, output& out) {
  plane a = draw<plane>(in);
  const real alpha = in.any();
  const real beta = in.any();
  a.rotate(alpha, beta, in.any());
  out.put(a);
}

void fitted(input& in, output& out) {
  vector3d points[most_points];
  const ulong k = draw_cloud(in, points);
  out.put(plane(points, k));
}

void normal_search(input& in, output& out) {
  vector3d par[6];
  vector3d perp[6];
  const int npar = in.integer(0, 6);
  const int nperp = in.integer(0, 6);
  for (int i = 0; i < npar; ++i) par[i] = finite_vector3d(in);
  for (int i = 0; i < nperp; ++i) perp[i] = finite_vector3d(in);
  vector3d normal(7, 8, 9);
  out.put(plane::CalcNormale(normal, npar ? par : nullptr, static_cast<ulong>(npar), nperp ? perp : nullptr,
                             static_cast<ulong>(nperp)));
  out.put(normal);
}

const operation table[] = {
    REPLAY("line3d(), plane()", 1, (void)in; out.put(line3d()); out.put(plane())),
    {"line3d, plane of vectors", n, planes_from_vectors<vector3d>},
    {"line3d, plane of vectors const", n, planes_from_vectors<const vector3d>},
    ONE("line3d copy", n, line3d, line3d b(a); out.put(b)),
    INTO("line3d =", n, line3d, line3d, out.put(a = b)),
    {"line3d cut", n, cut<line3d, plane>},
    {"line3d cut const", n, cut<const line3d, const plane>},
    INTO("line3d cut_off", n, line3d, plane, out.put(a.cut_off(b)); out.put(a)),
    ONE("plane copy", n, plane, plane b(a); out.put(b)),
    INTO("plane =", n, plane, plane, out.put(a = b); out.put(a)),
    TWO("plane ==", n, plane, plane, out.put(a == b); out.put(a == a)),
    TWO("plane distance", n, plane, vector3d, out.put(a.distance(b))),
    {"plane rotate", n, rotate},
    {"plane cross plane", n, cross_planes<plane>},
    {"plane cross plane const", n, cross_planes<const plane>},
    {"plane cross line", n, cross_line<plane, vector3d>},
    {"plane cross line const", n, cross_line<const plane, const vector3d>},
    {"plane(points)", 400, fitted},
    {"plane CalcNormale", 100, normal_search},
};

}  // namespace

const family geometry = family_of(table);

}  // namespace replay
