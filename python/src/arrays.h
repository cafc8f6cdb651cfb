// Between NumPy's arrays and the views and classes of the library.
//
// An array of 64-bit floats in the byte order of the machine is taken where it lies, whatever its strides, as long as
// they are not negative. Everything else that holds real numbers is copied into such an array first.
#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tessarn/tessarn.h"

namespace py = pybind11;

namespace binding {

static_assert(sizeof(double) == sizeof(tessarn::real), "a real has the format of NumPy's float64");

using array = py::array_t<double>;

// An argument that may be anything NumPy makes an array of. The conversion is left to the function, which knows the
// name of the argument and the shape that it must have.
struct array_like {
  py::object object;
};
using optional_array = std::optional<array_like>;

// The result of a function of numbers: a float for a number, an array of the same shape for an array.
struct numbers {
  py::object object;
};

inline const double* as_double(const tessarn::real* p) { return reinterpret_cast<const double*>(p); }
inline double* as_double(tessarn::real* p) { return reinterpret_cast<double*>(p); }
inline const tessarn::real* as_real(const double* p) { return reinterpret_cast<const tessarn::real*>(p); }
inline tessarn::real* as_real(double* p) { return reinterpret_cast<tessarn::real*>(p); }

// "(3, 2)", as NumPy writes shapes.
std::string shape_of(const py::array& a);

// The array of an argument, without a copy where that is possible. `dimensions` is what it must have; -1: any.
// Throws ValueError for another shape, TypeError for what holds no real numbers; both name the argument.
array real_array(const array_like& argument, const char* name, int dimensions);
// Such an array whose rows are contiguous and whose entries lie next to each other in the last dimension.
array dense_array(const array_like& argument, const char* name, int dimensions);
// Whether an argument holds complex numbers.
bool is_complex(const array_like& argument);
// A new array of complex numbers of an argument that holds real or complex ones.
py::array_t<std::complex<double>> complex_array(const array_like& argument, const char* name, int dimensions);

// Numbers of an argument: the view, and the array that keeps them alive.
struct column {
  array kept;
  tessarn::column_view view;
};
column to_column(const array_like& argument, const char* name);
// An empty view for None.
column to_column(const optional_array& argument, const char* name);
// Throws ValueError unless the two have one length.
void require_same_length(const column& a, const char* a_name, const column& b, const char* b_name);

// Points in the rows of an (n, 2) or (n, 3) array.
struct rows {
  array kept;
  std::size_t size = 0;
  int dimensions = 0;

  tessarn::plane_points plane() const { return {coordinate(0), coordinate(1)}; }
  tessarn::space_points space() const { return {coordinate(0), coordinate(1), coordinate(2)}; }
  tessarn::column_view coordinate(int k) const;
};
// `dimensions` of a point: 2, 3, or 0 for either.
rows to_rows(const array_like& argument, const char* name, int dimensions);

// Points as objects of the classic classes, which need a copy.
std::vector<vector> to_vectors(const array_like& argument, const char* name);
std::vector<vector3d> to_vectors3d(const array_like& argument, const char* name);
array from_vectors(const vector* points, std::size_t n);
array from_vectors3d(const vector3d* points, std::size_t n);

// A matrix with the rows of a two-dimensional array, and back. Quiet NaNs are stored as 0.0, as by mat::set().
mat<long double> to_matrix(const array_like& argument, const char* name);
array from_matrix(const mat<long double>& m);
tessarn::matrix_view view_of(const array& dense);

// A view that cannot be written to, of numbers that belong to `owner`.
array read_only(const tessarn::real* first, std::vector<py::ssize_t> shape, std::vector<py::ssize_t> strides,
                py::handle owner);

// Whether results for the places of the dense array x may be written into `out` one by one: when it is dense and is x,
// or has no memory in common with it. Other ones get the results by an assignment of NumPy's.
bool takes_directly(const array& out, const array& x);

// f(x) for a number, or at all places of an array in the order of its entries: `f(const real* x, real* y, size_t n)`
// gets dense arrays and runs without the interpreter's lock. `out`: None, or an array of x's shape that receives the
// result.
template <class F>
numbers over_array(const array_like& x, const py::object& out, F f) {
  const array given = real_array(x, "x", -1);
  if (given.ndim() == 0 && out.is_none()) {
    tessarn::real y;
    f(as_real(given.data()), &y, 1);
    return {py::float_(static_cast<double>(y))};
  }
  const array dense = array::ensure(py::array_t<double, py::array::c_style>(given));
  const std::vector<py::ssize_t> shape(dense.shape(), dense.shape() + dense.ndim());
  const bool to_out = !out.is_none();
  if (to_out) {
    if (!py::isinstance<array>(out)) throw py::type_error("out must be an array of float64");
    const auto target = py::reinterpret_borrow<py::array>(out);
    if (target.ndim() != dense.ndim() || !std::equal(shape.begin(), shape.end(), target.shape()))
      throw py::value_error("out must have the shape of x, " + shape_of(dense) + ", not " + shape_of(target));
    if (!target.writeable()) throw py::value_error("out is read-only");
  }
  const bool direct = to_out && takes_directly(py::reinterpret_borrow<array>(out), dense);
  array result = direct ? py::reinterpret_borrow<array>(out) : array(shape);
  {
    const double* from = dense.data();
    double* to = result.mutable_data();
    const auto n = static_cast<std::size_t>(dense.size());
    py::gil_scoped_release unlocked;
    f(as_real(from), as_real(to), n);
  }
  if (to_out && !direct) out[py::ellipsis()] = result;
  return {to_out ? out : py::object(std::move(result))};
}

}  // namespace binding

namespace pybind11::detail {

// The names are those of the type stubs.
template <>
struct type_caster<binding::array_like> {
  PYBIND11_TYPE_CASTER(binding::array_like, const_name("ArrayLike"));
  bool load(handle source, bool) {
    if (source.is_none()) return false;
    value.object = reinterpret_borrow<object>(source);
    return true;
  }
};
template <>
struct type_caster<binding::numbers> {
  PYBIND11_TYPE_CASTER(binding::numbers, const_name("Numbers"));
  static handle cast(binding::numbers source, return_value_policy, handle) { return source.object.release(); }
};

}  // namespace pybind11::detail
