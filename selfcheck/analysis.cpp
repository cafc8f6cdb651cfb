// The self-check of the second layer: fits, systems, curves, motions, shapes and planes that tell what they are worth.
#include "selfcheck/members.h"

namespace tessarn::detail {
namespace {

using real_mat = mat<long double>;

constexpr ulong most_points = 24;

// Points of space as three columns, and weights.
struct measured {
  real x[most_points], y[most_points], z[most_points], weights[most_points];

  explicit measured(inputs& in) {
    for (ulong i = 0; i < most_points; ++i) {
      x[i] = in.number();
      y[i] = in.number();
      z[i] = in.number();
      weights[i] = in.fraction();
    }
  }
  plane_points plane() const { return {{x, most_points}, {y, most_points}}; }
  space_points space() const { return {{x, most_points}, {y, most_points}, {z, most_points}}; }
  column_view weight() const { return {weights, most_points}; }
};

// A hostile number, but a finite one: others give a status and nothing else.
real finite(inputs& in) {
  const real v = in.number();
  return v - v == 0 ? v : 1;
}

real_mat matrix(inputs& in, ulong width, ulong height) {
  real_mat m(width, height);
  for (ulong k = 0; k < width * height; ++k) m.getData()[k] = finite(in);
  return m;
}
mat<cplx> complex_matrix(inputs& in, ulong width, ulong height) {
  mat<cplx> m;
  m.create(width, height);
  for (ulong y = 0; y < height; ++y)
    for (ulong x = 0; x < width; ++x) {
      const real re = finite(in);
      m.set(x, y, cplx(re, finite(in)));
    }
  return m;
}

void put(results& out, status s) { out.put(static_cast<int>(s)); }
template <class Fit>
void put_fit(results& out, const Fit& f) {
  put(out, f.state);
  out.put(f.coefficients);
  out.put(f.standard_errors);
  out.put(f.covariance);
  out.put(f.of_powers);
  out.put(f.residual_deviation);
  out.put(f.r_squared);
  out.put(f.largest_residual);
  out.put(f.reciprocal_condition);
}
void put(results& out, const linear_solution& s) {
  put(out, s.state);
  out.put(s.x);
  out.put(s.error);
  out.put(s.reciprocal_condition);
}
void put(results& out, const curve_points& c) {
  put(out, c.state);
  for (const real_mat* column : {&c.lower, &c.upper, &c.at, &c.multiplicity, &c.value, &c.curvature}) out.put(*column);
}
template <class Alignment>
void put_motion(results& out, const Alignment& m) {
  put(out, m.state);
  out.put(m.rotation);
  out.put(m.scale);
  out.put(m.translation);
  out.put(m.distances);
  out.put(m.determination);
}
void put(results& out, const shape_fit& f) {
  put(out, f.state);
  out.put(f.residuals);
  out.put(f.residual_deviation);
}

// A curve of degree 5, now and then with a double zero, and an interval.
void put_curve(inputs& in, results& out, curve_points (*places)(column_view, real, real)) {
  real p[6];
  for (real& c : p) c = in.below(2) == 0 ? in.integer() : finite(in);
  const real upper = in.integer() + 4;  // compilers differ in which argument they evaluate first
  put(out, places({p, 6}, in.integer() - 4, upper));
}

#define ANY TESSARN_MEMBER_HOSTILE

constexpr selfcheck_member members[] = {
    ANY("fit_polynomial", 4, const measured m(in); fit_options o; o.weights = m.weight();
        put_fit(out, fit_polynomial(m.plane(), 4, o)); o.leave_out_not_finite = true;
        put_fit(out, fit_polynomial(m.plane(), 7, o))),
    ANY("polynomial_fit::value, predict", 2, const measured m(in);
        const polynomial_fit f = fit_polynomial(m.plane(), 3, {powers::all, {}, {}, true}); const real x = in.number();
        out.put(f.value(x)); out.put(f.predict(x, 2).mean); out.put(f.expanded())),
    ANY("fit_surface", 2, const measured m(in); put_fit(out, fit_surface(m.space(), 2));
        put_fit(out, fit_surface(m.space(), 3, {true, m.weight(), true}))),
    ANY("fit_robust", 2, const measured m(in);
        const robust_fit f = fit_robust(m.plane(), 2, {robust_weights::huber, {powers::all, {}, {}, true}, 9});
        put(out, f.state); out.put(f.weights)),
    ANY("tessarn::solve", 4, const real_mat a = matrix(in, 5, 5); put(out, solve(a, matrix(in, 1, 5)))),
    ANY("tessarn::solve, complex", 4, const mat<cplx> a = complex_matrix(in, 3, 3);
        const complex_solution s = solve(a, complex_matrix(in, 1, 3)); put(out, s.state); out.put(s.x)),
    ANY("least_squares", 4, const real_mat a = matrix(in, 3, 9); put(out, least_squares(a, matrix(in, 1, 9)))),
    ANY("tessarn::inverse", 4, const inverse_matrix i = inverse(matrix(in, 4, 4)); put(out, i.state);
        out.put(i.inverse); out.put(i.error)),
    ANY("tessarn::determinant", 4, const determinant_value d = determinant(matrix(in, 4, 4)); put(out, d.state);
        out.put(d.value); out.put(d.error)),
    ANY("zeros", 4, put_curve(in, out, zeros)),
    ANY("extremes", 4, put_curve(in, out, extremes)),
    ANY("inflections", 4, put_curve(in, out, inflections)),
    ANY("curvature_extremes", 2, put_curve(in, out, curvature_extremes)),
    ANY("align", 2, const measured a(in); const measured b(in); align_options o; o.scale = true;
        o.leave_out_not_finite = true; put_motion(out, align(a.space(), b.space(), o));
        put_motion(out, align(a.plane(), b.plane()))),
    ANY("flatness", 2, const measured m(in); const flatness_result f = flatness(m.space(), {true}); put(out, f.state);
        out.put(f.zone); out.put(f.middle.normal); out.put(f.least_squares.normal); out.put(f.least_squares.residuals)),
    ANY("fit_line", 2, const measured m(in); const line_fit f = fit_line(m.space(), {{}, true}); put(out, f);
        out.put(f.direction)),
    ANY("fit_circle", 2, const measured m(in); const circle_fit f = fit_circle(m.plane(), {{}, true}); put(out, f);
        out.put(f.centre); out.put(f.radius)),
    ANY("fit_sphere", 2, const measured m(in); const sphere_fit f = fit_sphere(m.space(), {{}, true}); put(out, f);
        out.put(f.centre); out.put(f.radius)),
    ANY("fit_cylinder", 1, const measured m(in); const cylinder_fit f = fit_cylinder(m.space(), {{}, true});
        put(out, f); out.put(f.direction); out.put(f.radius)),
};

}  // namespace

constinit const selfcheck_family selfcheck_analysis = family_of(members);

}  // namespace tessarn::detail
