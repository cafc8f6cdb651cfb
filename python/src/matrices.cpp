// Rectangular matrices.
#include <pybind11/complex.h>

#include "matrices.h"
#include "module.h"

namespace binding {

namespace {

using real_matrix = mat<long double>;
using complex_matrix = mat<cplx>;

// Members that matrices of reals and of complex numbers have in common.
template <class M, class Entry>
void add_access(py::class_<M>& type) {
  type.def(
          "create",
          [](M& m, tessarn::ulong columns, tessarn::ulong rows) {
            require_storable(columns, rows);
            m.create(columns, rows);
            clear(m.getData(), std::size_t{columns} * rows);
          },
          py::arg("columns"), py::arg("rows"), "Makes a matrix of zeros: columns first.")
      .def(
          "get",
          [](const M& m, tessarn::ulong x, tessarn::ulong y) {
            require_entries(m.getWidth(), m.getHeight());
            return to_python(m.get(x, y));
          },
          py::arg("x"), py::arg("y"),
          "The entry in column x, row y, indices wrapped. IndexError for a matrix without entries.")
      .def(
          "set",
          [](M& m, tessarn::ulong x, tessarn::ulong y, const Entry& v) {
            require_entries(m.getWidth(), m.getHeight());
            m.set(x, y, v);
          },
          py::arg("x"), py::arg("y"), py::arg("v"), "Stores v in column x, row y, indices wrapped.")
      .def("getWidth", &M::getWidth, "The number of columns.")
      .def("getHeight", &M::getHeight, "The number of rows.")
      .def("__str__", [](const M& m) { return printed(m); })
      .def("__copy__", [](const M& m) { return m; })
      .def(
          "__deepcopy__", [](const M& m, const py::dict&) { return m; }, py::arg("memo"));
}

void add_arithmetic(py::class_<real_matrix>& type) {
  type.def(
          "__mul__", [](const real_matrix& a, double s) { return a * static_cast<tessarn::real>(s); }, py::arg("s"))
      .def(
          "__rmul__", [](const real_matrix& a, double s) { return a * static_cast<tessarn::real>(s); }, py::arg("s"))
      .def(
          "__truediv__", [](const real_matrix& a, double s) { return a / static_cast<tessarn::real>(s); }, py::arg("s"))
      .def(
          "__mul__", [](const real_matrix& a, const real_matrix& b) { return a * b; }, py::arg("b"),
          py::call_guard<py::gil_scoped_release>(), "The matrix product; the empty matrix when the sizes do not fit.")
      .def(
          "__matmul__", [](const real_matrix& a, const real_matrix& b) { return a * b; }, py::arg("b"),
          py::call_guard<py::gil_scoped_release>(), "The matrix product.")
      .def(
          "__add__", [](const real_matrix& a, const real_matrix& b) { return a + b; }, py::arg("b"),
          "The sum; the empty matrix when the sizes differ.")
      .def(
          "__sub__", [](const real_matrix& a, const real_matrix& b) { return a - b; }, py::arg("b"),
          "The difference; the empty matrix when the sizes differ.")
      .def(
          "__eq__", [](const real_matrix& a, const real_matrix& b) { return a == b; }, py::arg("b"),
          "True when no pair of entries differs, and when the sizes differ, deliberately.")
      .def(
          "__ne__", [](const real_matrix& a, const real_matrix& b) { return a != b; }, py::arg("b"),
          "The opposite of ==: false when the sizes differ.");
}

void add_algebra(py::class_<real_matrix>& type) {
  type.def(
          "transpose", [](const real_matrix& m, real_matrix& dst) { m.transpose(dst); }, py::arg("dst"),
          "Makes dst the transpose. ``a.transpose(a)`` gives zeros.")
      .def(
          "normalize", [](const real_matrix& m) { return m.normalize(); },
          "A copy of this column divided by its length.")
      .def(
          "isDiagonal", [](const real_matrix& m) { return m.isDiagonal(); },
          "Whether every entry off the main diagonal is 0 or NaN.")
      .def(
          "solve", [](real_matrix& x, const real_matrix& A, const real_matrix& b) { x.solve(A, b); }, py::arg("A"),
          py::arg("b"), py::call_guard<py::gil_scoped_release>(),
          "Makes this matrix the column that minimises |A x - b|, from the normal equations; A'b where these are "
          "singular, which is not reported. tessarn.least_squares answers with a status.")
      .def(
          "invert", [](const real_matrix& m, real_matrix& dst) { m.invert(dst); }, py::arg("dst"),
          py::call_guard<py::gil_scoped_release>(),
          "Makes dst the inverse: of a square matrix by the adjugate, of any other the pseudo-inverse.")
      .def(
          "decompose",
          [](const real_matrix& m, real_matrix& U, real_matrix& S, real_matrix& V) {
            if (&U == &S || &U == &V || &S == &V) throw py::value_error("U, S and V must be three matrices");
            py::gil_scoped_release unlocked;
            m.decompose(U, S, V);
          },
          py::arg("U"), py::arg("S"), py::arg("V"), "Makes U, S and V the singular value decomposition U S V'.");
}

void add_real(py::module_& m) {
  py::class_<real_matrix> type(m, "mat", R"(A rectangular matrix of reals; one column wide it is a column vector.

``mat(array)`` takes the rows of a two-dimensional array, and ``np.asarray(m)`` gives a copy of them. Access names the
column first: ``m.get(x, y)`` is ``np.asarray(m)[y, x]``, and indices wrap. A quiet NaN is stored as 0.0. Matrices of
different sizes count as equal, deliberately.

Examples
--------
>>> a = tessarn.mat([[1, 2], [3, 4], [5, 6]])
>>> a.getWidth(), a.getHeight(), a.get(1, 0)
(2, 3, 2.0)
>>> x = tessarn.mat()
>>> x.solve(a, tessarn.mat([[1], [2], [3]]))
>>> np.asarray(x).shape
(2, 1)
>>> u, s, v = tessarn.mat(), tessarn.mat(), tessarn.mat()
>>> a.decompose(u, s, v)
>>> s.get(0, 0) > s.get(1, 1)
True)");
  type.def(py::init<>())
      .def(py::init([](tessarn::ulong columns, tessarn::ulong rows) {
             require_storable(columns, rows);
             return real_matrix(columns, rows);
           }),
           py::arg("columns"), py::arg("rows"), "A matrix of zeros: columns first.")
      .def(py::init([](const real_matrix& o) { return o; }), py::arg("m"))
      .def(py::init([](const array_like& rows) { return to_matrix(rows, "rows"); }), py::arg("rows"));
  add_access<real_matrix, double>(type);
  add_arithmetic(type);
  add_algebra(type);
  type.def(
          "__array__",
          [](const real_matrix& r, const py::object& dtype) {
            return dtype.is_none() ? py::object(from_matrix(r)) : from_matrix(r).attr("astype")(dtype);
          },
          py::arg("dtype") = py::none(), "A copy of the entries, rows first.")
      .def("__repr__", [](const real_matrix& r) { return call_text("mat", from_matrix(r)); })
      .def(py::pickle([](const real_matrix& r) { return from_matrix(r); },
                      [](const array& rows) { return stored_as_they_are(rows); }));
}

void add_complex(py::module_& m) {
  py::class_<complex_matrix> type(
      m, "mat_cplx", "A rectangular matrix of complex numbers. It holds numbers; sqmat_cplx computes with them.");
  type.def(py::init<>())
      .def(py::init([](tessarn::ulong columns, tessarn::ulong rows) {
             require_storable(columns, rows);
             return complex_matrix(columns, rows);
           }),
           py::arg("columns"), py::arg("rows"))
      .def(py::init([](const complex_matrix& o) { return o; }), py::arg("m"))
      .def(py::init([](const array_like& rows) { return to_complex_matrix(rows, "rows"); }), py::arg("rows"));
  add_access<complex_matrix, cplx>(type);
  type.def(
          "__array__",
          [](const complex_matrix& z, const py::object& dtype) {
            const auto a = from_complex(z.getData(), z.getWidth(), z.getHeight());
            return dtype.is_none() ? py::object(a) : a.attr("astype")(dtype);
          },
          py::arg("dtype") = py::none(), "A copy of the entries, rows first.")
      .def("__repr__",
           [](const complex_matrix& z) {
             return call_text("mat_cplx", from_complex(z.getData(), z.getWidth(), z.getHeight()));
           })
      .def(py::pickle([](const complex_matrix& z) { return from_complex(z.getData(), z.getWidth(), z.getHeight()); },
                      [](const py::array_t<std::complex<double>>& rows) { return to_complex_matrix({rows}, "rows"); }));
}

}  // namespace

void require_entries(tessarn::ulong width, tessarn::ulong height) {
  if (width == 0 || height == 0) throw py::index_error("the matrix has no entries");
}

void require_storable(tessarn::ulong width, tessarn::ulong height) {
  if (std::uint64_t{width} * height > 0xFFFFFFFFu) {
    PyErr_SetString(PyExc_MemoryError, "a matrix has at most 4294967295 entries");
    throw py::error_already_set();
  }
}

real_matrix stored_as_they_are(const array& rows) {
  real_matrix m;
  const py::array_t<double, py::array::c_style> dense(rows);
  m.create(tessarn::detail::count(dense.shape(1)), tessarn::detail::count(dense.shape(0)));
  std::copy_n(as_real(dense.data()), static_cast<std::size_t>(dense.size()), m.getData());
  return m;
}

py::array_t<std::complex<double>> from_complex(const cplx* entries, tessarn::ulong width, tessarn::ulong height) {
  py::array_t<std::complex<double>> a({static_cast<py::ssize_t>(height), static_cast<py::ssize_t>(width)});
  std::complex<double>* to = a.mutable_data();
  for (py::ssize_t k = 0; k < a.size(); ++k)
    to[k] = {static_cast<double>(entries[k].re), static_cast<double>(entries[k].im)};
  return a;
}

complex_matrix to_complex_matrix(const array_like& argument, const char* name) {
  const auto a = complex_array(argument, name, 2);
  complex_matrix m;
  m.create(tessarn::detail::count(a.shape(1)), tessarn::detail::count(a.shape(0)));
  for (py::ssize_t k = 0; k < a.size(); ++k) m.getData()[k] = cplx(a.data()[k].real(), a.data()[k].imag());
  return m;
}

void add_matrices(py::module_& m) {
  add_real(m);
  add_complex(m);
}

}  // namespace binding
