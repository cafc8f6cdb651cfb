// Operations of the calls that carry a status: solve.h, fit.h, align.h and flat.h.
#include <tessarn/align.h>
// Operations of the calls that carry a status: solve.h, fit.h and curve.h.
#include <tessarn/curve.h>
#include <tessarn/fit.h>
#include <tessarn/flat.h>
// Operations of the calls that carry a status: solve.h, fit.h and shapes.h.
#include <tessarn/shapes.h>
#include <tessarn/solve.h>

#include <cmath>
#include <vector>

#include "replay/draw.h"

namespace replay {
namespace {

using tessarn::ulong;

constexpr unsigned n = 240;
constexpr ulong most_points = 30;

void put_status(output& out, tessarn::status s) { out.put(static_cast<int>(s)); }

real_mat matrix_of(input& in, ulong columns, ulong rows) {
  real_mat m(columns, rows);
  for (ulong i = 0; i < columns * rows; ++i) m.getData()[i] = in.within(-3, 3);
  return m;
}

complex_mat complex_matrix_of(input& in, ulong columns, ulong rows) {
  complex_mat m;
  m.create(columns, rows);
  for (ulong i = 0; i < columns * rows; ++i) {
    const real re = in.within(-3, 3);
    m.getData()[i] = cplx(re, in.within(-3, 3));
  }
  return m;
}

ulong size_of(input& in) { return static_cast<ulong>(in.integer(1, 7)); }

template <class Solution>
void put_solution(output& out, const Solution& s) {
  put_status(out, s.state);
  out.put(s.x);
  out.put(s.error);
  out.put(s.reciprocal_condition);
}

void put_square(output& out, const real_mat& a, const real_mat& b) {
  put_solution(out, tessarn::solve(a, b));
  const tessarn::inverse_matrix i = tessarn::inverse(a);
  out.put(i.inverse);
  out.put(i.error);
  const tessarn::determinant_value d = tessarn::determinant(a);
  out.put(d.value);
  out.put(d.error);
}

void run_solve(input& in, output& out) {
  const ulong size = size_of(in);
  const real_mat a = matrix_of(in, size, size);
  put_square(out, a, matrix_of(in, 1, size));
}

// Sizes with several panels and blocks; one of three is so nearly singular that doubled precision decides.
void run_larger(input& in, output& out) {
  const ulong size = static_cast<ulong>(in.integer(8, 70));
  real_mat a = matrix_of(in, size, size);
  if (in.integer(0, 2) == 0)
    for (ulong c = 0; c < size; ++c) a.set(c, 1, a.get(c, 0) + std::ldexp(a.get(c, 1), -40));
  put_square(out, a, matrix_of(in, 1, size));
}

void run_complex(input& in, output& out) {
  const ulong size = size_of(in);
  const complex_mat a = complex_matrix_of(in, size, size), b = complex_matrix_of(in, 1, size);
  put_solution(out, tessarn::solve(a, b));
  const tessarn::complex_inverse_matrix i = tessarn::inverse(a);
  out.put(i.inverse);
  out.put(i.error);
}

// Now and then with fewer rows than columns.
void run_least_squares(input& in, output& out) {
  const ulong columns = size_of(in), rows = columns + static_cast<ulong>(in.integer(0, 5)) - (columns > 1 ? 1 : 0);
  const real_mat a = matrix_of(in, columns, rows), b = matrix_of(in, 1, rows);
  const tessarn::linear_solution s = tessarn::least_squares(a, b);
  put_solution(out, s);
  out.put(s.residual);
  out.put(s.standard_errors);
}

// More rows than are summed between two steps that renew a sum.
void run_tall(input& in, output& out) {
  const ulong columns = size_of(in), rows = static_cast<ulong>(in.integer(500, 600));
  const real_mat a = matrix_of(in, columns, rows), b = matrix_of(in, 1, rows);
  const tessarn::linear_solution s = tessarn::least_squares(a, b);
  put_solution(out, s);
  out.put(s.residual);
  out.put(s.standard_errors);
}

template <class Fit>
void put_fit(output& out, const Fit& f) {
  put_status(out, f.state);
  out.put(f.coefficients);
  out.put(f.covariance);
  out.put(f.of_powers);
  out.put(f.of_powers_errors);
  out.put(f.residual_deviation);
  out.put(f.r_squared);
  out.put(f.largest_residual);
  out.put(f.largest_at);
  out.put(f.reciprocal_condition);
}

struct drawn_points {
  real x[most_points], y[most_points], z[most_points], weights[most_points];
  ulong count;

