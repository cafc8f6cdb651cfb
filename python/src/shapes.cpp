// Lines, circles, spheres and cylinders through measured points.
#include <pybind11/stl.h>

#include "module.h"
#include "record.h"

namespace binding {

namespace {

using tessarn::circle_fit;
using tessarn::cylinder_fit;
using tessarn::line_fit;
using tessarn::sphere_fit;

// The fields that all fits of shapes have.
template <class Fit>
void add_common(record<Fit>& r) {
  r.field("residuals", &Fit::residuals, layout::column, "The distance of each point; NaN for points left out.")
      .field("root_mean_square", &Fit::root_mean_square, "sqrt(sum (w d)^2 / sum w^2).")
      .field("residual_deviation", &Fit::residual_deviation, "The residual standard deviation.")
      .field("largest_residual", &Fit::largest_residual, "The distance that is largest in magnitude, with its sign.")
      .field("largest_at", &Fit::largest_at, "The index of the point it belongs to.")
      .field("peak_to_valley", &Fit::peak_to_valley, "The largest distance less the smallest.")
      .field("reciprocal_condition", &Fit::reciprocal_condition, "Small where the points hardly determine the shape.")
      .field("points_used", &Fit::points_used, "The number of points with a weight above 0.")
      .field("points_left_out", &Fit::points_left_out,
             "The number of points that are not finite or have a weight of 0.")
      .field("unknowns", &Fit::unknowns, "The number of parameters that were fitted.")
      .field("steps", &Fit::steps, "Of the search that led to the result.")
      .with_status(&Fit::state);
}

// A function that fits a shape: Call gets the points in the form it wants.
template <class Fit, class Call>
void add_function(py::module_& m, const char* name, int dimensions, Call call, const char* doc) {
  m.def(
      name,
      [dimensions, call](const array_like& points, const optional_array& w, bool leave_out_not_finite,
                         tessarn::ulong most_steps) -> Fit {
        const rows p = to_rows(points, "points", dimensions);
        const column weights = to_column(w, "w");
        if (w && weights.view.size() != p.size)
          throw py::value_error("w must have a weight for each of the " + std::to_string(p.size) +
                                " points, not the shape " + shape_of(weights.kept));
        const tessarn::shape_options options{weights.view, leave_out_not_finite, most_steps};
        py::gil_scoped_release unlocked;
        return call(p, options);
      },
      py::arg("points"), py::kw_only(), py::arg("w") = py::none(), py::arg("leave_out_not_finite") = false,
      py::arg("most_steps") = 500, doc);
}

void add_line(py::module_& m) {
  record<line_fit> r(m, "LineFit", "A line in space through points, by least squares of the distances.");
  r.field("status", &line_fit::state, "Whether the result holds, and if not, why.")
      .field("point", &line_fit::point, "The centroid of the points, which lies on the line.")
      .field("direction", &line_fit::direction, "Of length 1; its component of largest magnitude is positive.")
      .field("point_errors", &line_fit::point_errors, "Standard errors of the point, across the line.")
      .field("direction_errors", &line_fit::direction_errors, "Standard errors of the direction.");
  add_common(r);
  r.finish();
}

template <class Fit>
void add_round(py::module_& m, const char* name, const char* doc) {
  record<Fit> r(m, name, doc);
  r.field("status", &Fit::state, "Whether the result holds, and if not, why.")
      .field("centre", &Fit::centre, "The centre.")
      .field("radius", &Fit::radius, "The radius, above 0.")
      .field("centre_errors", &Fit::centre_errors, "Standard errors of the coordinates of the centre.")
      .field("radius_error", &Fit::radius_error, "The standard error of the radius.");
  add_common(r);
  r.finish();
}

void add_cylinder(py::module_& m) {
  record<cylinder_fit> r(m, "CylinderFit", "A cylinder without ends; residuals are positive outside.");
  r.field("status", &cylinder_fit::state, "Whether the result holds, and if not, why.")
      .field("point", &cylinder_fit::point, "The point of the axis that is nearest to the centroid of the points.")
      .field("direction", &cylinder_fit::direction, "Of the axis, of length 1; its largest component is positive.")
      .field("radius", &cylinder_fit::radius, "The radius, above 0.")
      .field("point_errors", &cylinder_fit::point_errors, "Standard errors of the point.")
      .field("direction_errors", &cylinder_fit::direction_errors, "Standard errors of the direction.")
      .field("radius_error", &cylinder_fit::radius_error, "The standard error of the radius.");
  add_common(r);
  r.finish();
}

}  // namespace

void add_shapes(py::module_& m) {
  add_line(m);
  add_round<circle_fit>(m, "CircleFit", "A circle in the plane; residuals are positive outside.");
  add_round<sphere_fit>(m, "SphereFit", "A sphere; residuals are positive outside.");
  add_cylinder(m);
  add_function<line_fit>(
      m, "fit_line", 3, [](const rows& p, const auto& options) { return tessarn::fit_line(p.space(), options); },
      R"(Fit a line through points of space by least squares of the distances.

Parameters
----------
points : array_like, shape (n, 3)
w : array_like, shape (n,), optional
    Weights of the residuals.
leave_out_not_finite : bool
    Leave points with a NaN or an infinity out, instead of answering `not_finite`.
most_steps : int
    The most steps of a search; a line needs none.

Returns
-------
LineFit

Examples
--------
>>> f = tessarn.fit_line([[0, 0, 5], [1, 2, 5], [2, 4, 5], [3, 6, 5]])
>>> f.point
array([1.5, 3. , 5. ]))");
  add_function<circle_fit>(
      m, "fit_circle", 2, [](const rows& p, const auto& options) { return tessarn::fit_circle(p.plane(), options); },
      R"(Fit a circle through points of the plane, shape (n, 2), by least squares of the distances.

The options are those of `fit_line`. Returns a CircleFit.

Examples
--------
>>> f = tessarn.fit_circle([[5, 0], [3, 4], [-4, 3], [0, -5], [-3, -4]])
>>> f.radius
5.0)");
  add_function<sphere_fit>(
      m, "fit_sphere", 3, [](const rows& p, const auto& options) { return tessarn::fit_sphere(p.space(), options); },
      R"(Fit a sphere through points of space, shape (n, 3), by least squares of the distances.

The options are those of `fit_line`. Returns a SphereFit.

Examples
--------
>>> f = tessarn.fit_sphere([[4, 2, 3], [-2, 2, 3], [1, 5, 3], [1, -1, 3], [1, 2, 6], [1, 2, 0]])
>>> f.centre, f.radius
(array([1., 2., 3.]), 3.0))");
  add_function<cylinder_fit>(
      m, "fit_cylinder", 3,
      [](const rows& p, const auto& options) { return tessarn::fit_cylinder(p.space(), options); },
      R"(Fit a cylinder through points of space, shape (n, 3), by least squares of the distances.

No guess is asked for. The options are those of `fit_line`. Returns a CylinderFit.

Examples
--------
>>> z = np.arange(7.0)
>>> x, y = [5, 3, -4, 0, -3, 4, 0], [0, 4, 3, -5, -4, -3, 5]
>>> f = tessarn.fit_cylinder(np.column_stack([x, y, z]))
>>> f.radius, f.status.name
(5.0, 'ok'))");
}

}  // namespace binding
