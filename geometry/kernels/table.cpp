// The kernels of the plane fits; compiled once for each instruction set.
#include "geometry/kernels/bounds.inl"
#include "geometry/kernels/candidates.inl"
#include "geometry/kernels/duplicates.inl"
#include "geometry/kernels/extremes.inl"
#include "geometry/kernels/ingest.inl"
#include "geometry/kernels/kernels.h"
#include "geometry/kernels/moments.inl"

namespace tessarn::detail::TESSARN_ISA {

const geometry_kernels geometry_table = {
    .means = means,
    .residuals = residuals,
    .bound_residuals = bound_residuals,
    .add_sines = add_sines,
    .add_cosines = add_cosines,
    .moments = moments,
    .farthest = farthest,
    .farthest_from_two = farthest_from_two,
    .ingest_points = ingest_points,
    .list_repeated = list_repeated,
    .list_suspects = list_suspects,
    .group_points = width,
    .block_points = block_points,
};

}  // namespace tessarn::detail::TESSARN_ISA
