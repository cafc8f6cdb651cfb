#include "arrays.h"

#include <pybind11/complex.h>

#include <algorithm>
#include <limits>

namespace binding {

namespace {

using npy = py::detail::npy_api;

py::array any_array(const py::object& object) {
  if (py::isinstance<py::array>(object)) return py::reinterpret_borrow<py::array>(object);
  PyObject* made = npy::get().PyArray_FromAny_(object.ptr(), nullptr, 0, 0, npy::NPY_ARRAY_ENSUREARRAY_, nullptr);
  if (made == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::array>(made);
}

// The kinds of numbers that become float64: booleans, integers, floats, and objects that NumPy can convert.
bool holds_reals(const py::array& a) { return std::string("biufO").find(a.dtype().kind()) != std::string::npos; }

[[noreturn]] void wrong_type(const char* name, const py::array& a) {
  throw py::type_error(std::string(name) + " must hold real numbers, not " + py::str(a.dtype()).cast<std::string>());
}

py::array converted(const py::array& a, const py::dtype& type, int flags) {
  py::dtype wanted = type;
  PyObject* made = npy::get().PyArray_FromAny_(
      a.ptr(), wanted.release().ptr(), 0, 0, npy::NPY_ARRAY_ENSUREARRAY_ | npy::NPY_ARRAY_FORCECAST_ | flags, nullptr);
  if (made == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::array>(made);
}

void require_dimensions(const py::array& a, const char* name, int dimensions) {
  if (dimensions >= 0 && a.ndim() != dimensions)
    throw py::value_error(std::string(name) + " must have " + std::to_string(dimensions) +
                          (dimensions == 1 ? " dimension" : " dimensions") + ", not the shape " + shape_of(a));
}

bool runs_backwards(const py::array& a) {
  return std::any_of(a.strides(), a.strides() + a.ndim(), [](py::ssize_t s) { return s < 0; });
}

constexpr std::size_t most_points = std::numeric_limits<tessarn::ulong>::max();

// The library counts points with 32 bits.
void require_countable(std::size_t n, const char* name) {
  if (n > most_points) throw py::value_error(std::string(name) + " has more than 4294967295 points");
}

}  // namespace

std::string shape_of(const py::array& a) { return py::repr(a.attr("shape")).cast<std::string>(); }

array real_array(const array_like& argument, const char* name, int dimensions) {
  const py::array a = any_array(argument.object);
  require_dimensions(a, name, dimensions);
  if (!holds_reals(a)) wrong_type(name, a);
  if (py::isinstance<array>(a) && (a.flags() & npy::NPY_ARRAY_ALIGNED_) != 0 && !runs_backwards(a))
    return py::reinterpret_borrow<array>(a);
  return py::reinterpret_steal<array>(
      converted(a, py::dtype::of<double>(), npy::NPY_ARRAY_C_CONTIGUOUS_ | npy::NPY_ARRAY_ALIGNED_).release());
}

array dense_array(const array_like& argument, const char* name, int dimensions) {
  const array a = real_array(argument, name, dimensions);
  if ((a.flags() & npy::NPY_ARRAY_C_CONTIGUOUS_) != 0) return a;
  return py::reinterpret_steal<array>(converted(a, py::dtype::of<double>(), npy::NPY_ARRAY_C_CONTIGUOUS_).release());
}

bool is_complex(const array_like& argument) { return any_array(argument.object).dtype().kind() == 'c'; }

py::array_t<std::complex<double>> complex_array(const array_like& argument, const char* name, int dimensions) {
  const py::array a = any_array(argument.object);
  require_dimensions(a, name, dimensions);
  if (a.dtype().kind() != 'c' && !holds_reals(a)) wrong_type(name, a);
  return py::reinterpret_steal<py::array_t<std::complex<double>>>(
      converted(a, py::dtype::of<std::complex<double>>(), npy::NPY_ARRAY_C_CONTIGUOUS_ | npy::NPY_ARRAY_ALIGNED_)
          .release());
}

column to_column(const array_like& argument, const char* name) {
  column c{real_array(argument, name, 1), {}};
  const auto n = static_cast<std::size_t>(c.kept.shape(0));
  require_countable(n, name);
  c.view = tessarn::column_view(as_real(c.kept.data()), n, static_cast<std::size_t>(c.kept.strides(0)));
  return c;
}

column to_column(const optional_array& argument, const char* name) {
  return argument ? to_column(*argument, name) : column{};
}

void require_same_length(const column& a, const char* a_name, const column& b, const char* b_name) {
  if (a.view.size() != b.view.size())
    throw py::value_error(std::string(a_name) + " and " + b_name + " must have one length, not " + shape_of(a.kept) +
                          " and " + shape_of(b.kept));
}

tessarn::column_view rows::coordinate(int k) const {
  return {as_real(reinterpret_cast<const double*>(reinterpret_cast<const char*>(kept.data()) + k * kept.strides(1))),
          size, static_cast<std::size_t>(kept.strides(0))};
}

rows to_rows(const array_like& argument, const char* name, int dimensions) {
  const py::array a = any_array(argument.object);
  const bool fits = a.ndim() == 2 && (dimensions == 0 ? a.shape(1) == 2 || a.shape(1) == 3 : a.shape(1) == dimensions);
  if (!fits) {
    const std::string wanted = dimensions == 0 ? "(n, 2) or (n, 3)" : "(n, " + std::to_string(dimensions) + ")";
    throw py::value_error(std::string(name) + " must have the shape " + wanted + ", not " + shape_of(a));
  }
  rows r{real_array({a}, name, 2), 0, static_cast<int>(a.shape(1))};
  r.size = static_cast<std::size_t>(r.kept.shape(0));
  require_countable(r.size, name);
  return r;
}

bool takes_directly(const array& out, const array& x) {
  if ((out.flags() & npy::NPY_ARRAY_C_CONTIGUOUS_) == 0 || (out.flags() & npy::NPY_ARRAY_ALIGNED_) == 0) return false;
  const double *first = out.data(), *other = x.data();
  return first == other || first + out.size() <= other || other + x.size() <= first;
}

std::vector<vector> to_vectors(const array_like& argument, const char* name) {
  const rows r = to_rows(argument, name, 2);
  const tessarn::plane_points view = r.plane();
  std::vector<vector> points;
  points.reserve(r.size);
  for (std::size_t i = 0; i < r.size; ++i) points.emplace_back(view.x[i], view.y[i]);
  return points;
}

std::vector<vector3d> to_vectors3d(const array_like& argument, const char* name) {
  const rows r = to_rows(argument, name, 3);
  const tessarn::space_points view = r.space();
  std::vector<vector3d> points;
  points.reserve(r.size);
  for (std::size_t i = 0; i < r.size; ++i) points.emplace_back(view.x[i], view.y[i], view.z[i]);
  return points;
}

array from_vectors(const vector* points, std::size_t n) {
  array a({static_cast<py::ssize_t>(n), py::ssize_t{2}});
  double* to = a.mutable_data();
  for (std::size_t i = 0; i < n; ++i) {
    to[2 * i] = static_cast<double>(points[i].x);
    to[2 * i + 1] = static_cast<double>(points[i].y);
  }
  return a;
}

array from_vectors3d(const vector3d* points, std::size_t n) {
  array a({static_cast<py::ssize_t>(n), py::ssize_t{3}});
  double* to = a.mutable_data();
  for (std::size_t i = 0; i < n; ++i) {
    to[3 * i] = static_cast<double>(points[i].x);
    to[3 * i + 1] = static_cast<double>(points[i].y);
    to[3 * i + 2] = static_cast<double>(points[i].z);
  }
  return a;
}

mat<long double> to_matrix(const array_like& argument, const char* name) {
  const array a = dense_array(argument, name, 2);
  mat<long double> m;
  m.create(tessarn::detail::count(a.shape(1)), tessarn::detail::count(a.shape(0)));
  for (py::ssize_t i = 0; i < a.size(); ++i) tessarn::detail::store(m.getData()[i], as_real(a.data())[i]);
  return m;
}

array from_matrix(const mat<long double>& m) {
  array a({static_cast<py::ssize_t>(m.getHeight()), static_cast<py::ssize_t>(m.getWidth())});
  std::copy_n(as_double(m.getData()), static_cast<std::size_t>(a.size()), a.mutable_data());
  return a;
}

tessarn::matrix_view view_of(const array& dense) {
  return {as_real(dense.data()), static_cast<std::size_t>(dense.shape(0)), static_cast<std::size_t>(dense.shape(1))};
}

array read_only(const tessarn::real* first, std::vector<py::ssize_t> shape, std::vector<py::ssize_t> strides,
                py::handle owner) {
  array a(std::move(shape), std::move(strides), as_double(first), owner);
  py::detail::array_proxy(a.ptr())->flags &= ~npy::NPY_ARRAY_WRITEABLE_;
  return a;
}

}  // namespace binding
