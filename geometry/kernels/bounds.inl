// Bounds of the sums of squared residuals of eight neighbouring normals, from second moments (geometry/bounds.h has the
// proof). Kernel sources only.
#pragma once

#include <limits>

#include "geometry/kernels/kernels.h"
#include "simd/lanes.h"

namespace tessarn::detail::TESSARN_ISA {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

TESSARN_INLINE vec positive(vec v) { return select(v > vec{}, v, vec{}); }

TESSARN_INLINE vec quadratic_form(const double* s, vec x, vec y, vec z) {
  return (s[0] * x * x + s[1] * y * y + s[2] * z * z) + 2.0 * (s[3] * x * y + s[4] * x * z + s[5] * y * z);
}

// The kernel makes the neighbours itself: if the caller stored eight numbers one by one, loading them as vectors would
// have to wait for the last store.
void bound_residuals(const residual_form& f, double centre_x, double centre_y, double step, double* to_x, double* to_y,
                     double* to_z, double* low, double* high) {
  static const double columns[candidate_lanes] = {-1, 0, 1, -1, 1, -1, 0, 1};
  static const double rows[candidate_lanes] = {-1, -1, -1, 0, 0, 1, 1, 1};
  for (size_t i = 0; i < candidate_lanes; i += width) {
    // A centre of -0.0 becomes 0.0, as it does in the search when 0 times a step is added.
    const vec x = (centre_x + 0.0) + load(columns + i) * step, y = (centre_y + 0.0) + load(rows + i) * step;
    const vec z = square_root(1.0 - x * x - y * y);
    const mask feasible = (x * x + y * y <= broadcast(1)) & (z == z);
    // The exact sum of squares is between least and greatest.
    const vec mean = f.mean[0] * x + f.mean[1] * y + f.mean[2] * z;
    const vec square = quadratic_form(f.second, x, y, z) - f.count * (mean * mean);
    const vec least = positive(square - f.form_margin);
    const vec greatest = positive(square) + f.form_margin;
    // The computed residuals give a sum between (sqrt(least) - margin)^2 and (sqrt(greatest + mean_margin) + margin)^2.
    // One root, which is above both, serves for both.
    const vec root = square_root(greatest) + f.mean_margin_root;
    const vec margin = f.residual_margin + 1.1 * 0x1p-53 * root;
    const vec moved = 2.2 * margin * root;
    const vec from = positive(least - moved);
    const vec to = greatest + f.mean_margin + moved + margin * margin;
    store(to_x + i, x);
    store(to_y + i, y);
    store(to_z + i, z);
    // The roundings of the summation itself.
    const vec sum_margin = 1.1 * 0x1p-53 * quadratic_form(f.weighted, x, y, z) + f.sum_margin;
    store(low + i, select(feasible, positive(from * (1 - f.sum_factor) - sum_margin), broadcast(infinity)));
    store(high + i, select(feasible, to * (1 + f.sum_factor) + sum_margin, broadcast(infinity)));
  }
}

}  // namespace
}  // namespace tessarn::detail::TESSARN_ISA
