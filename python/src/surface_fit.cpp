// Surfaces fitted through points.
#include <pybind11/stl.h>

#include "fit.h"
#include "module.h"

namespace binding {

using tessarn::surface_fit;

namespace {

// The arguments of a fit in the form of the library, with the arrays behind its views.
struct surface_arguments {
  column x, y, z, w;
  tessarn::surface_options options;

  tessarn::space_points points() const { return {x.view, y.view, z.view}; }
};

surface_arguments to_arguments(const array_like& x, const array_like& y, const array_like& z, const optional_array& w,
                               bool total_degree, bool leave_out_not_finite) {
  surface_arguments a{to_column(x, "x"), to_column(y, "y"), to_column(z, "z"), to_column(w, "w"), {}};
  require_same_length(a.x, "x", a.y, "y");
  require_same_length(a.x, "x", a.z, "z");
  if (w) require_same_length(a.x, "x", a.w, "w");
  a.options = {total_degree, a.w.view, leave_out_not_finite};
  return a;
}

// Two arguments as dense arrays of one shape, by NumPy's rules of broadcasting.
std::pair<array, array> broadcast(const array_like& x, const array_like& y) {
  const py::tuple both =
      py::module_::import("numpy").attr("broadcast_arrays")(real_array(x, "x", -1), real_array(y, "y", -1));
  return {dense_array({both[0]}, "x", -1), dense_array({both[1]}, "y", -1)};
}

std::vector<py::ssize_t> shape(const array& a) { return {a.shape(), a.shape() + a.ndim()}; }

numbers evaluate(const surface_fit& fit, const array_like& x, const array_like& y) {
  require_answer(fit.state == tessarn::status::ok, "coefficients", fit.state);
  const auto [first, second] = broadcast(x, y);
  array z(shape(first));
  {
    const tessarn::real *u = as_real(first.data()), *v = as_real(second.data());
    tessarn::real* to = as_real(z.mutable_data());
    py::gil_scoped_release unlocked;
    for (py::ssize_t k = 0; k < z.size(); ++k) to[k] = fit.value(u[k], v[k]);
  }
  return {first.ndim() == 0 ? py::object(z.attr("item")()) : py::object(z)};
}

predictions predict(const surface_fit& fit, const array_like& x, const array_like& y, double factor) {
  require_answer(fit.state == tessarn::status::ok, "coefficients", fit.state);
  const auto [first, second] = broadcast(x, y);
  const tessarn::real *u = as_real(first.data()), *v = as_real(second.data());
  return predict_over(shape(first), first.ndim() == 0, static_cast<std::size_t>(first.size()),
                      [&, factor](std::size_t k) { return fit.predict(u[k], v[k], factor); });
}

void add_result(py::module_& m) {
  record<surface_fit> r(m, "SurfaceFit", R"(A fitted surface z = p(x, y), and what it is worth.

``p(x, y)`` evaluates it. ``p.coef[i, j]`` belongs to x^i y^j, as in `numpy.polynomial.polynomial.polyval2d`. Deviations
and errors are formed as of a PolynomialFit.)");
  r.field("status", &surface_fit::state, "Whether the result holds, and if not, why.")
      .field("grade", &surface_fit::grade, "The number of powers of each variable.")
      .field("coef", &surface_fit::of_powers, layout::table, "The coefficients of x^i y^j at [i, j].")
      .field("coef_errors", &surface_fit::of_powers_errors, layout::table, "Their standard errors.")
      .field("powers_status", &surface_fit::powers_state,
             "`out_of_range` when a coefficient of the powers is too large.")
      .field("residual_deviation", &surface_fit::residual_deviation, "The residual standard deviation.")
      .field("r_squared", &surface_fit::r_squared, "1 - sum (w r)^2 / sum (w (z - mean))^2.")
      .field("largest_residual", &surface_fit::largest_residual, "z - p(x, y) where it is largest in magnitude.")
      .field("largest_at", &surface_fit::largest_at, "The index of the point it belongs to.")
      .field("reciprocal_condition", &surface_fit::reciprocal_condition,
             "An estimate for the columns of the terms about the centre.")
      .field("points_used", &surface_fit::points_used, "The number of points with a weight above 0.")
      .field("points_left_out", &surface_fit::points_left_out,
             "The number of points that are not finite or have a weight of 0.")
      .field("unknowns", &surface_fit::unknowns, "The number of coefficients that were fitted.")
      .field("centre_x", &surface_fit::centre_x,
             "p = sum of coefficients[i, j] ((x - centre_x) / scale_x)^i ((y - centre_y) / scale_y)^j.")
      .field("centre_y", &surface_fit::centre_y, "See centre_x.")
      .field("scale_x", &surface_fit::scale_x, "A power of two.")
      .field("scale_y", &surface_fit::scale_y, "A power of two.")
      .field("coefficients", &surface_fit::coefficients, layout::table, "The coefficients about the centre.")
      .field("standard_errors", &surface_fit::standard_errors, layout::table,
             "The standard errors of the coefficients about the centre; 0 for terms that were not asked for.")
      .field("covariance", &surface_fit::covariance, layout::square,
             "The covariance of the coefficients about the centre, that of x^i y^j at grade j + i.")
      .with_status(&surface_fit::state);
  r.type()
      .def("__call__", evaluate, py::arg("x"), py::arg("y"), "p(x, y); x and y are broadcast against each other.")
      .def("predict", predict, py::arg("x"), py::arg("y"), py::arg("factor"),
           "p(x, y) with intervals of `factor` standard deviations, as of a PolynomialFit.")
      .def(
          "expanded",
          [](const surface_fit& fit) {
            require_answer(fit.state == tessarn::status::ok, "coefficients", fit.state);
            require_answer(fit.powers_state == tessarn::status::ok, "coefficients of powers", fit.powers_state);
            return fit.expanded();
          },
          "The polynomial in powers of x and y, as a hyperbinom.");
  r.finish();
}

void add_robust_result(py::module_& m) {
  using tessarn::robust_surface_fit;
  record<robust_surface_fit> r(m, "RobustSurfaceFit",
                               "A surface that was fitted with outliers present; the fields are those of RobustFit.");
  r.field("status", &robust_surface_fit::state, "That of the fit, or `not_converged`.")
      .field("fit", &robust_surface_fit::fit, "The fit with the last weights.")
      .field("weights", &robust_surface_fit::weights, layout::column,
             "Of each point, 0 to 1: the factor of its squared residual.")
      .field("scale", &robust_surface_fit::scale, "The robust standard deviation.")
      .field("rounds", &robust_surface_fit::rounds, "The number of reweightings that were done.")
      .with_status(&robust_surface_fit::state);
  r.type().def(
      "__call__",
      [](const robust_surface_fit& f, const array_like& x, const array_like& y) { return evaluate(f.fit, x, y); },
      py::arg("x"), py::arg("y"), "The value of the fit, as of a SurfaceFit.");
  r.finish();
}

}  // namespace

void add_surface_fit(py::module_& m) {
  add_result(m);
  add_robust_result(m);
  m.def(
      "fit_surface",
      [](const array_like& x, const array_like& y, const array_like& z, tessarn::ulong grade, bool total_degree,
         const optional_array& w, bool leave_out_not_finite) {
        const surface_arguments a = to_arguments(x, y, z, w, total_degree, leave_out_not_finite);
        py::gil_scoped_release unlocked;
        return tessarn::fit_surface(a.points(), grade, a.options);
      },
      py::arg("x"), py::arg("y"), py::arg("z"), py::arg("grade"), py::kw_only(), py::arg("total_degree") = false,
      py::arg("w") = py::none(), py::arg("leave_out_not_finite") = false,
      R"(Fit a surface z = p(x, y) through points by least squares.

Parameters
----------
x, y, z : array_like, shape (n,)
    The points.
grade : int
    The number of powers of each variable, one more than the highest: the terms x^i y^j with i, j < grade.
total_degree : bool
    Only the terms with i + j < grade.
w : array_like, shape (n,), optional
    Weights of the residuals.
leave_out_not_finite : bool
    Leave points with a NaN or an infinity out, instead of answering `not_finite`.

Returns
-------
SurfaceFit

Examples
--------
>>> x, y = np.meshgrid(np.arange(4.0), np.arange(4.0))
>>> p = tessarn.fit_surface(x.ravel(), y.ravel(), (1 + 2 * x + 3 * y).ravel(), 2)
>>> p.coef
array([[1., 3.],
       [2., 0.]])
>>> p(10, 100)
321.0)");
  m.def(
      "fit_robust_surface",
      [](const array_like& x, const array_like& y, const array_like& z, tessarn::ulong grade,
         const std::string& weigh_by, bool total_degree, const optional_array& w, bool leave_out_not_finite,
         tessarn::ulong most_rounds) {
        const surface_arguments a = to_arguments(x, y, z, w, total_degree, leave_out_not_finite);
        const tessarn::robust_surface_options options{to_robust_weights(weigh_by), a.options, most_rounds};
        py::gil_scoped_release unlocked;
        return tessarn::fit_robust(a.points(), grade, options);
      },
      py::arg("x"), py::arg("y"), py::arg("z"), py::arg("grade"), py::kw_only(), py::arg("weigh_by") = "tukey",
      py::arg("total_degree") = false, py::arg("w") = py::none(), py::arg("leave_out_not_finite") = false,
      py::arg("most_rounds") = 200, "Fit a surface as `fit_robust` fits a polynomial. Returns a RobustSurfaceFit.");
}

}  // namespace binding
