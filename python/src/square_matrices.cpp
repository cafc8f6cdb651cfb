// Square matrices.
#include <pybind11/complex.h>

#include "matrices.h"
#include "module.h"

namespace binding {

namespace {

using real_square = sqmat<long double>;
using complex_square = sqmat<cplx>;

void require_square(const py::array& rows) {
  if (rows.ndim() != 2 || rows.shape(0) != rows.shape(1))
    throw py::value_error("rows must be square, not of the shape " + shape_of(rows));
}

real_square to_square(const array_like& rows) {
  const array a = dense_array(rows, "rows", 2);
  require_square(a);
  real_square m(static_cast<std::size_t>(a.shape(0)));
  for (py::ssize_t k = 0; k < a.size(); ++k) tessarn::detail::store(m.getData()[k], as_real(a.data())[k]);
  return m;
}

complex_square to_complex_square(const array_like& rows) {
  const auto a = complex_array(rows, "rows", 2);
  require_square(a);
  const auto n = static_cast<tessarn::ulong>(a.shape(0));
  complex_square m(n);
  for (tessarn::ulong y = 0; y < n; ++y)
    for (tessarn::ulong x = 0; x < n; ++x) m.set(x, y, cplx(a.at(y, x).real(), a.at(y, x).imag()));
  return m;
}

array to_array(const real_square& m) {
  const auto n = static_cast<py::ssize_t>(m.getSize());
  array a({n, n});
  std::copy_n(as_double(m.getData()), static_cast<std::size_t>(a.size()), a.mutable_data());
  return a;
}

py::array_t<std::complex<double>> to_array(const complex_square& m) {
  const tessarn::ulong n = m.getSize();
  return from_complex(n == 0 ? nullptr : m.row(0).data(), n, n);
}

// Members that square matrices of reals and of complex numbers have in common. The product of two waits without the
// lock.
template <class S, class Entry, class Column>
void add_common(py::class_<S>& type, const char* name) {
  type.def(
          "create",
          [](S& m, tessarn::ulong n) {
            require_storable(n, n);
            m = S(n);
          },
          py::arg("n"), "Makes a matrix of n x n zeros.")
      .def(
          "get",
          [](const S& m, tessarn::ulong x, tessarn::ulong y) {
            require_entries(m.getSize(), m.getSize());
            return to_python(m.get(x, y));
          },
          py::arg("x"), py::arg("y"), "The entry in column x, row y, indices wrapped.")
      .def(
          "set",
          [](S& m, tessarn::ulong x, tessarn::ulong y, const Entry& v) {
            require_entries(m.getSize(), m.getSize());
            m.set(x, y, v);
          },
          py::arg("x"), py::arg("y"), py::arg("v"), "Stores v in column x, row y, indices wrapped.")
      .def(
          "getSize", [](const S& m) { return m.getSize(); }, "The number of rows and columns.")
      .def(
          "getColumn",
          [](const S& m, tessarn::ulong x) {
            require_entries(m.getSize(), m.getSize());
            return m.getColumn(x);
          },
          py::arg("x"), "A copy of column x.")
      .def(
          "setColumn",
          [](S& m, tessarn::ulong x, const Column& column) {
            require_entries(m.getSize(), m.getSize());
            m.setColumn(x, column);
          },
          py::arg("x"), py::arg("column"), "Stores a column; nothing when its height is another.")
      .def(
          "__imul__", [](S& a, const S& b) -> S& { return a *= b, a; }, py::arg("b"),
          "The matrix product; nothing when the sizes differ.")
      .def(
          "__mul__", [](const S& a, const S& b) { return a * b; }, py::arg("b"),
          py::call_guard<py::gil_scoped_release>(), "The matrix product; the empty matrix when the sizes differ.")
      .def(
          "__matmul__", [](const S& a, const S& b) { return a * b; }, py::arg("b"),
          py::call_guard<py::gil_scoped_release>(), "The matrix product.")
      .def(
          "det", [](const S& m) { return to_python(m.det()); }, py::call_guard<py::gil_scoped_release>(),
          "The determinant by elimination without exchanges of rows; tessarn.determinant has a bound of the error.")
      .def(
          "cof",
          [](const S& m, tessarn::ulong x, tessarn::ulong y) {
            require_entries(m.getSize(), m.getSize());
            return to_python(m.cof(x, y));
          },
          py::arg("x"), py::arg("y"), "The cofactor of column x, row y.")
      .def(
          "solve", [](const S& m, Column& b) { m.solve(b); }, py::arg("b"), py::call_guard<py::gil_scoped_release>(),
          "Replaces the column b by the solution x of m x = b. A singular matrix leaves b as it is.")
      .def("orthogonalize", &S::orthogonalize,
           "Makes the columns orthogonal to each other in place (Gram-Schmidt), left to right; the first keeps its "
           "values.")
      .def("optimize", &S::optimize, "Forward elimination in place, without pivoting.")
      .def("__str__", [](const S& m) { return printed(m); })
      .def("__repr__", [name](const S& m) { return call_text(name, to_array(m)); })
      .def("__copy__", [](const S& m) { return m; })
      .def(
          "__deepcopy__", [](const S& m, const py::dict&) { return m; }, py::arg("memo"))
      .def(
          "__array__",
          [](const S& m, const py::object& dtype) {
            return dtype.is_none() ? py::object(to_array(m)) : to_array(m).attr("astype")(dtype);
          },
          py::arg("dtype") = py::none(), "A copy of the entries, rows first.");
}

// Pairs of points as the classic members take them.
struct pairs {
  std::vector<vector3d> a, b;
};
pairs to_pairs(const array_like& a, const array_like& b) {
  pairs p{to_vectors3d(a, "a"), to_vectors3d(b, "b")};
  if (p.a.size() != p.b.size())
    throw py::value_error("a and b must have as many points, not " + std::to_string(p.a.size()) + " and " +
                          std::to_string(p.b.size()));
  return p;
}

// Entries as they are; the constructor of a user's array stores a quiet NaN as 0.0.
real_square restored(const array& rows) {
  real_square m(static_cast<std::size_t>(rows.shape(0)));
  const py::array_t<double, py::array::c_style> dense(rows);
  std::copy_n(as_real(dense.data()), static_cast<std::size_t>(dense.size()), m.getData());
  return m;
}

void add_motions(py::class_<real_square>& type) {
  type.def(
          "calc_match",
          [](real_square& m, const array_like& a, const array_like& b) {
            const pairs p = to_pairs(a, b);
            py::gil_scoped_release unlocked;
            return m.calc_match(p.a, p.b);
          },
          py::arg("a"), py::arg("b"),
          "Makes this the 4 x 4 matrix of a match of points, shape (n, 3): its rotation carries the centred b onto the "
          "centred a, deliberately. False when they determine none. tessarn.align gives the motion from a to b.")
      .def(
          "calc_transform",
          [](real_square& m, const array_like& a, const array_like& b) {
            const pairs p = to_pairs(a, b);
            py::gil_scoped_release unlocked;
            m.calc_transform(p.a, p.b);
          },
          py::arg("a"), py::arg("b"),
          "Makes this the 4 x 4 matrix of the affine map from the points a to b, shape (n, 3), by least squares.")
      .def(
          "transform", [](const real_square& m, const vector3d& in, vector3d& out) { m.transform(in, out); },
          py::arg("in_"), py::arg("out"), "Writes the image of a point into out.")
      .def(
          "transform",
          [](const real_square& m, const array_like& points) {
            const std::vector<vector3d> in = to_vectors3d(points, "points");
            std::vector<vector3d> out(in.size());
            {
              py::gil_scoped_release unlocked;
              m.transform(in.data(), out.data(), tessarn::detail::count(in.size()));
            }
            return from_vectors3d(out.data(), out.size());
          },
          py::arg("points"), "The images of points, shape (n, 3).");
}

}  // namespace

void add_square_matrices(py::module_& m) {
  py::class_<real_square> real(m, "sqmat", R"(A square matrix of reals; indices and the NaN rule are those of mat.

Examples
--------
>>> a, b = tessarn.sqmat([[2, 1], [1, 3]]), tessarn.mat([[3], [4]])
>>> a.solve(b)                    # b becomes the solution
>>> np.asarray(b).ravel()
array([1., 1.])
>>> a.det()
5.0)");
  real.def(py::init<>())
      .def(py::init([](tessarn::ulong n) {
             require_storable(n, n);
             return real_square(n);
           }),
           py::arg("n"), "A matrix of zeros.")
      .def(py::init([](const real_square& o) { return o; }), py::arg("m"))
      .def(py::init(&to_square), py::arg("rows"));
  add_common<real_square, double, mat<long double>>(real, "sqmat");
  real.def(
          "transpose", [](const real_square& a, real_square& dst) { a.transpose(dst); }, py::arg("dst"),
          "Makes dst the transpose.")
      .def(
          "__eq__", [](const real_square& a, const real_square& b) { return a == b; }, py::arg("b"),
          "True when no pair of entries differs, and when the sizes differ, deliberately.")
      .def(
          "__ne__", [](const real_square& a, const real_square& b) { return a != b; }, py::arg("b"))
      .def(py::pickle([](const real_square& a) { return to_array(a); }, &restored));
  add_motions(real);

  py::class_<complex_square> complex(m, "sqmat_cplx", R"(A square matrix of complex numbers.

Examples
--------
>>> z = tessarn.sqmat_cplx([[0, 1j], [1, 0]])
>>> complex(z.get(1, 0))
1j)");
  complex.def(py::init<>())
      .def(py::init([](tessarn::ulong n) {
             require_storable(n, n);
             return complex_square(n);
           }),
           py::arg("n"))
      .def(py::init([](const complex_square& o) { return o; }), py::arg("m"))
      .def(py::init(&to_complex_square), py::arg("rows"));
  add_common<complex_square, cplx, mat<cplx>>(complex, "sqmat_cplx");
  complex.def(py::pickle([](const complex_square& a) { return to_array(a); },
                         [](const py::array_t<std::complex<double>>& rows) { return to_complex_square({rows}); }));
}

}  // namespace binding
