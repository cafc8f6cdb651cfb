// The self-check of polynomials and surfaces.
#include "selfcheck/members.h"

namespace tessarn::detail {
namespace {

binom polynomial(inputs& in, ulong most) {
  binom p;
  const ulong n = 1 + in.below(most);
  p.create(static_cast<slong>(n));
  for (ulong i = 0; i < n; ++i) p.set(static_cast<slong>(i), in.number());
  return p;
}

hyperbinom surface(inputs& in, ulong most) {
  hyperbinom p;
  const ulong n = 1 + in.below(most);
  p.create(static_cast<slong>(n));
  for (ulong j = 0; j < n; ++j)
    for (ulong i = 0; i < n; ++i) p.set(static_cast<slong>(i), static_cast<slong>(j), in.number());
  return p;
}

// Coefficients and abscissas below 1 or little above, with which searches find something.
binom smooth(inputs& in) {
  binom p;
  p.create(5);
  for (slong i = 0; i < 5; ++i) p.set(i, in.fraction() * 2 - 1);
  return p;
}

constexpr ulong most_points = 60;

// Ascending abscissas with ordinates of a parabola and noise; the interval is [0, 4).
void points_of_a_curve(inputs& in, ::vector (&points)[most_points]) {
  for (ulong i = 0; i < most_points; ++i) {
    const real noise = in.fraction();
    const real x = static_cast<real>(static_cast<double>(i)) / 16;
    const real y = product(x, x) - 2 + product(noise, static_cast<real>(0.125));
    points[i] = ::vector(x, y);
  }
}

template <class Evaluate>
void put_values(inputs& in, results& out, Evaluate evaluate) {
  constexpr ulong n = 11;
  const binom p = polynomial(in, 7);
  real x[n];
  real y[n];
  for (real& v : x) v = in.number();
  evaluate(p, x, y, n);
  for (const real v : y) out.put(v);
}

#define ANY TESSARN_MEMBER_HOSTILE
#define ORDINARY TESSARN_MEMBER_ORDINARY
#define VALUES(name, call) \
  ANY(name, 3, put_values(in, out, [](const binom& p, const real* x, real* y, ulong n) { p.call(x, y, n); }))
#define SEARCH(name, call)                                                            \
  ORDINARY(name, 6, const binom p = smooth(in); const real a = in.fraction() * 2 - 2; \
           out.put(p.call(a, a + 3, static_cast<real>(0.25), static_cast<real>(0.0001))))

constexpr selfcheck_member polynomials[] = {
    ANY("binom sum and difference", 6, const binom a = polynomial(in, 7); const binom b = polynomial(in, 7);
        out.put(a + b); out.put(a - b)),
    ANY("binom product", 6, binom a = polynomial(in, 7); const binom b = polynomial(in, 7); a *= b; out.put(a)),
    ORDINARY("binom product, 50 coefficients", 1, binom a = polynomial(in, 1); a.resize(50);
             for (slong i = 0; i < 50; ++i) a.set(i, in.number()); a *= a; out.put(a)),
    ANY("binom::shift_h, shift_v, mirror_h, mirror_v", 6, binom a = polynomial(in, 7); a.shift_h(in.number());
        a.mirror_h(); a.shift_v(in.number()); a.mirror_v(); out.put(a)),
    ANY("binom::func", 12, const binom a = polynomial(in, 7); out.put(a.func(in.number()))),
    ANY("binom::func_1(binom)", 6, const binom a = polynomial(in, 7); binom d; a.func_1(d); out.put(d)),
    ANY("binom::func_1 to func_4", 12, const binom a = polynomial(in, 7); const real x = in.number();
        out.put(a.func_1(x)); out.put(a.func_2(x)); out.put(a.func_3(x)); out.put(a.func_4(x))),
    ANY("binom::arc, arc_1, normale", 12, const binom a = polynomial(in, 7); const real x = in.number();
        out.put(a.arc(x)); out.put(a.arc_1(x)); out.put(a.normale(x))),
    VALUES("binom::func(array)", func),
    VALUES("binom::func_1(array)", func_1),
    VALUES("binom::func_2(array)", func_2),
    VALUES("binom::func_3(array)", func_3),
    VALUES("binom::func_4(array)", func_4),
    VALUES("binom::arc(array)", arc),
    VALUES("binom::arc_1(array)", arc_1),
    ORDINARY(
        "binom::create(points)", 2, ::vector points[most_points]; points_of_a_curve(in, points); binom a;
        for (ulong m = 1; m < 8; ++m) {
          a.create(points, most_points, m);
          out.put(a);
        }),
    ORDINARY("binom::create(points with large abscissas)", 2, ::vector points[20]; in.fill(points); binom a;
             a.create(points, 20, 9); out.put(a)),
    ORDINARY("binom::createtan", 2, ::vector points[most_points]; points_of_a_curve(in, points); binom a;
             a.createtan(points, most_points, 6); out.put(a)),
    SEARCH("binom::find_zero", find_zero),
    SEARCH("binom::find_extrpoint_arc", find_extrpoint_arc),
    SEARCH("binom::find_high_hpoint_arc", find_high_hpoint_arc),
    ORDINARY("binom::scalar", 4, const binom p = smooth(in); const binom q = smooth(in);
             out.put(p.scalar(q, -2, 2, static_cast<real>(0.125)))),
    ORDINARY("binom::antifunction", 2, const binom p = smooth(in);
             out.put(p.antifunction(-2, 2, static_cast<real>(0.125)))),
};

// A product of two is exact.
real coarse_fraction(inputs& in) { return static_cast<real>(static_cast<double>(in.below(4096))) / 4096; }

void cloud_of_a_surface(inputs& in, vector3d (&points)[most_points]) {
  for (vector3d& p : points) {
    const real x = coarse_fraction(in);
    const real y = coarse_fraction(in);
    p = vector3d(x, y, product(x, y) + in.fraction() / 8);
  }
}

constexpr selfcheck_member surfaces[] = {
    ANY("hyperbinom sum and difference", 4, const hyperbinom a = surface(in, 4); const hyperbinom b = surface(in, 4);
        out.put(a + b); out.put(a - b)),
    ANY("hyperbinom product", 4, hyperbinom a = surface(in, 4); const hyperbinom b = surface(in, 4); a *= b;
        out.put(a)),
    ANY("hyperbinom::func", 12, const hyperbinom a = surface(in, 4); const real x = in.number();
        out.put(a.func(x, in.number()))),
    ORDINARY("hyperbinom::create(points)", 2, vector3d points[most_points]; cloud_of_a_surface(in, points);
             hyperbinom a; a.create(points, most_points, 3); out.put(a)),
    ORDINARY("hyperbinom::create(weights)", 2, vector3d points[most_points]; real weights[most_points];
             cloud_of_a_surface(in, points); in.fill(weights); hyperbinom a; a.create(points, weights, most_points, 2);
             out.put(a)),
};

}  // namespace

constinit const selfcheck_family selfcheck_polynomials = family_of(polynomials);
constinit const selfcheck_family selfcheck_surfaces = family_of(surfaces);

}  // namespace tessarn::detail
