// The table of the kernels of the polynomials; compiled once for each instruction set.
#include "poly/kernels/convolve.inl"
#include "poly/kernels/curves.inl"
#include "poly/kernels/fit_sums.inl"
#include "poly/kernels/kernels.h"
#include "poly/kernels/powers.inl"
#include "poly/kernels/scan.inl"
#include "poly/kernels/surface_sums.inl"

namespace tessarn::detail::TESSARN_ISA {

const poly_kernels poly_table = {
    .add_plane_points = add_plane_points,
    .unpack_plane = unpack_plane,
    .unpack_space = unpack_space,
    .apply_weights = apply_weights,
    .in_range = in_range,
    .powers = powers,
    .add_powers = add_powers,
    .add_products = add_products,
    .add_points = add_points,
    .values = values,
    .power_series = power_series,
    .derivatives = derivatives,
    .curvature = curvature,
    .curvature_derivative = curvature_derivative,
    .first_event = first_event,
    .one_sign = one_sign,
    .surface_values = surface_values,
    .convolve = convolve,
};

}  // namespace tessarn::detail::TESSARN_ISA
