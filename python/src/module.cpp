#include "module.h"

#include <algorithm>

#include "tessarn/version.h"

namespace {

// The two oldest protocols of pickling make an object of pybind11's base class, which ends the program. Every class
// answers them as protocol 2.
void refuse_old_protocols(pybind11::module_& m) {
  namespace py = pybind11;
  const py::object reduce = py::module_::import("builtins").attr("object").attr("__reduce_ex__");
  for (const auto& [name, member] : m.attr("__dict__").cast<py::dict>()) {
    if (!PyType_Check(member.ptr())) continue;
    py::setattr(
        member, "__reduce_ex__",
        py::cpp_function([reduce](const py::object& self, int protocol) { return reduce(self, std::max(protocol, 2)); },
                         py::name("__reduce_ex__"), py::is_method(member), py::arg("protocol")));
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
  refuse_old_protocols(m);
}
