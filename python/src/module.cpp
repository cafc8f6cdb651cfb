#include "module.h"

#include <algorithm>

#include "tessarn/version.h"

namespace {

// The two oldest protocols of pickling, and a direct call of __reduce__, make an object of pybind11's base class, which
// ends the program. Every class answers them as protocol 2 does: make an empty object, then set its state.
void answer_every_protocol(pybind11::module_& m) {
  namespace py = pybind11;
  const py::object make_empty = py::module_::import("copyreg").attr("__newobj__");
  const auto reduce = [make_empty](const py::object& self, const py::args&) {
    if (!py::hasattr(self, "__setstate__"))
      throw py::type_error("cannot pickle '" + py::str(py::type::of(self).attr("__name__")).cast<std::string>() +
                           "' object");
    return py::make_tuple(make_empty, py::make_tuple(py::type::of(self)), self.attr("__getstate__")());
  };
  for (const auto& [name, member] : m.attr("__dict__").cast<py::dict>()) {
    if (!PyType_Check(member.ptr())) continue;
    for (const char* call : {"__reduce__", "__reduce_ex__"})
      py::setattr(member, call, py::cpp_function(reduce, py::name(call), py::is_method(member)));
  }
}

}  // namespace

#define TESSARN_TEXT_OF(x) #x
#define TESSARN_TEXT(x) TESSARN_TEXT_OF(x)

PYBIND11_MODULE(_core, m) {
  m.doc() = "The compiled part of tessarn: import tessarn instead.";
  m.attr("__version__") = TESSARN_TEXT(TESSARN_VERSION_MAJOR) "." TESSARN_TEXT(TESSARN_VERSION_MINOR) "." TESSARN_TEXT(
      TESSARN_VERSION_PATCH);
  binding::add_status(m);
  binding::add_values(m);
  binding::add_lists(m);
  binding::add_matrices(m);
  binding::add_square_matrices(m);
  binding::add_polynomials(m);
  binding::add_surfaces(m);
  binding::add_geometry(m);
  binding::add_curve(m);
  binding::add_fit(m);
  binding::add_surface_fit(m);
  binding::add_solve(m);
  binding::add_align(m);
  binding::add_flat(m);
  binding::add_shapes(m);
  binding::add_selfcheck(m);
  answer_every_protocol(m);
}