  explicit drawn_points(input& in) : count(static_cast<ulong>(in.integer(1, most_points))) {
    for (ulong i = 0; i < count; ++i) {
      x[i] = in.within(-3, 5);
      y[i] = in.within(-3, 3);
      z[i] = in.within(-9, 9);
      weights[i] = in.within(0, 2);
    }
  }
  tessarn::column_view view(const real* p) const { return {p, count}; }
};

void run_polynomial(input& in, output& out) {
  const drawn_points p(in);
  const tessarn::plane_points points(p.view(p.x), p.view(p.y));
  tessarn::fit_options o;
  o.which = static_cast<tessarn::powers>(in.integer(0, 3));
  if (in.integer(0, 1) == 1) o.weights = p.view(p.weights);
  const ulong m = size_of(in);
  put_fit(out, tessarn::fit_polynomial(points, m, o));
  const tessarn::robust_fit r = tessarn::fit_robust(points, m, {tessarn::robust_weights::tukey, o, 20});
  put_status(out, r.state);
  out.put(r.weights);
  out.put(r.scale);
}

void run_surface(input& in, output& out) {
  const drawn_points p(in);
  const tessarn::space_points points(p.view(p.x), p.view(p.y), p.view(p.z));
  tessarn::surface_options o;
  o.total_degree = in.integer(0, 1) == 1;
  const ulong grade = static_cast<ulong>(in.integer(1, 4));
  put_fit(out, tessarn::fit_surface(points, grade, o));
  if (in.integer(0, 3) > 0) return;
  const tessarn::robust_surface_fit r = tessarn::fit_robust(points, grade, {tessarn::robust_weights::huber, o, 5});
  put_status(out, r.state);
  out.put(r.weights);
}

// Points of a kind: small integers, with ties and points on a line; far from the origin; any finite numbers.
struct drawn_cloud {
  real c[3][most_points];
  ulong count;

