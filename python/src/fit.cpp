// Polynomials fitted through points.
#include "fit.h"

#include <pybind11/stl.h>

#include <limits>

#include "module.h"

namespace binding {

using tessarn::polynomial_fit;

tessarn::powers to_powers(const std::string& name) {
  if (name == "all") return tessarn::powers::all;
  if (name == "no_constant") return tessarn::powers::no_constant;
  if (name == "odd") return tessarn::powers::odd;
  if (name == "constant_and_odd") return tessarn::powers::constant_and_odd;
  throw py::value_error("powers must be 'all', 'no_constant', 'odd' or 'constant_and_odd', not '" + name + "'");
}

tessarn::robust_weights to_robust_weights(const std::string& name) {
  if (name == "huber") return tessarn::robust_weights::huber;
  if (name == "tukey") return tessarn::robust_weights::tukey;
  throw py::value_error("weigh_by must be 'huber' or 'tukey', not '" + name + "'");
}

tessarn::column_view coefficients_of(const polynomial_fit& fit) {
  require_answer(fit.state == tessarn::status::ok, "coefficients", fit.state);
  require_answer(fit.powers_state == tessarn::status::ok, "coefficients of powers of x", fit.powers_state);
  return fit.of_powers;
}

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

// The number of coefficients of a degree.
tessarn::ulong coefficient_count(py::ssize_t degree) {
  if (degree < 0) throw py::value_error("deg must be 0 or more, not " + std::to_string(degree));
  if (degree > 65534) throw py::value_error("deg must be below 65535, not " + std::to_string(degree));
  return static_cast<tessarn::ulong>(degree) + 1;
}

// The arguments of a fit in the form of the library, with the arrays behind its views.
struct fit_arguments {
  column x, y, w, fixed;
  tessarn::ulong coefficients;
  tessarn::fit_options options;
};

fit_arguments to_arguments(const array_like& x, const array_like& y, py::ssize_t degree, const optional_array& w,
                           const std::string& powers, const optional_array& fixed, bool leave_out_not_finite) {
  fit_arguments a{to_column(x, "x"),         to_column(y, "y"),         to_column(w, "w"),
                  to_column(fixed, "fixed"), coefficient_count(degree), {}};
  require_same_length(a.x, "x", a.y, "y");
  if (w) require_same_length(a.x, "x", a.w, "w");
  if (fixed && a.fixed.view.size() != a.coefficients)
    throw py::value_error("fixed must have deg + 1 = " + std::to_string(a.coefficients) + " values, not the shape " +
                          shape_of(a.fixed.kept));
  a.options.which = to_powers(powers);
  a.options.weights = a.w.view;
  a.options.fixed = a.fixed.view;
  a.options.leave_out_not_finite = leave_out_not_finite;
  return a;
}

polynomial_fit polyfit(const array_like& x, const array_like& y, py::ssize_t deg, const optional_array& w,
                       const std::string& powers, const optional_array& fixed, bool leave_out_not_finite) {
  const fit_arguments a = to_arguments(x, y, deg, w, powers, fixed, leave_out_not_finite);
  py::gil_scoped_release unlocked;
  return tessarn::fit_polynomial({a.x.view, a.y.view}, a.coefficients, a.options);
}

tessarn::robust_fit fit_robust(const array_like& x, const array_like& y, py::ssize_t deg, const std::string& weigh_by,
                               const optional_array& w, const std::string& powers, const optional_array& fixed,
                               bool leave_out_not_finite, tessarn::ulong most_rounds) {
  const fit_arguments a = to_arguments(x, y, deg, w, powers, fixed, leave_out_not_finite);
  const tessarn::robust_options options{to_robust_weights(weigh_by), a.options, most_rounds};
  py::gil_scoped_release unlocked;
  return tessarn::fit_robust({a.x.view, a.y.view}, a.coefficients, options);
}

numbers evaluate(const polynomial_fit& fit, const array_like& x, const py::object& out) {
  require_answer(fit.state == tessarn::status::ok, "coefficients", fit.state);
  return over_array(x, out, [&fit](const tessarn::real* from, tessarn::real* to, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) to[k] = fit.value(from[k]);
  });
}

