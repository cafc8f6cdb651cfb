#include "module.h"

#include "tessarn/version.h"

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
}