  drawn_cloud(input& in, ulong points) : count(points) {
    const int kind = in.integer(0, 3);
    for (ulong i = 0; i < count; ++i)
      for (auto& column : c) {
        if (kind == 0)
          column[i] = static_cast<real>(in.integer(0, 3));
        else if (kind == 1)
          column[i] = 1000000 + in.within(-1, 1) / 1024;
        else
          column[i] = kind == 2 ? in.within(-4, 4) : in.finite();
      }
  }
  tessarn::space_points space() const { return {{c[0], count}, {c[1], count}, {c[2], count}}; }
  tessarn::plane_points plane() const { return {{c[0], count}, {c[1], count}}; }
};

template <class Alignment>
void put_alignment(output& out, const Alignment& m) {
  put_status(out, m.state);
  out.put(m.rotation);
  out.put(m.scale);
  out.put(m.translation);
  out.put(m.centre);
  out.put(m.image);
  out.put(m.differences);
  out.put(m.root_mean_square);
  out.put(m.largest_at);
  out.put(m.determination);
}

void run_align(input& in, output& out) {
  const ulong count = static_cast<ulong>(in.integer(2, 9));
  const drawn_cloud a(in, count), b(in, count);
  real weights[most_points];
  for (ulong i = 0; i < count; ++i) weights[i] = in.within(0, 2);
  tessarn::align_options o;
  o.scale = in.integer(0, 1) == 1;
  o.reflections = in.integer(0, 1) == 1;
  if (in.integer(0, 1) == 1) o.weights = {weights, count};
  put_alignment(out, tessarn::align(a.space(), b.space(), o));
  put_alignment(out, tessarn::align(a.plane(), b.plane(), o));
}

void put_plane(output& out, const tessarn::reference_plane& p) {
  put_status(out, p.state);
  out.put(p.normal);
  out.put(p.point);
  out.put(p.offset);
  out.put(p.residuals);
  out.put(p.root_mean_square);
  out.put(p.peak_to_valley);
  out.put(p.highest);
  out.put(p.lowest);
}

void run_flatness(input& in, output& out) {
  const drawn_cloud cloud(in, static_cast<ulong>(in.integer(2, 20)));
  const tessarn::flatness_result f = tessarn::flatness(cloud.space());
  put_status(out, f.state);
  out.put(f.zone);
  put_plane(out, f.middle);
  put_plane(out, f.least_squares);
  for (const ulong point : f.touching) out.put(point);
  out.put(f.touching_above);
  out.put(f.determination);
}

void put_points(output& out, const tessarn::curve_points& r) {
  put_status(out, r.state);
  for (const real_mat* column : {&r.lower, &r.upper, &r.at, &r.multiplicity, &r.sharing, &r.change, &r.value,
                                 &r.value_error, &r.curvature, &r.radius})
    out.put(*column);
}

// Small integers, whose zeros are often multiple; ordinary numbers; or numbers from the whole range. Now and then with
// a NaN, an infinity, or an interval that ends before it begins.
void run_curve(input& in, output& out) {
  constexpr int most = 9;
  real p[most];
  const ulong count = static_cast<ulong>(in.integer(0, most));
  const int kind = in.integer(0, 3);
  for (ulong i = 0; i < count; ++i)
    p[i] = kind == 0   ? static_cast<real>(in.integer(-3, 3))
           : kind == 1 ? in.any()
           : kind == 2 ? in.finite()
                       : in.within(-3, 3);
  const real a = in.integer(0, 4) == 0 ? in.any() : in.within(-9, 0);
  const real b = in.integer(0, 4) == 0 ? in.any() : in.within(0, 9);
  const tessarn::column_view view(p, count);
  put_points(out, tessarn::zeros(view, a, b));
  put_points(out, tessarn::extremes(view, a, b));
  put_points(out, tessarn::inflections(view, a, b));
  put_points(out, tessarn::curvature_extremes(view, a, b));
}

// A square, so that each zero is double.
void run_double_zeros(input& in, output& out) {
  real root[4], p[7] = {};
  for (real& c : root) c = static_cast<real>(in.integer(-9, 9));
  for (int i = 0; i < 4; ++i)
    for (int k = 0; k < 4; ++k) p[i + k] += root[i] * root[k];  // integers: exact
  put_points(out, tessarn::zeros({p, 7}, -20, 20));
  put_points(out, tessarn::extremes({p, 7}, -20, 20));
}

void put_shape(output& out, const tessarn::shape_fit& f) {
  put_status(out, f.state);
  out.put(f.residuals);
  out.put(f.root_mean_square);
  out.put(f.residual_deviation);
  out.put(f.largest_residual);
  out.put(f.largest_at);
  out.put(f.peak_to_valley);
  out.put(f.reciprocal_condition);
  out.put(f.steps);
}

void put_vector(output& out, const vector3d& v) {
  out.put(v.x);
  out.put(v.y);
  out.put(v.z);
}

// Places without order, places near a curved face, or numbers that break careless code.
struct drawn_places {
  real x[most_points], y[most_points], z[most_points], weights[most_points];
  ulong count;
  tessarn::shape_options options;