predictions predict(const polynomial_fit& fit, const array_like& x, double factor) {
  require_answer(fit.state == tessarn::status::ok, "coefficients", fit.state);
  const array places = dense_array(x, "x", -1);
  const tessarn::real* at = as_real(places.data());
  return predict_over({places.shape(), places.shape() + places.ndim()}, places.ndim() == 0,
                      static_cast<std::size_t>(places.size()),
                      [&](std::size_t k) { return fit.predict(at[k], factor); });
}

// The coefficients as numpy.polyfit returns them, the highest power first.
array highest_first(const polynomial_fit& fit) {
  const tessarn::column_view c = coefficients_of(fit);
  array a(static_cast<py::ssize_t>(c.size()));
  double* to = a.mutable_data();
  for (std::size_t k = 0; k < c.size(); ++k) to[k] = static_cast<double>(c[c.size() - 1 - k]);
  return a;
}

void add_methods(py::class_<polynomial_fit>& type) {
  type.def("__call__", evaluate, py::arg("x"), py::arg("out") = py::none(),
           R"(p(x), for a number or for each entry of an array.

The value comes from the coefficients about the centre, which keeps digits that the powers of x lose. Raises
ValueError for a fit without coefficients. `out` receives the values, as in NumPy's functions.)");
  type.def("predict", predict, py::arg("x"), py::arg("factor"),
           R"(p(x) with intervals of `factor` standard deviations.

For an interval of a given confidence, factor is that quantile of Student's distribution for
``points_used - unknowns`` degrees of freedom: ``scipy.stats.t.ppf(0.975, n - q)`` for 95 %.)");
  type.def(
      "expanded", [](const polynomial_fit& fit) { return coefficients_of(fit), fit.expanded(); },
      "The polynomial in powers of x, as a binom.");
  const auto search = [&type](const char* name, curve_search call, const char* doc) {
    type.def(
        name,
        [call](const polynomial_fit& fit, double a, double b) {
          return search_curve(call, coefficients_of(fit), a, b);
        },
        py::arg("a") = -infinity, py::arg("b") = infinity, doc);
  };
  search("zeros", tessarn::zeros, "The zeros of p in [a, b]; see tessarn.zeros.");
  search("extremes", tessarn::extremes, "The extreme points of p in [a, b]; see tessarn.extremes.");
  search("inflections", tessarn::inflections, "The inflections of p in [a, b]; see tessarn.inflections.");
  search("curvature_extremes", tessarn::curvature_extremes,
         "Where p is sharpest and flattest in [a, b]; see tessarn.curvature_extremes.");
  type.def(
      "__array__",
      [](const polynomial_fit& fit, const py::object& dtype) {
        return dtype.is_none() ? py::object(highest_first(fit)) : highest_first(fit).attr("astype")(dtype);
      },
      py::arg("dtype") = py::none(), "The coefficients as numpy.polyfit returns them, the highest power first.");
  type.def(
      "__len__", [](const polynomial_fit& fit) { return coefficients_of(fit).size(); }, "The number of coefficients.");
  type.def(
      "__getitem__",
      [](const polynomial_fit& fit, const py::object& index) { return highest_first(fit)[index].cast<py::object>(); },
      py::arg("index"), "A coefficient counted from the highest power, as in what numpy.polyfit returns.");
  type.def(
      "__iter__", [](const polynomial_fit& fit) { return py::iter(highest_first(fit)); },
      "The coefficients from the highest power on: ``slope, height = tessarn.polyfit(x, y, 1)``.");
}

void add_polynomial_fit(py::module_& m) {
  record<polynomial_fit> r(m, "PolynomialFit", R"(A fitted polynomial, and what it is worth.

``p(x)`` evaluates it. ``p.coef`` has the coefficients from the constant on, as in `numpy.polynomial`, and
``np.asarray(p)`` from the highest power on, as `numpy.polyfit` returns them; so do indexing and unpacking.

With q unknowns and n points that have a weight the residual variance is sum (w (y - p))^2 / (n - q). Where n = q no
deviation can be told: deviations, errors and covariance are infinite then. Without the status `ok` there are no
coefficients, and asking for numbers raises ValueError.)");
  r.field("status", &polynomial_fit::state, "Whether the result holds, and if not, why.")
      .field("coef", &polynomial_fit::of_powers, layout::column, "The coefficients of 1, x, x^2, ...")
      .field("coef_errors", &polynomial_fit::of_powers_errors, layout::column, "Their standard errors.")
      .field("powers_status", &polynomial_fit::powers_state,
             "`out_of_range` when a coefficient of a power of x is too large.")
      .field("residual_deviation", &polynomial_fit::residual_deviation, "The residual standard deviation.")
      .field("r_squared", &polynomial_fit::r_squared,
             "1 - sum (w r)^2 / sum (w (y - mean))^2; the mean counts as 0 without a constant.")
      .field("largest_residual", &polynomial_fit::largest_residual, "y - p(x) where it is largest in magnitude.")
      .field("largest_at", &polynomial_fit::largest_at, "The index of the point it belongs to.")
      .field("reciprocal_condition", &polynomial_fit::reciprocal_condition,
             "An estimate for the columns 1, t, t^2, ... of t = (x - centre) / scale.")
      .field("points_used", &polynomial_fit::points_used, "The number of points with a weight above 0.")
      .field("points_left_out", &polynomial_fit::points_left_out,
             "The number of points that are not finite or have a weight of 0.")
      .field("unknowns", &polynomial_fit::unknowns, "The number of coefficients that were fitted.")
      .field("centre", &polynomial_fit::centre, "p(x) = sum of coefficients[k] ((x - centre) / scale)^k.")
      .field("scale", &polynomial_fit::scale, "A power of two.")
      .field("coefficients", &polynomial_fit::coefficients, layout::column, "The coefficients about the centre.")
      .field("standard_errors", &polynomial_fit::standard_errors, layout::column,
             "The standard errors of the coefficients about the centre; 0 for fixed ones.")
      .field("covariance", &polynomial_fit::covariance, layout::square,
             "The covariance of the coefficients about the centre.")
      .with_status(&polynomial_fit::state);
  add_methods(r.type());
  r.finish();
}

void add_robust_fit(py::module_& m) {
  using tessarn::robust_fit;
  record<robust_fit> r(m, "RobustFit", R"(A polynomial that was fitted with outliers present.

``f.fit`` is the fit of the last round; ``f(x)`` evaluates it. Its deviations and errors take the last weights as
given.)");
  r.field("status", &robust_fit::state, "That of the fit, or `not_converged`: the fit of the last round is there then.")
      .field("fit", &robust_fit::fit, "The fit with the last weights.")
      .field("weights", &robust_fit::weights, layout::column,
             "Of each point, 0 to 1: the factor of its squared residual.")
      .field("scale", &robust_fit::scale, "The robust standard deviation: the median of |w residual| over 0.6745.")
      .field("rounds", &robust_fit::rounds, "The number of reweightings that were done.")
      .with_status(&robust_fit::state);
  r.type().def(
      "__call__",
      [](const robust_fit& f, const array_like& x, const py::object& out) { return evaluate(f.fit, x, out); },
      py::arg("x"), py::arg("out") = py::none(), "The value of the fit, as of a PolynomialFit.");
  r.finish();
}

void add_prediction(py::module_& m) {
  py::class_<predictions>(m, "Prediction", "Values of a fit, and how far they may be off; floats or arrays.")
      .def_property_readonly(
          "value", [](const predictions& p) { return numbers{p.value}; }, "p(x).")
      .def_property_readonly(
          "mean", [](const predictions& p) { return numbers{p.mean}; }, "Half of the interval for the curve itself.")
      .def_property_readonly(
          "observation", [](const predictions& p) { return numbers{p.observation}; },
          "Half of the interval for one further observation of weight 1.")
      .def("__repr__", [](const predictions& p) {
        return "Prediction(value=" + short_text(p.value) + ", mean=" + short_text(p.mean) +
               ", observation=" + short_text(p.observation) + ")";
      });
}

}  // namespace

