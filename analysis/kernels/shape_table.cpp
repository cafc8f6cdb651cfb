// The kernels of motions and shapes; compiled once for each instruction set.
#include "analysis/kernels/inside.inl"
#include "analysis/kernels/moments.inl"
#include "analysis/kernels/residuals.inl"
#include "analysis/kernels/rounds.inl"
#include "analysis/kernels/shape_kernels.h"

namespace tessarn::detail::TESSARN_ISA {

const shape_kernels shape_table = {.add_means = add_means,
                                   .add_products = add_products,
                                   .add_pair_products = add_pair_products,
                                   .plane_residuals = plane_residuals,
                                   .line_residuals = line_residuals,
                                   .motion_residuals = motion_residuals,
                                   .centre = centre,
                                   .round_residuals = round_residuals,
                                   .round_sums = round_sums,
                                   .round_sums_doubled = round_sums_doubled,
                                   .round_squares = round_squares,
                                   .square_sums = square_sums,
                                   .algebraic_sums = algebraic_sums,
                                   .find_extremes = find_extremes,
                                   .keep_outside = keep_outside};

}  // namespace tessarn::detail::TESSARN_ISA
