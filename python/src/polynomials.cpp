// The polynomial in one variable.
#include "module.h"
#include "text.h"

namespace binding {

namespace {

array to_array(const binom& p) {
  array a(static_cast<py::ssize_t>(p.size()));
  std::copy_n(as_double(p.data()), static_cast<std::size_t>(a.size()), a.mutable_data());
  return a;
}

binom from_array(const array_like& coefficients) {
  const array c = dense_array(coefficients, "coefficients", 1);
  binom p;
  if (c.size() != 0) p.create(static_cast<tessarn::slong>(tessarn::detail::count(c.size())));
  std::copy_n(as_real(c.data()), static_cast<std::size_t>(c.size()), p.data());
  return p;
}

// The members that compute over arrays of n numbers, where n has 32 bits.
using array_member = void (binom::*)(const tessarn::real*, tessarn::real*, tessarn::ulong) const;
numbers evaluate(const binom& p, array_member member, const array_like& x, const py::object& out) {
  return over_array(x, out, [&p, member](const tessarn::real* from, tessarn::real* to, std::size_t n) {
    (p.*member)(from, to, tessarn::detail::count(n));
  });
}

void add_function(py::class_<binom>& type, const char* name, array_member member, const char* doc) {
  type.def(
      name,
      [member](const binom& p, const array_like& x, const py::object& out) { return evaluate(p, member, x, out); },
      py::arg("x"), py::arg("out") = py::none(), doc);
}

void add_functions(py::class_<binom>& type) {
  type.def(
      "func_1", [](const binom& p, binom& d) { p.func_1(d); }, py::arg("d"),
      "Makes d the derivative, one coefficient less. MemoryError for the empty polynomial.");
  add_function(type, "func", &binom::func, "p(x), for a number or for each entry of an array.");
  add_function(type, "__call__", &binom::func, "p(x), as func().");
  add_function(type, "func_1", &binom::func_1, "The value of the first derivative.");
  add_function(type, "func_2", &binom::func_2, "The value of the second derivative.");
  add_function(type, "func_3", &binom::func_3, "The value of the third derivative.");
  add_function(type, "func_4", &binom::func_4, "The value of the fourth derivative.");
  add_function(type, "arc", &binom::arc, "The signed curvature p'' / (1 + p'^2)^(3/2).");
  add_function(type, "arc_1", &binom::arc_1, "The derivative of the curvature with respect to x.");
  type.def(
      "normale", [](const binom& p, double x) { return p.normale(x); }, py::arg("x"),
      "The vector from the curve point (x, p(x)) to its centre of curvature.");
}

void add_arithmetic(py::class_<binom>& type) {
  type.def(
          "__mul__", [](const binom& p, double s) { return p * s; }, py::arg("s"))
      .def(
          "__rmul__", [](const binom& p, double s) { return p * s; }, py::arg("s"))
      .def(
          "__mul__", [](const binom& p, const binom& q) { return p * q; }, py::arg("q"))
      .def(
          "__add__", [](const binom& p, const binom& q) { return p + q; }, py::arg("q"))
      .def(
          "__sub__", [](const binom& p, const binom& q) { return p - q; }, py::arg("q"))
      .def("__neg__", [](const binom& p) { return -p; })
      .def(
          "__imul__", [](binom& p, double s) -> binom& { return p *= static_cast<tessarn::real>(s), p; }, py::arg("s"))
      .def(
          "__imul__", [](binom& p, const binom& q) -> binom& { return p *= q, p; }, py::arg("q"))
      .def(
          "__iadd__", [](binom& p, const binom& q) -> binom& { return p += q, p; }, py::arg("q"))
      .def(
          "__isub__", [](binom& p, const binom& q) -> binom& { return p -= q, p; }, py::arg("q"))
      .def("shift_h", &binom::shift_h, py::arg("x0"), "p(x) := p(x - x0).")
      .def("shift_v", &binom::shift_v, py::arg("dy"), "p(x) := p(x) + dy.")
      .def("mirror_h", &binom::mirror_h, "p(x) := p(-x).")
      .def("mirror_v", &binom::mirror_v, "p(x) := -p(x).");
}

void add_fits_and_searches(py::class_<binom>& type) {
  type.def(
          "create",
          [](binom& p, const array_like& points, tessarn::ulong m) {
            const std::vector<::vector> given = to_vectors(points, "points");
            py::gil_scoped_release unlocked;
            p.create(given, m);
          },
          py::arg("points"), py::arg("m"),
          "Fits m coefficients through points, shape (n, 2), by normal equations. A point whose x is -1.0 or NaN is "
          "left out; a singular system is not reported. tessarn.polyfit tells what its result is worth.")
      .def(
          "createtan",
          [](binom& p, const array_like& points, tessarn::ulong m) {
            const std::vector<::vector> given = to_vectors(points, "points");
            py::gil_scoped_release unlocked;
            p.createtan(given, m);
          },
          py::arg("points"), py::arg("m"), "Fits the constant and the odd powers below m.");
  using search = tessarn::real (binom::*)(tessarn::real, tessarn::real, tessarn::real, tessarn::real) const;
  const auto add = [&type](const char* name, search member, const char* doc) {
    type.def(
        name,
        [member](const binom& p, double a, double b, double step, double eps) {
          py::gil_scoped_release unlocked;
          return (p.*member)(a, b, step, eps);
        },
        py::arg("a"), py::arg("b"), py::arg("step"), py::arg("eps"), doc);
  };
  add("find_zero", &binom::find_zero,
      "The first zero in [a, b] that a scan by `step` meets, -1.0 when it finds none; tessarn.zeros finds all.");
  add("find_extrpoint_arc", &binom::find_extrpoint_arc,
      "The first extreme point of the curvature in [a, b), -1.0 when the scan finds none.");
  add("find_high_hpoint_arc", &binom::find_high_hpoint_arc,
      "The extreme point of the largest curvature, -1.0 when the scan finds none.");
  type.def(
          "scalar", [](const binom& p, const binom& q, double a, double b, double h) { return p.scalar(q, a, b, h); },
          py::arg("q"), py::arg("a"), py::arg("b"), py::arg("h"), py::call_guard<py::gil_scoped_release>(),
          "The mean of p(x) / q(x) over x = a, a + h, ... up to b.")
      .def(
          "antifunction", [](const binom& p, double a, double b, double h) { return p.antifunction(a, b, h); },
          py::arg("a"), py::arg("b"), py::arg("h"), py::call_guard<py::gil_scoped_release>(),
          "The inverse function, fitted through samples.");
}

}  // namespace

void add_polynomials(py::module_& m) {
  py::class_<binom> type(m, "binom", R"(A polynomial p(x) = c0 + c1 x + c2 x^2 + ...

``binom(coefficients)`` takes an array, the constant first, and ``np.asarray(p)`` gives one. ``binom(p)`` and
``copy.copy(p)`` share the coefficients of p: a change through one object shows in the other, until one of the two gets
coefficients of its own. ``p.clone()`` and ``copy.deepcopy(p)`` share nothing. Searches return -1.0 when they find
nothing.

Examples
--------
>>> p = tessarn.binom([2, -3, 1])
>>> p(3), p(np.array([0.0, 1.0]))
(2.0, array([2., 0.]))
>>> str(p)
'2 - 3 x + 1 x^2'
>>> shared, own = tessarn.binom(p), p.clone()
>>> p.set(0, 5)
>>> shared.get(0), own.get(0)
(5.0, 2.0))");
  type.def(py::init<>())
      .def(py::init<const binom&>(), py::arg("p"), "Shares the coefficients of p.")
      .def(py::init(&from_array), py::arg("coefficients"));
  type.def("empty", &binom::empty, "Releases the coefficients; it does not ask whether there are any.")
      .def(
          "create", [](binom& p, tessarn::slong n) { p.create(n); }, py::arg("n"), "Makes n zero coefficients.")
      .def(
          "resize", [](binom& p, tessarn::slong n) { p.resize(n); }, py::arg("n"),
          "Changes the count and keeps the low coefficients.")
      .def(
          "get", [](const binom& p, tessarn::slong i) { return p.get(i); }, py::arg("i"),
          "Coefficient i, that of x^i; 0.0 outside the range.")
      .def("set", &binom::set, py::arg("i"), py::arg("v"), "Stores coefficient i; nothing outside the range.")
      .def(
          "getcofcnt", [](const binom& p) { return p.getcofcnt(); }, "The number of coefficients.")
      .def(
          "copy", [](binom& p, const binom& src) { p.copy(src); }, py::arg("src"), "Becomes a deep copy of src.")
      .def("clone", &binom::clone, "A polynomial with coefficients of its own.")
      .def("__len__", [](const binom& p) { return p.size(); })
      .def("__str__", [](const binom& p) { return printed(p); })
      .def("__repr__", [](const binom& p) { return call_text("binom", to_array(p)); })
      .def("__copy__", [](const binom& p) { return p; })
      .def(
          "__deepcopy__", [](const binom& p, const py::dict&) { return p.clone(); }, py::arg("memo"))
      .def(
          "__array__",
          [](const binom& p, const py::object& dtype) {
            return dtype.is_none() ? py::object(to_array(p)) : to_array(p).attr("astype")(dtype);
          },
          py::arg("dtype") = py::none(), "A copy of the coefficients, the constant first.")
      .def(py::pickle([](const binom& p) { return to_array(p); }, [](const array& c) { return from_array({c}); }));
  add_functions(type);
  add_arithmetic(type);
  add_fits_and_searches(type);
}

}  // namespace binding
