// The statuses, and the zeros and extreme points of polynomials.
#include <limits>

#include "fit.h"
#include "module.h"

namespace binding {

using tessarn::curve_point;
using tessarn::curve_points;

void add_status(py::module_& m) {
  using tessarn::status;
  py::enum_<status> type(m, "Status", "Whether a result holds, and if not, why. `message` says it in a sentence.");
  // The statuses and their names, in the order of the library.
  static constexpr const char* names[] = {"ok",
                                          "no_points",
                                          "no_unknowns",
                                          "sizes_differ",
                                          "not_finite",
                                          "bad_option",
                                          "bad_weight",
                                          "too_few_points",
                                          "too_few_distinct",
                                          "rank_deficient",
                                          "singular",
                                          "nearly_singular",
                                          "out_of_range",
                                          "not_converged",
                                          "collinear",
                                          "not_determined",
                                          "bad_interval",
                                          "identically_zero",
                                          "too_much_work",
                                          "coplanar",
                                          "other_rounding"};
  static_assert(std::size(names) == static_cast<std::size_t>(status::other_rounding) + 1, "a status has no name");
  for (std::size_t k = 0; k < std::size(names); ++k)
    type.value(names[k], static_cast<status>(k), tessarn::to_string(static_cast<status>(k)));
  type.def_property_readonly(
      "message", [](status s) { return tessarn::to_string(s); }, "The status in a sentence.");
}

column to_coefficients(const py::object& polynomial) {
  if (py::isinstance<tessarn::polynomial_fit>(polynomial))
    return {{}, coefficients_of(polynomial.cast<const tessarn::polynomial_fit&>())};
  if (py::isinstance<binom>(polynomial)) {
    const binom& p = polynomial.cast<const binom&>();
    return {{}, {p.data(), p.size()}};
  }
  return to_column(array_like{polynomial}, "p");
}

curve_points search_curve(curve_search search, const tessarn::column_view& coefficients, double a, double b) {
  py::gil_scoped_release unlocked;
  return search(coefficients, a, b);
}

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

void add_point(py::module_& m) {
  record<curve_point> r(m, "CurvePoint", "One place of CurvePoints; the fields are those of its columns.");
  r.field("lower", &curve_point::lower,
          "The place is strictly between lower and upper, which are neighbouring doubles,")
      .field("upper", &curve_point::upper, "or at both, when they are equal.")
      .field("at", &curve_point::at, "The double nearest to it.")
      .field("multiplicity", &curve_point::multiplicity, "Of the zero that makes it a place.")
      .field("sharing", &curve_point::sharing, "The places strictly between lower and upper.")
      .field("change", &curve_point::change, "+1, -1, 0: the function rises through zero, falls, keeps its sign.")
      .field("value", &curve_point::value, "p(at), correctly rounded; 0 of zeros().")
      .field("value_error", &curve_point::value_error, "The value at the true place is within this of value.")
      .field("curvature", &curve_point::curvature, "p'' / (1 + p'^2)^(3/2) at `at`; of curvature_extremes().")
      .field("radius", &curve_point::radius, "1 / |curvature|; of curvature_extremes().");
  r.type()
      .def_property_readonly("is_minimum", &curve_point::is_minimum, "Whether an extreme point is a minimum.")
      .def_property_readonly("is_maximum", &curve_point::is_maximum, "Whether an extreme point is a maximum.");
  r.finish();
}

void add_points(py::module_& m) {
  record<curve_points> r(m, "CurvePoints", R"(Places of a curve in ascending order, as columns of one length.

Indexing and loops give one CurvePoint after the other, and ``np.asarray`` the column `at`. Without the status `ok`
nothing is known and the columns are empty; no places with `ok` mean that there are none, which is proved.)");
  r.field("status", &curve_points::state, "Whether the result holds, and if not, why.")
      .field("count", &curve_points::count, "The number of places.")
      .field("at", &curve_points::at, layout::column, "The doubles nearest to the places.")
      .field("lower", &curve_points::lower, layout::column,
             "Each place is strictly between lower and upper, which are neighbouring doubles,")
      .field("upper", &curve_points::upper, layout::column, "or at both, where they are equal.")
      .field("multiplicity", &curve_points::multiplicity, layout::column, "Of the zeros that make them places.")
      .field("sharing", &curve_points::sharing, layout::column,
             "The places strictly between lower and upper: 1 unless doubles cannot tell several from each other.")
      .field("change", &curve_points::change, layout::column,
             "+1, -1, 0: that function rises through zero, falls through it, does not change its sign.")
      .field("value", &curve_points::value, layout::column, "p(at), correctly rounded; empty of zeros().")
      .field("value_error", &curve_points::value_error, layout::column,
             "The values of p at the true places are within this of value.")
      .field("curvature", &curve_points::curvature, layout::column, "The curvature; of curvature_extremes() alone.")
      .field("radius", &curve_points::radius, layout::column, "1 / |curvature|; of curvature_extremes() alone.")
      .with_status(&curve_points::state);
  r.type()
      .def("__len__", [](const curve_points& p) { return p.count; })
      .def(
          "__getitem__",
          [](const curve_points& p, py::ssize_t index) {
            const py::ssize_t i = index < 0 ? index + static_cast<py::ssize_t>(p.count) : index;
            if (i < 0 || i >= static_cast<py::ssize_t>(p.count)) throw py::index_error("there is no such place");
            return p[static_cast<tessarn::ulong>(i)];
          },
          py::arg("index"), "A place; a negative index counts from the end.")
      .def(
          "__iter__",
          [](const curve_points& p) {
            py::list places;
            for (tessarn::ulong i = 0; i < p.count; ++i) places.append(p[i]);
            return py::iter(places);
          },
          "The places, one CurvePoint after the other.")
      .def(
          "__array__",
          [](const py::object& self, const py::object& dtype) {
            return self.attr("at").attr("astype")(dtype.is_none() ? py::object(py::dtype::of<double>()) : dtype);
          },
          py::arg("dtype") = py::none(), "The column `at`.");
  r.finish();
}

}  // namespace

