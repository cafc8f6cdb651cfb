// Complex numbers and the vectors: classes that are plain values.
#include <pybind11/complex.h>
#include <pybind11/operators.h>

#include "module.h"
#include "text.h"

namespace binding {

namespace {

// Members that every class of values has: copies, a text as the library prints it, unary minus.
template <class T>
void add_common(py::class_<T>& type) {
  type.def("__str__", [](const T& v) { return printed(v); })
      .def("__copy__", [](const T& v) { return v; })
      .def(
          "__deepcopy__", [](const T& v, const py::dict&) { return v; }, py::arg("memo"))
      .def("__neg__", [](const T& v) { return -v; });
}

// An array of the fields, in the form that NumPy asks for.
py::object as_array(std::initializer_list<tessarn::real> fields, const py::object& dtype) {
  array a(static_cast<py::ssize_t>(fields.size()));
  std::copy(fields.begin(), fields.end(), as_real(a.mutable_data()));
  return dtype.is_none() ? py::object(a) : a.attr("astype")(dtype);
}

// The sums, products and comparisons that several classes have. The number stands before the object among the
// overloads, so that a number is never taken for an angle.
template <class T>
void add_arithmetic(py::class_<T>& type) {
  type.def(
          "__mul__", [](const T& a, double k) { return a * static_cast<tessarn::real>(k); }, py::arg("k"))
      .def(
          "__rmul__", [](const T& a, double k) { return a * static_cast<tessarn::real>(k); }, py::arg("k"))
      .def(
          "__truediv__", [](const T& a, double k) { return a / static_cast<tessarn::real>(k); }, py::arg("k"))
      .def(
          "__imul__", [](T& a, double k) -> T& { return a *= static_cast<tessarn::real>(k), a; }, py::arg("k"))
      .def(
          "__itruediv__", [](T& a, double k) -> T& { return a /= static_cast<tessarn::real>(k), a; }, py::arg("k"))
      .def(
          "__add__", [](const T& a, const T& b) { return a + b; }, py::arg("b"))
      .def(
          "__sub__", [](const T& a, const T& b) { return a - b; }, py::arg("b"))
      .def(
          "__iadd__", [](T& a, const T& b) -> T& { return a += b, a; }, py::arg("b"))
      .def(
          "__isub__", [](T& a, const T& b) -> T& { return a -= b, a; }, py::arg("b"));
}

void add_cplx(py::module_& m) {
  py::class_<cplx> type(m, "cplx", R"(A complex number, re + i im.

Some operations differ from those of Python's complex, and callers rely on it:

- one real argument is an angle: ``cplx(2.0)`` is cos 2 + i sin 2; write ``cplx(2.0, 0.0)`` for 2 + 0i. A number in
  place of a cplx is such an angle as well; in a product or a quotient it is a factor;
- ``!=`` is true only when both parts differ, so it is not the negation of ``==``;
- ``<`` and ``>`` compare moduli;
- division by zero gives 0 and also sets the left operand to 0;
- sqrt() is the root with non-negative imaginary part.

Examples
--------
>>> z = tessarn.cplx(3, 4)
>>> z.lenld()
5.0
>>> z * tessarn.cplx(0, 1)
cplx(-4.0, 3.0)
>>> tessarn.cplx(0.0), tessarn.cplx(1, 2) != tessarn.cplx(1, 3)
(cplx(1.0, 0.0), False)
>>> complex(z)
(3+4j))");
  type.def(py::init<>())
      .def(py::init<tessarn::real, tessarn::real>(), py::arg("real_part"), py::arg("imaginary_part"))
      .def(py::init<tessarn::real>(), py::arg("angle"))
      .def(py::init([](const cplx& z) { return z; }), py::arg("z"))
      .def(py::init([](std::complex<double> z) { return cplx(z.real(), z.imag()); }), py::arg("z"))
      .def_readwrite("re", &cplx::re, "Real part.")
      .def_readwrite("im", &cplx::im, "Imaginary part.");
  add_common(type);
  add_arithmetic(type);
  type.def(
          "__mul__", [](const cplx& a, const cplx& b) { return a * b; }, py::arg("b"))
      .def(
          "__truediv__", [](cplx& a, const cplx& b) { return a / b; }, py::arg("b"))
      .def(
          "__imul__", [](cplx& a, const cplx& b) -> cplx& { return a *= b, a; }, py::arg("b"))
      .def(
          "__itruediv__", [](cplx& a, const cplx& b) -> cplx& { return a /= b, a; }, py::arg("b"))
      .def(
          "__eq__", [](const cplx& a, const cplx& b) { return a == b; }, py::arg("b"))
      .def(
          "__ne__", [](const cplx& a, const cplx& b) { return a != b; }, py::arg("b"))
      .def(
          "__lt__", [](const cplx& a, const cplx& b) { return a < b; }, py::arg("b"))
      .def(
          "__gt__", [](const cplx& a, const cplx& b) { return a > b; }, py::arg("b"))
      .def(
          "lenld", [](const cplx& z) { return z.lenld(); }, "The modulus, sqrt(re^2 + im^2), without scaling.")
      .def(
          "lenul", [](const cplx& z) { return z.lenul(); },
          "The modulus rounded to an integer, half up; 2^31 where it does not fit.")
      .def(
          "phi", [](const cplx& z) { return z.phi(); }, "The argument in [0, 2 pi).")
      .def(
          "sqrt", [](const cplx& z) { return z.sqrt(); }, "The square root with half of the argument phi().")
      .def("__complex__",
           [](const cplx& z) { return std::complex<double>(static_cast<double>(z.re), static_cast<double>(z.im)); })
      .def("__repr__",
           [](const cplx& z) {
             return call_text("cplx", {z.re, z.im});
           })
      .def(py::pickle([](const cplx& z) { return py::make_tuple(z.re, z.im); },
                      [](const py::tuple& t) { return cplx(t[0].cast<tessarn::real>(), t[1].cast<tessarn::real>()); }));
  py::implicitly_convertible<double, cplx>();
  py::implicitly_convertible<std::complex<double>, cplx>();
}

void add_vector(py::module_& m) {
  py::class_<::vector> type(m, "vector", R"(A plane vector (x, y), used as a point and as a direction.

Angles run from +x towards +y, in radians: arc() is unsigned, dirarc() is signed. In the point list and in classic curve
fits an x of exactly -1.0 marks a deleted point. A NaN coordinate counts as equal to anything.

Examples
--------
>>> a, b = tessarn.vector(3, 4), tessarn.vector(0, 2)
>>> a.lenld(), a + 2 * b
(5.0, vector(3.0, 8.0))
>>> tessarn.vector(-0.2, 2.5).rx()
-1)");
  type.def(py::init<>())
      .def(py::init<tessarn::real, tessarn::real>(), py::arg("first"), py::arg("second"))
      .def(py::init([](const ::vector& v) { return v; }), py::arg("v"))
      .def_readwrite("x", &::vector::x, "First coordinate.")
      .def_readwrite("y", &::vector::y, "Second coordinate.");
  add_common(type);
  add_arithmetic(type);
  type.def(
          "__eq__", [](const ::vector& a, const ::vector& b) { return a == b; }, py::arg("b"))
      .def(
          "resize", [](const ::vector& v, double len) { return v.resize(len); }, py::arg("len"),
          "The vector scaled to the length len; NaN for the zero vector.")
      .def(
          "lenld", [](const ::vector& v) { return v.lenld(); }, "The length, without scaling against overflow.")
      .def(
          "lenul", [](const ::vector& v) { return v.lenul(); }, "The length rounded to an integer, half up.")
      .def(
          "rx", [](const ::vector& v) { return v.rx(); }, "x rounded half up from 0 on, and down to the floor below 0.")
      .def(
          "ry", [](const ::vector& v) { return v.ry(); }, "y rounded in this way.")
      .def_static("rndu", &::vector::rndu, py::arg("v"), "The magnitude rounded half up.")
      .def_static("rndi", &::vector::rndi, py::arg("v"), "v rounded half up from 0 on, and down to its floor below 0.")
      .def(
          "arc", [](const ::vector& v) { return v.arc(); }, "The unsigned angle to the +x axis, in [0, pi].")
      .def(
          "arc", [](const ::vector& v, const ::vector& b) { return v.arc(b); }, py::arg("b"),
          "The unsigned angle between the two; 0 where rounding pushes its cosine outside [-1, 1].")
      .def(
          "dirarc", [](const ::vector& v) { return v.dirarc(); }, "The direction angle in (-pi, pi] from the +x axis.")
      .def(
          "dirarc", [](const ::vector& v, const ::vector& b) { return v.dirarc(b); }, py::arg("b"),
          "The signed angle from this direction to that of b.")
      .def("flip", &::vector::flip, "Exchanges x and y.")
      .def(
          "__array__",
          [](const ::vector& v, const py::object& dtype) {
            return as_array({v.x, v.y}, dtype);
          },
          py::arg("dtype") = py::none())
      .def("__repr__",
           [](const ::vector& v) {
             return call_text("vector", {v.x, v.y});
           })
      .def(py::pickle(
          [](const ::vector& v) { return py::make_tuple(v.x, v.y); },
          [](const py::tuple& t) { return ::vector(t[0].cast<tessarn::real>(), t[1].cast<tessarn::real>()); }));
}

void add_vector3d_members(py::class_<vector3d>& type) {
  type.def(
          "__mul__", [](const vector3d& a, const vector3d& b) { return a * b; }, py::arg("b"), "The dot product.")
      .def(
          "__imul__", [](vector3d& a, const vector3d& b) -> vector3d& { return a *= b, a; }, py::arg("b"),
          "The cross product, deliberately, though * is the dot product.")
      .def(
          "__eq__", [](const vector3d& a, const vector3d& b) { return a == b; }, py::arg("b"))
      .def(
          "__eq__", [](const vector3d& a, const polarvector3d& b) { return a == b; }, py::arg("b"))
      .def(
          "cross", [](const vector3d& a, const vector3d& b) { return a.cross(b); }, py::arg("b"), "The cross product.")
      .def(
          "resize", [](const vector3d& v, double len) { return v.resize(len); }, py::arg("len"),
          "The vector scaled to the length len.")
      .def(
          "projection", [](const vector3d& v, const vector3d& b) { return v.projection(b); }, py::arg("v"),
          "The projection of v on this vector.")
      .def(
          "rotate", [](const vector3d& v, double a1, double a2) { return v.rotate(a1, a2); }, py::arg("a1"),
          py::arg("a2"), "Turned by a1 about the z axis, from +y towards +x, and then upwards by a2.")
      .def(
          "rotate", [](const vector3d& v, const vector3d& axis, double angle) { return v.rotate(axis, angle); },
          py::arg("axis"), py::arg("angle"), "Turned about an axis, clockwise seen from its tip.")
      .def(
          "lenld", [](const vector3d& v) { return v.lenld(); }, "The length, without scaling against overflow.")
      .def(
          "lenul", [](const vector3d& v) { return v.lenul(); }, "The length rounded to an integer, half up.")
      .def(
          "rx", [](const vector3d& v) { return v.rx(); }, "x rounded half up from 0 on, and down to the floor below 0.")
      .def(
          "ry", [](const vector3d& v) { return v.ry(); }, "y rounded in this way.")
      .def(
          "rz", [](const vector3d& v) { return v.rz(); }, "z rounded in this way.")
      .def(
          "arc", [](const vector3d& v, const vector3d& b) { return v.arc(b); }, py::arg("b"),
          "The unsigned angle between the two; 0 where rounding pushes its cosine outside [-1, 1].");
}

void add_vector3d(py::class_<vector3d>& type) {
  type.def(py::init<>())
      .def(py::init<tessarn::real, tessarn::real, tessarn::real>(), py::arg("first"), py::arg("second"),
           py::arg("third"))
      .def(py::init([](const vector3d& v) { return v; }), py::arg("v"))
      .def(py::init([](const polarvector3d& p) { return vector3d(p); }), py::arg("p"))
      .def_readwrite("x", &vector3d::x, "First coordinate.")
      .def_readwrite("y", &vector3d::y, "Second coordinate.")
      .def_readwrite("z", &vector3d::z, "Third coordinate.");
  add_common(type);
  add_arithmetic(type);
  add_vector3d_members(type);
  type.def(
          "__array__",
          [](const vector3d& v, const py::object& dtype) {
            return as_array({v.x, v.y, v.z}, dtype);
          },
          py::arg("dtype") = py::none())
      .def("__repr__",
           [](const vector3d& v) {
             return call_text("vector3d", {v.x, v.y, v.z});
           })
      .def(py::pickle([](const vector3d& v) { return py::make_tuple(v.x, v.y, v.z); },
                      [](const py::tuple& t) {
                        return vector3d(t[0].cast<tessarn::real>(), t[1].cast<tessarn::real>(),
                                        t[2].cast<tessarn::real>());
                      }));
}

void add_polarvector3d(py::class_<polarvector3d>& type) {
  type.def(py::init<>())
      .def(py::init<tessarn::real, tessarn::real, tessarn::real>(), py::arg("azimuth"), py::arg("elevation"),
           py::arg("length"))
      .def(py::init([](const polarvector3d& p) { return p; }), py::arg("p"))
      .def(py::init([](const vector3d& v) { return polarvector3d(v); }), py::arg("v"))
      .def_readwrite("alpha", &polarvector3d::alpha, "Angle in the xy plane from +x towards +y.")
      .def_readwrite("beta", &polarvector3d::beta, "Elevation above the xy plane.")
      .def_readwrite("len", &polarvector3d::len, "Length.");
  add_common(type);
  type.def(
          "__mul__", [](const polarvector3d& a, double k) { return a * static_cast<tessarn::real>(k); }, py::arg("k"))
      .def(
          "__rmul__", [](const polarvector3d& a, double k) { return a * static_cast<tessarn::real>(k); }, py::arg("k"))
      .def(
          "__truediv__", [](const polarvector3d& a, double k) { return a / static_cast<tessarn::real>(k); },
          py::arg("k"))
      .def(
          "__mul__", [](const polarvector3d& a, const polarvector3d& b) { return a * b; }, py::arg("b"),
          "The dot product.")
      .def(
          "__add__", [](const polarvector3d& a, const polarvector3d& b) { return a + b; }, py::arg("b"))
      .def(
          "__sub__", [](const polarvector3d& a, const polarvector3d& b) { return a - b; }, py::arg("b"))
      .def(
          "__imul__", [](polarvector3d& a, double k) -> polarvector3d& { return a *= k, a; }, py::arg("k"))
      .def(
          "__itruediv__", [](polarvector3d& a, double k) -> polarvector3d& { return a /= k, a; }, py::arg("k"))
      .def(
          "__iadd__", [](polarvector3d& a, const polarvector3d& b) -> polarvector3d& { return a += b, a; },
          py::arg("b"), "Does nothing, deliberately: write a = a + b.")
      .def(
          "__isub__", [](polarvector3d& a, const polarvector3d& b) -> polarvector3d& { return a -= b, a; },
          py::arg("b"), "Does nothing, deliberately: write a = a - b.")
      .def(
          "__imul__", [](polarvector3d& a, const polarvector3d& b) -> polarvector3d& { return a *= b, a; },
          py::arg("b"), "Does nothing, deliberately.")
      .def(
          "__eq__", [](const polarvector3d& a, const polarvector3d& b) { return a == b; }, py::arg("b"))
      .def(
          "__eq__", [](const polarvector3d& a, const vector3d& b) { return a == b; }, py::arg("b"))
      .def(
          "cross", [](const polarvector3d& a, const polarvector3d& b) { return a.cross(b); }, py::arg("o"))
      .def(
          "resize", [](const polarvector3d& v, double l) { return v.resize(l); }, py::arg("l"),
          "The same direction with the length l.")
      .def(
          "rotate", [](const polarvector3d& v, double a, double b) { return v.rotate(a, b); }, py::arg("a"),
          py::arg("b"), "The angles added to alpha and beta, without bringing them back into their ranges.")
      .def(
          "lenld", [](const polarvector3d& v) { return v.lenld(); }, "The length.")
      .def(
          "lenul", [](const polarvector3d& v) { return v.lenul(); }, "The length rounded to an integer, half up.")
      .def(
          "ralpha", [](const polarvector3d& v) { return v.ralpha(); }, "alpha rounded to an integer.")
      .def(
          "rbeta", [](const polarvector3d& v) { return v.rbeta(); }, "beta rounded to an integer.")
      .def(
          "rlen", [](const polarvector3d& v) { return v.rlen(); }, "The length rounded to an integer.")
      .def(
          "arc", [](const polarvector3d& a, const polarvector3d& b) { return a.arc(b); }, py::arg("o"),
          "The unsigned angle between the two.")
      .def("__repr__",
           [](const polarvector3d& v) {
             return call_text("polarvector3d", {v.alpha, v.beta, v.len});
           })
      .def(py::pickle([](const polarvector3d& v) { return py::make_tuple(v.alpha, v.beta, v.len); },
                      [](const py::tuple& t) {
                        return polarvector3d(t[0].cast<tessarn::real>(), t[1].cast<tessarn::real>(),
                                             t[2].cast<tessarn::real>());
                      }));
}

}  // namespace

void add_values(py::module_& m) {
  add_cplx(m);
  add_vector(m);
  py::class_<vector3d> space(m, "vector3d", R"(A vector in space.

``a * b`` is the dot product, and ``a *= b`` the cross product, deliberately. A NaN coordinate counts as equal to anything.

Examples
--------
>>> a, b = tessarn.vector3d(1, 0, 0), tessarn.vector3d(0, 1, 0)
>>> a * b, a.cross(b)
(0.0, vector3d(0.0, 0.0, 1.0)))");
  py::class_<polarvector3d> polar(m, "polarvector3d", R"(A vector in space by two angles and a length.

``a += b``, ``a -= b`` and ``a *= b`` with a second polar vector do nothing, deliberately.

Examples
--------
>>> tessarn.polarvector3d(tessarn.vector3d(0, 0, 2))
polarvector3d(0.0, 1.5707963267948966, 2.0))");
  add_vector3d(space);
  add_polarvector3d(polar);
}

}  // namespace binding