void add_fit(py::module_& m) {
  add_prediction(m);
  add_polynomial_fit(m);
  add_robust_fit(m);
  m.def("polyfit", polyfit, py::arg("x"), py::arg("y"), py::arg("deg"), py::kw_only(), py::arg("w") = py::none(),
        py::arg("powers") = "all", py::arg("fixed") = py::none(), py::arg("leave_out_not_finite") = false,
        R"(Fit a polynomial of degree `deg` through points by least squares.

The fit works in doubled precision (about 106 bits) about a centre and with a scale of its own, so that polynomials of
degree 10 keep their digits. The result has the same bits on every machine.

Parameters
----------
x, y : array_like, shape (n,)
    The points. Columns of larger arrays are taken where they lie.
deg : int
    The degree.
w : array_like, shape (n,), optional
    Weights of the residuals, as of `numpy.polyfit`: proportional to 1 / (standard deviation of y), 0 or positive.
powers : {'all', 'no_constant', 'odd', 'constant_and_odd'}
    Which powers of x the polynomial may have; the coefficients of the others are 0.
fixed : array_like, shape (deg + 1,), optional
    A value for each coefficient, the constant first; NaN for those that are to be fitted.
leave_out_not_finite : bool
    Leave points with a NaN or an infinity out, instead of answering `not_finite`.

Returns
-------
PolynomialFit
    Its `status` tells whether it holds: ValueError is raised for wrong shapes alone, not for points that determine no
    polynomial.

Examples
--------
>>> p = tessarn.polyfit([0, 1, 2, 3], [1, 3, 7, 13], 2)
>>> p.ok, p.coef
(True, array([1., 1., 1.]))
>>> p(10)
111.0
>>> np.asarray(tessarn.polyfit([0, 1, 2], [1, 3, 5], 1))
array([2., 1.])
>>> slope, height = tessarn.polyfit([0, 1, 2], [1, 3, 5], 1)
>>> tessarn.polyfit([4, 4, 4], [1, 2, 3], 1).status.name
'too_few_distinct')");
  m.def("fit_robust", fit_robust, py::arg("x"), py::arg("y"), py::arg("deg"), py::kw_only(),
        py::arg("weigh_by") = "tukey", py::arg("w") = py::none(), py::arg("powers") = "all",
        py::arg("fixed") = py::none(), py::arg("leave_out_not_finite") = false, py::arg("most_rounds") = 200,
        R"(Fit a polynomial by iteratively reweighted least squares, which outliers in y hardly move.

Parameters
----------
x, y, deg, w, powers, fixed, leave_out_not_finite
    As of `polyfit`.
weigh_by : {'tukey', 'huber'}
    With Tukey's weights far points do not count; with Huber's they count less, and never nothing.
most_rounds : int
    The most reweightings.

Returns
-------
RobustFit

Examples
--------
>>> x = np.arange(20.0)
>>> y = 3 + 2 * x + np.sin(7 * x) / 100
>>> y[5] = 1000
>>> f = tessarn.fit_robust(x, y, 1)
>>> f.ok, float(f.weights[5])
(True, 0.0)
>>> bool(abs(f(5) - 13) < 0.02)
True)");
}

}  // namespace binding