void add_curve(py::module_& m) {
  add_point(m);
  add_points(m);
  const auto search = [&m](const char* name, curve_search call, const char* doc) {
    m.def(
        name,
        [call](const py::object& p, double a, double b) {
          const column c = to_coefficients(p);
          return search_curve(call, c.view, a, b);
        },
        py::arg("p"), py::arg("a") = -infinity, py::arg("b") = infinity, doc);
  };
  search("zeros", tessarn::zeros, R"(All real zeros of a polynomial in [a, b], each proved and enclosed.

Parameters
----------
p : PolynomialFit, binom, or array_like
    The polynomial; an array holds its coefficients, the constant first.
a, b : float
    The interval, its ends included; without them the whole axis.

Returns
-------
CurvePoints

Examples
--------
>>> z = tessarn.zeros([2, -3, 0, 1])          # (x - 1)^2 (x + 2)
>>> z.at, z.multiplicity
(array([-2.,  1.]), array([1., 2.]))
>>> len(tessarn.zeros([2, 0, 1]))             # x^2 + 2 has none
0)");
  search("extremes", tessarn::extremes, R"(The extreme points of a polynomial in [a, b], with its values there.

The ends of the interval are none. Parameters and result as of `zeros`.

Examples
--------
>>> e = tessarn.extremes([0, -3, 0, 1])       # x^3 - 3 x
>>> e.at, e.value, e[0].is_maximum
(array([-1.,  1.]), array([ 2., -2.]), True))");
  search("inflections", tessarn::inflections, R"(The inflections of a polynomial in [a, b], with its values there.

Parameters and result as of `zeros`.

Examples
--------
>>> tessarn.inflections([0, 0, -3, 1]).at     # x^3 - 3 x^2
array([1.]))");
  search("curvature_extremes", tessarn::curvature_extremes,
         R"(Where the magnitude of the curvature of a polynomial is extreme in [a, b].

At a maximum the curve is sharpest and the radius smallest. Parameters and result as of `zeros`.

Examples
--------
>>> k = tessarn.curvature_extremes([0, 0, 2]) # the parabola 2 x^2
>>> k.at, k.radius
(array([0.]), array([0.25])))");
}

}  // namespace binding