  explicit drawn_places(input& in) : count(static_cast<ulong>(in.integer(1, most_points))) {
    const int kind = in.integer(0, 3);
    options.leave_out_not_finite = in.integer(0, 1) == 1;
    for (ulong i = 0; i < count; ++i) {
      x[i] = kind == 3 ? in.any() : in.within(-3, 5);
      y[i] = kind == 3 ? in.any() : in.within(-3, 3);
      z[i] = kind == 3 ? in.any() : in.within(-9, 9);
      weights[i] = in.within(0, 2);
      if (kind == 1) z[i] = x[i] * x[i] / 64;
      if (kind == 2) y[i] = z[i] * z[i] / 64;
    }
    if (in.integer(0, 1) == 1) options.weights = {weights, count};
  }
  tessarn::space_points space() const { return {{x, count}, {y, count}, {z, count}}; }
};

void run_line(input& in, output& out) {
  const drawn_places p(in);
  const tessarn::line_fit f = tessarn::fit_line(p.space(), p.options);
  put_shape(out, f);
  put_vector(out, f.point);
  put_vector(out, f.direction);
  put_vector(out, f.point_errors);
  put_vector(out, f.direction_errors);
}

void run_circle(input& in, output& out) {
  const drawn_places p(in);
  const tessarn::circle_fit f = tessarn::fit_circle({p.space().x, p.space().y}, p.options);
  put_shape(out, f);
  put_vector(out, vector3d(f.centre.x, f.centre.y, f.radius));
  put_vector(out, vector3d(f.centre_errors.x, f.centre_errors.y, f.radius_error));
}

void run_sphere(input& in, output& out) {
  const drawn_places p(in);
  const tessarn::sphere_fit f = tessarn::fit_sphere(p.space(), p.options);
  put_shape(out, f);
  put_vector(out, f.centre);
  put_vector(out, f.centre_errors);
  out.put(f.radius);
  out.put(f.radius_error);
}

void run_cylinder(input& in, output& out) {
  const drawn_places p(in);
  const tessarn::cylinder_fit f = tessarn::fit_cylinder(p.space(), p.options);
  put_shape(out, f);
  put_vector(out, f.point);
  put_vector(out, f.direction);
  put_vector(out, f.point_errors);
  put_vector(out, f.direction_errors);
  out.put(f.radius);
  out.put(f.radius_error);
}

// So many points that sums take several blocks of the kernels, and points several parts.
void run_many_points(input& in, output& out) {
  const ulong count = static_cast<ulong>(in.integer(250, 4500));
  std::vector<vector3d> a(count), b(count);
  std::vector<real> weights(count);
  for (ulong i = 0; i < count; ++i) {
    const real u = in.within(-3, 3), v = in.within(-1, 1), w = in.within(-1, 1) / 64, r = 5 + w;
    a[i] = vector3d(r * (1 - u * u / 10) + 1000, r * u, 4 * v);
    b[i] = vector3d(4 * v + w, r * (1 - u * u / 10), r * u - w);
    weights[i] = in.within(0, 2);
  }
  tessarn::shape_options o;
  tessarn::align_options with;
  if (in.integer(0, 1) == 1) o.weights = with.weights = {weights.data(), count};
  const auto put_some = [&](const real_mat& residuals) {
    for (ulong i = 0; i < residuals.getHeight(); i += 97) out.put(residuals.getData()[i]);
  };
  const tessarn::space_alignment m = tessarn::align(a, b, with);
  out.put(m.rotation);
  out.put(m.translation);
  out.put(m.root_mean_square);
  out.put(m.largest_at);
  out.put(m.determination);
  put_some(m.distances);
  const tessarn::flatness_result f = tessarn::flatness(a);
  out.put(f.zone);
  put_vector(out, f.middle.normal);
  put_vector(out, f.least_squares.normal);
  out.put(f.least_squares.highest);
  put_some(f.middle.residuals);
  const tessarn::line_fit l = tessarn::fit_line(a, o);
  put_vector(out, l.direction);
  put_some(l.residuals);
  const tessarn::cylinder_fit c = tessarn::fit_cylinder(a, o);
  put_status(out, c.state);
  put_vector(out, c.direction);
  put_vector(out, c.point_errors);
  out.put(c.radius);
  put_some(c.residuals);
}

const operation analysis_table[] = {
    {"solve, inverse, determinant", n, run_solve},
    {"solve, inverse, determinant of larger systems", n / 10, run_larger},
    {"solve, inverse of complex numbers", n, run_complex},
    {"least_squares", n, run_least_squares},
    {"least_squares of many rows", n / 20, run_tall},
    {"fit_polynomial, fit_robust", 2 * n, run_polynomial},
    {"fit_surface, fit_robust", n, run_surface},
    {"align", 2 * n, run_align},
    {"flatness", 2 * n, run_flatness},
    {"zeros, extremes, inflections, curvature_extremes", 2 * n, run_curve},
    {"zeros, extremes of squares", n, run_double_zeros},
    {"fit_line", n, run_line},
    {"fit_circle", n, run_circle},
    {"fit_sphere", n, run_sphere},
    {"fit_cylinder", n / 2, run_cylinder},
    {"align, flatness, fit_line, fit_cylinder of many points", 12, run_many_points},
};

}  // namespace

const family analysis = family_of(analysis_table);

}  // namespace replay
