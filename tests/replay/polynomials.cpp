// Operations of binom and hyperbinom.
#include <new>
#include <utility>

#include "replay/draw.h"

namespace replay {
namespace {

using tessarn::slong;
using tessarn::ulong;

constexpr unsigned n = 360;
constexpr int most_points = 40;

// An index within or around the bounds.
slong index_of(input& in) { return static_cast<slong>(in.integer(-2, 9)); }

// A polynomial of ordinary coefficients, for the searches.
binom smooth(input& in) {
  return draw_polynomial(in, 1, 6, [&] { return in.within(-3, 3); });
}

// The copy shares the coefficients, and is gone before its source.
template <class Polynomial>
void put_shared(output& out, const Polynomial& p) {
  const Polynomial shared(p);
  out.put(shared);
}

struct interval {
  real a, b, step, eps;
};

interval draw_interval(input& in) {
  interval r;
  r.a = in.within(-4, 3);
  r.b = r.a + in.within(-0.5, 5);
  r.step = in.within(0.05, 0.7);
  constexpr double eps[] = {1e-2, 1e-5, 1e-8, 1e-12};
  r.eps = static_cast<real>(eps[in.integer(0, 3)]);
  if (in.integer(0, 9) == 0) r.step = -r.step;
  if (in.integer(0, 15) == 0) r.a = -1;
  return r;
}

ulong draw_points(input& in, vector* points) {
  const int count = in.integer(0, most_points);
  const int kind = in.integer(0, 5);
  for (int i = 0; i < count; ++i) points[i] = draw_point(in, i, kind);
  return static_cast<ulong>(count);
}

// The array members over a handful of abscissas, in a separate array and in place.
template <class Evaluate>
void put_values(input& in, output& out, Evaluate evaluate) {
  real x[24];
  real y[24];
  const int count = in.integer(0, 24);
  const int kind = in.integer(0, 1);
  for (int i = 0; i < count; ++i) x[i] = kind == 0 ? in.any() : in.finite();
  evaluate(x, y, static_cast<ulong>(count));
  out.put_all(y, static_cast<std::size_t>(count));
  evaluate(x, x, static_cast<ulong>(count));
  out.put_all(x, static_cast<std::size_t>(count));
}

#define VALUES(name, call)                             \
  REPLAY(name, n / 2, const binom a = draw<binom>(in); \
         put_values(in, out, [&](const real* x, real* y, ulong k) { a.call(x, y, k); }))
#define CHANGED(name, cases, ...) REPLAY(name, cases, binom a = draw<binom>(in); __VA_ARGS__; out.put(a))
#define SEARCH(name, call)                                                                       \
  REPLAY(name, n, binom a = smooth(in); const interval r = draw_interval(in);                    \
         out.put(a.call(r.a, r.b, r.step, r.eps))),                                              \
      REPLAY(name " const", n, const binom a = smooth(in); const interval r = draw_interval(in); \
             out.put(a.call(r.a, r.b, r.step, r.eps)))
#define SAMPLES(Q, ...)                         \
  Q binom a = smooth(in);                       \
  Q binom b = smooth(in);                       \
  const interval r = draw_interval(in);         \
  const real end = r.b < r.a ? r.a : r.b;       \
  const real h = r.step < 0 ? -r.step : r.step; \
  __VA_ARGS__

const operation polynomial_table[] = {
    REPLAY("binom()", 1, (void)in; out.put(binom())),
    REPLAY("binom copy", n, const binom a = draw<binom>(in); put_shared(out, a)),
    REPLAY("binom move", n, binom a = draw<binom>(in); binom b(std::move(a)); binom c; c = std::move(b); out.put(a);
           out.put(c)),
    CHANGED("binom empty", 60, a.empty()),
    CHANGED("binom create", n, a.create(static_cast<slong>(in.integer(0, 40)))),
    CHANGED("binom resize", n, a.resize(static_cast<slong>(in.integer(0, 12)))),
    ONE("binom get, getcofcnt", n, binom, out.put(a.get(index_of(in))); out.put(a.getcofcnt())),
    CHANGED("binom set", n, const slong i = index_of(in); a.set(i, in.any())),
    INTO("binom copy()", n, binom, binom, a.copy(b); out.put(a)),
    INTO("binom =", n, binom, binom, a = b; out.put(a)),
    ONE("binom func", 2 * n, binom, out.put(a.func(in.any()))),
    REPLAY("binom func_1(binom)", n, binom a = draw_polynomial(in, 1, 8, [&] { return in.any(); }); binom d;
           a.func_1(d); out.put(d)),
    REPLAY("binom func_1(binom) const", n, const binom a = draw_polynomial(in, 1, 8, [&] { return in.any(); }); binom d;
           a.func_1(d); out.put(d)),
    INTO("binom +=", n, binom, binom, a += b; out.put(a)),
    TWO("binom + - and unary -", n, binom, binom, out.put(a + b); out.put(a - b); out.put(-a)),
    TWO("real * binom, binom(x)", n, binom, real, out.put(b* a); out.put(a * b); out.put(a(b))),
    INTO("binom -=", n, binom, binom, a -= b; out.put(a)),
    INTO("binom *= binom", n, binom, binom, if (a.getcofcnt() + b.getcofcnt() > 0) a *= b; out.put(a)),
    REPLAY("binom *= large", n / 3, binom a = draw_polynomial(in, 1, 90, [&] { return in.any(); }); a *= a; out.put(a)),
    CHANGED("binom *= real", n, a *= in.any()),
    CHANGED("binom shift_h", n, a.shift_h(in.any())),
    CHANGED("binom shift_v", n, a.shift_v(in.any())),
    CHANGED("binom mirror_h", n, a.mirror_h()),
    CHANGED("binom mirror_v", n, a.mirror_v()),
    REPLAY("binom create(points)", 2 * n, vector points[most_points]; const ulong k = draw_points(in, points); binom a;
           a.create(points, k, static_cast<ulong>(in.integer(0, 8))); out.put(a)),
    REPLAY("binom createtan", n, vector points[most_points]; const ulong k = draw_points(in, points); binom a;
           a.createtan(points, k, static_cast<ulong>(in.integer(0, 8))); out.put(a)),
    ONE("binom func_1(x)", n, binom, out.put(a.func_1(in.any()))),
    ONE("binom func_2", n, binom, out.put(a.func_2(in.any()))),
    ONE("binom func_3", n, binom, out.put(a.func_3(in.any()))),
    ONE("binom func_4", n, binom, out.put(a.func_4(in.any()))),
    ONE("binom arc", n, binom, out.put(a.arc(in.any()))),
    ONE("binom arc_1", n, binom, out.put(a.arc_1(in.any()))),
    ONE("binom normale", n, binom, out.put(a.normale(in.any()))),
    SEARCH("binom find_zero", find_zero),
    SEARCH("binom find_extrpoint_arc", find_extrpoint_arc),
    SEARCH("binom find_high_hpoint_arc", find_high_hpoint_arc),
    REPLAY("binom scalar", n, SAMPLES(, out.put(a.scalar(b, r.a, end, h)))),
    REPLAY("binom scalar const", n, SAMPLES(const, out.put(a.scalar(b, r.a, end, h)))),
    REPLAY("binom antifunction", n, SAMPLES(, out.put(a.antifunction(r.a, end, h)); out.put(b))),
    REPLAY("binom antifunction const", n, SAMPLES(const, out.put(a.antifunction(r.a, end, h)); out.put(b))),
    VALUES("binom func(x[])", func),
    VALUES("binom func_1(x[])", func_1),
    VALUES("binom func_2(x[])", func_2),
    VALUES("binom func_3(x[])", func_3),
    VALUES("binom func_4(x[])", func_4),
    VALUES("binom arc(x[])", arc),
    VALUES("binom arc_1(x[])", arc_1),
};

#undef CHANGED
#define CHANGED(name, cases, ...) REPLAY(name, cases, hyperbinom a = draw<hyperbinom>(in); __VA_ARGS__; out.put(a))

struct open_surface : hyperbinom {
  using hyperbinom::getvec;
};

// Points of a bent surface with noise, or hostile ones.
ulong draw_cloud(input& in, vector3d* points) {
  const int count = in.integer(0, most_points);
  const int kind = in.integer(0, 5);
  for (int i = 0; i < count; ++i) {
    points[i] = kind == 0 ? draw<vector3d>(in) : finite_vector3d(in);
    if (kind > 2)
      points[i].z = tessarn::detail::product(points[i].x * points[i].y, static_cast<real>(0.25)) + in.within(-0.5, 0.5);
  }
  return static_cast<ulong>(count);
}

template <class Weight>
void weighted(input& in, output& out) {
  vector3d points[most_points];
  real weights[most_points];
  const ulong k = draw_cloud(in, points);
  for (real& w : weights) w = in.finite();
  Weight* constant = weights;
  hyperbinom p;
  p.create(points, constant, k, static_cast<ulong>(in.integer(0, 3)));
  out.put(p);
}

const operation surface_table[] = {
    REPLAY("hyperbinom()", 1, (void)in; out.put(hyperbinom())),
    REPLAY("hyperbinom copy", n, const hyperbinom a = draw<hyperbinom>(in); put_shared(out, a)),
    REPLAY("hyperbinom move", n, hyperbinom a = draw<hyperbinom>(in); hyperbinom b(std::move(a)); hyperbinom c;
           c = std::move(b); out.put(a); out.put(c)),
    CHANGED("hyperbinom empty", 60, a.empty()),
    CHANGED("hyperbinom create", n, a.create(static_cast<slong>(in.integer(0, 9)))),
    CHANGED("hyperbinom resize", n, a.resize(static_cast<slong>(in.integer(0, 7)))),
    ONE("hyperbinom get, getgrade", n, hyperbinom, const slong i = index_of(in); out.put(a.get(i, index_of(in)));
        out.put(a.getgrade())),
    CHANGED("hyperbinom set", n, const slong i = index_of(in); const slong j = index_of(in); a.set(i, j, in.any())),
    REPLAY("hyperbinom getvec", n, open_surface a; a.create(static_cast<slong>(in.integer(1, 6)));
           const slong k = static_cast<slong>(in.integer(0, 40)); const real x = in.any();
           out.put(a.getvec(k, x, in.any()))),
    INTO("hyperbinom copy()", n, hyperbinom, hyperbinom, a.copy(b); out.put(a)),
    INTO("hyperbinom =", n, hyperbinom, hyperbinom, a = b; out.put(a)),
    ONE("hyperbinom func", 2 * n, hyperbinom, const real x = in.any(); out.put(a.func(x, in.any()))),
    INTO("hyperbinom +=", n, hyperbinom, hyperbinom, a += b; out.put(a)),
    TWO("hyperbinom + - and unary -", n, hyperbinom, hyperbinom, out.put(a + b); out.put(a - b); out.put(-a)),
    TWO("real * hyperbinom", n, hyperbinom, real, out.put(b* a); out.put(a * b)),
    INTO("hyperbinom -=", n, hyperbinom, hyperbinom, a -= b; out.put(a)),
    INTO("hyperbinom *= hyperbinom", n, hyperbinom, hyperbinom, if (a.getgrade() > 0 && b.getgrade() > 0) a *= b;
         out.put(a)),
    CHANGED("hyperbinom *= real", n, a *= in.any()),
    REPLAY("hyperbinom create(points)", n, vector3d points[most_points]; const ulong k = draw_cloud(in, points);
           hyperbinom a; a.create(points, k, static_cast<ulong>(in.integer(0, 4))); out.put(a)),
    {"hyperbinom create(weights)", n, weighted<real>},
    {"hyperbinom create(weights) const", n, weighted<const real>},
    REPLAY("hyperbinom func(x[], y[])", n, const hyperbinom a = draw<hyperbinom>(in);
           put_values(in, out, [&](const real* x, real* y, ulong k) { a.func(x, x, y, k); })),
};

}  // namespace

const family polynomials = family_of(polynomial_table);
const family surfaces = family_of(surface_table);

}  // namespace replay
