// The kernels of the fits; compiled once for each instruction set.
#include "analysis/kernels/curve.inl"
#include "analysis/kernels/kernels.h"
#include "analysis/kernels/ranges.inl"
#include "analysis/kernels/surface.inl"

namespace tessarn::detail::TESSARN_ISA {

const fit_kernels fit_table = {.include = include,
                               .copy_points = copy_points,
                               .add_moments = add_moments,
                               .residuals = residuals,
                               .add_surface_moments = add_surface_moments,
                               .surface_residuals = surface_residuals};

}  // namespace tessarn::detail::TESSARN_ISA
