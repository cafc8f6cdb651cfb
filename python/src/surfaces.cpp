// The polynomial in two variables.
#include "module.h"
#include "text.h"

namespace binding {

namespace {

// The table, [i, j] the coefficient of x^i y^j.
array to_array(const hyperbinom& p) {
  const auto grade = std::max<py::ssize_t>(static_cast<tessarn::slong>(p.getgrade()), 0);
  array a({grade, grade});
  for (py::ssize_t i = 0; i < grade; ++i)
    for (py::ssize_t j = 0; j < grade; ++j)
      a.mutable_at(i, j) = static_cast<double>(p.get(static_cast<tessarn::slong>(i), static_cast<tessarn::slong>(j)));
  return a;
}

hyperbinom from_array(const array_like& coefficients) {
  const array c = dense_array(coefficients, "coefficients", 2);
  hyperbinom p;
  p.create(static_cast<tessarn::slong>(tessarn::detail::count(std::max(c.shape(0), c.shape(1)))));
  for (py::ssize_t i = 0; i < c.shape(0); ++i)
    for (py::ssize_t j = 0; j < c.shape(1); ++j)
      p.set(static_cast<tessarn::slong>(i), static_cast<tessarn::slong>(j), c.at(i, j));
  return p;
}

numbers evaluate(const hyperbinom& p, const array_like& x, const array_like& y) {
  const py::tuple both =
      py::module_::import("numpy").attr("broadcast_arrays")(real_array(x, "x", -1), real_array(y, "y", -1));
  const array first = dense_array({both[0]}, "x", -1), second = dense_array({both[1]}, "y", -1);
  array z(std::vector<py::ssize_t>(first.shape(), first.shape() + first.ndim()));
  {
    const tessarn::real *u = as_real(first.data()), *v = as_real(second.data());
    tessarn::real* to = as_real(z.mutable_data());
    const tessarn::ulong n = tessarn::detail::count(z.size());
    py::gil_scoped_release unlocked;
    p.func(u, v, to, n);
  }
  return {first.ndim() == 0 ? py::object(z.attr("item")()) : py::object(z)};
}

void add_fits(py::class_<hyperbinom>& type) {
  type.def(
          "create",
          [](hyperbinom& p, const array_like& points, tessarn::ulong g) {
            const std::vector<vector3d> given = to_vectors3d(points, "points");
            py::gil_scoped_release unlocked;
            p.create(given, g);
          },
          py::arg("points"), py::arg("g"),
          "Fits the g g coefficients of a surface through points, shape (n, 3), by normal equations. A singular system "
          "is not reported; tessarn.fit_surface tells what its result is worth.")
      .def(
          "create",
          [](hyperbinom& p, const array_like& points, const array_like& w, tessarn::ulong g) {
            const std::vector<vector3d> given = to_vectors3d(points, "points");
            const array weights = dense_array(w, "w", 1);
            if (static_cast<std::size_t>(weights.size()) != given.size())
              throw py::value_error("w must have a weight for each point, not the shape " + shape_of(weights));
            py::gil_scoped_release unlocked;
            p.create(given.data(), as_real(weights.data()), given.size(), g);
          },
          py::arg("points"), py::arg("w"), py::arg("g"), "The fit with a weight for each point.");
}

void add_arithmetic(py::class_<hyperbinom>& type) {
  type.def(
          "__mul__", [](const hyperbinom& p, double s) { return p * s; }, py::arg("s"))
      .def(
          "__rmul__", [](const hyperbinom& p, double s) { return p * s; }, py::arg("s"))
      .def(
          "__mul__", [](const hyperbinom& p, const hyperbinom& q) { return p * q; }, py::arg("q"))
      .def(
          "__add__", [](const hyperbinom& p, const hyperbinom& q) { return p + q; }, py::arg("q"),
          "The sum. Where q has the larger grade, the terms of p with a power of y are lost, deliberately.")
      .def(
          "__sub__", [](const hyperbinom& p, const hyperbinom& q) { return p - q; }, py::arg("q"))
      .def("__neg__", [](const hyperbinom& p) { return -p; })
      .def(
          "__imul__", [](hyperbinom& p, double s) -> hyperbinom& { return p *= static_cast<tessarn::real>(s), p; },
          py::arg("s"))
      .def(
          "__imul__", [](hyperbinom& p, const hyperbinom& q) -> hyperbinom& { return p *= q, p; }, py::arg("q"))
      .def(
          "__iadd__", [](hyperbinom& p, const hyperbinom& q) -> hyperbinom& { return p += q, p; }, py::arg("q"))
      .def(
          "__isub__", [](hyperbinom& p, const hyperbinom& q) -> hyperbinom& { return p -= q, p; }, py::arg("q"));
}

}  // namespace

void add_surfaces(py::module_& m) {
  py::class_<hyperbinom> type(m, "hyperbinom", R"(A polynomial in two variables, the sum of c(i, j) x^i y^j.

``hyperbinom(coefficients)`` takes a table that is indexed [i, j], as `numpy.polynomial.polynomial.polyval2d` does.
Copies share the table as those of binom share their coefficients. A sum whose grade grows keeps the pure powers of x
alone, deliberately.

Examples
--------
>>> p = tessarn.hyperbinom([[1, 3], [2, 4]])      # 1 + 2 x + 3 y + 4 x y
>>> p(1, 1), p.get(1, 0)
(10.0, 2.0)
>>> p += tessarn.hyperbinom([[0, 0, 0]])          # the grade grows to 3
>>> p.get(1, 0), p.get(0, 1)
(2.0, 0.0))");
  type.def(py::init<>())
      .def(py::init<const hyperbinom&>(), py::arg("p"), "Shares the table of p.")
      .def(py::init(&from_array), py::arg("coefficients"));
  type.def("empty", &hyperbinom::empty, "Releases the table; it does not ask whether there is one.")
      .def(
          "create", [](hyperbinom& p, tessarn::slong g) { p.create(g); }, py::arg("g"), "Makes a table of g g zeros.")
      .def("resize", &hyperbinom::resize, py::arg("g"),
           "Changes the grade and keeps the pure powers of x only, deliberately.")
      .def(
          "get", [](const hyperbinom& p, tessarn::slong i, tessarn::slong j) { return p.get(i, j); }, py::arg("i"),
          py::arg("j"), "The coefficient of x^i y^j; 0.0 outside the range.")
      .def("set", &hyperbinom::set, py::arg("i"), py::arg("j"), py::arg("v"), "Stores the coefficient of x^i y^j.")
      .def(
          "getgrade", [](const hyperbinom& p) { return p.getgrade(); }, "The number of powers of each variable.")
      .def(
          "copy", [](hyperbinom& p, const hyperbinom& src) { p.copy(src); }, py::arg("src"),
          "Becomes a deep copy of src.")
      .def("clone", &hyperbinom::clone, "A polynomial with a table of its own.")
      .def("func", evaluate, py::arg("x"), py::arg("y"), "p(x, y); x and y are broadcast against each other.")
      .def("__call__", evaluate, py::arg("x"), py::arg("y"), "p(x, y), as func().")
      .def("__str__", [](const hyperbinom& p) { return printed(p); })
      .def("__repr__", [](const hyperbinom& p) { return call_text("hyperbinom", to_array(p)); })
      .def("__copy__", [](const hyperbinom& p) { return p; })
      .def(
          "__deepcopy__", [](const hyperbinom& p, const py::dict&) { return p.clone(); }, py::arg("memo"))
      .def(
          "__array__",
          [](const hyperbinom& p, const py::object& dtype) {
            return dtype.is_none() ? py::object(to_array(p)) : to_array(p).attr("astype")(dtype);
          },
          py::arg("dtype") = py::none(), "A copy of the table, [i, j] the coefficient of x^i y^j.")
      .def(py::pickle([](const hyperbinom& p) { return to_array(p); }, [](const array& c) { return from_array({c}); }));
  add_fits(type);
  add_arithmetic(type);
}

}  // namespace binding
