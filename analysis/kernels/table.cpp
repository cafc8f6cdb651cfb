// The kernels of the fits and of square systems; compiled once for each instruction set.
#include "analysis/kernels/accurate_product.inl"
#include "analysis/kernels/columns.inl"
#include "analysis/kernels/curve.inl"
#include "analysis/kernels/kernels.h"
#include "analysis/kernels/ranges.inl"
#include "analysis/kernels/surface.inl"
#include "analysis/kernels/systems.h"
#include "analysis/kernels/systems.inl"

namespace tessarn::detail::TESSARN_ISA {

const fit_kernels fit_table = {.include = include,
                               .copy_points = copy_points,
                               .add_moments = add_moments,
                               .residuals = residuals,
                               .add_surface_moments = add_surface_moments,
                               .surface_residuals = surface_residuals};

const system_kernels system_table = {.add_row = add_row,
                                     .residual = residual,
                                     .subtract_accurately = subtract_accurately,
                                     .split_all = split_all,
                                     .column_sums = column_sums,
                                     .row_sums = row_sums,
                                     .products = products,
                                     .tall_residual = tall_residual,
                                     .row_largest = row_largest,
                                     .column_largest = column_largest,
                                     .scale = scale};

}  // namespace tessarn::detail::TESSARN_ISA
