// Linear systems, inverses and determinants.
#include <pybind11/complex.h>

#include "module.h"
#include "record.h"

namespace binding {

namespace {

using tessarn::complex_inverse_matrix;
using tessarn::complex_solution;
using tessarn::determinant_value;
using tessarn::inverse_matrix;
using tessarn::linear_solution;

// Complex numbers of the library, which have a virtual table pointer each: a copy is needed.
mat<cplx> to_complex(const array_like& argument, const char* name, int dimensions) {
  const auto a = complex_array(argument, name, dimensions);
  mat<cplx> m;
  m.create(dimensions == 1 ? 1 : tessarn::detail::count(a.shape(1)), tessarn::detail::count(a.shape(0)));
  for (py::ssize_t k = 0; k < a.size(); ++k) m.getData()[k] = cplx(a.data()[k].real(), a.data()[k].imag());
  return m;
}

py::array_t<std::complex<double>> from_complex(const mat<cplx>& m, bool column) {
  const auto height = static_cast<py::ssize_t>(m.getHeight()), width = static_cast<py::ssize_t>(m.getWidth());
  py::array_t<std::complex<double>> a(column ? std::vector<py::ssize_t>{width == 0 ? 0 : height}
                                             : std::vector<py::ssize_t>{height, width});
  for (py::ssize_t k = 0; k < a.size(); ++k)
    a.mutable_data()[k] = {static_cast<double>(m.getData()[k].re), static_cast<double>(m.getData()[k].im)};
  return a;
}

// A field of complex numbers, which is copied for each look.
template <class R>
void complex_field(record<R>& r, const char* name, mat<cplx> R::*place, bool column, const char* doc) {
  r.attribute(
      name, [place, column](const R& self) { return from_complex(self.*place, column); },
      [place, column](R& self, const py::handle& value) {
        const array_like given{py::reinterpret_borrow<py::object>(value)};
        if (py::len(value) != 0) self.*place = to_complex(given, "value", column ? 1 : 2);
      },
      doc);
}

void require_square(const py::array& a) {
  if (a.ndim() != 2 || a.shape(0) != a.shape(1))
    throw py::value_error("a must be square, not of the shape " + shape_of(a));
}

// The two arguments of a real system. The right-hand side is one column.
struct real_system {
  array a;
  column b;
};
real_system to_system(const array_like& a, const array_like& b) {
  real_system s{dense_array(a, "a", 2), to_column(b, "b")};
  if (s.a.shape(0) != s.b.kept.shape(0))
    throw py::value_error("a and b must have as many rows, not the shapes " + shape_of(s.a) + " and " +
                          shape_of(s.b.kept));
  return s;
}

py::object solve(const array_like& a, const array_like& b) {
  if (is_complex(a) || is_complex(b)) {
    const mat<cplx> left = to_complex(a, "a", 2), right = to_complex(b, "b", 1);
    if (left.getWidth() != left.getHeight() || left.getHeight() != right.getHeight())
      throw py::value_error("a must be square and b as long as it, not " + std::to_string(left.getHeight()) + " x " +
                            std::to_string(left.getWidth()) + " and " + std::to_string(right.getHeight()));
    complex_solution s;
    {
      py::gil_scoped_release unlocked;
      s = tessarn::solve(left, right);
    }
    return py::cast(std::move(s));
  }
  const real_system system = to_system(a, b);
  require_square(system.a);
  linear_solution s;
  {
    py::gil_scoped_release unlocked;
    s = tessarn::solve(view_of(system.a), system.b.view);
  }
  return py::cast(std::move(s));
}

linear_solution least_squares(const array_like& a, const array_like& b) {
  const real_system system = to_system(a, b);
  py::gil_scoped_release unlocked;
  return tessarn::least_squares(view_of(system.a), system.b.view);
}

py::object inverse(const array_like& a) {
  if (is_complex(a)) {
    const mat<cplx> m = to_complex(a, "a", 2);
    if (m.getWidth() != m.getHeight()) throw py::value_error("a must be square");
    complex_inverse_matrix result;
    {
      py::gil_scoped_release unlocked;
      result = tessarn::inverse(m);
    }
    return py::cast(std::move(result));
  }
  const array m = dense_array(a, "a", 2);
  require_square(m);
  inverse_matrix result;
  {
    py::gil_scoped_release unlocked;
    result = tessarn::inverse(view_of(m));
  }
  return py::cast(std::move(result));
}

determinant_value determinant(const array_like& a) {
  const array m = dense_array(a, "a", 2);
  require_square(m);
  py::gil_scoped_release unlocked;
  return tessarn::determinant(view_of(m));
}

void add_solutions(py::module_& m) {
  record<linear_solution> real(m, "LinearSolution",
                               R"(The solution of a linear system, with a proved bound of its error.

``np.asarray`` gives `x`, and raises ValueError where there is none.)");
  real.field("status", &linear_solution::state, "Whether the result holds, and if not, why.")
      .field("x", &linear_solution::x, layout::column, "The solution; empty unless there is one.")
      .field("error", &linear_solution::error, layout::column,
             "|true x - x| is at most this, entry by entry; infinite where nothing is proved.")
      .field("reciprocal_condition", &linear_solution::reciprocal_condition,
             "An estimate: near 1 well conditioned, near 1e-16 hardly determined.")
      .field("rank", &linear_solution::rank, "The number of independent columns, as far as doubled precision tells.")
      .field("residual", &linear_solution::residual,
             "The length of b - a x; of least_squares() alone, as the following.")
      .field("residual_deviation", &linear_solution::residual_deviation,
             "residual / sqrt(rows - columns); infinite for as many columns as rows.")
      .field("standard_errors", &linear_solution::standard_errors, layout::column, "Of the entries of x.")
      .with_status(&linear_solution::state);
  real.type().def(
      "__array__",
      [](const py::object& self, const py::object& dtype) {
        const auto& s = self.cast<const linear_solution&>();
        require_answer(s.x.getHeight() != 0, "solution", s.state);
        return self.attr("x").attr("astype")(dtype.is_none() ? py::object(py::dtype::of<double>()) : dtype);
      },
      py::arg("dtype") = py::none(), "The solution.");
  real.finish();

  record<complex_solution> complex(m, "ComplexSolution", "The solution of a linear system of complex numbers.");
  complex.field("status", &complex_solution::state, "Whether the result holds, and if not, why.");
  complex_field(complex, "x", &complex_solution::x, true, "The solution; empty unless there is one.");
  complex
      .field("error", &complex_solution::error, layout::column,
             "The real and the imaginary part of x are off by at most this, entry by entry.")
      .field("reciprocal_condition", &complex_solution::reciprocal_condition, "As of a LinearSolution.")
      .with_status(&complex_solution::state);
  complex.finish();
}

void add_inverses(py::module_& m) {
  record<inverse_matrix> real(m, "InverseMatrix", "The inverse of a square matrix, with a proved bound of its error.");
  real.field("status", &inverse_matrix::state, "Whether the result holds, and if not, why.")
      .field("inverse", &inverse_matrix::inverse, layout::square, "The inverse; empty unless there is one.")
      .field("error", &inverse_matrix::error, layout::square,
             "|true inverse - inverse| is at most this, entry by entry.")
      .field("reciprocal_condition", &inverse_matrix::reciprocal_condition, "As of a LinearSolution.")
      .with_status(&inverse_matrix::state);
  real.finish();

  record<complex_inverse_matrix> complex(m, "ComplexInverseMatrix", "The inverse of a square complex matrix.");
  complex.field("status", &complex_inverse_matrix::state, "Whether the result holds, and if not, why.");
  complex_field(complex, "inverse", &complex_inverse_matrix::inverse, false, "The inverse; empty unless there is one.");
  complex
      .field("error", &complex_inverse_matrix::error, layout::square,
             "The real and the imaginary part are off by at most this, entry by entry.")
      .field("reciprocal_condition", &complex_inverse_matrix::reciprocal_condition, "As of a LinearSolution.")
      .with_status(&complex_inverse_matrix::state);
  complex.finish();
}

void add_determinant(py::module_& m) {
  record<determinant_value> r(m, "Determinant", "The determinant of a square matrix; ``float`` gives its value.");
  r.field("status", &determinant_value::state, "Whether the result holds, and if not, why.")
      .field("value", &determinant_value::value, "The determinant.")
      .field("error", &determinant_value::error, "|true determinant - value| is at most this.")
      .field("fraction", &determinant_value::fraction,
             "Also for determinants beyond the range of a float: fraction * 2**exponent,")
      .field("exponent", &determinant_value::exponent, "with a fraction between 1 and 2 in magnitude, or 0.")
      .field("reciprocal_condition", &determinant_value::reciprocal_condition, "0 where the matrix is singular.")
      .with_status(&determinant_value::state);
  r.type().def("__float__", [](const determinant_value& d) {
    require_answer(d.state == tessarn::status::ok, "determinant", d.state);
    return static_cast<double>(d.value);
  });
  r.finish();
}

}  // namespace

void add_solve(py::module_& m) {
  add_solutions(m);
  add_inverses(m);
  add_determinant(m);
  m.def("solve", solve, py::arg("a"), py::arg("b"),
        R"(Solve a x = b for a square matrix, with a proved bound of the error.

Parameters
----------
a : array_like, shape (n, n)
    The matrix, real or complex.
b : array_like, shape (n,)
    The right-hand side.

Returns
-------
LinearSolution or ComplexSolution
    A singular matrix raises nothing: the status is `singular`, and `x` is empty. ``np.asarray(result)`` raises
    ValueError then.

Examples
--------
>>> s = tessarn.solve([[0, 2], [1, 1]], [4, 5])
>>> s.x
array([3., 2.])
>>> bool((s.error < 1e-15).all())
True
>>> tessarn.solve([[1, 2], [2, 4]], [1, 1]).status.name
'singular')");
  m.def("least_squares", least_squares, py::arg("a"), py::arg("b"),
        R"(The x that makes the sum of the squares of b - a x smallest.

With dependent columns the status is `rank_deficient`, and x is the solution with zeros for the dependent columns, not
the shortest one that `numpy.linalg.lstsq` returns.

Parameters
----------
a : array_like, shape (m, n)
b : array_like, shape (m,)

Returns
-------
LinearSolution

Examples
--------
>>> s = tessarn.least_squares([[1, 0], [1, 1], [1, 2]], [1, 3, 5])
>>> s.x, s.rank
(array([1., 2.]), 2))");
  m.def("inverse", inverse, py::arg("a"), R"(The inverse of a square matrix, with a proved bound of its error.

Examples
--------
>>> tessarn.inverse([[0, 2], [1, 0]]).inverse
array([[0. , 1. ],
       [0.5, 0. ]]))");
  m.def("determinant", determinant, py::arg("a"),
        R"(The determinant of a square matrix, with a proved bound of its error.

When ``error < abs(value)`` the matrix is proved to be regular.

Examples
--------
>>> d = tessarn.determinant([[0, 2], [1, 0]])
>>> d.value, d.error < 1e-15
(-2.0, True))");
}

}  // namespace binding
