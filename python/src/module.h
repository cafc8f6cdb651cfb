// Each adds one family to the module.
#pragma once

#include <pybind11/pybind11.h>

namespace binding {

void add_values(pybind11::module_& m);
void add_lists(pybind11::module_& m);
void add_matrices(pybind11::module_& m);
void add_square_matrices(pybind11::module_& m);
void add_polynomials(pybind11::module_& m);
void add_surfaces(pybind11::module_& m);
void add_geometry(pybind11::module_& m);
void add_status(pybind11::module_& m);
void add_curve(pybind11::module_& m);
void add_fit(pybind11::module_& m);
void add_surface_fit(pybind11::module_& m);
void add_solve(pybind11::module_& m);
void add_align(pybind11::module_& m);
void add_flat(pybind11::module_& m);
void add_shapes(pybind11::module_& m);
void add_selfcheck(pybind11::module_& m);

}  // namespace binding
